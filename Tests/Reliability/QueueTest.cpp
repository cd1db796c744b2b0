#include "QVLQuorvel.h"
#include "RecordingLogger.h"
#include "ResidentMemory.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <future>

namespace {

TEST(Queue, TenThousandEvaluationsThatWaitAreAllMadeAndTheLastInputsWin) {
    constexpr int kCount = 10'000;
    const TemporaryDirectory directory;
    TestPlatform platform(TestPlatform::Queues::Real);
    // The outputs' file, which is brought to disk at every run, would be all that is measured here.
    platform.fileManager->writeFault = FaultyFileManager::atPathsEndingWith(kQVLOutputsCacheFile, "no time");
    platform.install();
    const RecordedLog log;
    const auto engine = QVLQuorvel::initWithDirectory(directory.path(), nullptr, nullptr);
    engine->setInputs({{"number", 0}});
    engine->start();
    QVLJSONDictionary seen;
    int notifications = 0;
    const QVLToken token = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLOutputsDidChangeNotification, engine, [&](const QVLNotification&) {
            ++notifications;
            EXPECT_NE(QVLJSONValue(engine->outputs()), QVLJSONValue(std::exchange(seen, engine->outputs())));
        });

    std::promise<void> mayRun;
    engine->performOnQueue([&](QVLQuorvel& quorvel) {
        quorvel.loadScriptWithJSContent("let runs = 0; quorvel.process = text => JSON.stringify({ '%usedInputs': [], "
                                        "'%isCurrentAppSupported': true, number: JSON.parse(text).number, "
                                        "runs: runs++ });");
        mayRun.get_future().wait();
    });
    const std::int64_t memoryBefore = residentMemory();
    for (int number = 1; number < kCount; ++number) {
        const QVLJSONDictionary inputs = {{"number", number}};
        number % 2 ? engine->setInputs(inputs) : engine->setInputsOverrides(inputs);
    }
    engine->setInputsOverrides({{"number", kCount}});
    EXPECT_TRUE(!kIsMemoryTelling || residentMemory() - memoryBefore < 16'000'000);
    mayRun.set_value();
    const auto number = [&](const char* key) {
        const auto output = engine->outputForKey(key);
        return output ? output->integerValue() : 0;
    };
    EXPECT_TRUE(platform.runLoop->runUntil([&] { return number("runs") >= kCount; }, std::chrono::minutes(1)));
    EXPECT_EQ(number("number"), kCount);
    EXPECT_EQ(notifications, kCount) << "the runs differ, so that each has a change";
    EXPECT_TRUE(!kIsMemoryTelling || residentMemory() - memoryBefore < 64'000'000);
}

} // namespace
