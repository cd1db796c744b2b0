#pragma once

#include "QVLJSONNode.h"

#include <functional>
#include <string>
#include <string_view>

/// The text of a JSON string or of a dictionary's key: UTF-8, immutable, shared by every copy.
///
/// Any thread. Bytes are kept as given; text that is not valid UTF-8 is refused when it is written as JSON
/// (`QVLJSONSerialization`), not here.
class QVL_EXPORT QVLJSONString final {
public:
    class Node;

    /// The empty text.
    QVLJSONString() noexcept = default;
    QVLJSONString(std::string text);      // NOLINT(google-explicit-constructor): a text is a JSON text
    QVLJSONString(std::string_view text); // NOLINT(google-explicit-constructor)
    QVLJSONString(const char* text);      // NOLINT(google-explicit-constructor): nullptr is the empty text

    /// Valid for as long as any copy of this text lives.
    [[nodiscard]] const std::string& text() const noexcept;
    operator std::string_view() const noexcept { return text(); } // NOLINT(google-explicit-constructor)

    /// True when both share one content, which makes comparing unnecessary.
    [[nodiscard]] bool isIdentical(const QVLJSONString& other) const noexcept { return m_node == other.m_node; }

    friend bool operator==(const QVLJSONString& a, const QVLJSONString& b) noexcept {
        return a.isIdentical(b) || a.text() == b.text();
    }
    friend bool operator==(const QVLJSONString& a, std::string_view b) noexcept { return a.text() == b; }
    friend bool operator<(const QVLJSONString& a, const QVLJSONString& b) noexcept { return a.text() < b.text(); }

private:
    friend class QVLJSONValue;
    explicit QVLJSONString(QVLJSONNodePointer<Node> node) noexcept;

    QVLJSONNodePointer<Node> m_node;
};
