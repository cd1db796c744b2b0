#pragma once

#include "QVLJSONSerialization.h"

#include <string>

/// Appends one value to a text. Used by `QVLJSONSerialization`, and by descriptions, which must show even what cannot
/// be written.
class QVLJSONWriter final {
public:
    explicit QVLJSONWriter(QVLJSONSerialization::Writing writing)
        : m_isPretty(writing == QVLJSONSerialization::Writing::Pretty) {}
    QVLJSONWriter(const QVLJSONWriter&) = delete;
    QVLJSONWriter& operator=(const QVLJSONWriter&) = delete;

    void write(const QVLJSONValue& value);

    [[nodiscard]] std::string takeText();
    /// Why the text is not valid JSON; empty when it is.
    [[nodiscard]] const std::string& error() const { return m_error; }

    /// The value in the manner of JSON, whatever it holds.
    [[nodiscard]] static std::string describe(const QVLJSONValue& value);

private:
    void writeArray(const QVLJSONArray& array);
    void writeDictionary(const QVLJSONDictionary& dictionary);
    void writeNumber(const QVLJSONValue& number);
    void writeDouble(double number);
    void writeString(std::string_view text);
    void writeEscaped(std::string_view text);
    void writeLineBreak();
    void fail(const char* reason);

    /// Room for that many usual entries of the outermost dictionary: growing step by step moves a large text often.
    void reserveForEntries(std::size_t count);
    /// Where that many more bytes can be put.
    [[nodiscard]] char* room(std::size_t count);
    void append(char byte) {
        *room(1) = byte;
        ++m_length;
    }
    void append(std::string_view bytes);
    template <class Number>
    void appendDigits(Number number);

    /// Longer than what has been written: a text grows by every little piece, and asking the string to grow each time
    /// takes longer than putting the piece there.
    std::string m_text;
    std::size_t m_length = 0;
    std::string m_error;
    bool m_isPretty;
    std::size_t m_level = 0;
};
