#include "QVLAnalyticsEventInternal.h"

#include <gmock/gmock.h>

#include <vector>

namespace {

QVLJSONDictionary full() {
    return {
        {"category", "c"}, {"action", "a"}, {"label", "l"}, {"value", 1}, {"dimensions", QVLJSONDictionary{{"d", 2}}}};
}

TEST(AnalyticsEvent, EqualsAnotherOneWhenAllFivePropertiesAreEqual) {
    const auto event = QVLAnalyticsEventInternal::eventWithJSONObject(full());
    const auto same = QVLAnalyticsEventInternal::initWithCategory("c", "a", "l", true, QVLJSONDictionary{{"d", 2.0}});
    EXPECT_TRUE(event->isEqual(*same));
    EXPECT_EQ(event->hash(), same->hash());
    for (const char* property : {"category", "action", "label", "value", "dimensions"}) {
        for (const QVLJSONValue& value : {QVLJSONValue(), QVLJSONValue(nullptr), QVLJSONValue("other")}) {
            const auto other = QVLAnalyticsEventInternal::eventWithJSONObject(full().withValueForKey(value, property));
            EXPECT_FALSE(event->isEqual(*other)) << property;
            EXPECT_FALSE(other->isEqual(*event)) << property;
        }
    }
    EXPECT_FALSE(event->isEqual(QVLNamedObject("other")));
}

TEST(AnalyticsEvent, TakesNullForAbsentAndAnswersOnlyItsOwnKinds) {
    const auto absent = QVLAnalyticsEventInternal::eventWithJSONObject(QVLJSONDictionary{{"category", "c"}});
    const auto null =
        QVLAnalyticsEventInternal::eventWithJSONObject(QVLJSONDictionary{{"category", "c"}, {"label", nullptr}});
    EXPECT_TRUE(absent->isEqual(*null));
    EXPECT_EQ(QVLAnalyticsEventInternal::eventWithJSONObject("no object")->hash(), 0U);
    const auto odd = QVLAnalyticsEventInternal::initWithCategory(1, QVLJSONArray{}, nullptr, "5", "text");
    EXPECT_FALSE(odd->category() || odd->action() || odd->label() || odd->dimensions());
    EXPECT_TRUE(odd->value().isNothing());
}

TEST(AnalyticsEvent, DescribesOnePropertyALine) {
    const auto event = QVLAnalyticsEventInternal::eventWithJSONObject(full().withValueForKey({}, "label"));
    EXPECT_THAT(event->description(),
                testing::MatchesRegex("<QVLAnalyticsEventInternal: 0x[0-9a-f]+> \\{\n  category=c\n  action=a\n"
                                      "  label=\\(null\\)\n  value=1\n  dimensions=\\{\"d\":2\\}\n\\}"));
}

} // namespace
