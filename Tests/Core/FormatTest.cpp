#include "QVLFormat.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

TEST(Format, EveryConversionWritesItsKindOfArgument) {
    struct Row {
        std::string text;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {QVLStringWithFormat("%@|%s%s", "a", std::string("b"), std::string_view("c")), "a|bc"},
        {QVLStringWithFormat("%d %i %u", -1, 2L, 3U), "-1 2 3"},
        {QVLStringWithFormat("%5d|%-5d|%05d|%+d", 42, 42, 42, 42), "   42|42   |00042|+42"},
        {QVLStringWithFormat("%x %X %#x %02x %o", 255, 255U, 255, 7, 8), "ff FF 0xff 07 10"},
        {QVLStringWithFormat("%ld %lld %zu %hhx", 1L, std::numeric_limits<long long>::min(), std::size_t{2}, 3),
         "1 -9223372036854775808 2 3"},
        {QVLStringWithFormat("%lu", std::numeric_limits<unsigned long>::max()), "18446744073709551615"},
        {QVLStringWithFormat("%c%c", 'o', 75), "oK"},
        {QVLStringWithFormat("%f %.3f %.1e %g", 1.0, 2.0005, 12345.0, 0.5), "1.000000 2.001 1.2e+04 0.5"},
        {QVLStringWithFormat("%.4fs", 0.25F), "0.2500s"},
        {QVLStringWithFormat("100%% of %@%%", 5), "100% of 5%"},
        {QVLStringWithFormat("%@ %@ %@ %@", true, -7, 2.5, std::numeric_limits<std::uint64_t>::max()),
         "1 -7 2.5 18446744073709551615"},
        {QVLStringWithFormat("%@ %@", QVLJSONValue(true), QVLJSONArray{"a", nullptr}), "true [\"a\",null]"},
        {QVLStringWithFormat("%@", std::vector<std::string>{"a", "b"}), "[\"a\",\"b\"]"},
        {QVLStringWithFormat("%@", std::make_shared<QVLNamedObject>("<JS>")), "<JS>"},
        {QVLStringWithFormat("%@", std::string("%d")), "%d"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.text, row.expected);
    }
}

TEST(Format, WhatIsMissingIsWrittenAsNull) {
    const std::optional<std::string> noText;
    const std::shared_ptr<QVLNamedObject> noObject;
    const char* const noCharacters = nullptr;
    const QVLObject* const noPointer = nullptr;
    EXPECT_EQ(
        QVLStringWithFormat("%@ %@ %@ %@ %@ %@", noText, noObject, noCharacters, noPointer, nullptr, QVLJSONValue()),
        "(null) (null) (null) (null) (null) (null)");
    EXPECT_EQ(QVLStringWithFormat("%@ %@", std::optional<int>(3), std::optional<std::string>("")), "3 ");
}

TEST(Format, RealNumbersKeepTheirPointInEveryLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "fr_FR.UTF-8")) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    EXPECT_EQ(QVLStringWithFormat("%.3f %g %08.2f %.0f", 0.5, -1.5, 3.25, 7.0), "0.500 -1.5 00003.25 7");
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(Format, AFormatFromOutsideLeavesWhatItCannotFill) {
    EXPECT_EQ(QVLFormatWithArguments("%@ %d %", {1}), "1 %d %");
    EXPECT_EQ(QVLFormatWithArguments("%5", {1}), "%5");
    EXPECT_EQ(QVLFormatWithArguments("none", {1}), "none");
}

} // namespace
