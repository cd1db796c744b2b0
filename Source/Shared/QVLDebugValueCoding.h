#pragma once

#include "QVLDebugDateFormatter.h"
#include "QVLDebugNumberFormatter.h"
#include "QVLDebugValue.h"

#include <optional>
#include <string>
#include <string_view>

/// Values as text that is shown and edited, by the type of the value that is shown. Main thread.
class QVLDebugValueCoding final {
public:
    QVLDebugNumberFormatter numberFormatter;
    QVLDebugDateFormatter dateFormatter;

    /// The text of a value, which may be of another kind than the type says, as an override may be.
    ///
    /// No value where there is nothing to write: for null, for a number or a date that is none, and for every value
    /// shown by the type null. Empty for nothing and for booleans, which have a checkbox. A value that is no valid JSON
    /// is no value after the error line "Invalid JSON object: %@".
    [[nodiscard]] std::optional<std::string> stringFromValue(const QVLDebugValue& value, QVLDebugValueType type) const;

    /// The value that a text typed for the type means.
    ///
    /// The empty text is null. Otherwise JSON (any value, not only objects and arrays), a number, a boolean, a date
    /// (in the formatter's form or in natural language), or for every other type the text itself. Nothing for text
    /// that does not parse.
    [[nodiscard]] QVLDebugValue valueFromString(std::string_view text, QVLDebugValueType type) const;
};
