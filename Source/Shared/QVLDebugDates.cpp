#include "QVLDebugDates.h"

QDateTime qvl_dateTimeFromDate(QVLDate date) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(date.time_since_epoch());
    return QDateTime::fromMSecsSinceEpoch(milliseconds.count());
}

std::optional<QVLDate> qvl_dateFromDateTime(const QDateTime& dateTime) {
    constexpr int kLastYear = 9999;
    // Of a time that summer time skips only the combination is invalid.
    if (!dateTime.date().isValid() || !dateTime.time().isValid() || dateTime.date().year() < 1 ||
        dateTime.date().year() > kLastYear) {
        return std::nullopt;
    }
    return QVLDate(std::chrono::milliseconds(dateTime.toMSecsSinceEpoch()));
}
