#pragma once

#include "QVLJSONValue.h"

#include <initializer_list>
#include <vector>

struct QVLRecordClass;

/// An immutable map from text to JSON value, kept in the order of the keys' bytes. A copy shares; any thread.
///
/// A member whose value is nothing is not kept: a dictionary either has a key or it has not.
class QVL_EXPORT QVLJSONDictionary final {
public:
    class Node;
    struct Entry {
        QVLJSONString key;
        QVLJSONValue value;
    };
    using const_iterator = const Entry*;

    /// Empty.
    QVLJSONDictionary() noexcept = default;
    /// Of entries with the same key the first one counts.
    QVLJSONDictionary(std::initializer_list<Entry> entries);
    explicit QVLJSONDictionary(std::vector<Entry> entries);

    /// The members of both; where both have a key, `over` wins.
    [[nodiscard]] static QVLJSONDictionary merged(const QVLJSONDictionary& under, const QVLJSONDictionary& over);

    /// Records made from the members of a dictionary, under the same keys; each is made with the class's
    /// `initWithQVLJSONObject`. Nothing gives no value. Throws `std::invalid_argument`: "Bad object: %@" for any other
    /// kind, and "Class must conform to QVLJSONCompatible protocol" for a class that is not a record's.
    [[nodiscard]] static std::optional<QVLJSONDictionary> dictionaryWithQVLJSONObject(const QVLJSONValue& JSONObject,
                                                                                      const QVLRecordClass& valueClass);

    [[nodiscard]] std::size_t count() const noexcept;
    [[nodiscard]] bool isEmpty() const noexcept { return count() == 0; }
    /// The value under the key, or nothing.
    [[nodiscard]] QVLJSONValue valueForKey(std::string_view key) const noexcept;
    [[nodiscard]] bool hasKey(std::string_view key) const noexcept;
    [[nodiscard]] std::vector<std::string> allKeys() const;
    [[nodiscard]] const_iterator begin() const noexcept;
    [[nodiscard]] const_iterator end() const noexcept;
    /// The first entry whose key does not come before the given one.
    [[nodiscard]] const_iterator lowerBound(std::string_view key) const noexcept;

    /// A dictionary that differs from this one in one member; nothing removes it.
    [[nodiscard]] QVLJSONDictionary withValueForKey(QVLJSONValue value, const QVLJSONString& key) const;

    /// The same dictionary, which from now on carries its compact JSON text: for what is written again and again as part
    /// of larger documents. One that is not valid JSON carries none.
    [[nodiscard]] QVLJSONDictionary withCompactText() const;
    /// The text that it carries, or an empty one. Valid for as long as a copy of this dictionary lives.
    [[nodiscard]] const std::string& compactText() const noexcept;

    [[nodiscard]] QVLJSONValue qvl_JSONObject() const;
    /// True when both are one and the same dictionary, which makes comparing unnecessary.
    [[nodiscard]] bool isIdentical(const QVLJSONDictionary& other) const noexcept { return m_node == other.m_node; }
    [[nodiscard]] std::string description() const { return QVLJSONValue(*this).description(); }
    [[nodiscard]] std::size_t depth() const noexcept;

    friend bool operator==(const QVLJSONDictionary& a, const QVLJSONDictionary& b) { return a.isEqual(b); }

private:
    friend class QVLJSONValue;
    explicit QVLJSONDictionary(QVLJSONNodePointer<Node> node) noexcept;
    [[nodiscard]] static QVLJSONDictionary fromSorted(std::vector<Entry> entries);
    [[nodiscard]] bool isEqual(const QVLJSONDictionary& other) const;

    QVLJSONNodePointer<Node> m_node;
};
