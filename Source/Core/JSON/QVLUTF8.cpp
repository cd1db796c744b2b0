#include "QVLUTF8.h"

#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080U;

bool isLead(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isTrail(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Looked at in blocks, which the compiler makes into a few instructions each.
std::size_t asciiUnitCount(std::u16string_view text) {
    constexpr std::size_t kBlock = 64;
    std::size_t position = 0;
    for (; position + kBlock <= text.size(); position += kBlock) {
        unsigned bits = 0;
        for (const char16_t unit : text.substr(position, kBlock)) {
            bits |= unit;
        }
        if (bits >= 0x80) {
            break;
        }
    }
    while (position < text.size() && text[position] < 0x80) {
        ++position;
    }
    return position;
}

void appendThreeBytes(std::string& text, char16_t unit) {
    text += static_cast<char>(0xE0 | (unit >> 12));
    text += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (unit & 0x3F));
}

} // namespace

std::size_t qvl::asciiPrefixLength(std::string_view text) noexcept {
    std::size_t position = 0;
    for (; position + sizeof(std::uint64_t) <= text.size(); position += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + position, sizeof word);
        if (word & kHighBits) {
            break;
        }
    }
    while (position < text.size() && static_cast<unsigned char>(text[position]) < 0x80) {
        ++position;
    }
    return position;
}

bool qvl::isValidUTF8(std::string_view text) noexcept {
    text.remove_prefix(asciiPrefixLength(text));
    return utf8::is_valid(text.begin(), text.end());
}

std::u16string qvl::UTF16FromUTF8(std::string_view text) {
    const std::size_t asciiLength = asciiPrefixLength(text);
    std::u16string result(asciiLength, u'\0');
    std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(asciiLength), result.begin(),
                   [](char byte) { return static_cast<char16_t>(byte); });
    text.remove_prefix(asciiLength);
    if (text.empty()) {
        return result;
    }
    result.reserve(asciiLength + text.size());
    if (utf8::is_valid(text.begin(), text.end())) {
        utf8::unchecked::utf8to16(text.begin(), text.end(), std::back_inserter(result));
        return result;
    }
    std::string repaired;
    utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(repaired));
    utf8::unchecked::utf8to16(repaired.begin(), repaired.end(), std::back_inserter(result));
    return result;
}

std::string qvl::UTF8FromUTF16(std::u16string_view text) {
    const std::size_t asciiLength = asciiUnitCount(text);
    std::string result(asciiLength, '\0');
    std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(asciiLength), result.begin(),
                   [](char16_t unit) { return static_cast<char>(unit); });
    for (std::size_t position = asciiLength; position < text.size(); ++position) {
        const char16_t unit = text[position];
        if (isLead(unit) && position + 1 < text.size() && isTrail(text[position + 1])) {
            const char32_t point =
                0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (text[++position] - 0xDC00U);
            utf8::unchecked::append(point, std::back_inserter(result));
        } else if (isLead(unit) || isTrail(unit)) {
            appendThreeBytes(result, unit);
        } else {
            utf8::unchecked::append(unit, std::back_inserter(result));
        }
    }
    return result;
}
