#include "QVLDebugScriptDateFormatter.h"

#include "QVLDebugDates.h"

#include <QRegularExpression>

std::string QVLDebugScriptDateFormatter::stringFromDate(QVLDate date, const QLocale& locale) const {
    const QDateTime dateTime = qvl_dateTimeFromDate(date);
    // The medium form is the short one with seconds, which are set off as the minutes are.
    static const QRegularExpression kMinutes("(?<separator>[^a-zA-Z\\s]*)m+");
    QString timeFormat = locale.timeFormat(QLocale::ShortFormat);
    const QRegularExpressionMatch minutes = kMinutes.match(timeFormat);
    if (minutes.hasMatch() && !timeFormat.contains('s')) {
        timeFormat.insert(minutes.capturedEnd(), minutes.captured("separator") + "ss");
    }
    const QString text =
        locale.toString(dateTime.date(), QLocale::ShortFormat) + ' ' + locale.toString(dateTime.time(), timeFormat);
    return text.toStdString();
}
