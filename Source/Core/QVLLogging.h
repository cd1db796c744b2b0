#pragma once

#include "QVLFormat.h"
#include "QVLLogger.h"

#include <cstdint>
#include <string>

/// Log levels. Failures of files, JSON and records are errors; notices are information; routine traces are debug lines.
using QVLLogLevel = std::uint64_t;
inline constexpr QVLLogLevel QVLLogLevelDebug = 0;
inline constexpr QVLLogLevel QVLLogLevelInfo = 1;
inline constexpr QVLLogLevel QVLLogLevelWarn = 2;
inline constexpr QVLLogLevel QVLLogLevelError = 3;

/// Hands a finished message to the logger of the shared environment, on the calling thread.
///
/// Without a logger the function name, a blank and the message go to standard error, whatever the level. With one, a
/// level above `QVLLogLevelError` is dropped without a trace. No other filtering is done. Any thread.
QVL_EXPORT void QVLLogMessage(QVLLogLevel level, const char* file, std::int32_t line, const char* function,
                              const QVLObject* object, const std::string& message);

/// Formats a message and logs it. `object` is on whose behalf, or null.
template <class... Arguments>
void QVLLog(QVLLogLevel level, const char* file, std::int32_t line, const char* function, const QVLObject* object,
            QVLFormatString<std::type_identity_t<Arguments>...> format, const Arguments&... arguments) {
    QVLLogMessage(level, file, line, function, object, QVLStringWithFormat<Arguments...>(format, arguments...));
}

/// Logs the empty message.
inline void QVLLog(QVLLogLevel level, const char* file, std::int32_t line, const char* function,
                   const QVLObject* object, std::nullptr_t = nullptr) {
    QVLLogMessage(level, file, line, function, object, {});
}

/// Logs one failed assertion at error level: "Assertion failed: ", the condition's text, the message and the call
/// stack. Never stops the program.
QVL_EXPORT void QVLLogFailedAssertion(const char* conditionText, const char* file, std::int32_t line,
                                      const char* function, const QVLObject* object, const std::string& message);

/// Checks a condition. One that holds costs nothing and logs nothing; one that fails is logged and the caller goes on.
template <class... Arguments>
void QVLAssertDispatch(bool condition, const char* conditionText, const char* file, std::int32_t line,
                       const char* function, const QVLObject* object,
                       QVLFormatString<std::type_identity_t<Arguments>...> format, const Arguments&... arguments) {
    if (!condition) {
        QVLLogFailedAssertion(conditionText, file, line, function, object,
                              QVLStringWithFormat<Arguments...>(format, arguments...));
    }
}

/// The same without a message.
inline void QVLAssertDispatch(bool condition, const char* conditionText, const char* file, std::int32_t line,
                              const char* function, const QVLObject* object, std::nullptr_t = nullptr) {
    if (!condition) {
        QVLLogFailedAssertion(conditionText, file, line, function, object, {});
    }
}
