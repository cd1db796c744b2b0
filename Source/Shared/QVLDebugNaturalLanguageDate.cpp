#include "QVLDebugNaturalLanguageDate.h"

#include "QVLDateFormatter.h"
#include "QVLDebugDates.h"

#include <QRegularExpression>

#include <array>

namespace {

/// What a text is read against.
struct Context {
    QDateTime now;
    QLocale locale;
};

QRegularExpression expression(const char* pattern) {
    return QRegularExpression(QRegularExpression::anchoredPattern(QString::fromLatin1(pattern)));
}

std::optional<QTime> clockTime(const QRegularExpressionMatch& match) {
    const QString half = match.captured("half");
    int hour = match.captured("hour").toInt();
    constexpr int kHalfDay = 12;
    if (!half.isEmpty()) {
        if (hour < 1 || hour > kHalfDay) {
            return std::nullopt;
        }
        hour = hour % kHalfDay + (half.startsWith('p') ? kHalfDay : 0);
    }
    const QTime time(hour, match.captured("minute").toInt(), match.captured("second").toInt());
    return time.isValid() ? std::optional(time) : std::nullopt;
}

std::optional<QTime> timeOfDay(const QString& text, const Context& context) {
    static const QRegularExpression kWithMinutes =
        expression(R"((?<hour>\d{1,2}):(?<minute>\d{2})(?::(?<second>\d{2}))? ?(?<half>[ap]m)?)");
    static const QRegularExpression kFullHour = expression(R"((?<hour>\d{1,2}) ?(?<half>[ap]m))");
    if (text == "noon" || text == "midnight") {
        return QTime(text == "noon" ? 12 : 0, 0);
    }
    for (const QRegularExpression& form : {kWithMinutes, kFullHour}) {
        if (const QRegularExpressionMatch match = form.match(text); match.hasMatch()) {
            return clockTime(match);
        }
    }
    const QTime time = context.locale.toTime(text, QLocale::ShortFormat);
    return time.isValid() ? std::optional(time) : std::nullopt;
}

std::optional<qint64> amount(const QString& text) {
    static const std::array<const char*, 13> kWords = {"",      "one",   "two",  "three", "four",   "five",  "six",
                                                       "seven", "eight", "nine", "ten",   "eleven", "twelve"};
    if (text == "a" || text == "an") {
        return 1;
    }
    for (std::size_t number = 1; number < kWords.size(); ++number) {
        if (text == kWords[number]) {
            return static_cast<qint64>(number);
        }
    }
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

/// `unit` begins with the letters that tell the units apart.
QDateTime moved(const QDateTime& from, qint64 count, const QString& unit) {
    constexpr qint64 kMinute = 60;
    constexpr qint64 kHour = 3600;
    constexpr int kWeek = 7;
    if (unit.startsWith("s")) {
        return from.addSecs(count);
    }
    if (unit.startsWith("mo")) {
        return from.addMonths(static_cast<int>(count));
    }
    if (unit.startsWith("m")) {
        return from.addSecs(count * kMinute);
    }
    if (unit.startsWith("h")) {
        return from.addSecs(count * kHour);
    }
    if (unit.startsWith("d")) {
        return from.addDays(count);
    }
    return unit.startsWith("w") ? from.addDays(count * kWeek) : from.addYears(static_cast<int>(count));
}

std::optional<QDateTime> distance(const QString& text, const Context& context) {
    static const QRegularExpression kForm = expression(
        R"((?<ahead>in )?(?<count>\d{1,6}|[a-z]+) ?(?<unit>s|secs?|seconds?|m|mins?|minutes?|h|hrs?|hours?|d|days?|w|weeks?|months?|y|years?)(?<way> ago| from now)?)");
    const QRegularExpressionMatch match = kForm.match(text);
    // Either "in" before it or one of the others behind it tells the direction.
    if (!match.hasMatch() || match.captured("ahead").isEmpty() == match.captured("way").isEmpty()) {
        return std::nullopt;
    }
    const std::optional<qint64> count = amount(match.captured("count"));
    if (!count) {
        return std::nullopt;
    }
    return moved(context.now, match.captured("way") == " ago" ? -*count : *count, match.captured("unit"));
}

std::optional<int> weekday(const QString& name, const QLocale& locale) {
    for (const QLocale& language : {locale, QLocale(QLocale::English)}) {
        for (int day = Qt::Monday; day <= Qt::Sunday; ++day) {
            for (const auto format : {QLocale::LongFormat, QLocale::ShortFormat}) {
                if (language.dayName(day, format).toLower() == name ||
                    language.standaloneDayName(day, format).toLower() == name) {
                    return day;
                }
            }
        }
    }
    return std::nullopt;
}

std::optional<QDateTime> namedDay(const QString& text, const Context& context) {
    static const QRegularExpression kForm = expression(R"((?:(?<which>last|next|this|on) )?(?<day>\D+))");
    static const QRegularExpression kUnit = expression("week|month|year");
    const QRegularExpressionMatch match = kForm.match(text);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const QString which = match.captured("which");
    const QString day = match.captured("day");
    const bool isRelative = which == "last" || which == "next";
    if (isRelative && kUnit.match(day).hasMatch()) {
        return moved(context.now, which == "last" ? -1 : 1, day);
    }
    const std::optional<int> number = weekday(day, context.locale);
    if (!number) {
        return std::nullopt;
    }
    constexpr int kWeek = 7;
    const int ahead = (*number - context.now.date().dayOfWeek() + kWeek) % kWeek;
    if (which == "last") {
        return context.now.addDays(ahead - kWeek);
    }
    return context.now.addDays(ahead == 0 && which == "next" ? kWeek : ahead);
}

/// Where the year stands among the numbers that a format begins with.
int positionOfYear(const QString& format) {
    static const QRegularExpression kField("d+|M+|y+");
    int position = 0;
    auto field = kField.globalMatch(format);
    while (field.hasNext() && !field.next().captured().startsWith('y')) {
        ++position;
    }
    return position;
}

/// Counts years of two digits from the century that brings them nearest.
int fullYear(int year, int thisYear) {
    constexpr int kCentury = 100;
    const int inThisCentury = thisYear - thisYear % kCentury + year;
    if (inThisCentury - thisYear > kCentury / 2) {
        return inThisCentury - kCentury;
    }
    return thisYear - inThisCentury > kCentury / 2 ? inThisCentury + kCentury : inThisCentury;
}

/// Users write years of two and of four digits, whatever their locale's short form has.
QString withFullYear(const QString& text, const QString& format, const Context& context) {
    static const QRegularExpression kNumber("\\d+", QRegularExpression::UseUnicodePropertiesOption);
    auto numbers = kNumber.globalMatch(text);
    QRegularExpressionMatch year;
    for (int position = positionOfYear(format); position >= 0 && numbers.hasNext(); --position) {
        year = numbers.next();
    }
    constexpr qsizetype kShort = 2;
    if (year.capturedLength() != kShort) {
        return text;
    }
    QLocale locale = year.capturedView().front().unicode() < 0x80 ? QLocale::c() : context.locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    const QString full = locale.toString(fullYear(locale.toInt(year.captured()), context.now.date().year()));
    return text.left(year.capturedStart()) + full + text.mid(year.capturedEnd());
}

/// The format with years of four digits, and without zeros that would have to be typed before days and months.
QString lenient(QString format) {
    static const QRegularExpression kYear("y+");
    static const QRegularExpression kDayOrMonth("\\b(d|M)\\1\\b");
    return format.replace(kYear, "yyyy").replace(kDayOrMonth, "\\1");
}

std::optional<QDateTime> calendarDay(const QString& text, const Context& context) {
    // The form of ISO 8601 would also be found at the start of a longer text.
    constexpr qsizetype kLengthOfDay = 10;
    QDate date = text.size() == kLengthOfDay ? QDate::fromString(text, Qt::ISODate) : QDate();
    if (!date.isValid()) {
        const QString format = context.locale.dateFormat(QLocale::ShortFormat);
        date = context.locale.toDate(withFullYear(text, format, context), lenient(format));
    }
    return date.isValid() ? std::optional(QDateTime(date, context.now.time())) : std::nullopt;
}

std::optional<QDateTime> day(const QString& text, const Context& context) {
    if (text == "now" || text == "today") {
        return context.now;
    }
    if (text == "yesterday" || text == "tomorrow") {
        return context.now.addDays(text == "tomorrow" ? 1 : -1);
    }
    for (const auto read : {distance, namedDay, calendarDay}) {
        if (std::optional<QDateTime> found = read(text, context)) {
            return found;
        }
    }
    return std::nullopt;
}

/// A day and then a time: the text is cut at each blank in turn.
std::optional<QDateTime> dayAndTime(const QString& text, const Context& context) {
    for (qsizetype blank = text.indexOf(' '); blank > 0; blank = text.indexOf(' ', blank + 1)) {
        QString time = text.mid(blank + 1);
        if (time.startsWith("at ")) {
            time = time.mid(3);
        }
        const std::optional<QTime> foundTime = timeOfDay(time, context);
        const std::optional<QDateTime> foundDay = foundTime ? day(text.left(blank), context) : std::nullopt;
        if (foundDay) {
            return QDateTime(foundDay->date(), *foundTime);
        }
    }
    return std::nullopt;
}

std::optional<QDateTime> dateTime(const QString& text, const Context& context) {
    if (std::optional<QDateTime> found = day(text, context)) {
        return found;
    }
    static const QRegularExpression kDayTTime("(\\d)[tT](\\d)");
    if (QString spaced = text; spaced.replace(kDayTTime, "\\1 \\2") != text) {
        return dayAndTime(spaced, context);
    }
    if (const std::optional<QTime> time = timeOfDay(text.startsWith("at ") ? text.mid(3) : text, context)) {
        return QDateTime(context.now.date(), *time);
    }
    return dayAndTime(text, context);
}

std::optional<QDateTime> shortForm(const QString& text, const Context& context) {
    const QString format = context.locale.dateTimeFormat(QLocale::ShortFormat);
    const QDateTime found = context.locale.toDateTime(withFullYear(text, format, context), lenient(format));
    return found.date().isValid() ? std::optional(found) : std::nullopt;
}

} // namespace

std::optional<QVLDate> qvl_dateFromNaturalLanguage(std::string_view text, QVLDate now, const QLocale& locale) {
    if (const std::optional<QVLDate> date = QVLDateFormatter::sharedFormatter().dateFromString(text)) {
        return date;
    }
    constexpr qsizetype kLongest = 100;
    const QString typed = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).simplified();
    if (typed.isEmpty() || typed.size() > kLongest) {
        return std::nullopt;
    }
    const Context context = {qvl_dateTimeFromDate(now), locale};
    std::optional<QDateTime> found = dateTime(typed.toLower(), context);
    // The locale's own letters keep their case.
    for (const auto read : {shortForm, dateTime}) {
        found = found ? found : read(typed, context);
    }
    return found ? qvl_dateFromDateTime(*found) : std::nullopt;
}
