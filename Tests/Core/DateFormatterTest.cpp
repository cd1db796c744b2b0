#include "QVLDateFormatter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

const QVLDateFormatter& formatter() {
    return QVLDateFormatter::sharedFormatter();
}

QVLDate dateAt(std::int64_t secondsSince1970) {
    return QVLDate(seconds(secondsSince1970));
}

/// The time zone of the process, put back at the end.
class TimeZone final {
public:
    explicit TimeZone(const char* name) {
        if (const char* const old = std::getenv("TZ")) {
            m_old = old;
        }
        set(name);
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() { set(m_old ? m_old->c_str() : nullptr); }

private:
    static void set(const char* name) {
        name ? setenv("TZ", name, /*overwrite=*/1) : unsetenv("TZ");
        tzset();
    }
    std::optional<std::string> m_old;
};

TEST(DateFormatter, ReadsEveryDateThatExistsInItsOneForm) {
    struct Row {
        const char* text;
        std::int64_t secondsSince1970;
    };
    const std::vector<Row> rows = {
        {"1970-01-01T00:00:00Z", 0},
        {"2021-03-04T05:06:07Z", 1614834367},
        {"2021-03-04T05:06:07+00:00", 1614834367},
        {"2021-03-04T05:06:07-00:00", 1614834367},
        {"2021-03-04T05:06:07+01:30", 1614828967},
        {"2021-03-04T05:06:07-08:00", 1614863167},
        {"2021-03-04T05:06:07+23:59", 1614748027},
        {"2000-02-29T23:59:59Z", 951868799},
        {"1969-12-31T23:59:59Z", -1},
        {"0000-01-01T00:00:00Z", -62167219200},
        {"9999-12-31T23:59:59Z", 253402300799},
        {"9999-12-31T23:59:59-23:59", 253402387139},
    };
    for (const Row& row : rows) {
        const auto date = formatter().dateFromString(row.text);
        ASSERT_TRUE(date) << row.text;
        EXPECT_EQ(*date, dateAt(row.secondsSince1970)) << row.text;
    }
}

TEST(DateFormatter, RefusesEveryOtherText) {
    for (const char* text : {"",
                             "2021",
                             "2021-03-04",
                             "2021-03-04T05:06:07",
                             "2021-03-04T05:06Z",
                             "2021-03-04 05:06:07Z",
                             "2021-03-04t05:06:07Z",
                             "2021-03-04T05:06:07z",
                             "2021-03-04T05:06:07 Z",
                             " 2021-03-04T05:06:07Z",
                             "2021-03-04T05:06:07Z ",
                             "2021-03-04T05:06:07.5Z",
                             "2021-03-04T05:06:07ZZ",
                             "2021/03/04T05:06:07Z",
                             "21-03-04T05:06:07Z",
                             "12021-03-04T05:06:07Z",
                             "+2021-03-04T05:06:07Z",
                             "-021-03-04T05:06:07Z",
                             "2021-3-04T05:06:07Z",
                             "2021-03-4T05:06:07Z",
                             "2021-03-04T5:06:07Z",
                             "2021-00-04T05:06:07Z",
                             "2021-13-04T05:06:07Z",
                             "2021-03-00T05:06:07Z",
                             "2021-02-29T05:06:07Z",
                             "2021-02-30T05:06:07Z",
                             "1900-02-29T00:00:00Z",
                             "2021-04-31T05:06:07Z",
                             "2021-03-32T05:06:07Z",
                             "2021-03-04T24:00:00Z",
                             "2021-03-04T05:60:07Z",
                             "2021-03-04T05:06:60Z",
                             "2021-03-04T05:06:07+1:30",
                             "2021-03-04T05:06:07+01",
                             "2021-03-04T05:06:07+0130",
                             "2021-03-04T05:06:07+24:00",
                             "2021-03-04T05:06:07+01:60",
                             "2021-03-04T05:06:07+01:30:00",
                             "2021-03-04T05:06:07GMT",
                             "2021-03-04T05:06:0aZ",
                             "2021-03-04T05:06:\xD9\xA0\xD9\xA1Z"}) {
        EXPECT_FALSE(formatter().dateFromString(text)) << text;
    }
    EXPECT_FALSE(formatter().dateFromString(std::string("2021-03-04T05:06:07Z\0", 21)));
}

TEST(DateFormatter, EverySecondReadsBackAsItselfInEveryTimeZone) {
    for (const char* zone : {"America/St_Johns", "XXX-13:45YYY", "UTC0"}) {
        const TimeZone here(zone);
        std::mt19937_64 random(1); // NOLINT(cert-msc51-cpp): the same dates in every run
        std::uniform_int_distribution<std::int64_t> anySecond(-62135596800, 253402300799);
        for (int count = 0; count < 20000; ++count) {
            const QVLDate date = dateAt(anySecond(random));
            const std::string text = formatter().stringFromDate(date);
            ASSERT_EQ(formatter().dateFromString(text), date) << text << " in " << zone;
            ASSERT_EQ(text.size(), 20U) << text;
        }
    }
}

TEST(DateFormatter, CutsFractionsOffAndHoldsYearsThatCannotBeWritten) {
    EXPECT_EQ(formatter().stringFromDate(dateAt(0) + microseconds(999999)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(formatter().stringFromDate(dateAt(0) - microseconds(1)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(formatter().stringFromDate(dateAt(253402300800)), "9999-12-31T23:59:59Z");
    EXPECT_EQ(formatter().stringFromDate(dateAt(-62167219201)), "0000-01-01T00:00:00Z");
    EXPECT_EQ(formatter().stringFromDate(QVLDate::max()), "9999-12-31T23:59:59Z");
    EXPECT_EQ(formatter().stringFromDate(QVLDate::min()), "0000-01-01T00:00:00Z");
}

} // namespace
