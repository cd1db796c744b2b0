#pragma once

#include "QVLJSONValue.h"

#include <initializer_list>
#include <vector>

struct QVLRecordClass;

/// An ordered, immutable list of JSON values. A copy shares; any thread.
class QVL_EXPORT QVLJSONArray final {
public:
    class Node;
    using const_iterator = const QVLJSONValue*;

    /// Empty.
    QVLJSONArray() noexcept = default;
    /// An element that is nothing becomes null, since an array has no gaps.
    QVLJSONArray(std::initializer_list<QVLJSONValue> values);
    explicit QVLJSONArray(std::vector<QVLJSONValue> values);

    [[nodiscard]] static QVLJSONArray fromStrings(const std::vector<std::string>& texts);

    /// Records made from the elements of an array, in order; each is made with the class's `initWithQVLJSONObject`.
    /// Nothing gives no value. Throws `std::invalid_argument`: "Bad array object: %@" for any other kind, and "Class
    /// must conform to QVLJSONCompatible protocol" for a class that is not a record's.
    [[nodiscard]] static std::optional<QVLJSONArray> arrayWithQVLJSONArray(const QVLJSONValue& JSONArray,
                                                                           const QVLRecordClass& valueClass);

    [[nodiscard]] std::size_t count() const noexcept;
    [[nodiscard]] bool isEmpty() const noexcept { return count() == 0; }
    /// Nothing past the end.
    [[nodiscard]] QVLJSONValue valueAtIndex(std::size_t index) const noexcept;
    [[nodiscard]] const_iterator begin() const noexcept;
    [[nodiscard]] const_iterator end() const noexcept;

    [[nodiscard]] QVLJSONValue qvl_JSONObject() const;
    [[nodiscard]] bool isIdentical(const QVLJSONArray& other) const noexcept { return m_node == other.m_node; }
    [[nodiscard]] std::size_t depth() const noexcept;

    friend bool operator==(const QVLJSONArray& a, const QVLJSONArray& b) { return a.isEqual(b); }

private:
    friend class QVLJSONValue;
    explicit QVLJSONArray(QVLJSONNodePointer<Node> node) noexcept;
    [[nodiscard]] bool isEqual(const QVLJSONArray& other) const;

    QVLJSONNodePointer<Node> m_node;
};
