#include "EngineTest.h"
#include "EnvironmentForTests.h"
#include "QVLScriptManager.h"

#include <gtest/gtest.h>

// A clock that is turned back, as by a user or a time server, while a host runs.

namespace {

using namespace std::chrono_literals;

class ClockTest : public EngineTest {
protected:
    void turnTo(QVLDate date) const { platform.runLoop->setNow(date); }

    const QVLDate today = std::chrono::sys_days(std::chrono::year(2026) / 11 / 23);
    const QVLDate yearsBefore = std::chrono::sys_days(std::chrono::year(1999) / 12 / 31);
};

TEST_F(ClockTest, ThatIsTurnedBackLosesNoChangeAndDatesAreTakenAsTheClockTellsThem) {
    turnTo(today);
    engine->setInputs({{"a", 1}});
    engine->start();
    engine->journals()->eventForKey("opened")->trigger();
    ASSERT_TRUE(load(scriptWithBody("answer.count = journals.events.opened.count; return JSON.stringify(answer);")));
    engine->journals()->flagForKey("seen")->updateFlag(true);
    turnTo(yearsBefore);
    engine->journals()->eventForKey("opened")->trigger();
    engine->journals()->flagForKey("seen")->updateFlag(false);
    settle();
    EXPECT_EQ(engine->outputForKey("count")->integerValue(), 2);
    EXPECT_EQ(engine->lastRunDate(), yearsBefore);

    const auto restarted = QVLQuorvel::initWithDirectory(directory.path(), nullptr, nullptr);
    const auto event = restarted->journals()->eventForKey("opened");
    EXPECT_EQ(event->count(), 2U);
    EXPECT_EQ(event->firstTime(), today);
    EXPECT_EQ(event->lastTime(), yearsBefore);
    EXPECT_EQ(restarted->journals()->flagForKey("seen")->lastTime(), yearsBefore);
}

TEST_F(ClockTest, ThatIsTurnedBackDoesNotStopSessionEventsFromComingAgainAfterADay) {
    engine->setInputs({{"a", 1}});
    engine->start();
    ASSERT_TRUE(load(scriptWithBody("answer['%googleAnalyticsSessionEvents'] = [{ category: 'c', action: 'asked' }];"
                                    "return JSON.stringify(answer);")));
    evaluate();
    turnTo(yearsBefore);
    const std::size_t before = analyticsEvents.size();
    platform.runLoop->advance(24h);
    ASSERT_EQ(analyticsEvents.size(), before + 1);
    EXPECT_EQ(analyticsEvents.back()->action(), "asked");
}

TEST_F(ClockTest, ThatIsTurnedBackPutsOffFetchesUntilOneIsAskedForAsAtEveryStart) {
    const EnvironmentForTests environment(directory.path());
    environment->setRemoteScriptURL(QVLURL::fromString("http://rules.example/quorvel.js"));
    platform.reachability.initialFlags = kQVLReachabilityFlagsReachable;
    const auto manager = QVLScriptManager::initWithEnvironment(EnvironmentForTests::environment());
    const auto& requests = platform.httpSession->requests();
    const auto answer = [&] {
        platform.httpSession->answer(requests.size() - 1, 200, "// Quorvel 2.0\n");
        settle();
    };
    turnTo(today);
    manager->startScriptFetching();
    answer();
    turnTo(yearsBefore);
    platform.runLoop->advance(48h);
    EXPECT_EQ(requests.size(), 1U) << "the last fetch lies in the future";
    manager->fetchScriptsNow();
    ASSERT_EQ(requests.size(), 2U);
    answer();
    platform.runLoop->advance(6h);
    EXPECT_EQ(requests.size(), 3U);
}

} // namespace
