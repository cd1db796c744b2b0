#include "QVLJSONSerialization.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using Reading = QVLJSONSerialization::Reading;
using Writing = QVLJSONSerialization::Writing;

std::string repeated(const std::string& text, std::size_t times) {
    std::string result;
    for (std::size_t count = 0; count < times; ++count) {
        result += text;
    }
    return result;
}

std::string nested(std::size_t levels) {
    return repeated("[", levels) + repeated("]", levels);
}

/// The value of a fragment; nothing when it is refused.
QVLJSONValue read(std::string_view text) {
    return QVLJSONSerialization::JSONObjectWithData(text, Reading::Fragments).value;
}

std::string written(const QVLJSONValue& value, Writing writing = Writing::Compact) {
    return QVLJSONSerialization::dataWithFragment(value, writing).text;
}

TEST(JSONText, WhatTheStandardAllowsIsReadAndWrittenBackInOneForm) {
    struct Row {
        std::string text;
        std::string compact;
    };
    const std::vector<Row> rows = {
        {"[]", "[]"},
        {"{}", "{}"},
        {" \t\r\n[ ] \n", "[]"},
        {"\xEF\xBB\xBF{\"a\":1}", R"({"a":1})"},
        {R"([null,true,false,"",0])", R"([null,true,false,"",0])"},
        {R"({"b":1,"a":{"d":[],"c":{}}})", R"({"a":{"c":{},"d":[]},"b":1})"},
        {R"({"a":1,"a":2})", R"({"a":1})"},
        {R"({"":0,"a\u0062":1})", R"({"":0,"ab":1})"},
        {R"({"a\u0000b":1})", R"({"a\u0000b":1})"},
        {R"(["\"\\\/\b\f\n\r\t"])", R"(["\"\\\/\b\f\n\r\t"])"},
        {R"(["\u0000\u001f\u007F"])", "[\"\\u0000\\u001f\x7F\"]"},
        {R"(["\u00e9\u20ac\uD834\udd1e"])", "[\"\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E\"]"},
        {"[\"\xC2\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF\"]", "[\"\xC2\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF\"]"},
        {R"(["\uDBFF\uDFFF\uFFFE"])", "[\"\xF4\x8F\xBF\xBF\xEF\xBF\xBE\"]"},
        {"[\"\xE2\x80\xA8\"]", "[\"\xE2\x80\xA8\"]"},
        {"[0,-0,-1,0.5,-0.25,1E2,1e+2,1e-2,0e1,0E+0]", "[0,0,-1,0.5,-0.25,100,100,0.01,0,0]"},
        {"[1.0,-2.00,123456789012345.0]", "[1,-2,123456789012345]"},
        {nested(QVLJSONValue::kMaximumDepth), nested(QVLJSONValue::kMaximumDepth)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const QVLJSONReadResult result = QVLJSONSerialization::JSONObjectWithData(row.text);
        EXPECT_TRUE(result) << result.error;
        EXPECT_EQ(QVLJSONSerialization::dataWithJSONObject(result.value).text, row.compact);
    }
}

TEST(JSONText, WhatTheStandardRefusesIsAnErrorWithItsPlace) {
    const std::vector<std::string> texts = {
        // Structure.
        "",
        " ",
        "\xEF\xBB\xBF",
        "[",
        "]",
        "{",
        "}",
        "[]]",
        "[][]",
        "{}{}",
        "[1",
        "[1,",
        "[1,]",
        "[,1]",
        "[1,,2]",
        "[,]",
        "[1 2]",
        "[1:2]",
        "{,}",
        R"({"a"})",
        R"({"a":})",
        R"({"a" 1})",
        R"({"a":1,})",
        R"({"a":1 "b":2})",
        R"({"a":1]})",
        R"([1})",
        R"({a:1})",
        R"({1:1})",
        R"({null:1})",
        "{'a':1}",
        "[[]",
        R"({"a":[)",
        "[]a",
        "[] \"",
        "[1]//x",
        "[1/**/]",
        "/**/[]",
        "#\n[]",
        "\xEF\xBB\xBF\xEF\xBB\xBF[]",
        "\xEF\xBB[]",
        "\xFE\xFF\0[\0]"s,
        "\v[]",
        "[\f]",
        "\xC2\xA0[]",
        "*",
        "<a>",
        nested(QVLJSONValue::kMaximumDepth + 1),
        repeated("[", 100000),
        repeated(R"({"a":)", 100000),
        repeated("[{\"a\":", 50000),
        // NUL, in and around the text.
        "[]\0"s,
        "\0[]"s,
        "[\0]"s,
        "[1,\0 2]"s,
        "[\"a\0b\"]"s,
        "{\"a\0b\":1}"s,
        "[]\0[]"s,
        "\0"s,
        // Words.
        "[True]",
        "[nul]",
        "[nulll]",
        "[truefalse]",
        "[undefined]",
        "[NaN]",
        "[nan]",
        "[Infinity]",
        "[-Infinity]",
        "[Inf]",
        // Numbers.
        "[+1]",
        "[01]",
        "[-01]",
        "[00]",
        "[-]",
        "[--1]",
        "[.5]",
        "[-.5]",
        "[1.]",
        "[1.e1]",
        "[1e]",
        "[1e+]",
        "[1ee1]",
        "[1e1.5]",
        "[0x1]",
        "[1_0]",
        "[1f]",
        "[1 .5]",
        "[1+1]",
        "[1,000.]",
        "[\xEF\xBC\x91]",
        "[1e999]",
        "[-1e999]",
        "[1.8e308]",
        "[-17976931348623159e292]",
        "[1e99999999999999999999]",
        // Texts.
        R"(["])",
        R"(["\"])",
        R"([")",
        R"(["a)",
        R"(["\)",
        "['a']",
        "[\"\t\"]",
        "[\"\n\"]",
        "[\"\x1F\"]",
        R"(["\a"])",
        R"(["\x41"])",
        R"(["\'"])",
        R"(["\0"])",
        R"(["\U0041"])",
        R"(["\u"])",
        R"(["\u00"])",
        R"(["\u00g1"])",
        R"(["\u 041"])",
        // Surrogates without their other half: high, high before text or another high, low, low before high.
        R"(["\uD800"])",
        R"(["\uDBFFx"])",
        R"(["\uD800\u0041"])",
        R"(["\uD800\uD800\uDC00"])",
        R"(["\uD800\n"])",
        R"(["\uDC00"])",
        R"(["\uDFFF\uD800"])",
        R"({"\uDC00":1})",
        "[\"\xED\xA0\x80\"]",
        "[\"\xED\xBF\xBF\"]",
        "[\"\xED\xA0\x80\xED\xB0\x80\"]",
        "{\"\xED\xA0\x80\":1}",
        // Bytes that are not UTF-8: stray, cut off, overlong, beyond the last character.
        "[\"\xE9\"]",
        "[\"\x80\"]",
        "[\"\xFF\"]",
        "[\"\xE2\x82\"]",
        "[\"\xE2\x82x\"]",
        "[\"\xC0\x80\"]",
        "[\"\xC1\xBF\"]",
        "[\"\xE0\x9F\xBF\"]",
        "[\"\xF0\x8F\xBF\xBF\"]",
        "[\"\xF4\x90\x80\x80\"]",
        "[\"\xF8\x88\x80\x80\x80\"]",
        "{\"\xE9\":1}",
        "[\"" + repeated("a", 100) + "\xE9\"]",
        "[\xE9]",
    };
    for (const std::string& text : texts) {
        const QVLJSONReadResult result = QVLJSONSerialization::JSONObjectWithData(text, Reading::Fragments);
        EXPECT_FALSE(result) << text.substr(0, 80);
        EXPECT_TRUE(result.value.isNothing()) << text.substr(0, 80);
    }
    EXPECT_EQ(QVLJSONSerialization::JSONObjectWithData("\xEF\xBB\xBF[1,]").error, "Invalid value. (at byte 6)");
    EXPECT_EQ(QVLJSONSerialization::JSONObjectWithData("[]\0"s).error, "Unexpected NUL. (at byte 2)");
}

TEST(JSONText, OnlyAFragmentReaderTakesABareValue) {
    for (const char* text : {"null", "true", "1", "-0.5", "\"a\"", " 7 "}) {
        EXPECT_FALSE(QVLJSONSerialization::JSONObjectWithData(text)) << text;
        EXPECT_TRUE(QVLJSONSerialization::JSONObjectWithData(text, Reading::Fragments)) << text;
    }
    for (const QVLJSONValue& value : {QVLJSONValue(nullptr), QVLJSONValue(true), QVLJSONValue("a"), QVLJSONValue()}) {
        EXPECT_FALSE(QVLJSONSerialization::dataWithJSONObject(value)) << value.description();
        EXPECT_FALSE(QVLJSONSerialization::isValidJSONObject(value)) << value.description();
    }
}

TEST(JSONText, NumbersAreReadExactlyInTheFirstRepresentationThatHoldsThem) {
    constexpr auto kMostNegative = std::numeric_limits<std::int64_t>::min();
    constexpr auto kMostPositive = std::numeric_limits<std::int64_t>::max();
    struct Row {
        const char* text;
        QVLJSONValue value;
        bool isInteger;
    };
    const std::vector<Row> rows = {
        {"9223372036854775807", kMostPositive, true},
        {"9223372036854775808", 9223372036854775808U, true},
        {"18446744073709551615", std::numeric_limits<std::uint64_t>::max(), true},
        {"18446744073709551616", 18446744073709551616.0, false},
        {"-9223372036854775808", kMostNegative, true},
        {"-9223372036854775809", -9223372036854775808.0, false},
        {"9007199254740993", 9007199254740993, true},
        {"9007199254740993.0", 9007199254740992.0, false},
        {"123456789012345678901234567890", 123456789012345678901234567890.0, false},
        {"1.0", 1.0, false},
        {"-0.0", -0.0, false},
        {"1.7976931348623157e308", std::numeric_limits<double>::max(), false},
        {"17976931348623158e292", std::numeric_limits<double>::max(), false},
        {"2.2250738585072011e-308", 2.2250738585072011e-308, false},
        {"4.9e-324", std::numeric_limits<double>::denorm_min(), false},
        {"2.4703282292062327e-324", 0.0, false},
        {"123e-400", 0.0, false},
        {"-1e-400", 0.0, false},
        {"1e-99999999999999999999", 0.0, false},
    };
    for (const Row& row : rows) {
        const QVLJSONValue value = read(row.text);
        EXPECT_EQ(value, row.value) << row.text << " was read as " << value.description();
        EXPECT_EQ(value.isInteger(), row.isInteger) << row.text;
    }
    // Far below the smallest double, in every way to write it.
    const std::string zeros = repeated("0", 400);
    EXPECT_EQ(read("0." + zeros + "1"), QVLJSONValue(0));
    EXPECT_EQ(read("0." + zeros + "1e50"), QVLJSONValue(0));
    EXPECT_EQ(read("0." + zeros + "1e401"), QVLJSONValue(1));
    EXPECT_EQ(read("0." + repeated("3", 2000)), QVLJSONValue(1.0 / 3));
}

TEST(JSONText, EveryFiniteDoubleReadsBackAsItself) {
    std::mt19937_64 random(20260304); // NOLINT(cert-msc51-cpp): the same numbers in every run
    for (int count = 0; count < 100000; ++count) {
        const auto number = std::bit_cast<double>(random());
        // Whole numbers of every size are rare among all bit patterns.
        const double whole =
            std::trunc(std::ldexp(static_cast<double>(random() >> 11U), static_cast<int>(random() % 120) - 60));
        for (const double candidate : {number, whole, -whole}) {
            if (!std::isfinite(candidate)) {
                continue;
            }
            const QVLJSONValue back = read(written(candidate));
            ASSERT_EQ(back, QVLJSONValue(candidate)) << written(candidate);
            ASSERT_EQ(back.doubleValue(), candidate) << written(candidate);
        }
    }
}

TEST(JSONText, TheWriterEscapesAndKeepsBooleansAndCutsFractionsOfWholeNumbers) {
    struct Row {
        QVLJSONValue value;
        const char* text;
    };
    const std::vector<Row> rows = {
        {true, "true"},
        {1, "1"},
        {1.0, "1"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
        {0.1, "0.1"},
        {1e300, "1e+300"},
        {"</script>", R"("<\/script>")"},
        {"\x01\x1F\b\f\n\r\t\"\\\x7F", "\"\\u0001\\u001f\\b\\f\\n\\r\\t\\\"\\\\\x7F\""},
        {"a\0b"s, R"("a\u0000b")"},
        {QVLJSONDictionary{{"b/", false}, {"\xC3\xA9", 0}, {"a", QVLJSONArray{}}},
         "{\"a\":[],\"b\\/\":false,\"\xC3\xA9\":0}"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(written(row.value), row.text);
    }
}

TEST(JSONText, ThePrettyFormHasOneMemberALine) {
    const QVLJSONDictionary value{{"list", QVLJSONArray{1, QVLJSONDictionary{{"a", "b"}}, QVLJSONArray{}}},
                                  {"empty", QVLJSONDictionary{}},
                                  {"text", "x"}};
    EXPECT_EQ(written(value, Writing::Pretty), R"({
  "empty" : {},
  "list" : [
    1,
    {
      "a" : "b"
    },
    []
  ],
  "text" : "x"
})");
}

TEST(JSONText, WhatIsNotJSONCannotBeWrittenButStillBeDescribed) {
    struct Row {
        QVLJSONValue value;
        const char* description;
    };
    const std::vector<Row> rows = {
        {std::numeric_limits<double>::infinity(), "[inf]"},
        {-std::numeric_limits<double>::infinity(), "[-inf]"},
        {std::numeric_limits<double>::quiet_NaN(), "[nan]"},
        {"\xFF", "[\"\xFF\"]"},
        {QVLJSONDictionary{{"\xED\xA0\x80", 1}}, "[{\"\xED\xA0\x80\":1}]"},
    };
    for (const Row& row : rows) {
        const QVLJSONArray array{QVLJSONValue(row.value)};
        EXPECT_FALSE(QVLJSONSerialization::isValidJSONObject(array)) << row.description;
        EXPECT_FALSE(QVLJSONSerialization::dataWithJSONObject(array)) << row.description;
        EXPECT_TRUE(QVLJSONSerialization::dataWithFragment(row.value).text.empty()) << row.description;
        EXPECT_EQ(QVLJSONValue(array).description(), row.description);
    }
}

} // namespace
