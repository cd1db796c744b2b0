#pragma once

#include "QVLJSONValue.h"
#include "QVLObject.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

/// One argument of a format string, held until it is written.
///
/// "%@" takes anything and writes its description: a text bare, an object's `description`, a JSON value's, "(null)" for
/// what is missing. "%s" takes text; the C conversions for numbers take plain numbers.
class QVL_EXPORT QVLFormatArgument final {
public:
    // Arguments are written as they stand at the place of the call.
    // NOLINTBEGIN(google-explicit-constructor)
    template <std::integral Integer>
    QVLFormatArgument(Integer value) : m_value(widened(value)) {}
    QVLFormatArgument(double value) : m_value(value) {}
    QVLFormatArgument(std::string_view text) : m_value(std::string(text)) {}
    QVLFormatArgument(const std::string& text) : m_value(text) {}
    QVLFormatArgument(const char* text) : m_value(std::string(text ? text : kMissing)) {}
    QVLFormatArgument(const QVLJSONValue& value) : m_value(value.description()) {}
    QVLFormatArgument(const QVLJSONDictionary& value) : QVLFormatArgument(QVLJSONValue(value)) {}
    QVLFormatArgument(const QVLJSONArray& value) : QVLFormatArgument(QVLJSONValue(value)) {}
    QVLFormatArgument(const std::vector<std::string>& texts);
    QVLFormatArgument(const QVLObject* object) : m_value(object ? object->description() : std::string(kMissing)) {}
    QVLFormatArgument(std::nullptr_t) : m_value(std::string(kMissing)) {}
    template <std::derived_from<QVLObject> Object>
    QVLFormatArgument(const std::shared_ptr<Object>& object)
        : QVLFormatArgument(static_cast<const QVLObject*>(object.get())) {}
    template <class Content>
    QVLFormatArgument(const std::optional<Content>& content)
        : QVLFormatArgument(content ? QVLFormatArgument(*content) : QVLFormatArgument(nullptr)) {}
    // NOLINTEND(google-explicit-constructor)

    /// The text of one conversion, for example "%08x", "%.3f" or "%@".
    [[nodiscard]] std::string textForConversion(std::string_view conversion) const;

private:
    static constexpr const char* kMissing = "(null)";

    template <std::integral Integer>
    static std::variant<long long, unsigned long long, double, std::string> widened(Integer value) {
        if constexpr (std::is_signed_v<Integer>) {
            return static_cast<long long>(value);
        } else {
            return static_cast<unsigned long long>(value);
        }
    }

    std::variant<long long, unsigned long long, double, std::string> m_value;
};

namespace qvl {

/// The place of one conversion in a format string, from its "%" to the letter that ends it.
struct FormatConversion {
    std::size_t start = std::string_view::npos;
    std::size_t length = 0;

    [[nodiscard]] constexpr bool isFound() const { return start != std::string_view::npos; }
};

/// The next conversion at or after a position. "%%" is one too; it takes no argument.
[[nodiscard]] constexpr FormatConversion nextFormatConversion(std::string_view format, std::size_t from) {
    const std::size_t start = format.find('%', from);
    if (start == std::string_view::npos) {
        return {};
    }
    const std::size_t end = format.find_first_not_of("-+ #0123456789.hlqzjt", start + 1);
    return end == std::string_view::npos ? FormatConversion{} : FormatConversion{start, end + 1 - start};
}

template <class Argument>
[[nodiscard]] constexpr bool acceptsConversion(char letter) {
    if (letter == '@') {
        return true;
    }
    if (std::string_view("diuxXoc").find(letter) != std::string_view::npos) {
        return std::integral<Argument>;
    }
    if (std::string_view("fFeEgG").find(letter) != std::string_view::npos) {
        return std::floating_point<Argument>;
    }
    return letter == 's' && std::convertible_to<const Argument&, std::string_view>;
}

} // namespace qvl

/// A format string whose conversions fit its arguments; one that does not fit does not compile.
template <class... Arguments>
class QVLFormatString final {
public:
    template <std::size_t Size>
    consteval QVLFormatString(const char (&format)[Size]) : m_format(format) { // NOLINT(google-explicit-constructor)
        constexpr std::size_t kCount = sizeof...(Arguments);
        using Test = bool (*)(char);
        constexpr std::array<Test, kCount + 1> kTests = {&qvl::acceptsConversion<std::decay_t<Arguments>>..., nullptr};
        const std::string_view text(format);
        std::size_t used = 0;
        for (auto found = qvl::nextFormatConversion(text, 0); found.isFound();
             found = qvl::nextFormatConversion(text, found.start + found.length)) {
            const char letter = text[found.start + found.length - 1];
            if (letter == '%') {
                continue;
            }
            if (used == kCount || !kTests[used](letter)) {
                throw "a conversion has no argument that fits it";
            }
            ++used;
        }
        if (used != kCount) {
            throw "an argument has no conversion";
        }
    }

    [[nodiscard]] constexpr std::string_view text() const { return m_format; }

private:
    std::string_view m_format;
};

/// The format with each conversion replaced by its argument. A conversion without an argument stays as it is written.
[[nodiscard]] QVL_EXPORT std::string QVLFormatWithArguments(std::string_view format,
                                                            const std::vector<QVLFormatArgument>& arguments);

/// The format with each conversion replaced by its argument, checked when it is compiled.
template <class... Arguments>
[[nodiscard]] std::string QVLStringWithFormat(QVLFormatString<std::type_identity_t<Arguments>...> format,
                                              const Arguments&... arguments) {
    return QVLFormatWithArguments(format.text(), {QVLFormatArgument(arguments)...});
}
