#pragma once

#include "QVLDate.h"

#include <optional>
#include <string>
#include <string_view>

/// Dates as "yyyy-MM-dd HH:mm:ss" in the user's time zone, in any locale. Stateless; any thread.
class QVLDebugDateFormatter final {
public:
    /// Fractions of a second are cut off.
    [[nodiscard]] std::string stringFromDate(QVLDate date) const;

    /// No value for text of any other form.
    [[nodiscard]] std::optional<QVLDate> dateFromString(std::string_view text) const;
};
