#include "QVLCallStack.h"
#include "QVLDigest.h"
#include "QVLLinuxLocalization.h"
#include "QVLPlatform.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

std::string hexadecimal(const QVLSHA1Digest& digest) {
    std::string text;
    for (const std::uint8_t byte : digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

} // namespace

TEST(QVLLinuxDigestTest, IsTheStandardsSHA1) {
    EXPECT_EQ(hexadecimal(QVLSHA1({})), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(hexadecimal(QVLSHA1("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hexadecimal(QVLSHA1(std::string(1'000'000, 'a'))), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
    EXPECT_EQ(hexadecimal(QVLSHA1(std::string_view("\0", 1))), "5ba93c9db0cff93f52b521d7420e43f6eda2784f");
}

TEST(QVLLinuxCallStackTest, GivesOneLineAFrameBeginningWithTheCaller) {
    const auto symbols = QVLCallStackSymbols();
    ASSERT_GT(symbols.size(), 2U);
    EXPECT_EQ(symbols.front().find("QVLCallStackSymbols"), std::string::npos);
    for (const std::string& symbol : symbols) {
        EXPECT_FALSE(symbol.empty());
        EXPECT_EQ(symbol.find('\n'), std::string::npos);
    }
}

TEST(QVLLinuxLocalizationTest, AKeyWithoutATranslationIsItsOwnText) {
    const QVLLinuxLocalization localization;
    for (const std::string& key : {std::string("No Script"), std::string(), std::string("a\0b", 3)}) {
        EXPECT_EQ(localization.localizedString(key), key);
    }
}

TEST(QVLPlatformLinuxTest, HasEveryService) {
    const auto platform = QVLPlatform::current();
    EXPECT_TRUE(platform->mainRunLoop->isMainThread());
    EXPECT_GT(platform->clock->now(), QVLDate(std::chrono::seconds(1'700'000'000)));
    EXPECT_TRUE(platform->bundle->pathForResource("Quorvel.js"));
    EXPECT_TRUE(platform->fileManager->itemExistsAtPath(platform->fileManager->temporaryDirectory()));
    EXPECT_TRUE(platform->javaScriptEngine->makeContext(nullptr)->evaluateScript("1"));
    EXPECT_EQ(platform->makeSerialQueue("label")->label(), "label");
    EXPECT_FALSE(platform->userDefaults->boolForKey("a key that nobody has"));
    EXPECT_EQ(platform->localization->localizedString("key"), "key");
}
