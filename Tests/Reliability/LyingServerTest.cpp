#include "EngineTest.h"
#include "EnvironmentForTests.h"
#include "QVLScriptManager.h"

#include <gmock/gmock.h>

// Servers that say "200" and give something else than a script. What they do to the transfer itself is tested with the
// session and the downloads.

namespace {

using LyingServerTest = EngineTest;

TEST_F(LyingServerTest, WhatAServerGivesInPlaceOfAScriptLeavesTheOutputsAndTheNextGoodScriptMendsIt) {
    const EnvironmentForTests environment(directory.path());
    environment->setRemoteScriptURL(QVLURL::fromString("http://rules.example/quorvel.js"));
    platform.reachability.initialFlags = kQVLReachabilityFlagsReachable;
    platform.bundle->setPathForResource(kQVLBundledScriptFile, std::nullopt);
    const auto manager = QVLScriptManager::initWithEnvironment(EnvironmentForTests::environment());
    engine = QVLQuorvel::initWithDirectory(directory.path("account"), manager, nullptr);
    observe(engine);
    engine->setInputs({{"a", 1}});
    engine->start();
    const auto serve = [&](const std::string& body) {
        engine->fetchScriptNow();
        platform.httpSession->answer(platform.httpSession->requests().size() - 1, 200, body);
        settle();
    };
    const auto text = [&] { return engine->outputForKey("text")->stringValue().value_or(""); };
    const std::string good = scriptWithBody("answer.text = 'good ' + inputs.a; return JSON.stringify(answer);");
    serve(good);
    ASSERT_EQ(text(), "good 1");
    struct Row {
        std::string body;
        std::string status;
    };
    for (const Row& row : {
             Row{"<html><body>Please log in to the network</body></html>", "not_installed|unknown"},
             Row{good.substr(0, good.size() / 2), "not_installed|1.0"},
             Row{R"({"error": "not found"})", "not_installed|unknown"},
             Row{"// Quorvel 1.0.js\nquorvel.process = 1;", "bad_response|1.0"},
             Row{"// Quorvel 1.0.js\nquorvel.process = () => '{}';", "not_supported|1.0"},
             Row{"\xFF\xFE\x01", ""},
         }) {
        SCOPED_TRACE(row.body);
        analyticsEvents.clear();
        serve(row.body);
        EXPECT_TRUE(row.status.empty() || testing::Value(statusEvents(), testing::Contains(row.status)));
        EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityUnavailable);
        EXPECT_EQ(text(), "good 1");
        serve(good);
        EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityAvailable);
        engine->setInputs({{"a", 2}});
        settle();
        EXPECT_EQ(text(), "good 2");
        engine->setInputs({{"a", 1}});
        settle();
    }
}

} // namespace
