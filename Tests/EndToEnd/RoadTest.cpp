#include "LoopbackServer.h"
#include "NativeHost.h"
#include "RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Road, AChangeGoesFromTheHostThroughADownloadedScriptToOutputsFilesAndBackAfterARestart) {
    clearProxyVariables();
    const RecordedLog log;
    NativeHost host;
    LoopbackServer server([](const LoopbackServer::Request&) {
        return LoopbackServer::Answer{.status = 200, .body = NativeHost::script("7.1"), .headers = {}};
    });
    host.environment->setRemoteScriptURL(server.url("/rules/quorvel.js"));
    host.makeEngine();
    host.engine->start();
    ASSERT_TRUE(host.runUntil([&] { return host.fetches == 1; }));
    EXPECT_EQ(NativeHost::contentOf(host.environment->remoteScriptFilePath().value()), NativeHost::script("7.1"));

    // The built-in script stands before the remote one; a developer pins the latter.
    const auto manager = host.engine->scriptManager();
    EXPECT_EQ(manager->currentScript(), manager->bundledScript());
    manager->setOverrideScript(manager->remoteScript());
    host.engine->setInputs({{"plan", "free"}});
    ASSERT_TRUE(host.runUntil([&] { return host.text("source") == "script 7.1"; }));

    host.notifications.clear();
    host.engine->setInputs({{"plan", "team"}});
    EXPECT_THAT(host.notifications, ElementsAre(kQVLInputsDidChangeNotification)) << "the answer comes later";
    ASSERT_TRUE(host.runUntil([&] { return host.text("plan") == "team"; }));
    EXPECT_THAT(host.changedKeys, ElementsAre("plan"));

    const std::string journalsPath = host.engine->quorvelDirectoryPath() + "/" + kQVLJournalsFile;
    const std::string cachePath = host.engine->quorvelDirectoryPath() + "/" + kQVLOutputsCacheFile;
    std::string savedWhenTold;
    const QVLToken token = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLJournalsDidChangeNotification, host.engine,
        [&](const QVLNotification&) { savedWhenTold = NativeHost::contentOf(journalsPath); });
    host.engine->journals()->eventForKey("opened")->trigger();
    EXPECT_THAT(savedWhenTold, testing::HasSubstr("\"opened\":{\"count\":1"));
    ASSERT_TRUE(host.runUntil([&] { return host.engine->outputForKey("opened")->integerValue() == 1; }));
    ASSERT_TRUE(
        host.runUntil([&] { return NativeHost::contentOf(cachePath).find("\"opened\":1") != std::string::npos; }));
    for (const RecordingLogger::Line& line : log->lines()) {
        EXPECT_NE(line.level, QVLLogLevelError) << line.message;
    }

    host.dropEngine();
    host.makeEngine();
    EXPECT_EQ(host.text("plan"), "team") << "the previous answer, before any script has run";
    EXPECT_EQ(host.engine->scriptAvailability(), QVLScriptAvailabilityUnavailable);
    EXPECT_THAT(host.engine->journals()->allEventKeys(), ElementsAre("opened"));
    host.dropEngine();
}

TEST(Road, AnUpdateOnTheServerReplacesTheScriptAndAServerThatFailsDoesNot) {
    clearProxyVariables();
    const RecordedLog log;
    NativeHost host;
    std::atomic<int> requests = 0;
    LoopbackServer server([&](const LoopbackServer::Request&) {
        const int number = ++requests;
        const bool isGood = number < 3;
        return LoopbackServer::Answer{.status = isGood ? 200 : 503,
                                      .body = isGood ? NativeHost::script("8." + std::to_string(number)) : "down",
                                      .headers = {}};
    });
    host.environment->setRemoteScriptURL(server.url("/quorvel.js"));
    host.makeEngine();
    const auto manager = host.engine->scriptManager();
    host.engine->start();
    ASSERT_TRUE(host.runUntil([&] { return host.fetches == 1; }));
    manager->setOverrideScript(manager->remoteScript());
    host.engine->setInputs({{"plan", "free"}});
    ASSERT_TRUE(host.runUntil([&] { return host.text("source") == "script 8.1"; }));
    host.engine->fetchScriptNow();
    ASSERT_TRUE(host.runUntil([&] { return host.fetches == 2; }));
    manager->setOverrideScript(manager->remoteScript());
    ASSERT_TRUE(host.runUntil([&] { return host.text("source") == "script 8.2"; }));

    host.engine->fetchScriptNow();
    ASSERT_TRUE(host.runUntil([&] { return manager->remoteScript()->state() == QVLScriptStateFailed; }));
    EXPECT_EQ(NativeHost::contentOf(host.environment->remoteScriptFilePath().value()), NativeHost::script("8.2"));
    EXPECT_EQ(manager->currentScript(), manager->bundledScript());
    host.engine->fetchScriptNow();
    EXPECT_TRUE(manager->isFetching()) << "a failed download ends fetching for good";
    host.dropEngine();
}

} // namespace
