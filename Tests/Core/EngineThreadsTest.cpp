#include "EngineTest.h"

#include <gmock/gmock.h>

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

    TestPlatform platform{TestPlatform::Queues::Real};
    RecordedLog log;
    TemporaryDirectory directory;
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
    load(engine, kEndless);
    engine->setInputs({{"count", 1}});
    engine->stop();
    load(engine, kCounting);
    bool isQueueFree = false;
    engine->performOnQueue([&](QVLQuorvel&) { platform.runLoop->post([&] { isQueueFree = true; }); });
    EXPECT_TRUE(platform.runLoop->runUntil([&] { return isQueueFree; }));
    engine->start();
    engine->setInputs({{"count", 2}});
    EXPECT_TRUE(platform.runLoop->runUntil([&] { return engine->outputForKey("count") != nullptr; }));
}

TEST_F(EngineThreadsTest, AHundredEnginesComeAndGo) {
    std::vector<std::weak_ptr<QVLQuorvel>> made;
    for (int index = 0; index < 100; ++index) {
        const auto engine = makeEngine(std::to_string(index % 3));
        load(engine, kCounting);
        engine->setInputs({{"count", index}});
        made.push_back(engine);
    }
    EXPECT_TRUE(platform.runLoop->runUntil(
        [&] { return std::all_of(made.begin(), made.end(), [](const auto& engine) { return engine.expired(); }); }));
}

} // namespace
