#include "QVLJSONSerialization.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <sstream>
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

QVLJSONReadResult read(std::string_view text) {
    return QVLJSONSerialization::JSONObjectWithData(text, Reading::Fragments);
}

std::string written(const QVLJSONValue& value, Writing writing = Writing::Compact) {
    return QVLJSONSerialization::dataWithFragment(value, writing).text;
}

void expectRefused(const std::string& text) {
    const QVLJSONReadResult result = read(text);
    EXPECT_FALSE(result) << text.substr(0, 80);
    EXPECT_TRUE(result.value.isNothing()) << text.substr(0, 80);
}

TEST(JSONText, WhatTheStandardAllowsIsReadAndWrittenBackInOneForm) {
    const std::string deepest = nested(QVLJSONValue::kMaximumDepth);
    struct Row {
        std::string text;
        std::string compact;
    };
    const std::vector<Row> rows = {
        {" \t\r\n[ ] \n", "[]"},
        {"\xEF\xBB\xBF{\"a\":1}", R"({"a":1})"},
        {R"([null,true,false,"",0,{},[]])", R"([null,true,false,"",0,{},[]])"},
        {R"({"b":1,"a":{"d":[],"c":{}}})", R"({"a":{"c":{},"d":[]},"b":1})"},
        {R"({"a":1,"a":2})", R"({"a":1})"},
        {R"({"":0,"a\u0062":1,"\u0000":2})", R"({"":0,"\u0000":2,"ab":1})"},
        {R"(["\"\\\/\b\f\n\r\t"])", R"(["\"\\\/\b\f\n\r\t"])"},
        {R"(["\u0000\u001f\u007F"])", "[\"\\u0000\\u001f\x7F\"]"},
        {R"(["\u00e9\u20ac\uD834\udd1e"])", "[\"\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E\"]"},
        {R"(["\uDBFF\uDFFF\uFFFE"])", "[\"\xF4\x8F\xBF\xBF\xEF\xBF\xBE\"]"},
        {"[\"\xC2\x80\xE2\x80\xA8\xEF\xBF\xBF\"]", "[\"\xC2\x80\xE2\x80\xA8\xEF\xBF\xBF\"]"},
        {"[0,-0,-1,0.5,-0.25,1E2,1e+2,1e-2,0e1,0E+0]", "[0,0,-1,0.5,-0.25,100,100,0.01,0,0]"},
        {deepest, deepest},
    };
    for (const Row& row : rows) {
        const QVLJSONReadResult result = QVLJSONSerialization::JSONObjectWithData(row.text);
        EXPECT_TRUE(result) << row.text << ": " << result.error;
        EXPECT_EQ(QVLJSONSerialization::dataWithJSONObject(result.value).text, row.compact);
    }
}

TEST(JSONText, WhatTheStandardRefusesIsRefused) {
    std::istringstream texts(R"(
        [ ] { } []] [][] {}{} [1 [1, [1,] [,1] [1,,2] [,] [1:2] {,} {"a"} {"a":} {"a":1,} {"a":1]} [1} {a:1} {1:1}
        {null:1} {'a':1} [[] {"a":[ []a [1]//x [1/**/] /**/[] #[] * <a>
        [True] [nul] [nulll] [truefalse] [undefined] [NaN] [nan] [Infinity] [-Infinity] [Inf]
        [+1] [01] [-01] [00] [-] [--1] [.5] [-.5] [1.] [1.e1] [1e] [1e+] [1ee1] [1e1.5] [0x1] [1_0] [1f] [1+1] [1,000.]
        [1e999] [-1e999] [1.8e308] [-17976931348623159e292] [1e99999999999999999999]
        ["] ["\"] [" ["a ["\ ['a'] ["\a"] ["\x41"] ["\'"] ["\0"] ["\U0041"] ["\u"] ["\u00"] ["\u00g1"]
        ["\uD800"] ["\uDBFFx"] ["\uD800\u0041"] ["\uD800\uD800\uDC00"] ["\uD800\n"] ["\uDC00"] ["\uDFFF\uD800"]
        {"\uD800":1} {"\uDC00":1}
    )");
    for (std::string text; texts >> text;) {
        expectRefused(text);
    }
    // The same, for documents with blanks or NUL in them.
    std::istringstream others(
        "| |\xEF\xBB\xBF|[1 2]|[1 .5]|[] \"|{\"a\" 1}|{\"a\":1 \"b\":2}|[\"\\u 041\"]|[\"\t\"]|[\"\n\"]|"
        "[\"\x1F\"]|\v[]|[\f]|\xC2\xA0[]|[\xE9]|\xEF\xBB[]|\xEF\xBB\xBF\xEF\xBB\xBF[]|\xFE\xFF\0[\0]|"
        "[]\0|\0[]|[\0]|[1,\0 2]|[]\0[]|\0"s);
    for (std::string text; std::getline(others, text, '|');) {
        expectRefused(text);
    }
    expectRefused(nested(QVLJSONValue::kMaximumDepth + 1));
    expectRefused(repeated("[", 100000));
    expectRefused(repeated(R"({"a":)", 100000));
    EXPECT_EQ(read("\xEF\xBB\xBF[1,]").error, "Invalid value. (at byte 6)");
    EXPECT_EQ(read("[]\0"s).error, "Unexpected NUL. (at byte 2)");
}

TEST(JSONText, BytesThatAreNotUTF8AreRefusedInTextsAndKeys) {
    // Stray, cut off, overlong, surrogates, beyond the last character; and NUL.
    for (const std::string& bytes :
         {"\x80"s, "\xE9"s, "\xFF"s, "\xE2\x82"s, "\xE2\x82x"s, "\xC0\x80"s, "\xC1\xBF"s, "\xE0\x9F\xBF"s,
          "\xF0\x8F\xBF\xBF"s, "\xED\xA0\x80"s, "\xED\xBF\xBF"s, "\xED\xA0\x80\xED\xB0\x80"s, "\xF4\x90\x80\x80"s,
          "\xF8\x88\x80\x80\x80"s, repeated("a", 100) + "\xE9", "a\0b"s}) {
        expectRefused("[\"" + bytes + "\"]");
        expectRefused("{\"" + bytes + "\":1}");
    }
}

TEST(JSONText, NumbersAreReadExactlyInTheFirstRepresentationThatHoldsThem) {
    constexpr auto kLargestDouble = std::numeric_limits<double>::max();
    const std::string zeros = repeated("0", 400);
    struct Row {
        std::string text;
        QVLJSONValue value;
    };
    const std::vector<Row> rows = {
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"9223372036854775808", 9223372036854775808U},
        {"18446744073709551615", std::numeric_limits<std::uint64_t>::max()},
        {"18446744073709551616", 18446744073709551616.0},
        {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
        {"-9223372036854775809", -9223372036854775808.0},
        {"9007199254740993", 9007199254740993},
        {"9007199254740993.0", 9007199254740992.0},
        {"123456789012345678901234567890", 123456789012345678901234567890.0},
        {"1.0", 1.0},
        {"1.7976931348623157e308", kLargestDouble},
        {"17976931348623158e292", kLargestDouble},
        {"2.2250738585072011e-308", 2.2250738585072011e-308},
        {"4.9e-324", std::numeric_limits<double>::denorm_min()},
        {"2.4703282292062327e-324", 0.0},
        {"-123e-400", 0.0},
        {"1e-99999999999999999999", 0.0},
        {"0." + zeros + "1", 0.0},
        {"0." + zeros + "1e50", 0.0},
        {"0." + zeros + "1e401", 1.0},
        {"0." + repeated("3", 2000), 1.0 / 3},
    };
    for (const Row& row : rows) {
        const QVLJSONValue value = read(row.text).value;
        EXPECT_EQ(value, row.value) << row.text << " was read as " << value.description();
        EXPECT_EQ(value.isInteger(), row.value.isInteger()) << row.text;
    }
}

TEST(JSONText, EveryFiniteDoubleReadsBackAsItself) {
    std::mt19937_64 random(20260304); // NOLINT(cert-msc51-cpp): the same numbers in every run
    for (int count = 0; count < 50000; ++count) {
        const auto any = std::bit_cast<double>(random());
        // Whole numbers of every size are rare among all bit patterns.
        const double whole =
            std::trunc(std::ldexp(static_cast<double>(random() >> 11U), static_cast<int>(random() % 120) - 60));
        for (const double number : {any, whole, -whole}) {
            if (std::isfinite(number)) {
                const QVLJSONValue back = read(written(number)).value;
                ASSERT_EQ(back, QVLJSONValue(number)) << written(number);
                ASSERT_EQ(back.doubleValue(), number) << written(number);
            }
        }
    }
}

// The writer looks at several bytes at once; none may escape it, wherever it stands.
TEST(JSONText, TheWriterSeesEveryByteAtEveryPlace) {
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        const bool isEscaped = byte < 0x20 || byte == '"' || byte == '\\' || byte == '/';
        for (std::size_t length = 1; length <= 18; ++length) {
            for (std::size_t place = 0; place < length; ++place) {
                // ~ and 0x7F come last among the bytes that stand for themselves.
                std::string text(length, length % 2 == 0 ? '~' : '\x7F');
                text[place] = static_cast<char>(byte);
                const QVLJSONWriteResult result = QVLJSONSerialization::dataWithFragment(text);
                ASSERT_EQ(static_cast<bool>(result), byte < 0x80) << byte << " at " << place << " of " << length;
                if (byte < 0x80) {
                    ASSERT_EQ(result.text == '"' + text + '"', !isEscaped) << result.text;
                    ASSERT_EQ(read(result.text).value, QVLJSONValue(text)) << result.text;
                }
            }
        }
    }
}

TEST(JSONText, TheWriterEscapesAndKeepsBooleansAndCutsFractionsOfWholeNumbers) {
    const QVLJSONArray values{true,
                              1,
                              1.0,
                              std::numeric_limits<std::int64_t>::min(),
                              std::numeric_limits<std::uint64_t>::max(),
                              0.1,
                              1e300,
                              "</script>",
                              "\x01\x1F\b\f\n\r\t\"\\",
                              "a\0b"s,
                              QVLJSONDictionary{{"b/", false}, {"\xC3\xA9", 0}}};
    EXPECT_EQ(written(values), R"([true,1,1,-9223372036854775808,18446744073709551615,0.1,1e+300,"<\/script>",)"
                               R"("\u0001\u001f\b\f\n\r\t\"\\","a\u0000b",{"b\/":false,"é":0}])");
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
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    struct Row {
        QVLJSONArray array;
        const char* description;
    };
    const std::vector<Row> rows = {
        {{1, kInfinity}, "[1,inf]"},
        {{-kInfinity, std::numeric_limits<double>::quiet_NaN()}, "[-inf,nan]"},
        {{1, "\xFF"}, "[1,\"\xFF\"]"},
        {{1, QVLJSONDictionary{{"\xED\xA0\x80", 1}}}, "[1,{\"\xED\xA0\x80\":1}]"},
    };
    for (const Row& row : rows) {
        EXPECT_FALSE(QVLJSONSerialization::isValidJSONObject(row.array)) << row.description;
        const QVLJSONWriteResult result = QVLJSONSerialization::dataWithJSONObject(row.array);
        EXPECT_TRUE(!result && result.text.empty()) << row.description;
        EXPECT_EQ(QVLJSONValue(row.array).description(), row.description);
    }
}

} // namespace
