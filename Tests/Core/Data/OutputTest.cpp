#include "QVLOutput.h"

#include "RecordingLogger.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

TEST(Output, ItsReadersAnswerOnlyTheirOwnKind) {
    const auto dictionary = QVLOutput::initWithQVLJSONObject(QVLJSONDictionary{{"a", 1}});
    EXPECT_EQ(dictionary->dictionaryValue(), (QVLJSONDictionary{{"a", 1}}));
    EXPECT_FALSE(dictionary->arrayValue());
    const auto digits = QVLOutput::initWithQVLJSONObject("12");
    EXPECT_EQ(digits->stringValue(), "12");
    EXPECT_EQ(digits->integerValue(), 0);
    EXPECT_FALSE(digits->boolValue());
    const auto number = QVLOutput::initWithQVLJSONObject(2);
    EXPECT_TRUE(number->boolValue());
    EXPECT_FALSE(number->stringValue());
}

TEST(Output, EqualsOutputsWithAnEqualValueOnly) {
    const auto array = QVLOutput::initWithQVLJSONObject(QVLJSONArray{1, "a"});
    const auto same = QVLOutput::initWithQVLJSONObject(QVLJSONArray{1.0, "a"});
    EXPECT_TRUE(array->isEqual(*same));
    EXPECT_EQ(array->hash(), same->hash());
    EXPECT_FALSE(array->isEqual(*QVLOutput::initWithQVLJSONObject(QVLJSONArray{1})));
    EXPECT_FALSE(array->isEqual(QVLNamedObject("other")));
    EXPECT_TRUE(QVLOutput::initWithQVLJSONObject(nullptr)->isEqual(*QVLOutput::initWithQVLJSONObject(nullptr)));
    const auto empty = QVLOutput::init();
    EXPECT_FALSE(empty->isEqual(*empty));
    EXPECT_EQ(empty->hash(), 0U);
}

TEST(Output, KeepsWhatIsNoJSONValueAfterAFailedAssertion) {
    const RecordedLog log;
    const QVLJSONValue record = QVLJSONValue::record(QVLOutput::initWithQVLJSONObject(1));
    EXPECT_TRUE(QVLOutput::initWithQVLJSONObject(record)->genericValue().isRecord());
    EXPECT_TRUE(QVLOutput::initWithQVLJSONObject({})->genericValue().isNothing());
    const std::vector<std::string> lines = log->take();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], testing::MatchesRegex("error QVLOutput: Assertion failed: (.*)\nInvalid parameter not "
                                                "satisfying: .*\n.*"));
}

TEST(Output, ItsCopyStandsForItself) {
    const auto output = QVLOutput::initWithQVLJSONObject("a");
    const auto copy = std::dynamic_pointer_cast<QVLOutput>(output->copy());
    output->setGenericValue("b");
    EXPECT_EQ(copy->stringValue(), "a");
    EXPECT_THAT(output->description(), testing::MatchesRegex("<QVLOutput: 0x[0-9a-f]+> value=b"));
    EXPECT_THAT(QVLOutput::init()->description(), testing::EndsWith("> value=(null)"));
}

} // namespace
