#pragma once

#include "QVLDate.h"
#include "QVLExport.h"

#include <optional>
#include <string>
#include <string_view>

/// Writes and reads every date of the library's JSON: "yyyy-MM-dd'T'HH:mm:ssZZZZZ" with the fixed locale "en_US_POSIX"
/// in GMT, for example "2021-03-04T05:06:07Z".
///
/// Reading is strict: every field has its full width and a value that exists (no 30 February, no 24:00), the letter T
/// stands between date and time, there are no fractions, and the zone is "Z" or an offset such as "+01:30". Stateless;
/// any thread.
class QVL_EXPORT QVLDateFormatter final {
public:
    /// Fractions of a second are cut off. A year outside 0 to 9999 is held at the nearest second that can be read back.
    [[nodiscard]] std::string stringFromDate(QVLDate date) const;

    /// The date, or no value for text of any other form.
    [[nodiscard]] std::optional<QVLDate> dateFromString(std::string_view text) const;

    /// The formatter that all share.
    [[nodiscard]] static const QVLDateFormatter& sharedFormatter();
};
