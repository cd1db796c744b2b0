#pragma once

#include "QVLDate.h"
#include "QVLJSONValue.h"

#include <cstdint>
#include <optional>
#include <utility>

/// How a value is shown and how text typed for it is read.
enum class QVLDebugValueType : std::int64_t {
    /// Objects, arrays, and everything that is not one of the others.
    QVLDebugValueTypeJSON = 0,
    QVLDebugValueTypeString = 1,
    QVLDebugValueTypeNumber = 2,
    QVLDebugValueTypeBool = 3,
    QVLDebugValueTypeNull = 4,
    /// Never chosen from a value; the journal's fields ask for it.
    QVLDebugValueTypeDate = 5,
};
using enum QVLDebugValueType;

/// What a row, a field or an override holds: nothing, a JSON value, or a date. An immutable value; any thread.
class QVLDebugValue final {
public:
    /// Nothing, which is not null.
    QVLDebugValue() = default;
    // Values are handed over as they are.
    // NOLINTBEGIN(google-explicit-constructor)
    QVLDebugValue(QVLJSONValue value) : m_JSONValue(std::move(value)) {}
    QVLDebugValue(QVLDate date) : m_date(date) {}
    QVLDebugValue(const std::optional<QVLDate>& date) : m_date(date) {}
    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] bool isNothing() const { return !m_date && m_JSONValue.isNothing(); }
    /// Nothing for a date.
    [[nodiscard]] const QVLJSONValue& JSONValue() const { return m_JSONValue; }
    /// No value for anything else.
    [[nodiscard]] const std::optional<QVLDate>& date() const { return m_date; }

    /// The type by which a value of its kind is shown; a date has to be asked for.
    [[nodiscard]] QVLDebugValueType type() const;

    /// Equal values that look alike too: the number 1 is not true here, at any depth.
    friend bool operator==(const QVLDebugValue& a, const QVLDebugValue& b);

private:
    QVLJSONValue m_JSONValue;
    std::optional<QVLDate> m_date;
};
