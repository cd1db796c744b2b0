#pragma once

#include "QVLDate.h"

#include <QDateTime>

#include <optional>

/// The moment in the user's time zone.
[[nodiscard]] QDateTime qvl_dateTimeFromDate(QVLDate date);

/// A time in the hour that summer time skips is the one an hour later. No value for a date that does not exist, or whose
/// year has not between one and four digits.
[[nodiscard]] std::optional<QVLDate> qvl_dateFromDateTime(const QDateTime& dateTime);
