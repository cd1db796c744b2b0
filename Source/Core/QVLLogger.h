#pragma once

#include "QVLObject.h"

#include <cstdint>
#include <string>

/// Receives the library's log lines. A host implements it and sets it on the environment.
///
/// Called on the thread that logs, which is the main thread or an engine's queue, possibly both at once: an
/// implementation must bear concurrent calls. `file`, `function` and `object` are valid during the call only; `object`
/// may be null.
class QVL_EXPORT QVLLogger {
public:
    virtual ~QVLLogger();

    virtual void logDebugFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                              const std::string& message) = 0;
    virtual void logInfoFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                             const std::string& message) = 0;
    virtual void logWarnFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                             const std::string& message) = 0;
    virtual void logErrorFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                              const std::string& message) = 0;
};
