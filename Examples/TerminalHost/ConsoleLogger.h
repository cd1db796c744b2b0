#pragma once

#include "Console.h"

#include <Quorvel/QVLLogger.h>

#include <atomic>
#include <memory>

namespace host {

/// Prints the library's log lines. The environment may keep it longer than anything else of this program lives.
class ConsoleLogger final : public QVLLogger {
public:
    ConsoleLogger(std::shared_ptr<Console> console, bool isVerbose)
        : m_console(std::move(console)), m_isVerbose(isVerbose) {}

    /// How many debug lines were left out.
    [[nodiscard]] std::size_t hiddenLineCount() const { return m_hiddenLineCount; }

    void logDebugFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                      const std::string& message) override;
    void logInfoFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                     const std::string& message) override;
    void logWarnFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                     const std::string& message) override;
    void logErrorFile(const char* file, std::int32_t line, const char* function, const QVLObject* object,
                      const std::string& message) override;

private:
    struct Level;
    void print(const Level& level, const char* function, const std::string& message);

    const std::shared_ptr<Console> m_console;
    const bool m_isVerbose;
    std::atomic<std::size_t> m_hiddenLineCount = 0;
};

} // namespace host
