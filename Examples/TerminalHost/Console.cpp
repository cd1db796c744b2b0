#include "Console.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

namespace host {

namespace {

constexpr std::size_t kWidthOfPipes = 100;
constexpr std::size_t kSmallestWidth = 60;

// NOLINTBEGIN(concurrency-mt-unsafe): nothing in this program sets environment variables
bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value && *value;
}

bool isColourWanted() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) && !isSet("NO_COLOR") && terminal && std::string_view(terminal) != "dumb";
}
// NOLINTEND(concurrency-mt-unsafe)

std::size_t widthOfOutput() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return kWidthOfPipes;
    }
    return std::max<std::size_t>(size.ws_col, kSmallestWidth);
}

} // namespace

Console::Console() : m_isColoured(isColourWanted()), m_width(widthOfOutput()) {}

void Console::print(std::string_view section, const Page& page) {
    const std::lock_guard lock(m_mutex);
    if (section != m_section) {
        writeHeading(section);
    }
    write(page.text());
}

void Console::printHeading(std::string_view heading) {
    const std::lock_guard lock(m_mutex);
    writeHeading(heading);
    m_isBelowHeading = true;
}

bool Console::isBroken() const {
    const std::lock_guard lock(m_mutex);
    return m_writeError != 0;
}

int Console::writeError() const {
    const std::lock_guard lock(m_mutex);
    return m_writeError == EPIPE ? 0 : m_writeError;
}

void Console::writeHeading(std::string_view heading) {
    Page page = makePage();
    page.put(heading, Style::Heading).endLine();
    const bool isAtTop = m_section.empty() || m_isBelowHeading;
    write((isAtTop ? "" : "\n") + page.text());
    m_section = heading;
    m_isBelowHeading = false;
}

void Console::write(const std::string& text) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (!isWritten && m_writeError == 0) {
        m_writeError = errno;
    }
}

} // namespace host
