#include "EngineTest.h"

#include "EnvironmentForTests.h"

#include <gmock/gmock.h>

namespace {

class BuiltInScriptTest : public EngineTest {
protected:
    BuiltInScriptTest() {
        platform.runLoop->setNow(std::chrono::sys_days(std::chrono::year(2026) / 11 / 23));
        const QVLJSONStore& store = *QVLJSONStore::sharedStore();
        sampleInputs = store.loadJSONFromFileAtPath(QVL_TEST_SAMPLE_DATA "/inputs.json").dictionaryOrEmpty();
        engine->journals()->loadFromJSONObject(store.loadJSONFromFileAtPath(QVL_TEST_SAMPLE_DATA "/journals.json"));
        engine->setInputs(sampleInputs);
        engine->start();
        settle();
        onQueue([](QVLQuorvel& quorvel) {
            isLoaded = quorvel.loadScriptAtPath(EnvironmentForTests::environment()->bundleScriptFilePath().value());
        });
    }
    void run(const QVLJSONDictionary& inputs) {
        engine->setInputs(inputs);
        settle();
    }
    [[nodiscard]] std::string text(const char* key) const {
        const auto output = engine->outputForKey(key);
        return output ? output->stringValue().value_or("no text") : "no output";
    }
    [[nodiscard]] bool isOn(const char* key) const { return engine->outputForKey(key)->boolValue(); }

    static inline bool isLoaded = false;
    QVLJSONDictionary sampleInputs;
};

TEST_F(BuiltInScriptTest, TheSampleDataGivesItsAnswerWithoutComplaints) {
    ASSERT_TRUE(isLoaded);
    run(sampleInputs);
    EXPECT_FALSE(isOn("showFirstRunTour"));
    EXPECT_TRUE(isOn("showRatingPrompt"));
    EXPECT_EQ(text("upgradeOffer"), "");
    EXPECT_EQ(text("storageWarning"), "low");
    EXPECT_EQ(text("announcement"), "drawingTools");
    EXPECT_EQ(engine->outputForKey("%failureAreas")->arrayValue()->count(), 0U);
    EXPECT_GT(engine->outputForKey("%timeToNextTrigger")->integerValue(), 0);
    EXPECT_EQ(engine->outputForKey("%version")->stringValue(), engine->lastLoadedFileHeaderVersion());
    EXPECT_THAT(errors(), testing::IsEmpty());
    for (const std::string& message : messages(QVLLogLevelDebug)) {
        EXPECT_THAT(message, testing::Not(testing::HasSubstr("missing inputs"))) << "the sample sets every used input";
    }
    EXPECT_EQ(engine->analyticsEventsWithExtraDimensions().size(), 2U);
}

TEST_F(BuiltInScriptTest, WhatTheUserDoesChangesTheAnswer) {
    engine->journals()->eventForKey("rating.promptShown")->trigger();
    settle();
    // The sample's time stands still in its inputs, and what has just happened lies after it: the user is spared.
    EXPECT_FALSE(isOn("showRatingPrompt"));
    engine->journals()->flagForKey("announcement.dismissed.drawingTools")->updateFlag(true);
    settle();
    EXPECT_EQ(text("announcement"), "");
    run(sampleInputs.withValueForKey("2027-03-01T00:00:00Z", "now"));
    EXPECT_TRUE(isOn("showRatingPrompt")) << "90 days later";
}

TEST_F(BuiltInScriptTest, InputsOfAnyKindGiveAnAnswer) {
    const QVLJSONValue strange[] = {nullptr, true, -1, 1e300, "", "x", QVLJSONArray{1}, QVLJSONDictionary{{"a", 1}}};
    for (const QVLJSONValue& value : strange) {
        SCOPED_TRACE(value.description());
        QVLJSONDictionary inputs;
        for (const std::string& key : sampleInputs.allKeys()) {
            inputs = inputs.withValueForKey(value, key);
        }
        run(inputs);
        EXPECT_TRUE(engine->outputForKey("%isCurrentAppSupported"));
        EXPECT_EQ(engine->outputForKey("%failureAreas")->arrayValue()->count(), 0U);
    }
    run({{"unknown", 1}});
    EXPECT_TRUE(isOn("%isCurrentAppSupported"));
    run(sampleInputs.withValueForKey("0.9", "appVersion"));
    EXPECT_FALSE(isOn("%isCurrentAppSupported"));
    EXPECT_THAT(errors(), testing::IsEmpty());
}

TEST_F(BuiltInScriptTest, AboutATenthOfUsersIsAskedAndAlwaysTheSame) {
    int asked = 0;
    for (int user = 0; user < 1000; ++user) {
        run(sampleInputs.withValueForKey("user-" + std::to_string(user), "userId"));
        asked += text("survey").empty() ? 0 : 1;
    }
    EXPECT_GT(asked, 60);
    EXPECT_LT(asked, 140);
}

} // namespace
