#include "QVLJSONWriter.h"

#include "QVLJSONSerializable.h"
#include "QVLUTF8.h"

#include <array>
#include <charconv>
#include <cmath>

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

} // namespace

std::string QVLJSONWriter::describe(const QVLJSONValue& value) {
    QVLJSONWriter writer(QVLJSONSerialization::Writing::Compact);
    writer.write(value);
    return writer.takeText();
}

void QVLJSONWriter::write(const QVLJSONValue& value) {
    switch (value.kind()) {
    case QVLJSONValue::Kind::Null:
        m_text += "null";
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
        m_text += "(null)";
        fail("a missing value");
        return;
    case QVLJSONValue::Kind::Record:
        m_text += value.recordValue()->description();
        fail("a value that is not JSON");
        return;
    }
}

void QVLJSONWriter::writeArray(const QVLJSONArray& array) {
    if (array.isEmpty()) {
        m_text += "[]";
        return;
    }
    m_text += '[';
    ++m_level;
    bool isFirst = true;
    for (const QVLJSONValue& element : array) {
        if (!isFirst) {
            m_text += ',';
        }
        isFirst = false;
        writeLineBreak();
        write(element);
    }
    --m_level;
    writeLineBreak();
    m_text += ']';
}

void QVLJSONWriter::writeDictionary(const QVLJSONDictionary& dictionary) {
    if (dictionary.isEmpty()) {
        m_text += "{}";
        return;
    }
    if (const std::string& compact = dictionary.compactText(); !m_isPretty && !compact.empty()) {
        m_text += compact;
        return;
    }
    m_text += '{';
    ++m_level;
    bool isFirst = true;
    for (const QVLJSONDictionary::Entry& entry : dictionary) {
        if (!isFirst) {
            m_text += ',';
        }
        isFirst = false;
        writeLineBreak();
        writeString(entry.key);
        m_text += m_isPretty ? " : " : ":";
        write(entry.value);
    }
    --m_level;
    writeLineBreak();
    m_text += '}';
}

void QVLJSONWriter::writeNumber(const QVLJSONValue& number) {
    if (number.isBoolean()) {
        m_text += number.qvl_castToBoolValue() ? "true" : "false";
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
    m_text += std::isnan(number) ? "nan" : number < 0 ? "-inf" : "inf";
    fail("a number that is not finite");
}

template <class Number>
void QVLJSONWriter::appendDigits(Number number) {
    std::array<char, 32> digits; // NOLINT(cppcoreguidelines-pro-type-member-init): filled at once
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    m_text.append(digits.data(), end);
}

void QVLJSONWriter::writeString(std::string_view text) {
    if (!qvl::isValidUTF8(text)) {
        fail("a text that is not UTF-8");
    }
    m_text += '"';
    std::size_t plainStart = 0;
    for (std::size_t position = 0; position < text.size(); ++position) {
        const auto byte = static_cast<unsigned char>(text[position]);
        const char escape = kEscapes[byte];
        if (!escape) {
            continue;
        }
        m_text.append(text, plainStart, position - plainStart);
        plainStart = position + 1;
        m_text += '\\';
        m_text += escape;
        if (escape == 'u') {
            m_text += "00";
            m_text += kHexadecimal[byte >> 4];
            m_text += kHexadecimal[byte & 0xF];
        }
    }
    m_text.append(text, plainStart);
    m_text += '"';
}

void QVLJSONWriter::writeLineBreak() {
    if (m_isPretty) {
        m_text += '\n';
        m_text.append(m_level * kIndent, ' ');
    }
}

void QVLJSONWriter::fail(const char* reason) {
    if (m_error.empty()) {
        m_error = reason;
    }
}
