#include "QVLDebugDateFormatter.h"

#include "QVLDebugDates.h"

#include <QLocale>

namespace {

constexpr const char* kPattern = "yyyy-MM-dd HH:mm:ss";

} // namespace

std::string QVLDebugDateFormatter::stringFromDate(QVLDate date) const {
    return QLocale::c().toString(qvl_dateTimeFromDate(date), kPattern).toStdString();
}

std::optional<QVLDate> QVLDebugDateFormatter::dateFromString(std::string_view text) const {
    const QString typed = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return qvl_dateFromDateTime(QLocale::c().toDateTime(typed, kPattern));
}
