#include "Page.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr std::string_view kReset = "\033[0m";

std::string_view escapeOf(Style style) {
    static constexpr std::array<std::string_view, 9> kEscapes = {
        "", "\033[1m", "\033[36m", "\033[32m", "\033[33m", "\033[2m", "\033[32m", "\033[33m", "\033[1;31m"};
    return kEscapes[static_cast<std::size_t>(style)];
}

std::string escapedByte(unsigned char byte) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
}

/// Terminals obey the controls of ASCII and those from U+0080 to U+009F, which UTF-8 writes as C2 and one more byte.
std::string withoutControls(std::string_view text) {
    std::string clean;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const auto next = static_cast<unsigned char>(index + 1 < text.size() ? text[index + 1] : 0);
        if (byte == '\t') {
            clean += ' ';
        } else if (byte < 0x20 || byte == 0x7F) {
            clean += escapedByte(byte);
        } else if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            clean += escapedByte(next);
            ++index;
        } else {
            clean += text[index];
        }
    }
    return clean;
}

} // namespace

Page& Page::put(std::string_view text, Style style) {
    const std::string clean = withoutControls(text);
    const bool isStyled = m_isColoured && style != Style::Plain && !clean.empty();
    m_column += widthOf(clean);
    m_text.append(isStyled ? escapeOf(style) : "").append(clean).append(isStyled ? kReset : "");
    return *this;
}

Page& Page::padTo(std::size_t column) {
    const std::size_t missing = column > m_column ? column - m_column : 0;
    m_text.append(missing, ' ');
    m_column += missing;
    return *this;
}

Page& Page::endLine() {
    m_text.erase(m_text.find_last_not_of(' ') + 1);
    m_text += '\n';
    m_column = 0;
    return *this;
}

std::size_t Page::widthOf(std::string_view text) {
    const std::string clean = withoutControls(text);
    const auto isContinuation = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; };
    return clean.size() - static_cast<std::size_t>(std::count_if(clean.begin(), clean.end(), isContinuation));
}

} // namespace host
