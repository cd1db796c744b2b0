#include "QVLFormat.h"

#include <cstdio>

namespace {

template <class... Values>
std::string printed(const std::string& format, Values... values) {
    const int length = std::snprintf(nullptr, 0, format.c_str(), values...);
    if (length <= 0) {
        return {};
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), format.c_str(), values...);
    text.pop_back();
    return text;
}

/// The host may have chosen a locale with another decimal separator, which texts of the library do not follow.
std::string withPoint(std::string text) {
    const std::string half = printed("%.1f", 0.5);
    const std::string separator = half.substr(1, half.size() - 2);
    if (const std::size_t found = text.find(separator); found != std::string::npos) {
        text.replace(found, separator.size(), ".");
    }
    return text;
}

/// The flags, width and precision of a conversion, without its length marks and letter.
std::string flagsOf(std::string_view conversion) {
    return std::string(conversion.substr(0, conversion.find_first_of("hlqzjt", 1) < conversion.size() - 1
                                                ? conversion.find_first_of("hlqzjt", 1)
                                                : conversion.size() - 1));
}

bool isNumberLetter(char letter) {
    return std::string_view("diuxXocfFeEgG").find(letter) != std::string_view::npos;
}

} // namespace

QVLFormatArgument::QVLFormatArgument(const std::vector<std::string>& texts)
    : QVLFormatArgument(QVLJSONArray::fromStrings(texts)) {}

std::string QVLFormatArgument::textForConversion(std::string_view conversion) const {
    const char letter = conversion.back();
    if (const auto* text = std::get_if<std::string>(&m_value)) {
        return *text;
    }
    if (const auto* real = std::get_if<double>(&m_value)) {
        return isNumberLetter(letter) ? withPoint(printed(flagsOf(conversion) + letter, *real))
                                      : QVLJSONValue(*real).description();
    }
    const auto* natural = std::get_if<unsigned long long>(&m_value);
    const long long bits = natural ? static_cast<long long>(*natural) : std::get<long long>(m_value);
    if (letter == 'c') {
        return printed(flagsOf(conversion) + letter, static_cast<int>(bits));
    }
    if (isNumberLetter(letter)) {
        return printed(flagsOf(conversion) + "ll" + letter, bits);
    }
    return natural ? std::to_string(*natural) : std::to_string(bits);
}

std::string QVLFormatWithArguments(std::string_view format, const std::vector<QVLFormatArgument>& arguments) {
    std::string result;
    std::size_t position = 0;
    std::size_t used = 0;
    for (auto found = qvl::nextFormatConversion(format, 0); found.isFound();
         found = qvl::nextFormatConversion(format, position)) {
        result.append(format, position, found.start - position);
        position = found.start + found.length;
        const std::string_view conversion = format.substr(found.start, found.length);
        if (conversion.back() == '%') {
            result += '%';
        } else if (used < arguments.size()) {
            result += arguments[used++].textForConversion(conversion);
        } else {
            result += conversion;
        }
    }
    result.append(format, position);
    return result;
}
