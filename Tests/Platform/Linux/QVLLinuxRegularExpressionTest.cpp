#include "QVLRegularExpression.h"

#include <gtest/gtest.h>

namespace {

using Groups = std::vector<std::optional<std::string>>;

Groups match(const std::string& pattern, std::string_view text) {
    const auto expression = QVLRegularExpression::compile(pattern);
    EXPECT_TRUE(expression) << pattern << ": " << expression.error;
    return expression ? (*expression)->firstMatch(text) : Groups();
}

} // namespace

TEST(QVLLinuxRegularExpressionTest, FindsTheFirstMatchAndItsGroups) {
    EXPECT_EQ(match("(a)(b)?(c)?", "xab a"), (Groups{"ab", "a", "b", std::nullopt}));
    EXPECT_EQ(match("(x*)b", "ab"), (Groups{"b", ""}));
    EXPECT_EQ(match("ä(.)", "zäöü"), (Groups{"äö", "ö"}));
    EXPECT_EQ(match("b", std::string_view("a\0b", 3)), (Groups{"b"}));
    EXPECT_EQ(match("x", "ab"), Groups());
    EXPECT_EQ(match("x", {}), Groups());
    EXPECT_EQ(match("^$", {}), (Groups{""}));
}

TEST(QVLLinuxRegularExpressionTest, EveryKindOfLineEndEndsALine) {
    for (const char* const text : {"one\nversion 2\nthree", "one\rversion 2\rthree", "one\r\nversion 2\r\nthree"}) {
        EXPECT_EQ(match("^version (.*)$", text), (Groups{"version 2", "2"})) << testing::PrintToString(text);
    }
}

TEST(QVLLinuxRegularExpressionTest, LongTextAndTextThatIsNotUTF8AreTakenInStride) {
    const std::string lines = std::string(5'000'000, 'x') + "\nversion 1";
    EXPECT_EQ(match("^version (\\d)$", lines), (Groups{"version 1", "1"}));
    EXPECT_EQ(match("^version (.+?)(?:.js)?$", "version " + lines + ".js").size(), 2U);
    EXPECT_EQ(match("^(x|y)*$", lines), Groups());
    EXPECT_EQ(match("a", "a\xFF"), Groups());
}

TEST(QVLLinuxRegularExpressionTest, AWrongPatternIsRefusedWithTheReason) {
    for (const std::string& pattern : {std::string("(a"), std::string("a\0b", 3), std::string("\xFF")}) {
        const auto expression = QVLRegularExpression::compile(pattern);
        EXPECT_FALSE(expression) << testing::PrintToString(pattern);
        EXPECT_FALSE(expression.error.empty()) << testing::PrintToString(pattern);
    }
}
