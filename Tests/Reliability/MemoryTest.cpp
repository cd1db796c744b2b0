#include "EngineTest.h"
#include "ResidentMemory.h"
#include "Victim.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <iostream>

// Scripts that want more memory than there is.

namespace {

using ::testing::ElementsAre;

class MemoryTest : public EngineTest {
protected:
    MemoryTest() { engine->start(); }

    void run(const QVLJSONDictionary& inputs) {
        engine->setInputs(inputs);
        settle();
    }
    /// Waits for it, since the JavaScript engine gives memory back to the system by and by.
    [[nodiscard]] bool isMemoryBelow(std::int64_t bytes) const {
        constexpr QVLTimeInterval kStep(0.01);
        for (QVLTimeInterval waited(0); residentMemory() >= bytes && waited < SteppedRunLoop::kDeadline;
             waited += kStep) {
            platform.runLoop->runOnce(kStep);
        }
        return residentMemory() < bytes;
    }
    /// Runs the script on the queue without applying its answers; the last one's output.
    std::int64_t runMany(int count) {
        std::int64_t output = 0;
        onQueue([&](QVLQuorvel& quorvel) {
            for (int index = 0; index < count; ++index) {
                output = quorvel.processScriptIfPossible().value().valueForKey("kept").qvl_castToIntegerValue();
            }
        });
        return output;
    }
};

TEST_F(MemoryTest, AScriptThatWantsTooMuchAtOnceFailsAndTheEngineGoesOn) {
    run({{"wish", "none"}});
    ASSERT_TRUE(load(scriptWithBody("if (inputs.wish === 'huge') { return 'x'.repeat(2 ** 31); }\n"
                                    "if (inputs.wish === 'more') { for (let text = 'x';;) { text += text; } }\n"
                                    "answer.wish = inputs.wish; return JSON.stringify(answer);")));
    for (const char* const wish : {"first", "huge", "more"}) {
        run({{"wish", wish}});
        EXPECT_EQ(engine->outputForKey("wish")->stringValue(), "first");
    }
    run({{"wish", "last"}});
    EXPECT_EQ(engine->outputForKey("wish")->stringValue(), "last");
    EXPECT_THAT(statusEvents(), ElementsAre("run_succeeded|1.0", "bad_response|1.0", "run_succeeded|1.0"));
    EXPECT_THAT(messages(QVLLogLevelDebug), testing::Contains(testing::HasSubstr("RangeError: Out of memory")));
}

TEST(Memory, AScriptThatTakesAllOfItPieceByPieceEndsTheProcessAndLeavesItsFilesWhole) {
    const TemporaryDirectory directory;
    Victim victim(directory.path(), Victim::Script::Hungry);
    EXPECT_TRUE(victim.hasCrashed());
    EXPECT_GE(Victim::savedCount(directory.path()), victim.lastCount());
    EXPECT_GT(victim.lastCount(), 0U);
}

TEST_F(MemoryTest, WhatAScriptKeepsInGlobalsStaysUntilTheNextLoadAndNoRunKeepsAnythingElse) {
    const char* const wanted = std::getenv("QVL_LEAK_RUNS");
    const int step = (wanted ? std::atoi(wanted) : 5000) / 10;
    for (const bool isLeaking : {true, false}) {
        const std::string leak = isLeaking ? "kept.push({ inputs, text: inputsText + kept.length });" : "";
        const std::string script =
            "const kept = [];\n" + scriptWithBody(leak + "answer.kept = kept.length; return JSON.stringify(answer);");
        run({{"a", 1}});
        ASSERT_TRUE(load(script));
        runMany(step);
        const std::int64_t before = residentMemory();
        for (int sample = 2; sample <= 10; ++sample) {
            // The run that tests for support counts too.
            EXPECT_EQ(runMany(step), isLeaking ? sample * step + 1 : 0);
            std::cout << sample * step << (isLeaking ? " leaking" : "")
                      << " runs: " << (residentMemory() - before) / 1024 << " KiB more\n";
        }
        const std::int64_t allowance = 32'000'000 + (isLeaking ? 9 * step * std::int64_t{1000} : 0);
        EXPECT_TRUE(!kIsMemoryTelling || residentMemory() - before < allowance);
        ASSERT_TRUE(load(script));
        EXPECT_EQ(runMany(1), isLeaking ? 2 : 0);
        EXPECT_TRUE(!kIsMemoryTelling || isMemoryBelow(before + 64'000'000)) << "the old machine's memory is back";
    }
}

} // namespace
