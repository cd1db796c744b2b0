#include "QVLDateFormatter.h"

#include <algorithm>

namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using Seconds = std::chrono::sys_seconds;

const Seconds kEarliest = std::chrono::sys_days(std::chrono::year(0) / 1 / 1);
const Seconds kLatest = std::chrono::sys_days(std::chrono::year(10000) / 1 / 1) - seconds(1);

/// Reads a date text from left to right. After the first thing that does not fit, everything comes to nothing.
class FieldReader {
public:
    explicit FieldReader(std::string_view text) : m_rest(text) {}

    /// A number of exactly this many digits and no more than the limit.
    int number(std::size_t digits, int limit) {
        int value = 0;
        for (std::size_t index = 0; index < digits; ++index) {
            const char digit = index < m_rest.size() ? m_rest[index] : '\0';
            m_isGood = m_isGood && digit >= '0' && digit <= '9';
            value = value * 10 + (digit - '0');
        }
        m_rest.remove_prefix(std::min(digits, m_rest.size()));
        m_isGood = m_isGood && value <= limit;
        return m_isGood ? value : 0;
    }
    void expect(char character) {
        m_isGood = m_isGood && m_rest.starts_with(character);
        m_rest.remove_prefix(m_rest.empty() ? 0 : 1);
    }
    bool skip(char character) {
        const bool isThere = m_rest.starts_with(character);
        m_rest.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }
    [[nodiscard]] bool isAtGoodEnd() const { return m_isGood && m_rest.empty(); }

private:
    std::string_view m_rest;
    bool m_isGood = true;
};

/// Journals are full of dates, and the C library's formatting takes five times as long.
void putDigits(std::string& text, std::size_t position, std::size_t count, unsigned number) {
    for (std::size_t digit = count; digit-- > 0; number /= 10) {
        text[position + digit] = static_cast<char>('0' + number % 10);
    }
}

seconds zoneOffset(FieldReader& reader) {
    if (reader.skip('Z')) {
        return seconds(0);
    }
    const bool isWest = reader.skip('-');
    if (!isWest) {
        reader.expect('+');
    }
    const hours wholeHours(reader.number(2, 23));
    reader.expect(':');
    const seconds offset = wholeHours + minutes(reader.number(2, 59));
    return isWest ? -offset : offset;
}

} // namespace

std::string QVLDateFormatter::stringFromDate(QVLDate date) const {
    const Seconds second = std::clamp(std::chrono::floor<seconds>(date), kEarliest, kLatest);
    const auto midnight = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day day(midnight);
    const std::chrono::hh_mm_ss time(second - midnight);
    std::string text = "0000-00-00T00:00:00Z";
    putDigits(text, 0, 4, static_cast<unsigned>(static_cast<int>(day.year())));
    putDigits(text, 5, 2, static_cast<unsigned>(day.month()));
    putDigits(text, 8, 2, static_cast<unsigned>(day.day()));
    putDigits(text, 11, 2, static_cast<unsigned>(time.hours().count()));
    putDigits(text, 14, 2, static_cast<unsigned>(time.minutes().count()));
    putDigits(text, 17, 2, static_cast<unsigned>(time.seconds().count()));
    return text;
}

std::optional<QVLDate> QVLDateFormatter::dateFromString(std::string_view text) const {
    FieldReader reader(text);
    const std::chrono::year year(reader.number(4, 9999));
    reader.expect('-');
    const std::chrono::month month(static_cast<unsigned>(reader.number(2, 12)));
    reader.expect('-');
    const std::chrono::year_month_day day(year, month, std::chrono::day(static_cast<unsigned>(reader.number(2, 31))));
    reader.expect('T');
    seconds time = hours(reader.number(2, 23));
    reader.expect(':');
    time += minutes(reader.number(2, 59));
    reader.expect(':');
    time += seconds(reader.number(2, 59));
    const seconds offset = zoneOffset(reader);
    if (!reader.isAtGoodEnd() || !day.ok()) {
        return std::nullopt;
    }
    return std::chrono::sys_days(day) + time - offset;
}

const QVLDateFormatter& QVLDateFormatter::sharedFormatter() {
    static const QVLDateFormatter formatter;
    return formatter;
}
