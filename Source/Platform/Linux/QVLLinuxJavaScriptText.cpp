#include "QVLLinuxJavaScriptText.h"

#include "QVLUTF8.h"

#include <algorithm>

static_assert(sizeof(JSChar) == sizeof(char16_t));

namespace {

/// Widened directly: the engine's own conversion is several times slower and stops at a NUL.
JSStringRef stringFromASCII(std::string_view text) {
    const auto characters = std::make_unique_for_overwrite<JSChar[]>(text.size());
    std::transform(text.begin(), text.end(), characters.get(), [](char byte) { return static_cast<JSChar>(byte); });
    return JSStringCreateWithCharacters(characters.get(), text.size());
}

JSStringRef stringFrom(std::string_view text) {
    if (qvl::asciiPrefixLength(text) == text.size()) {
        return stringFromASCII(text);
    }
    const std::u16string characters = qvl::UTF16FromUTF8(text);
    return JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(characters.data()), characters.size());
}

} // namespace

QVLLinuxJavaScriptText::QVLLinuxJavaScriptText(std::string_view text) : m_string(stringFrom(text)) {}

QVLLinuxJavaScriptText::~QVLLinuxJavaScriptText() {
    if (m_string) {
        JSStringRelease(m_string);
    }
}

std::optional<std::string> QVLLinuxJavaScriptText::UTF8() const {
    if (!m_string) {
        return std::nullopt;
    }
    const auto* const characters = reinterpret_cast<const char16_t*>(JSStringGetCharactersPtr(m_string));
    return qvl::UTF8FromUTF16({characters, JSStringGetLength(m_string)});
}
