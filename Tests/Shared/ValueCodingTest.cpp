#include "QVLDebugDates.h"
#include "QVLDebugFilterPredicate.h"
#include "QVLDebugNaturalLanguageDate.h"
#include "QVLDebugRows.h"
#include "QVLDebugScriptDateFormatter.h"
#include "QVLDebugValueCoding.h"
#include "TestPlatform.h"

#include "RecordingLogger.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <random>

namespace {

using ::testing::ElementsAre;

QVLDate dateAt(const char* text) {
    return QVLDebugDateFormatter().dateFromString(text).value();
}

TEST(NumberFormatterTest, EveryLocaleReadsBackWhatItWrites) {
    const std::vector<QVLJSONValue> numbers = {0,
                                               -1,
                                               1234567,
                                               std::numeric_limits<std::int64_t>::min(),
                                               std::numeric_limits<std::uint64_t>::max(),
                                               0.1,
                                               -1234.5,
                                               1e300,
                                               -3422222222222222222.7,
                                               1.5e19,
                                               -2.5e-7,
                                               1234567.125};
    for (const QLocale& locale :
         QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory)) {
        const QVLDebugNumberFormatter formatter(locale);
        for (const QVLJSONValue& number : numbers) {
            const std::string text = formatter.stringFromNumber(number).value();
            EXPECT_EQ(formatter.numberFromString(text), number) << locale.name().toStdString() << " wrote " << text;
        }
    }
}

TEST(NumberFormatterTest, FollowsTheLocaleAndRefusesWhatIsNoNumber) {
    const QVLDebugNumberFormatter german(QLocale("de_DE"));
    EXPECT_EQ(german.stringFromNumber(1234.5), "1234,5");
    EXPECT_EQ(german.numberFromString("1.234,5"), QVLJSONValue(1234.5));
    EXPECT_EQ(german.stringFromNumber("12"), std::nullopt);
    for (const char* text : {"", "twelve", "1,2,3", "0x10", "nan", "inf", "1e999", "12 apples"}) {
        EXPECT_TRUE(german.numberFromString(text).isNothing()) << text;
    }
}

class ValueCodingTest : public ::testing::Test {
protected:
    ValueCodingTest() {
        platform.install();
        platform.runLoop->setNow(dateAt("2026-11-23 14:30:15"));
    }

    TestPlatform platform;
    RecordedLog log;
    QVLDebugValueCoding coding;
};

TEST_F(ValueCodingTest, ATypedTextIsReadByTheTypeOfTheValueShown) {
    EXPECT_EQ(coding.valueFromString("42", QVLDebugValueTypeString), QVLDebugValue("42"));
    EXPECT_EQ(coding.valueFromString("42", QVLDebugValueTypeNumber), QVLDebugValue(42));
    EXPECT_EQ(coding.valueFromString("42", QVLDebugValueTypeNull), QVLDebugValue("42"));
    EXPECT_EQ(coding.valueFromString(R"({"a":[1]})", QVLDebugValueTypeJSON),
              QVLDebugValue(QVLJSONValue(QVLJSONDictionary{{"a", QVLJSONArray{1}}})));
    EXPECT_EQ(coding.valueFromString("\"a\"", QVLDebugValueTypeJSON), QVLDebugValue("a"));
    EXPECT_EQ(coding.valueFromString("yes", QVLDebugValueTypeBool), QVLDebugValue(true));
    EXPECT_EQ(coding.valueFromString("0", QVLDebugValueTypeBool), QVLDebugValue(false));
    EXPECT_EQ(coding.valueFromString("2026-01-02 03:04:05", QVLDebugValueTypeDate), dateAt("2026-01-02 03:04:05"));
    EXPECT_EQ(coding.valueFromString("yesterday", QVLDebugValueTypeDate), dateAt("2026-11-22 14:30:15"));
    EXPECT_EQ(coding.stringFromValue(QVLJSONValue(nullptr), QVLDebugValueTypeJSON), std::nullopt);
}

TEST_F(ValueCodingTest, AnEmptyTextIsNullAndOneThatDoesNotParseIsNothing) {
    for (const auto type : {QVLDebugValueTypeJSON, QVLDebugValueTypeString, QVLDebugValueTypeNumber,
                            QVLDebugValueTypeNull, QVLDebugValueTypeDate}) {
        EXPECT_EQ(coding.valueFromString("", type), QVLDebugValue(nullptr));
    }
    EXPECT_TRUE(coding.valueFromString("{\"a\":", QVLDebugValueTypeJSON).isNothing());
    EXPECT_TRUE(coding.valueFromString("no UTF-8: \xb1", QVLDebugValueTypeString).isNothing());
    EXPECT_TRUE(coding.valueFromString("many", QVLDebugValueTypeNumber).isNothing());
    EXPECT_TRUE(coding.valueFromString("the day after the fair", QVLDebugValueTypeDate).isNothing());
}

TEST_F(ValueCodingTest, AValueThatIsNoJSONHasNoTextAndIsLogged) {
    EXPECT_EQ(coding.stringFromValue(QVLJSONValue(QVLJSONArray{std::numeric_limits<double>::infinity()}),
                                     QVLDebugValueTypeJSON),
              std::nullopt);
    ASSERT_EQ(log->lines().size(), 1U);
    EXPECT_EQ(log->lines()[0].level, QVLLogLevelError);
    EXPECT_THAT(log->lines()[0].message, ::testing::StartsWith("Invalid JSON object: "));
}

TEST_F(ValueCodingTest, TextsOfEachTypeAreReadBackAsTheValue) {
    const std::vector<std::pair<QVLDebugValue, QVLDebugValueType>> values = {
        {QVLJSONValue(QVLJSONDictionary{{"a/b", QVLJSONArray{1, "ü", nullptr, false}}}), QVLDebugValueTypeJSON},
        {QVLJSONValue("a text"), QVLDebugValueTypeString},
        {QVLJSONValue(0.1), QVLDebugValueTypeNumber},
        {dateAt("2026-11-23 14:30:15"), QVLDebugValueTypeDate}};
    for (const auto& [value, type] : values) {
        EXPECT_EQ(coding.valueFromString(coding.stringFromValue(value, type).value(), type), value);
    }
}

TEST_F(ValueCodingTest, AnyBytesTypedForAnyTypeGiveAValueOrNothing) {
    // Whatever is accepted must be a value that the engine can write, and have a text of its own.
    std::mt19937 random(20261123); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same bytes on every run
    const std::string likely = "0123456789-+.eE:/ {}[]\",ntfagoinlsmdywhx\xc3\xbc";
    for (int round = 0; round < 20'000; ++round) {
        std::string text(random() % 24, ' ');
        for (char& byte : text) {
            byte = random() % 4 == 0 ? static_cast<char>(random()) : likely[random() % likely.size()];
        }
        for (int type = 0; type <= 5; ++type) {
            const auto shownAs = static_cast<QVLDebugValueType>(type);
            const QVLDebugValue value = coding.valueFromString(text, shownAs);
            EXPECT_FALSE(text.empty() && !value.JSONValue().isNull());
            static_cast<void>(coding.stringFromValue(value, shownAs));
        }
    }
}

struct DateRow {
    const char* text;
    const char* date;
};

class NaturalLanguageDateTest : public ::testing::Test {
protected:
    // A Monday.
    const QVLDate now = dateAt("2026-11-23 14:30:15");
    const QLocale english{"en_US"};
};

TEST_F(NaturalLanguageDateTest, ReadsDaysDistancesWeekdaysAndTimes) {
    for (const DateRow& row : {DateRow{"now", "2026-11-23 14:30:15"},
                               {"Today", "2026-11-23 14:30:15"},
                               {"yesterday", "2026-11-22 14:30:15"},
                               {" TOMORROW ", "2026-11-24 14:30:15"},
                               {"5 minutes ago", "2026-11-23 14:25:15"},
                               {"an hour ago", "2026-11-23 13:30:15"},
                               {"in 3 hours", "2026-11-23 17:30:15"},
                               {"3 days ago", "2026-11-20 14:30:15"},
                               {"two weeks from now", "2026-12-07 14:30:15"},
                               {"in 3 months", "2027-02-23 14:30:15"},
                               {"1 year ago", "2025-11-23 14:30:15"},
                               {"monday", "2026-11-23 14:30:15"},
                               {"next monday", "2026-11-30 14:30:15"},
                               {"last monday", "2026-11-16 14:30:15"},
                               {"fri", "2026-11-27 14:30:15"},
                               {"last week", "2026-11-16 14:30:15"},
                               {"noon", "2026-11-23 12:00:00"},
                               {"yesterday at 5pm", "2026-11-22 17:00:00"},
                               {"tomorrow 07:05", "2026-11-24 07:05:00"},
                               {"12 am", "2026-11-23 00:00:00"},
                               {"2026-01-31", "2026-01-31 14:30:15"},
                               {"2026-01-31 08:00", "2026-01-31 08:00:00"},
                               {"2026-01-31T08:00", "2026-01-31 08:00:00"},
                               {"1/31/26", "2026-01-31 14:30:15"},
                               {"1/31/2026", "2026-01-31 14:30:15"},
                               {"2/29/00", "2000-02-29 14:30:15"},
                               {"1/31/77", "1977-01-31 14:30:15"},
                               {"1/31/2026 8:05 AM", "2026-01-31 08:05:00"},
                               {"1/31/26 8:05 AM", "2026-01-31 08:05:00"}}) {
        const auto date = qvl_dateFromNaturalLanguage(row.text, now, english);
        EXPECT_EQ(date ? QVLDebugDateFormatter().stringFromDate(*date) : "none", row.date) << row.text;
    }
    EXPECT_EQ(qvl_dateFromNaturalLanguage("2026-11-23T10:00:00+01:00", now, english),
              QVLDate(std::chrono::sys_days(std::chrono::year(2026) / 11 / 23) + std::chrono::hours(9)));
    EXPECT_EQ(qvl_dateFromNaturalLanguage("letzten freitag", now, QLocale("de_DE")), std::nullopt);
    EXPECT_EQ(qvl_dateFromNaturalLanguage("Freitag", now, QLocale("de_DE")), dateAt("2026-11-27 14:30:15"));
    for (const auto& [text, locale] : {std::pair{"31.01.26", "de_DE"},
                                       {"31.1.2026", "de_DE"},
                                       {"31/01/26", "fr_FR"},
                                       {"31/01/2026", "fr_FR"},
                                       {"2026/01/31", "ja_JP"},
                                       {"31/1/26", "es_ES"}}) {
        EXPECT_EQ(qvl_dateFromNaturalLanguage(text, now, QLocale(locale)), dateAt("2026-01-31 14:30:15")) << text;
    }
}

/// Lets a test live in another time zone.
class TimeZoneForTests final {
public:
    explicit TimeZoneForTests(const char* zone) : m_before(qgetenv("TZ")) { use(zone); }
    TimeZoneForTests(const TimeZoneForTests&) = delete;
    TimeZoneForTests& operator=(const TimeZoneForTests&) = delete;
    ~TimeZoneForTests() { use(m_before.isNull() ? nullptr : m_before.constData()); }

private:
    static void use(const char* zone) {
        if (zone) {
            qputenv("TZ", zone);
        } else {
            qunsetenv("TZ");
        }
        tzset();
    }
    const QByteArray m_before;
};

TEST_F(NaturalLanguageDateTest, ATimeThatSummerTimeSkipsIsTheOneAnHourLater) {
    const TimeZoneForTests zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(dateAt("2026-03-29 02:30:00"), dateAt("2026-03-29 03:30:00"));
    EXPECT_EQ(qvl_dateFromNaturalLanguage("tomorrow at 2:30", dateAt("2026-03-28 12:00:00"), english),
              dateAt("2026-03-29 03:30:00"));
    EXPECT_EQ(qvl_dateFromNaturalLanguage("3/29/26", dateAt("2026-03-28 02:30:00"), english),
              dateAt("2026-03-29 03:30:00"));
}

TEST(ScriptDateFormatterTest, WritesShortDatesAndTimesWithSecondsAsTheLocaleDoes) {
    const QVLDebugScriptDateFormatter formatter;
    const QVLDate date = dateAt("2026-11-23 14:30:15");
    for (const auto& [locale, text] : {std::pair{"en_US", "11/23/26 2:30:15 PM"},
                                       {"de_DE", "23.11.26 14:30:15"},
                                       {"ja_JP", "2026/11/23 14:30:15"},
                                       {"fi_FI", "23.11.2026 14.30.15"},
                                       {"C", "23 Nov 2026 14:30:15"}}) {
        EXPECT_EQ(formatter.stringFromDate(date, QLocale(locale)), text);
    }
}

TEST_F(NaturalLanguageDateTest, RefusesWhatMeansNoDate) {
    for (const char* text : {"", "  ", "soon", "3 days", "in 3 days ago", "in days", "999999 years ago", "25:00",
                             "13 pm", "2026-02-30", "yesterday at", "at", "-1 days ago", "last", "99999999 days ago"}) {
        EXPECT_EQ(qvl_dateFromNaturalLanguage(text, now, english), std::nullopt) << text;
    }
}

TEST(FilterTest, FindsTextInKeysWhateverTheCaseAndDiacritics) {
    const auto accepts = [](const char* key, const char* text) {
        return qvl_keyContains(text)(*QVLDebugDataSourceObject::initWithKey(key, {}, {}));
    };
    EXPECT_TRUE(accepts("documentCount", "COUNT"));
    EXPECT_TRUE(accepts("Größe", "GROß"));
    EXPECT_TRUE(accepts("café.opened", "CAFE"));
    EXPECT_TRUE(accepts("cafe.opened", "CAFÉ"));
    EXPECT_FALSE(accepts("documentCount", "counts"));
}

TEST(FilterTest, RowsAreSortedByKeyAndFiltered) {
    QVLDebugRows rows;
    for (const char* key : {"b1", "a", "b0"}) {
        rows.push_back(QVLDebugDataSourceObject::initWithKey(key, {}, {}));
    }
    std::vector<std::string> keys;
    for (const auto& row : qvl_sortedAndFilteredRows(rows, qvl_keyContains("b"))) {
        keys.push_back(row->key());
    }
    EXPECT_THAT(keys, ElementsAre("b0", "b1"));
}

} // namespace
