#include "QVLJSONReader.h"

#include "QVLUTF8.h"

// The parser lives in a namespace of its own, so that a host that uses another version of it meets no clash.
#define RAPIDJSON_NAMESPACE qvl_rapidjson
#define RAPIDJSON_NAMESPACE_BEGIN namespace qvl_rapidjson {
#define RAPIDJSON_NAMESPACE_END }
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace {

namespace json = qvl_rapidjson;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
// Iterative: the text cannot exhaust the stack. Numbers as texts: the parser's own conversion is neither exact nor
// safe.
constexpr unsigned kParseFlags = json::kParseIterativeFlag | json::kParseNumbersAsStringsFlag;

/// The text as a number of the type; no value when it is none or does not fit.
template <class Number>
std::optional<Number> converted(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// Whether a number that no double comes near is beyond the largest; otherwise it is between zero and the smallest.
bool isBeyondLargest(std::string_view number) {
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const auto point = static_cast<std::int64_t>(std::min(number.find('.'), mark));
    const auto firstDigit = static_cast<std::int64_t>(number.find_first_of("123456789"));
    std::string_view exponent = number.substr(std::min(mark + 1, number.size()));
    exponent.remove_prefix(exponent.starts_with('+') ? 1 : 0);
    if (exponent.empty()) {
        return point > firstDigit;
    }
    const auto power = converted<std::int32_t>(exponent);
    return power ? point - firstDigit + *power > 0 : !exponent.starts_with('-');
}

/// The number that a JSON text means, in the first representation that holds it; no value beyond the largest double.
std::optional<QVLJSONValue> numberFromText(std::string_view text) {
    if (const auto integer = converted<std::int64_t>(text)) {
        return *integer;
    }
    if (const auto natural = converted<std::uint64_t>(text)) {
        return *natural;
    }
    if (const auto real = converted<double>(text)) {
        return *real;
    }
    return isBeyondLargest(text) ? std::nullopt : std::optional<QVLJSONValue>(0.0);
}

/// Gives one key for the many times that a document names its members alike, as a list of records does.
class KeyTable {
public:
    const QVLJSONString& keyFor(std::string_view text) {
        QVLJSONString& kept = m_keys[std::hash<std::string_view>()(text) % m_keys.size()];
        if (!(kept == text)) {
            kept = QVLJSONString(text);
        }
        return kept;
    }

private:
    std::array<QVLJSONString, 64> m_keys;
};

/// Builds values bottom up. Open containers are stacked; a finished one becomes a value of the one around it.
class ValueBuilder : public json::BaseReaderHandler<json::UTF8<>, ValueBuilder> {
public:
    explicit ValueBuilder(std::string_view data) : m_mayBeUnacceptable(mayHoldUnacceptableText(data)) {
        // Room for the values of a usual text: a growing vector moves them again and again.
        constexpr std::size_t kBytesOfValue = 16;
        m_values.reserve(data.size() / kBytesOfValue);
        m_keys.reserve(data.size() / kBytesOfValue);
    }

    bool Null() { return add(nullptr); }
    bool Bool(bool value) { return add(value); }
    bool RawNumber(const char* text, json::SizeType length, bool) {
        std::optional<QVLJSONValue> number = numberFromText({text, length});
        if (number) {
            return add(std::move(*number));
        }
        m_refusal = "Number too big to be stored in double.";
        return false;
    }
    bool String(const char* text, json::SizeType length, bool) {
        return isAcceptable({text, length}) && add(QVLJSONString(std::string_view(text, length)));
    }
    bool Key(const char* text, json::SizeType length, bool) {
        if (!isAcceptable({text, length})) {
            return false;
        }
        if (m_level > 1) {
            m_keys.push_back(m_keyTable.keyFor({text, length}));
        } else {
            // The outermost keys are all different.
            m_keys.emplace_back(std::string_view(text, length));
        }
        return true;
    }
    bool StartObject() { return open(); }
    bool StartArray() { return open(); }

    bool EndObject(json::SizeType count) {
        std::vector<QVLJSONDictionary::Entry> entries;
        entries.reserve(count);
        const auto firstKey = m_keys.end() - count;
        const auto firstValue = m_values.end() - count;
        for (json::SizeType index = 0; index < count; ++index) {
            entries.push_back({std::move(firstKey[index]), std::move(firstValue[index])});
        }
        m_keys.erase(firstKey, m_keys.end());
        m_values.erase(firstValue, m_values.end());
        --m_level;
        return add(QVLJSONDictionary(std::move(entries)));
    }
    bool EndArray(json::SizeType count) {
        const auto firstValue = m_values.end() - count;
        std::vector<QVLJSONValue> elements(std::make_move_iterator(firstValue),
                                           std::make_move_iterator(m_values.end()));
        m_values.erase(firstValue, m_values.end());
        --m_level;
        return add(QVLJSONArray(std::move(elements)));
    }

    [[nodiscard]] QVLJSONValue takeValue() { return std::move(m_values.front()); }
    /// Why the builder ended the parse itself; empty when it did not.
    [[nodiscard]] const std::string& refusal() const { return m_refusal; }

private:
    template <class Content>
    bool add(Content&& content) {
        m_values.emplace_back(std::forward<Content>(content));
        return true;
    }
    bool open() {
        if (++m_level <= QVLJSONValue::kMaximumDepth) {
            return true;
        }
        m_refusal = "Too many nested arrays or objects.";
        return false;
    }
    /// The parser's own test misses lone low surrogates, so each decoded text is looked at here.
    bool isAcceptable(std::string_view text) {
        if (!m_mayBeUnacceptable || qvl::isValidUTF8(text)) {
            return true;
        }
        m_refusal = "Invalid Unicode in string.";
        return false;
    }

    static bool mayHoldUnacceptableText(std::string_view data) {
        return qvl::asciiPrefixLength(data) < data.size() || data.find("\\u") != std::string_view::npos;
    }

    const bool m_mayBeUnacceptable;
    std::vector<QVLJSONValue> m_values;
    std::vector<QVLJSONString> m_keys;
    KeyTable m_keyTable;
    std::size_t m_level = 0;
    std::string m_refusal;
};

} // namespace

QVLJSONReadResult QVLReadJSON(std::string_view data) {
    const std::size_t skipped = data.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    json::MemoryStream stream(data.data() + skipped, data.size() - skipped);
    json::Reader reader;
    ValueBuilder builder(data);
    const json::ParseResult result = reader.Parse<kParseFlags>(stream, builder);
    if (!result) {
        const std::string reason =
            builder.refusal().empty() ? json::GetParseError_En(result.Code()) : builder.refusal();
        return {{}, reason + " (at byte " + std::to_string(result.Offset() + skipped) + ")"};
    }
    // The parser takes a NUL for the end of its text.
    if (stream.Tell() != data.size() - skipped) {
        return {{}, "Unexpected NUL. (at byte " + std::to_string(stream.Tell() + skipped) + ")"};
    }
    return {builder.takeValue(), {}};
}
