#include "EnvironmentForTests.h"
#include "QVLQuorvel.h"
#include "QVLScriptManager.h"
#include "RecordingLogger.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class EnvironmentTest : public ::testing::Test {
protected:
    EnvironmentTest() { platform.install(); }
    ~EnvironmentTest() override { platform.runUntilIdle(); }

    TestPlatform platform;
    RecordedLog log;
    TemporaryDirectory directory;
    EnvironmentForTests environment{directory.path()};
};

TEST_F(EnvironmentTest, EveryFileLiesInTheEnvironmentDirectoryWhichIsMadeOnDemand) {
    const std::string base = directory.path("quorvel");
    EXPECT_EQ(environment->remoteScriptFilePath(), base + "/Quorvel.remote.js");
    EXPECT_EQ(environment->customScriptFilePath(), base + "/Quorvel.custom.js");
    EXPECT_EQ(environment->debugHTMLFilePath(), base + "/debug.html");
    EXPECT_EQ(environment->debugKeyFilePath(), base + "/debugtoolkey.qvlmkey");
    EXPECT_EQ(environment->nightlyScriptDirectoryPath(), base + "/Nightly_Scripts");
    EXPECT_TRUE(std::filesystem::is_directory(base + "/Nightly_Scripts"));
    EXPECT_TRUE(environment->bundleScriptFilePath()->ends_with("/Quorvel.js"));
    EXPECT_THAT(log->take(), IsEmpty());
}

TEST_F(EnvironmentTest, AFileInThePlaceOfTheDirectoryGivesWayAndAMissingParentIsNotMade) {
    std::ofstream(directory.path("quorvel")) << "in the way";
    EXPECT_EQ(environment->environmentDirectory(), directory.path("quorvel"));
    EXPECT_TRUE(std::filesystem::is_directory(directory.path("quorvel")));
    EXPECT_THAT(log->take(), IsEmpty());

    environment->setApplicationSupportDirectory(directory.path("missing"));
    EXPECT_EQ(environment->remoteScriptFilePath(), std::nullopt);
    EXPECT_EQ(environment->nightlyScriptDirectoryPath(), std::nullopt);
    EXPECT_FALSE(environment->debugToolsAvailable());
    EXPECT_THAT(log->take(), testing::Each(StartsWith("error QVLQuorvelEnvironment: Could not create directory: " +
                                                      directory.path("missing/quorvel") + ", error: ")));
}

TEST_F(EnvironmentTest, WithoutAnApplicationSupportDirectoryATemporaryOneServesAndEveryCallSaysSo) {
    environment->setApplicationSupportDirectory(std::nullopt);
    const std::string expected = platform.fileManager->temporaryDirectory() + "/quorvel-environment";
    EXPECT_EQ(environment->environmentDirectory(), expected);
    EXPECT_EQ(environment->environmentDirectory(), expected);
    const std::string line = "error QVLQuorvelEnvironment: Quorvel environment directory has not been set.";
    EXPECT_THAT(log->take(), ElementsAre(line, line));
}

TEST_F(EnvironmentTest, OnlyTheDevelopersKeyUnlocksTheDebugToolsAndAtOnce) {
    EXPECT_FALSE(environment->debugToolsAvailable());
    std::ofstream(environment->debugKeyFilePath().value()) << "";
    EXPECT_FALSE(environment->debugToolsAvailable());
    environment.unlockDebugTools();
    EXPECT_TRUE(environment->debugToolsAvailable());
    std::ofstream(environment->debugKeyFilePath().value(), std::ios::app) << "x";
    EXPECT_FALSE(environment->debugToolsAvailable());
}

TEST_F(EnvironmentTest, PersistDebugOverridesLivesInTheUserDefaults) {
    EXPECT_FALSE(environment->persistDebugOverrides());
    platform.userDefaults->setObjectForKey("YES", kQVLPersistOverridesKey);
    EXPECT_TRUE(environment->persistDebugOverrides());
    int told = 0;
    QVLToken token = environment->observePersistDebugOverrides([&] { ++told; });
    environment->setPersistDebugOverrides(false);
    EXPECT_FALSE(platform.userDefaults->boolForKey(kQVLPersistOverridesKey));
    token.reset();
    environment->setPersistDebugOverrides(true);
    EXPECT_EQ(told, 1);
}

TEST_F(EnvironmentTest, ThePreLoginEngineIsMadeOnceAndRunsTheBuiltInScript) {
    const auto engine = environment->quorvelForPreLogin();
    EXPECT_EQ(environment->quorvelForPreLogin(), engine);
    EXPECT_TRUE(engine->isPreLogin());
    engine->start();
    EXPECT_THAT(platform.httpSession->requests(), IsEmpty());
    engine->setInputs({{"plan", "free"}});
    platform.runUntilIdle();
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityAvailable);
    EXPECT_EQ(engine->loadedScriptPath(), environment->bundleScriptFilePath());
    EXPECT_EQ(engine->lastRunVersion(), engine->scriptManager()->bundledScript()->version());
    EXPECT_TRUE(std::filesystem::exists(directory.path("quorvel/OutputsCache.json")));

    environment->setQuorvelForPreLogin(nullptr);
    EXPECT_NE(environment->quorvelForPreLogin(), engine);
}

TEST_F(EnvironmentTest, AnAccountEngineNeverRunsTheBuiltInScriptAlone) {
    const auto account = QVLAccount::init();
    account->setAccountDirectory(directory.path("account"));
    const auto engine = environment->quorvelWithAccount(account);
    EXPECT_NE(environment->quorvelWithAccount(account), engine);
    engine->start();
    engine->setInputs({{"plan", "free"}});
    platform.runUntilIdle();
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityUnavailable);
    EXPECT_EQ(engine->lastRunVersion(), "No Script");
    EXPECT_TRUE(std::filesystem::is_directory(directory.path("account/quorvel"))) << "parents are made";
}

TEST_F(EnvironmentTest, AnAccountEngineRunsTheRemoteScriptAsSoonAsItArrives) {
    platform.bundle->setPathForResource(kQVLBundledScriptFile, std::nullopt);
    platform.reachability.initialFlags = kQVLReachabilityFlagsReachable;
    environment->setRemoteScriptURL(QVLURL::fromString("http://rules.example/quorvel.js"));
    const auto account = QVLAccount::init();
    account->setAccountDirectory(directory.path("account"));
    const auto engine = environment->quorvelWithAccount(account);
    engine->start();
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityPending);
    engine->setInputs({{"plan", "free"}});
    platform.runUntilIdle();
    ASSERT_EQ(platform.httpSession->requests().size(), 1U);
    platform.httpSession->answer(0, 200,
                                 "// Quorvel 5.0\nquorvel.process = () => JSON.stringify({ '%version': '5.0', "
                                 "'%isCurrentAppSupported': true, '%usedInputs': [], tour: true });");
    platform.runUntilIdle();
    EXPECT_TRUE(engine->outputForKey("tour")->boolValue());
    EXPECT_EQ(engine->lastRunVersion(), "5.0");
    EXPECT_EQ(engine->scriptAvailability(), QVLScriptAvailabilityAvailable);
}

} // namespace
