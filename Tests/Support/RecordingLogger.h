#pragma once

#include "QVLLogging.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// Keeps every log line. Any thread.
class RecordingLogger final : public QVLLogger {
public:
    struct Line {
        QVLLogLevel level;
        std::string file;
        std::int32_t number;
        std::string function;
        /// Only good for comparing, since the object may be gone.
        const QVLObject* object;
        std::string objectClass;
        std::string objectDescription;
        std::string message;
    };

    /// What a host's logger does besides, at every line. Set while no other thread logs.
    std::function<void()> whenLogging = [] {};

    [[nodiscard]] std::vector<Line> lines() const;
    /// The lines so far as texts, "error QVLJSONStore: Deleting item at path: '/a'", and forgets them. A line without
    /// an object names "(null)".
    [[nodiscard]] std::vector<std::string> take();

    void logDebugFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                      const std::string& message) override;
    void logInfoFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                     const std::string& message) override;
    void logWarnFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                     const std::string& message) override;
    void logErrorFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                      const std::string& message) override;

private:
    void add(QVLLogLevel level, const char* file, std::int32_t line, const char* function, const QVLObject* object,
             const std::string& message);

    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
};

/// Sets a recording logger on the shared environment for as long as this lives, and then the logger that was there.
class RecordedLog final {
public:
    RecordedLog();
    RecordedLog(const RecordedLog&) = delete;
    RecordedLog& operator=(const RecordedLog&) = delete;
    ~RecordedLog();

    RecordingLogger* operator->() const { return m_logger.get(); }

private:
    std::shared_ptr<RecordingLogger> m_logger = std::make_shared<RecordingLogger>();
    std::shared_ptr<QVLLogger> m_previous;
};
