#pragma once

#include "Page.h"

#include <mutex>
#include <string>
#include <string_view>

namespace host {

/// Standard output, in sections: coloured on a terminal, plain elsewhere and where NO_COLOR is set. Any thread.
class Console final {
public:
    Console();

    /// An empty page in this console's manner.
    [[nodiscard]] Page makePage() const { return {m_isColoured, m_width}; }

    /// Prints the page at once, below the section's heading unless that section was the last one to print.
    void print(std::string_view section, const Page& page);

    /// Prints a heading of its own, such as a command that is obeyed next.
    void printHeading(std::string_view heading);

    /// Whether nobody reads standard output any more, or it cannot be written.
    [[nodiscard]] bool isBroken() const;
    /// Why standard output could not be written, as an error number; 0 if it could. A reader that has left is no
    /// failure.
    [[nodiscard]] int writeError() const;

private:
    void writeHeading(std::string_view heading);
    void write(const std::string& text);

    bool m_isColoured;
    std::size_t m_width;
    mutable std::mutex m_mutex;
    std::string m_section;
    bool m_isBelowHeading = false;
    int m_writeError = 0;
};

} // namespace host
