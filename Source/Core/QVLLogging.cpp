#include "QVLLogging.h"

#include "QVLCallStack.h"
#include "QVLLogMacros.h"
#include "QVLQuorvelEnvironment.h"

#include <cstdio>
#include <string_view>

QVLLogger::~QVLLogger() = default;

void QVLLogMessage(QVLLogLevel level, const char* file, std::int32_t line, const char* function,
                   const QVLObject* object, const std::string& message) {
    const std::shared_ptr<QVLLogger> logger = QVLQuorvelEnvironment::sharedEnvironment()->logger();
    if (!logger) {
        std::fprintf(stderr, "%s %s\n", function, message.c_str());
        return;
    }
    switch (level) {
    case QVLLogLevelDebug:
        logger->logDebugFile(file, line, function, object, message);
        return;
    case QVLLogLevelInfo:
        logger->logInfoFile(file, line, function, object, message);
        return;
    case QVLLogLevelWarn:
        logger->logWarnFile(file, line, function, object, message);
        return;
    case QVLLogLevelError:
        logger->logErrorFile(file, line, function, object, message);
        return;
    default:
        return;
    }
}

void QVLLogFailedAssertion(const char* conditionText, const char* file, std::int32_t line, const char* function,
                           const QVLObject* object, const std::string& message) {
    const std::string report =
        QVLStringWithFormat("Assertion failed: %s\n%@\n%@", conditionText, message, QVLCallStackSymbols());
    QVLLog(QVLLogLevelError, file, line, function, object, "%@", report);
}

std::string QVLShortFunctionName(const char* prettyFunction) {
    // The name stands before the first parameters; a lambda's signature begins with that of the function around it.
    // What stands in angle brackets may hold blanks and parameters of its own.
    constexpr std::string_view kUnnamed = "(anonymous namespace)";
    const std::string_view signature(prettyFunction);
    std::size_t nameStart = 0;
    int depth = 0;
    for (std::size_t position = 0; position < signature.size(); ++position) {
        const char character = signature[position];
        depth += character == '<' ? 1 : character == '>' ? -1 : 0;
        if (depth > 0) {
            continue;
        }
        if (signature.substr(position).starts_with(kUnnamed)) {
            position += kUnnamed.size() - 1;
        } else if (character == ' ') {
            nameStart = position + 1;
        } else if (character == '(') {
            return std::string(signature.substr(nameStart, position - nameStart));
        }
    }
    return std::string(signature);
}
