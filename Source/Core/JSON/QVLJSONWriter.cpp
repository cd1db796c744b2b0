#include "QVLJSONWriter.h"

#include "QVLJSONSerializable.h"
#include "QVLUTF8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t kIndent = 2;

/// What follows the backslash, 'u' for a control character without a short form, or 0 for a byte that stands for
/// itself.
constexpr std::array<char, 256> makeEscapes() {
    std::array<char, 256> escapes{};
    for (std::size_t control = 0; control < 0x20; ++control) {
        escapes[control] = 'u';
    }
    escapes['\b'] = 'b';
    escapes['\f'] = 'f';
    escapes['\n'] = 'n';
    escapes['\r'] = 'r';
    escapes['\t'] = 't';
    escapes['"'] = '"';
    escapes['\\'] = '\\';
    escapes['/'] = '/';
    return escapes;
}

constexpr std::array<char, 256> kEscapes = makeEscapes();
constexpr std::string_view kHexadecimal = "0123456789abcdef";

constexpr std::uint64_t everyByte(unsigned char byte) {
    return 0x0101010101010101U * byte;
}

/// The high bit of each byte that is zero; above such a byte others may be set too.
constexpr std::uint64_t zeroBytes(std::uint64_t bytes) {
    return (bytes - everyByte(1)) & ~bytes & everyByte(0x80);
}

constexpr bool isPlain(std::uint64_t bytes) {
    const std::uint64_t controls = (bytes - everyByte(0x20)) & ~bytes & everyByte(0x80);
    const std::uint64_t escaped =
        zeroBytes(bytes ^ everyByte('"')) | zeroBytes(bytes ^ everyByte('\\')) | zeroBytes(bytes ^ everyByte('/'));
    return ((bytes & everyByte(0x80)) | controls | escaped) == 0;
}

std::uint64_t eightBytes(const char* start) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, start, sizeof bytes);
    return bytes;
}

/// Whether every byte is ASCII and stands for itself, as in nearly all texts. Looks at eight bytes at once.
bool isPlain(std::string_view text) {
    constexpr std::size_t kStep = sizeof(std::uint64_t);
    if (text.size() < kStep) {
        return std::all_of(text.begin(), text.end(), [](unsigned char byte) { return byte < 0x80 && !kEscapes[byte]; });
    }
    for (std::size_t position = 0; position + kStep <= text.size(); position += kStep) {
        if (!isPlain(eightBytes(text.data() + position))) {
            return false;
        }
    }
    // What is left, together with some of what was looked at.
    return isPlain(eightBytes(text.data() + text.size() - kStep));
}

} // namespace

std::string QVLJSONWriter::describe(const QVLJSONValue& value) {
    QVLJSONWriter writer(QVLJSONSerialization::Writing::Compact);
    writer.write(value);
    return writer.takeText();
}

void QVLJSONWriter::write(const QVLJSONValue& value) {
    switch (value.kind()) {
    case QVLJSONValue::Kind::Null:
        append("null");
        return;
    case QVLJSONValue::Kind::Number:
        writeNumber(value);
        return;
    case QVLJSONValue::Kind::String:
        writeString(value.stringView());
        return;
    case QVLJSONValue::Kind::Array:
        writeArray(value.arrayOrEmpty());
        return;
    case QVLJSONValue::Kind::Dictionary:
        writeDictionary(value.dictionaryOrEmpty());
        return;
    case QVLJSONValue::Kind::Nothing:
        append("(null)");
        fail("a missing value");
        return;
    case QVLJSONValue::Kind::Record:
        append(value.recordValue()->description());
        fail("a value that is not JSON");
        return;
    }
}

void QVLJSONWriter::writeArray(const QVLJSONArray& array) {
    if (array.isEmpty()) {
        append("[]");
        return;
    }
    append('[');
    ++m_level;
    bool isFirst = true;
    for (const QVLJSONValue& element : array) {
        if (!isFirst) {
            append(',');
        }
        isFirst = false;
        writeLineBreak();
        write(element);
    }
    --m_level;
    writeLineBreak();
    append(']');
}

void QVLJSONWriter::writeDictionary(const QVLJSONDictionary& dictionary) {
    if (dictionary.isEmpty()) {
        append("{}");
        return;
    }
    if (const std::string& compact = dictionary.compactText(); !m_isPretty && !compact.empty()) {
        append(compact);
        return;
    }
    append('{');
    reserveForEntries(dictionary.count());
    ++m_level;
    bool isFirst = true;
    for (const QVLJSONDictionary::Entry& entry : dictionary) {
        if (!isFirst) {
            append(',');
        }
        isFirst = false;
        writeLineBreak();
        writeString(entry.key);
        append(m_isPretty ? " : " : ":");
        write(entry.value);
    }
    --m_level;
    writeLineBreak();
    append('}');
}

void QVLJSONWriter::writeNumber(const QVLJSONValue& number) {
    if (number.isBoolean()) {
        append(number.qvl_castToBoolValue() ? "true" : "false");
    } else if (!number.isInteger()) {
        writeDouble(number.doubleValue());
    } else if (number.doubleValue() < 0) {
        appendDigits(number.qvl_castToIntegerValue());
    } else {
        appendDigits(number.unsignedValue());
    }
}

void QVLJSONWriter::writeDouble(double number) {
    if (std::isfinite(number)) {
        appendDigits(number);
        return;
    }
    append(std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf");
    fail("a number that is not finite");
}

void QVLJSONWriter::writeString(std::string_view text) {
    if (!isPlain(text)) {
        writeEscaped(text);
        return;
    }
    char* const start = room(text.size() + 2);
    start[0] = '"';
    text.copy(start + 1, text.size());
    start[text.size() + 1] = '"';
    m_length += text.size() + 2;
}

void QVLJSONWriter::writeEscaped(std::string_view text) {
    if (!qvl::isValidUTF8(text)) {
        fail("a text that is not UTF-8");
    }
    append('"');
    std::size_t plainStart = 0;
    for (std::size_t position = 0; position < text.size(); ++position) {
        const auto byte = static_cast<unsigned char>(text[position]);
        const char escape = kEscapes[byte];
        if (!escape) {
            continue;
        }
        append(text.substr(plainStart, position - plainStart));
        plainStart = position + 1;
        append('\\');
        append(escape);
        if (escape == 'u') {
            append("00");
            append(kHexadecimal[byte >> 4]);
            append(kHexadecimal[byte & 0xF]);
        }
    }
    append(text.substr(plainStart));
    append('"');
}

void QVLJSONWriter::writeLineBreak() {
    if (m_isPretty) {
        append('\n');
        const std::size_t indent = m_level * kIndent;
        std::fill_n(room(indent), indent, ' ');
        m_length += indent;
    }
}

void QVLJSONWriter::fail(const char* reason) {
    if (m_error.empty()) {
        m_error = reason;
    }
}

std::string QVLJSONWriter::takeText() {
    m_text.resize(std::exchange(m_length, 0));
    return std::move(m_text);
}

void QVLJSONWriter::reserveForEntries(std::size_t count) {
    constexpr std::size_t kBytesOfEntry = 24;
    if (m_level == 0) {
        static_cast<void>(room(count * kBytesOfEntry));
    }
}

char* QVLJSONWriter::room(std::size_t count) {
    if (m_text.size() - m_length < count) {
        // What the string has without asking for memory comes first: many texts are a number or a word.
        m_text.resize(std::max({m_text.capacity(), m_text.size() * 2, m_length + count}));
    }
    return m_text.data() + m_length;
}

void QVLJSONWriter::append(std::string_view bytes) {
    bytes.copy(room(bytes.size()), bytes.size());
    m_length += bytes.size();
}

template <class Number>
void QVLJSONWriter::appendDigits(Number number) {
    std::array<char, 32> digits; // NOLINT(cppcoreguidelines-pro-type-member-init): filled at once
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    append(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
}
