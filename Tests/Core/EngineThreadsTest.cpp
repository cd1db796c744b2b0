#include "EngineTest.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>

// Engines on real queues: what holds while scripts really run beside the main thread.

namespace {

class EngineThreadsTest : public ::testing::Test {
protected:
    EngineThreadsTest() { platform.install(); }

    std::shared_ptr<QVLQuorvel> makeEngine(const std::string& name) {
        const auto engine = QVLQuorvel::initWithDirectory(directory.path(name), nullptr, nullptr);
        engine->setInputs({{"count", 0}});
        engine->start();
        return engine;
    }
    static void load(const std::shared_ptr<QVLQuorvel>& engine, const std::string& script) {
        engine->performOnQueue([script](QVLQuorvel& quorvel) { quorvel.loadScriptWithJSContent(script); });
    }

    /// Returns when the queue is on the point of running a script that never returns.
    static void runEndlessly(const std::shared_ptr<QVLQuorvel>& engine) {
        std::atomic<bool> isRunning = false;
        engine->performOnQueue([&](QVLQuorvel& quorvel) {
            isRunning = true;
            isRunning.notify_one();
            quorvel.loadScriptWithJSContent("for (;;) {}");
        });
        isRunning.wait(false);
    }

    // Goes last: queues write until the platform has seen their ends.
    TemporaryDirectory directory;
    TestPlatform platform{TestPlatform::Queues::Real};
    RecordedLog log;
};

const char* const kCounting = "quorvel.process = text => JSON.stringify({ '%isCurrentAppSupported': true, "
                              "'%usedInputs': [], count: JSON.parse(text).count });";
const char* const kEndless = "let runs = 0; quorvel.process = () => { if (runs++) { for (;;) {} } "
                             "return '{\"%isCurrentAppSupported\": true}'; };";

TEST_F(EngineThreadsTest, InputsMayChangeWhileTheScriptRunsAndTheLastOnesWin) {
    const auto engine = makeEngine("a");
    load(engine, kCounting);
    for (int count = 1; count <= 200; ++count) {
        engine->setInputs({{"count", count}});
        engine->journals()->eventForKey("e" + std::to_string(count % 7))->trigger();
        platform.runLoop->runOnce(QVLTimeInterval(0));
    }
    EXPECT_TRUE(platform.runLoop->runUntil([&] {
        const auto output = engine->outputForKey("count");
        return output && output->integerValue() == 200;
    }));
}

TEST_F(EngineThreadsTest, AScriptThatNeverReturnsHoldsUpNeitherStopNorReleaseNorOtherEngines) {
    auto stuck = makeEngine("stuck");
    load(stuck, kEndless);
    stuck->setInputs({{"count", 1}});
    const auto other = makeEngine("other");
    load(other, kCounting);
    other->setInputs({{"count", 5}});
    EXPECT_TRUE(platform.runLoop->runUntil([&] { return other->outputForKey("count") != nullptr; }));
    stuck->stop();
    const std::weak_ptr<QVLQuorvel> weak = stuck;
    stuck.reset();
    EXPECT_TRUE(platform.runLoop->runUntil([&] { return weak.expired(); }));
}

TEST_F(EngineThreadsTest, AStuckScriptIsEndedAfterStopAndTheEngineCanStartAgain) {
    const auto engine = makeEngine("a");
    runEndlessly(engine);
    engine->stop();
    engine->start();
    load(engine, kCounting);
    bool isQueueFree = false;
    engine->performOnQueue([&](QVLQuorvel&) { platform.runLoop->post([&] { isQueueFree = true; }); });
    EXPECT_TRUE(platform.runLoop->runUntil([&] { return isQueueFree; }));
    engine->start();
    engine->setInputs({{"count", 2}});
    EXPECT_TRUE(platform.runLoop->runUntil([&] { return engine->outputForKey("count") != nullptr; }));
}

TEST_F(EngineThreadsTest, AScriptThatNeverReturnsDoesNotHoldUpTheEndOfTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            // As with a host that keeps its engine to the end.
            static const auto engine = makeEngine("stuck");
            runEndlessly(engine);
            platform.runLoop->runOnce(QVLTimeInterval(0.05));
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(EngineThreadsTest, TwoEnginesOnOneDirectoryLeaveFilesThatAThirdCanRead) {
    const auto one = makeEngine("shared");
    const auto other = makeEngine("shared");
    load(one, kCounting);
    load(other, kCounting);
    for (int count = 1; count <= 50; ++count) {
        one->setInputs({{"count", count}});
        other->setInputs({{"count", count}});
        one->journals()->eventForKey("one")->trigger();
        other->journals()->eventForKey("other")->trigger();
        platform.runLoop->runOnce(QVLTimeInterval(0));
    }
    EXPECT_TRUE(platform.runLoop->runUntil([&] {
        const auto count = other->outputForKey("count");
        return count && count->integerValue() == 50;
    }));
    static_cast<void>(log->take());
    const auto third = makeEngine("shared");
    EXPECT_NE(third->outputForKey("count"), nullptr);
    // Who saves last wins: each engine writes what it knows itself.
    EXPECT_EQ(third->journals()->eventForKey("other")->count(), 50U);
    EXPECT_THAT(log->take(), ::testing::Not(::testing::Contains(::testing::HasSubstr("error"))));
}

TEST_F(EngineThreadsTest, AHundredEnginesAtOnceGiveEachItsOwnAnswerAndGo) {
    std::vector<std::shared_ptr<QVLQuorvel>> engines;
    for (int index = 0; index < 100; ++index) {
        engines.push_back(makeEngine(std::to_string(index)));
        load(engines.back(), kCounting);
        engines.back()->setInputs({{"count", index}});
    }
    for (int index = 0; index < 100; ++index) {
        EXPECT_TRUE(platform.runLoop->runUntil([&] {
            const auto count = engines[index]->outputForKey("count");
            return count && count->integerValue() == index;
        }));
    }
    const std::vector<std::weak_ptr<QVLQuorvel>> made(engines.begin(), engines.end());
    engines.clear();
    EXPECT_TRUE(platform.runLoop->runUntil(
        [&] { return std::all_of(made.begin(), made.end(), [](const auto& engine) { return engine.expired(); }); }));
}

} // namespace
