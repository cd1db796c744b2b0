#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace qvl {

/// Whether a text is well-formed UTF-8: no stray or overlong bytes, no surrogates. Fast for plain ASCII.
[[nodiscard]] bool isValidUTF8(std::string_view text) noexcept;

/// How many bytes at the front of a text are ASCII.
[[nodiscard]] std::size_t asciiPrefixLength(std::string_view text) noexcept;

/// Valid UTF-8 as UTF-16; bytes that are not UTF-8 become replacement characters.
[[nodiscard]] std::u16string UTF16FromUTF8(std::string_view text);

/// UTF-16 as UTF-8. A lone surrogate keeps its place as three bytes that `isValidUTF8` refuses, so that a reader of the
/// text fails at that place instead of seeing something else.
[[nodiscard]] std::string UTF8FromUTF16(std::u16string_view text);

} // namespace qvl
