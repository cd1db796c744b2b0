#include "ConsoleLogger.h"

#include <sstream>

namespace host {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kFunctionColumn = 9;
constexpr std::size_t kMessageIndent = 4;

} // namespace

struct ConsoleLogger::Level {
    std::string_view name;
    Style style;
};

void ConsoleLogger::logDebugFile(const char* /*file*/, std::int32_t /*line*/, const char* function,
                                 const QVLObject* /*object*/, const std::string& message) {
    if (!m_isVerbose) {
        ++m_hiddenLineCount;
        return;
    }
    print({"debug", Style::Quiet}, function, message);
}

void ConsoleLogger::logInfoFile(const char* /*file*/, std::int32_t /*line*/, const char* function,
                                const QVLObject* /*object*/, const std::string& message) {
    print({"info", Style::Good}, function, message);
}

void ConsoleLogger::logWarnFile(const char* /*file*/, std::int32_t /*line*/, const char* function,
                                const QVLObject* /*object*/, const std::string& message) {
    print({"warn", Style::Warning}, function, message);
}

void ConsoleLogger::logErrorFile(const char* /*file*/, std::int32_t /*line*/, const char* function,
                                 const QVLObject* /*object*/, const std::string& message) {
    print({"error", Style::Bad}, function, message);
}

void ConsoleLogger::print(const Level& level, const char* function, const std::string& message) {
    Page page = m_console->makePage();
    page.padTo(kIndent).put(level.name, level.style).padTo(kFunctionColumn).put(function, Style::Quiet).put("  ");
    std::istringstream lines(message);
    std::string line;
    for (bool isFirst = true; std::getline(lines, line); isFirst = false) {
        page.padTo(isFirst ? page.column() : kFunctionColumn + kMessageIndent).put(line).endLine();
    }
    if (page.column() > 0) {
        page.endLine();
    }
    m_console->print("Log", page);
}

} // namespace host
