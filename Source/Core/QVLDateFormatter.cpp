#include "QVLDateFormatter.h"

#include <algorithm>
#include <array>
#include <cstdio>

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
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
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
