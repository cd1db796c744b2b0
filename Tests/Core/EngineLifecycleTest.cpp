#include "EngineTest.h"

#include "QVLJSONSerialization.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

class EngineLifecycleTest : public EngineTest {
protected:
    /// Starts the engine with a script that answers what the input "answer" holds over a good answer.
    void startWithEcho() {
        engine->setInputs({{"answer", QVLJSONDictionary()}});
        engine->start();
        settle();
        ASSERT_TRUE(load(scriptWithBody("return JSON.stringify(Object.assign(answer, inputs.answer));")));
        notifications.clear();
        analyticsEvents.clear();
    }
    void answer(const QVLJSONDictionary& outputs) {
        engine->setInputs({{"answer", outputs}});
        settle();
    }
    [[nodiscard]] std::string file(const std::string& name) const { return directory.path("quorvel/" + name); }
    [[nodiscard]] QVLJSONValue contentOf(const std::string& name) const {
        return QVLJSONStore::sharedStore()->loadJSONFromFileAtPath(file(name));
    }
    void write(const std::string& name, const std::string& content) const { std::ofstream(file(name)) << content; }
    std::shared_ptr<QVLQuorvel> restarted() {
        engine.reset();
        settle();
        engine = QVLQuorvel::initWithDirectory(directory.path(), nullptr, nullptr);
        observe(engine);
        return engine;
    }
};

TEST_F(EngineLifecycleTest, AChangeOfInputsGoesAllTheWayToOutputsNotificationCacheAndAnalytics) {
    startWithEcho();
    answer({{"tour", true}, {"offer", "personal"}});
    EXPECT_THAT(notifications,
                ElementsAre(kQVLInputsDidChangeNotification, kQVLGoogleAnalyticsEventsDidOccurNotification,
                            kQVLOutputsDidChangeNotification, kQVLQuorvelScriptAvailabilityDidChangeNotification));
    EXPECT_THAT(statusEvents(), ElementsAre("run_succeeded|1.0"));
    EXPECT_EQ(contentOf(kQVLOutputsCacheFile), QVLJSONValue(engine->outputs()));
    EXPECT_EQ(engine->lastRunVersion(), "1.0");
    EXPECT_EQ(engine->lastRunDate(), platform.runLoop->now());
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityAvailable);

    answer({{"tour", true}, {"offer", "team"}});
    EXPECT_THAT(changedOutputKeys, ElementsAre("offer"));

    // The same answer again changes nothing, and the restarted host sees it before any script has run.
    notifications.clear();
    answer({{"tour", true}, {"offer", "team"}});
    EXPECT_THAT(notifications, IsEmpty());
    EXPECT_EQ(restarted()->outputForKey("offer")->stringValue(), "team");
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityUnavailable);
}

TEST_F(EngineLifecycleTest, EveryTriggerIsOneEvaluationAndNoneRunsBeforeStart) {
    engine->setInputs({{"a", 1}});
    settle();
    EXPECT_THAT(notifications, ElementsAre(kQVLInputsDidChangeNotification));
    engine->start();
    settle();
    ASSERT_TRUE(load(scriptWithBody("answer.runs = globalThis.runs = (globalThis.runs || 0) + 1; "
                                    "return JSON.stringify(answer);")));
    engine->setInputs({{"a", 1}});
    engine->setInputsOverrides({{"a", 2}});
    engine->journals()->eventForKey("e")->trigger();
    engine->setOutputsOverrides({{"other", 1}});
    settle();
    EXPECT_EQ(engine->outputForKey("runs")->integerValue(), 4) << "the support test, two settings and one event";
    engine->stop();
    engine->setInputs({{"a", 3}});
    settle();
    EXPECT_EQ(engine->outputForKey("runs")->integerValue(), 4);
}

TEST_F(EngineLifecycleTest, AJournalChangeIsSavedBeforeItIsTold) {
    QVLJSONValue savedWhenTold;
    const QVLToken token = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLJournalsDidChangeNotification, engine,
        [&](const QVLNotification&) { savedWhenTold = contentOf(kQVLJournalsFile); });
    engine->journals()->eventForKey("document.created")->trigger();
    EXPECT_EQ(savedWhenTold, engine->journals()->qvl_JSONObject());
    EXPECT_EQ(restarted()->journals()->eventForKey("document.created")->count(), 1U);
    engine->resetJournals();
    EXPECT_TRUE(contentOf(kQVLJournalsFile).dictionaryOrEmpty().valueForKey("events").dictionaryOrEmpty().isEmpty());
}

TEST_F(EngineLifecycleTest, AMalformedJournalsFileIsKeptAsideAndTheHostStarts) {
    for (const char* content : {R"({"__version__": 1, "events": [1]})", R"({"old": 5})"}) {
        SCOPED_TRACE(content);
        clearLog();
        write(kQVLJournalsFile, content);
        EXPECT_THAT(restarted()->journals()->allEventKeys(), IsEmpty());
        EXPECT_THAT(errors(), ElementsAre(StartsWith("Could not load journals at path: '" + file(kQVLJournalsFile))));
        EXPECT_EQ(contentOf("Journals.json.unreadable"), QVLJSONSerialization::JSONObjectWithData(content).value);
    }
}

TEST_F(EngineLifecycleTest, UnreadableCachesCountAsNone) {
    write(kQVLOutputsCacheFile, "{ broken");
    std::filesystem::create_directories(file(kQVLJournalsFile));
    EXPECT_EQ(restarted()->outputs().count(), 0U);
    EXPECT_FALSE(std::filesystem::exists(file(kQVLOutputsCacheFile)));
    engine->journals()->flagForKey("f")->updateFlag(true);
    EXPECT_TRUE(contentOf(kQVLJournalsFile).isDictionary());
}

TEST_F(EngineLifecycleTest, AFileInThePlaceOfTheDirectoryGivesWay) {
    engine.reset();
    std::filesystem::remove_all(directory.path("quorvel"));
    std::ofstream(directory.path("quorvel")) << "in the way";
    engine = QVLQuorvel::initWithDirectory(directory.path(), nullptr, nullptr);
    engine->journals()->eventForKey("e")->trigger();
    EXPECT_TRUE(contentOf(kQVLJournalsFile).isDictionary());
}

TEST_F(EngineLifecycleTest, AvailabilityIsPendingForTwoSecondsWithoutAScript) {
    engine->start();
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityPending);
    platform.runLoop->advance(std::chrono::milliseconds(1999));
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityPending);
    platform.runLoop->advance(std::chrono::milliseconds(1));
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityUnavailable);
    EXPECT_THAT(notifications,
                ElementsAre(kQVLQuorvelScriptAvailabilityDidChangeNotification, kQVLQuorvelDidStartNotification,
                            kQVLQuorvelScriptAvailabilityDidChangeNotification));
}

TEST_F(EngineLifecycleTest, AnEmptyAnswerEmptiesTheOutputsAndLeavesTheAvailability) {
    engine->setInputs({{"a", 1}});
    engine->start();
    settle();
    ASSERT_TRUE(
        load("let first = true; quorvel.process = () => {"
             " const text = first ? '{\"%isCurrentAppSupported\": true}' : '{}'; first = false; return text; };"));
    const QVLScriptAvailability before = engine->scriptAvailability();
    evaluate();
    EXPECT_EQ(engine->outputs().count(), 0U);
    EXPECT_EQ(engine->scriptAvailability(), before);
    EXPECT_THAT(errors(), ElementsAre("QVL script did not report any used inputs."));
}

TEST_F(EngineLifecycleTest, AReloadThatMayNotLoadAnythingUnloadsAndSaysNoScript) {
    startWithEcho();
    answer({{"tour", true}});
    onQueue([](QVLQuorvel& quorvel) { quorvel.reloadScript(); });
    EXPECT_EQ(engine->lastRunVersion(), "1.0 (failed)");
    EXPECT_EQ(engine->lastRunDate(), std::nullopt);
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityUnavailable);
    EXPECT_TRUE(engine->outputForKey("tour")->boolValue()) << "the previous outputs stay";
    onQueue([](QVLQuorvel& quorvel) { quorvel.reloadScript(); });
    EXPECT_EQ(engine->lastRunVersion(), "No Script");
}

TEST_F(EngineLifecycleTest, SessionEventsArePostedOnceADayAndOnceMoreAtEveryStart) {
    startWithEcho();
    const QVLJSONDictionary shown{{"category", "tour"}, {"action", "shown"}, {"label", nullptr}, {"value", 3}};
    const QVLJSONDictionary same{{"category", "tour"}, {"action", "shown"}, {"value", 3.0}};
    const QVLJSONDictionary other{
        {"category", "tour"}, {"action", "shown"}, {"value", 3}, {"dimensions", QVLJSONDictionary{{"plan", "free"}}}};
    answer({{kQVLScriptGoogleAnalyticsSessionEventsKey, QVLJSONArray{shown, same, other, "no object", nullptr}}});
    ASSERT_EQ(analyticsEvents.size(), 4U) << "the status, two session events, and one without properties";
    EXPECT_EQ(analyticsEvents[1]->value(), QVLJSONValue(3));
    EXPECT_EQ(analyticsEvents[1]->label(), std::nullopt);
    EXPECT_EQ(analyticsEvents[2]->dimensions()->valueForKey("plan"), QVLJSONValue("free"));

    analyticsEvents.clear();
    answer({{kQVLScriptGoogleAnalyticsSessionEventsKey, QVLJSONArray{other, shown}}});
    EXPECT_THAT(analyticsEvents, IsEmpty());
    platform.runLoop->advance(std::chrono::seconds(86399));
    EXPECT_THAT(analyticsEvents, IsEmpty());
    platform.runLoop->advance(std::chrono::seconds(1));
    EXPECT_EQ(analyticsEvents.size(), 2U);
    engine->stop();
    engine->start();
    EXPECT_EQ(analyticsEvents.size(), 4U);
    engine->stop();
    platform.runLoop->advance(std::chrono::hours(48));
    EXPECT_EQ(analyticsEvents.size(), 4U);
}

TEST_F(EngineLifecycleTest, DimensionEventsAreKeptWholeAndNotPosted) {
    startWithEcho();
    const QVLJSONDictionary user{{"category", "dimensions"}, {"dimensions", QVLJSONDictionary{{"plan", "free"}}}};
    answer({{kQVLScriptGoogleAnalyticsDimensionsKey, QVLJSONArray{user, user}}});
    EXPECT_EQ(engine->analyticsEventsWithExtraDimensions().size(), 2U);
    EXPECT_THAT(statusEvents(), ElementsAre("run_succeeded|1.0"));
    EXPECT_EQ(analyticsEvents.size(), 1U);
    answer({{kQVLScriptGoogleAnalyticsDimensionsKey, "no array"}});
    EXPECT_THAT(engine->analyticsEventsWithExtraDimensions(), IsEmpty());
}

TEST_F(EngineLifecycleTest, TheTwoWaysToReadOutputsDifferInWhoWins) {
    startWithEcho();
    answer({{"k", "script"}, {"s", 1}});
    engine->abtestOutputsCollection()->setCollection({{"k", "test"}, {"%t", 2}});
    EXPECT_EQ(engine->outputs().valueForKey("k"), QVLJSONValue("test"));
    EXPECT_EQ(engine->outputForKey("k")->stringValue(), "script");
    EXPECT_EQ(engine->outputForKey("%t")->integerValue(), 2);
    EXPECT_EQ(engine->outputForKey("%version")->stringValue(), "1.0");
    EXPECT_EQ(engine->outputForKey("none"), nullptr);
    EXPECT_THAT(engine->outputKeys(), UnorderedElementsAre("k", "s", "%t"));

    engine->setDisableOutputs(true);
    EXPECT_TRUE(engine->disableOutputs());
    EXPECT_THAT(engine->outputKeys(), IsEmpty());
    EXPECT_EQ(engine->outputForKey("k"), nullptr);
    engine->setDisableOutputs(false);
    EXPECT_EQ(engine->outputForKey("k")->stringValue(), "script");
}

TEST_F(EngineLifecycleTest, AReloadThatFailedIsForgottenWhenALaterOneHasSucceeded) {
    engine->setInputs({{"a", 1}});
    engine->start();
    onQueue([](QVLQuorvel& quorvel) {
        quorvel.reloadScript();
        EXPECT_TRUE(quorvel.loadScriptWithJSContent(scriptWithBody("return JSON.stringify(answer);")));
        quorvel.evaluateRules();
    });
    EXPECT_EQ(engine->lastRunVersion(), "1.0");
    EXPECT_EQ(engine->lastLoadedFileHeaderVersion(), "1.0");
    EXPECT_NE(engine->lastRunDate(), std::nullopt);
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityAvailable);
}

TEST_F(EngineLifecycleTest, TheUserDefaultHidesOutputsOfEnginesMadeLaterAndTheyStillRun) {
    platform.userDefaults->setObjectForKey(true, kQVLDisableQuorvelUserDefaultsKey);
    EXPECT_FALSE(engine->disableOutputs());
    restarted();
    startWithEcho();
    answer({{"tour", true}});
    EXPECT_TRUE(engine->disableOutputs());
    EXPECT_EQ(engine->outputForKey("tour"), nullptr);
    EXPECT_TRUE(contentOf(kQVLOutputsCacheFile).dictionaryOrEmpty().hasKey("tour"));
}

TEST_F(EngineLifecycleTest, OverridesFromTheUserDefaultsReachTheScriptAndTheOutputs) {
    platform.userDefaults->setObjectForKey("team", std::string(kQVLInputOverrideDefaultsPrefix) + "plan");
    platform.userDefaults->setObjectForKey(7, std::string(kQVLOutputOverrideDefaultsPrefix) + "count");
    engine->setInputs({{"plan", "free"}});
    engine->start();
    settle();
    ASSERT_TRUE(load(scriptWithBody("answer.plan = inputs.plan; answer.count = 1; return JSON.stringify(answer);")));
    evaluate();
    EXPECT_EQ(engine->outputForKey("plan")->stringValue(), "team");
    EXPECT_EQ(engine->outputForKey("count")->integerValue(), 7);
    EXPECT_EQ(contentOf(kQVLOutputsCacheFile).dictionaryOrEmpty().valueForKey("count"), QVLJSONValue(1));
    EXPECT_EQ(engine->inputs().valueForKey("plan"), QVLJSONValue("free"));
}

TEST_F(EngineLifecycleTest, TheEngineMayBeReleasedInsideAnyOfItsNotifications) {
    for (const char* name : {kQVLQuorvelDidStartNotification, kQVLQuorvelScriptAvailabilityDidChangeNotification,
                             kQVLInputsDidChangeNotification, kQVLJournalsDidChangeNotification}) {
        SCOPED_TRACE(name);
        restarted();
        const std::weak_ptr<QVLQuorvel> weak = engine;
        const QVLToken token =
            QVLNotificationCenter::defaultCenter().addObserver(name, engine, [&](const QVLNotification&) {
                if (engine) {
                    engine->stop();
                    engine.reset();
                }
            });
        const std::shared_ptr<QVLJournals> journals = engine->journals();
        // As a host would that holds its engine in one place.
        QVLQuorvel& host = *engine;
        host.setInputs({{"a", 1}});
        if (engine) {
            host.start();
        }
        journals->eventForKey("e")->trigger();
        settle();
        EXPECT_TRUE(weak.expired());
    }
}

TEST_F(EngineLifecycleTest, AnEngineStoppedInsideItsStartStaysStopped) {
    startWithEcho();
    answer({{kQVLScriptGoogleAnalyticsSessionEventsKey, QVLJSONArray{QVLJSONDictionary{{"category", "c"}}}}});
    for (const char* name :
         {kQVLQuorvelScriptAvailabilityDidChangeNotification, kQVLGoogleAnalyticsEventsDidOccurNotification}) {
        SCOPED_TRACE(name);
        restarted();
        notifications.clear();
        const QVLToken token = QVLNotificationCenter::defaultCenter().addObserver(
            name, engine, [this](const QVLNotification&) { engine->stop(); });
        engine->start();
        EXPECT_THAT(notifications, testing::Not(testing::Contains(kQVLQuorvelDidStartNotification)));
        EXPECT_EQ(platform.runLoop->timerCount(), 0U);
    }
}

TEST_F(EngineLifecycleTest, AnEngineReleasedBeforeItsEvaluationSavesAndPostsNothingMore) {
    startWithEcho();
    engine->setInputs({{"answer", QVLJSONDictionary{{"late", true}}}});
    notifications.clear();
    engine.reset();
    settle();
    EXPECT_THAT(notifications, IsEmpty());
    EXPECT_FALSE(contentOf(kQVLOutputsCacheFile).dictionaryOrEmpty().hasKey("late"));
}

TEST_F(EngineLifecycleTest, CallsFromAnotherThreadAreReportedAndDone) {
    std::thread([&] {
        engine->start();
        engine->stop();
    }).join();
    EXPECT_THAT(errors(),
                ElementsAre(StartsWith("Assertion failed: [NSThread isMainThread]\nShould always execute on main "
                                       "thread\n"),
                            StartsWith("Assertion failed: [NSThread isMainThread]\nShould always execute on main "
                                       "thread\n")));
    EXPECT_THAT(notifications, testing::Contains(kQVLQuorvelDidStartNotification));
    std::thread([last = std::move(engine)]() mutable { last.reset(); }).join();
    settle();
}

} // namespace
