#include "RecordingLogger.h"

#include "QVLQuorvelEnvironment.h"

#include <array>
#include <utility>

std::vector<RecordingLogger::Line> RecordingLogger::lines() const {
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

std::vector<std::string> RecordingLogger::take() {
    static constexpr std::array<const char*, 4> kLevels = {"debug", "info", "warn", "error"};
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> texts;
    for (const Line& line : std::exchange(m_lines, {})) {
        texts.push_back(std::string(kLevels.at(line.level)) + " " + line.objectClass + ": " + line.message);
    }
    return texts;
}

void RecordingLogger::logDebugFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                                   const std::string& message) {
    add(QVLLogLevelDebug, file, line, function, object, message);
}

void RecordingLogger::logInfoFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                                  const std::string& message) {
    add(QVLLogLevelInfo, file, line, function, object, message);
}

void RecordingLogger::logWarnFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                                  const std::string& message) {
    add(QVLLogLevelWarn, file, line, function, object, message);
}

void RecordingLogger::logErrorFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                                   const std::string& message) {
    add(QVLLogLevelError, file, line, function, object, message);
}

void RecordingLogger::add(QVLLogLevel level, const char* file, std::int32_t line, const char* function,
                          const QVLObject* object, const std::string& message) {
    // Before the lock, since a description may log.
    Line recorded{level,
                  file,
                  line,
                  function,
                  object,
                  object ? object->className() : "(null)",
                  object ? object->description() : "(null)",
                  message};
    {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back(std::move(recorded));
    }
    whenLogging();
}

RecordedLog::RecordedLog() : m_previous(QVLQuorvelEnvironment::sharedEnvironment()->logger()) {
    QVLQuorvelEnvironment::sharedEnvironment()->setLogger(m_logger);
}

RecordedLog::~RecordedLog() {
    QVLQuorvelEnvironment::sharedEnvironment()->setLogger(m_previous);
}
