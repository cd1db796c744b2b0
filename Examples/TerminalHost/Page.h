#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

enum class Style { Plain, Heading, Label, Text, Number, Quiet, Good, Warning, Bad };

/// Text in the making, in lines and columns, with colours if there are any.
class Page final {
public:
    Page(bool isColoured, std::size_t width) : m_isColoured(isColoured), m_width(width) {}

    /// Control characters, which could confuse a terminal, are shown as escapes.
    Page& put(std::string_view text, Style style = Style::Plain);
    Page& padTo(std::size_t column);
    Page& endLine();

    [[nodiscard]] std::size_t column() const { return m_column; }
    /// Whether a text still fits into the line.
    [[nodiscard]] bool hasRoomFor(std::size_t width) const { return m_column + width <= m_width; }
    [[nodiscard]] const std::string& text() const { return m_text; }

    /// How many columns a text takes once it is put, near enough.
    [[nodiscard]] static std::size_t widthOf(std::string_view text);

private:
    bool m_isColoured;
    std::size_t m_width;
    std::size_t m_column = 0;
    std::string m_text;
};

} // namespace host
