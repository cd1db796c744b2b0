#include "QVLDateFormatter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using std::chrono::microseconds;
using std::chrono::seconds;

const QVLDateFormatter& formatter() {
    return QVLDateFormatter::sharedFormatter();
}

QVLDate dateAt(std::int64_t secondsSince1970) {
    return QVLDate(seconds(secondsSince1970));
}

TEST(DateFormatter, ReadsEveryDateThatExistsInItsOneForm) {
    struct Row {
        const char* text;
        std::int64_t secondsSince1970;
    };
    const std::vector<Row> rows = {
        {"1970-01-01T00:00:00Z", 0},
        {"2021-03-04T05:06:07Z", 1614834367},
        {"2021-03-04T05:06:07+00:00", 1614834367},
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
    std::istringstream texts(
        "|2021|2021-03-04|2021-03-04T05:06:07|2021-03-04T05:06Z|2021-03-04 05:06:07Z|2021-03-04t05:06:07Z|"
        "2021-03-04T05:06:07z|2021-03-04T05:06:07 Z| 2021-03-04T05:06:07Z|2021-03-04T05:06:07Z |"
        "2021-03-04T05:06:07.5Z|2021-03-04T05:06:07ZZ|2021/03/04T05:06:07Z|21-03-04T05:06:07Z|"
        "12021-03-04T05:06:07Z|+2021-03-04T05:06:07Z|-021-03-04T05:06:07Z|2021-3-04T05:06:07Z|"
        "2021-03-4T05:06:07Z|2021-03-04T5:06:07Z|2021-00-04T05:06:07Z|2021-13-04T05:06:07Z|"
        "2021-03-00T05:06:07Z|2021-02-29T05:06:07Z|2021-02-30T05:06:07Z|1900-02-29T00:00:00Z|"
        "2021-04-31T05:06:07Z|2021-03-32T05:06:07Z|2021-03-04T24:00:00Z|2021-03-04T05:60:07Z|"
        "2021-03-04T05:06:60Z|2021-03-04T05:06:0aZ|2021-03-04T05:06:07+1:30|2021-03-04T05:06:07+01|"
        "2021-03-04T05:06:07+0130|2021-03-04T05:06:07+24:00|2021-03-04T05:06:07+01:60|"
        "2021-03-04T05:06:07+01:30:00|2021-03-04T05:06:07GMT|2021-03-04T05:06:07Z\0"s);
    for (std::string text; std::getline(texts, text, '|');) {
        EXPECT_FALSE(formatter().dateFromString(text)) << text;
    }
}

TEST(DateFormatter, EverySecondReadsBackAsItselfInEveryTimeZone) {
    std::mt19937_64 random(1); // NOLINT(cert-msc51-cpp): the same dates in every run
    std::uniform_int_distribution<std::int64_t> anySecond(-62135596800, 253402300799);
    for (const char* zone : {"America/St_Johns", "XXX-13:45YYY", "UTC0"}) {
        setenv("TZ", zone, /*overwrite=*/1);
        tzset();
        for (int count = 0; count < 20000; ++count) {
            const QVLDate date = dateAt(anySecond(random));
            const std::string text = formatter().stringFromDate(date);
            ASSERT_EQ(formatter().dateFromString(text), date) << text << " in " << zone;
            ASSERT_EQ(text.size(), 20U) << text;
        }
    }
    unsetenv("TZ");
    tzset();
}

TEST(DateFormatter, CutsFractionsOffAndHoldsYearsThatCannotBeWritten) {
    EXPECT_EQ(formatter().stringFromDate(dateAt(0) + microseconds(999999)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(formatter().stringFromDate(dateAt(0) - microseconds(1)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(formatter().stringFromDate(QVLDate::max()), "9999-12-31T23:59:59Z");
    EXPECT_EQ(formatter().stringFromDate(QVLDate::min()), "0000-01-01T00:00:00Z");
}

} // namespace
