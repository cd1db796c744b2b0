#include "QVLScriptManager.h"

#include "EnvironmentForTests.h"
#include "QVLDateFormatter.h"
#include "RecordingLogger.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

class ScriptManagerTest : public ::testing::Test {
protected:
    ScriptManagerTest() {
        platform.bundle->setPathForResource(kQVLBundledScriptFile, std::nullopt);
        platform.reachability.initialFlags = kQVLReachabilityFlagsReachable;
        platform.runLoop->setNow(std::chrono::sys_days(std::chrono::year(2026) / 11 / 22));
        platform.install();
        environment->setRemoteScriptURL(QVLURL::fromString("http://rules.example/latest/quorvel.js"));
        environment->setNightlyFeedURL(QVLURL::fromString("http://rules.example/nightly.json"));
    }
    ~ScriptManagerTest() override {
        manager.reset();
        platform.runUntilIdle();
    }

    void makeManager() {
        manager = QVLScriptManager::initWithEnvironment(EnvironmentForTests::environment());
        QVLNotificationCenter& center = QVLNotificationCenter::defaultCenter();
        tokens.clear();
        tokens.push_back(center.addObserver(kQVLScriptManagerCurrentScriptNeedsReloadNotification, manager,
                                            [this](const QVLNotification&) { ++reloads; }));
        tokens.push_back(center.addObserver(kQVLScriptManagerDidFetchScriptsNotification, manager,
                                            [this](const QVLNotification&) { ++fetches; }));
        static_cast<void>(log->take());
    }
    [[nodiscard]] std::string file(const std::string& name) const { return directory.path("quorvel/" + name); }
    void write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories(std::filesystem::path(file(name)).parent_path());
        std::ofstream(file(name)) << content;
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(file(name)).rdbuf();
        return text.str();
    }
    void haveBundledScript() {
        write("bundled.js", "// Quorvel 1.0\n");
        platform.bundle->setPathForResource(kQVLBundledScriptFile, file("bundled.js"));
    }
    void answer(std::size_t index, int status, const std::string& body) {
        platform.httpSession->answer(index, status, body);
        platform.runUntilIdle();
    }
    [[nodiscard]] const std::vector<QVLHTTPRequest>& requests() const { return platform.httpSession->requests(); }
    [[nodiscard]] std::vector<std::string> errorsAndNotices() {
        std::vector<std::string> lines;
        for (const RecordingLogger::Line& line : log->lines()) {
            lines.push_back(line.message);
        }
        static_cast<void>(log->take());
        return lines;
    }
    void fetchWithFeed(const std::string& feed, int status = 200) {
        manager->fetchScriptsNow();
        const std::size_t first = requests().size();
        answer(first - 1, 200, "// Quorvel 2.0\n");
        ASSERT_EQ(requests().size(), first + 1);
        answer(first, status, feed);
    }
    static std::string entry(const std::string& version, const std::string& name) {
        return R"({"version":")" + version + R"(","date":"2026-11-01T00:00:00Z","url":"http://rules.example/n/)" +
               name + "\"}";
    }

    TestPlatform platform;
    RecordedLog log;
    TemporaryDirectory directory;
    EnvironmentForTests environment{directory.path()};
    std::shared_ptr<QVLScriptManager> manager;
    int reloads = 0;
    int fetches = 0;
    std::vector<QVLToken> tokens;
};

TEST_F(ScriptManagerTest, TheCurrentScriptIsTheFirstEligibleOfOverrideBundledNightlyRemote) {
    makeManager();
    EXPECT_EQ(manager->currentScript(), nullptr);
    EXPECT_EQ(manager->remoteScript()->state(), QVLScriptStateUnknown);

    write(kQVLRemoteScriptFile, "// Quorvel 2.0\n");
    makeManager();
    EXPECT_EQ(manager->currentScript(), manager->remoteScript());
    EXPECT_EQ(manager->remoteScript()->title(), "Remote");

    haveBundledScript();
    makeManager();
    EXPECT_EQ(manager->currentScript(), manager->bundledScript());
    manager->setOverrideScript(manager->remoteScript());
    EXPECT_EQ(manager->currentScript(), manager->remoteScript());
    EXPECT_EQ(reloads, 1);
    manager->setOverrideScript(nullptr);
    EXPECT_EQ(manager->currentScript(), manager->bundledScript());
}

TEST_F(ScriptManagerTest, ANightlyScriptIsCurrentOnlyWhileTheDebugToolsAreUnlocked) {
    environment.unlockDebugTools();
    makeManager();
    fetchWithFeed("[" + entry("3.1", "a.js") + "," + entry("3.0", "b.js") + "]");
    EXPECT_EQ(manager->currentScript(), manager->nightlyScripts()->front()) << "downloading counts as eligible";
    answer(2, 200, "// Quorvel 3.1\n");
    EXPECT_EQ(read("Nightly_Scripts/a.js"), "// Quorvel 3.1\n");
    std::filesystem::remove(environment->debugKeyFilePath().value());
    manager->setOverrideScript(nullptr);
    EXPECT_EQ(manager->currentScript(), manager->remoteScript());
}

TEST_F(ScriptManagerTest, AnOverrideIsFoundByVersionAndPersistsOnlyWhenAsked) {
    write(kQVLRemoteScriptFile, "// Quorvel 2.0\n");
    haveBundledScript();
    makeManager();
    const auto stored = [this] { return platform.userDefaults->objectForKey(kQVLOverrideScriptVersion); };
    manager->setOverrideScript(manager->remoteScript());
    EXPECT_TRUE(stored().isNothing());
    environment->setPersistDebugOverrides(true);
    EXPECT_EQ(stored(), QVLJSONValue("2.0"));

    makeManager();
    EXPECT_EQ(manager->currentScript(), manager->remoteScript());
    environment->setPersistDebugOverrides(false);
    EXPECT_TRUE(stored().isNothing());
    EXPECT_EQ(manager->currentScript(), manager->remoteScript()) << "it stays in force";

    environment->setPersistDebugOverrides(true);
    platform.userDefaults->setObjectForKey("9.9", kQVLOverrideScriptVersion);
    makeManager();
    EXPECT_EQ(manager->overrideScript(), nullptr) << "no script has that version";
    EXPECT_EQ(manager->currentScript(), manager->bundledScript());
    const auto nameless =
        QVLScript::initWithVersion(std::nullopt, std::nullopt, "t", std::nullopt, QVLScriptSourceRemote);
    manager->setOverrideScript(nameless);
    EXPECT_THAT(errorsAndNotices(), ElementsAre(StartsWith("Supplied override script '<QVLScript: ")));
    EXPECT_EQ(manager->overrideVersion(), "9.9");
    manager->setOverrideScript(nullptr);
    EXPECT_TRUE(stored().isNothing());
}

TEST_F(ScriptManagerTest, OfflineEveryAttemptSaysSoAndTheNextReachabilityChangeFetches) {
    platform.reachability.initialFlags = 0U;
    makeManager();
    manager->fetchScriptsNow();
    manager->startScriptFetching();
    EXPECT_THAT(errorsAndNotices(), ElementsAre("Scripts not reachable", "Scripts not reachable"));
    platform.runLoop->advance(std::chrono::hours(12));
    EXPECT_THAT(requests(), IsEmpty());
    EXPECT_THAT(platform.reachability.peers(), ElementsAre(QVLReachabilityPeer(std::string("rules.example"))));
    platform.reachability.targets().back()->setFlags(kQVLReachabilityFlagsReachable);
    platform.runUntilIdle();
    EXPECT_EQ(requests().size(), 1U);
    EXPECT_EQ(requests()[0].url.text(), "http://rules.example/latest/quorvel.js");
    EXPECT_THAT(requests()[0].headers, IsEmpty());
    EXPECT_EQ(requests()[0].timeout, QVLTimeInterval(60));
}

TEST_F(ScriptManagerTest, AForcedFetchWaitsForTheFirstNewsOfTheNetworkAndNothingIsFetchedUnasked) {
    write(kQVLRemoteScriptFile, "// Quorvel 2.0\n");
    platform.userDefaults->setObjectForKey("2026-11-21T23:00:00Z", kQVLLastUpdateDateKey);
    platform.reachability.initialFlags = std::nullopt;
    makeManager();
    platform.reachability.targets().back()->setFlags(kQVLReachabilityFlagsReachable);
    platform.runUntilIdle();
    EXPECT_THAT(requests(), IsEmpty()) << "nobody has asked for a fetch";

    makeManager();
    manager->fetchScriptsNow();
    manager->startScriptFetching();
    EXPECT_THAT(requests(), IsEmpty());
    platform.reachability.targets().back()->setFlags(kQVLReachabilityFlagsReachable);
    platform.runUntilIdle();
    EXPECT_EQ(requests().size(), 1U) << "forced, though the file is an hour old";
    answer(0, 200, "// Quorvel 2.1\n");
    platform.reachability.targets().back()->setFlags(0U);
    platform.reachability.targets().back()->setFlags(kQVLReachabilityFlagsReachable);
    platform.runUntilIdle();
    EXPECT_EQ(requests().size(), 1U) << "once only";
}

TEST_F(ScriptManagerTest, ASuccessfulDownloadReplacesTheRecordStoresTheDateAndFetchesAgainSixHoursLater) {
    makeManager();
    manager->startScriptFetching();
    ASSERT_EQ(requests().size(), 1U);
    EXPECT_EQ(manager->remoteScript()->state(), QVLScriptStateDownloading);
    manager->fetchScriptsNow();
    EXPECT_EQ(requests().size(), 1U) << "one fetch at a time";
    answer(0, 200, "// Quorvel 2.0\n");
    EXPECT_EQ(read(kQVLRemoteScriptFile), "// Quorvel 2.0\n");
    EXPECT_EQ(manager->remoteScript()->version(), "2.0");
    EXPECT_EQ(manager->currentScript(), manager->remoteScript());
    EXPECT_EQ(fetches, 1);
    EXPECT_EQ(platform.userDefaults->objectForKey(kQVLLastUpdateDateKey), QVLJSONValue("2026-11-22T00:00:00Z"));
    platform.runLoop->advance(std::chrono::seconds(21599));
    EXPECT_EQ(requests().size(), 1U);
    platform.runLoop->advance(std::chrono::seconds(1));
    EXPECT_EQ(requests().size(), 2U);

    // The current script's download asks for a reload twice: for the old record, and for the new one of the new file.
    reloads = 0;
    answer(1, 200, "// Quorvel 2.1\n");
    EXPECT_EQ(reloads, 2);
    manager->stopScriptFetching();
    platform.runLoop->advance(std::chrono::hours(48));
    EXPECT_EQ(requests().size(), 2U);
}

TEST_F(ScriptManagerTest, AYoungFileIsFetchedAfterExactlyTheRemainder) {
    write(kQVLRemoteScriptFile, "// Quorvel 2.0\n");
    const QVLDate before = platform.runLoop->now() - std::chrono::seconds(21000);
    platform.userDefaults->setObjectForKey(QVLDateFormatter::sharedFormatter().stringFromDate(before),
                                           kQVLLastUpdateDateKey);
    makeManager();
    manager->startScriptFetching();
    platform.runLoop->advance(std::chrono::seconds(599));
    EXPECT_THAT(requests(), IsEmpty());
    platform.runLoop->advance(std::chrono::seconds(1));
    EXPECT_EQ(requests().size(), 1U);
}

TEST_F(ScriptManagerTest, ForceAndAMissingFileMakeAFetchDue) {
    write(kQVLRemoteScriptFile, "// Quorvel 2.0\n");
    const auto storeNow = [this] {
        platform.userDefaults->setObjectForKey(
            QVLDateFormatter::sharedFormatter().stringFromDate(platform.runLoop->now()), kQVLLastUpdateDateKey);
    };
    storeNow();
    makeManager();
    manager->fetchScriptsNow();
    EXPECT_EQ(requests().size(), 1U);

    storeNow();
    std::filesystem::remove(file(kQVLRemoteScriptFile));
    makeManager();
    manager->startScriptFetching();
    EXPECT_EQ(requests().size(), 2U);
    EXPECT_TRUE(platform.userDefaults->objectForKey(kQVLLastUpdateDateKey).isNothing());
}

TEST_F(ScriptManagerTest, AFailedRemoteDownloadEndsFetchingForGoodAndLeavesTheOldFile) {
    write(kQVLRemoteScriptFile, "// Quorvel 2.0\n");
    makeManager();
    manager->startScriptFetching();
    reloads = 0;
    answer(0, 500, "oops");
    EXPECT_THAT(errorsAndNotices(), ElementsAre("Failed to fetch script '2.0', response: <status 500, 4 bytes from "
                                                "http://rules.example/latest/quorvel.js> error:(null)"));
    EXPECT_EQ(manager->remoteScript()->state(), QVLScriptStateFailed);
    EXPECT_EQ(manager->currentScript(), nullptr);
    EXPECT_EQ(reloads, 0);
    EXPECT_EQ(read(kQVLRemoteScriptFile), "// Quorvel 2.0\n");
    manager->fetchScriptsNow();
    platform.runLoop->advance(std::chrono::hours(100));
    EXPECT_EQ(requests().size(), 1U);
    EXPECT_EQ(fetches, 0);
}

TEST_F(ScriptManagerTest, EachWayADownloadFailsHasItsLine) {
    makeManager();
    const auto nightly = [](const char* url) {
        return QVLScript::initWithVersion("3.0", std::nullopt, "3.0", QVLURL::fromString(url), QVLScriptSourceNightly);
    };
    int completions = 0;
    const auto download = [&](const std::shared_ptr<QVLScript>& script) {
        manager->downloadScript(script, [&] { ++completions; });
        return requests().size() - 1;
    };
    const auto script = nightly("http://rules.example/n/a.js");
    const std::size_t first = download(script);
    download(script);
    EXPECT_THAT(errorsAndNotices(), ElementsAre(StartsWith("Already downloading script:<QVLScript: ")));
    platform.httpSession->fail(first, QVLHTTPErrorCode::TimedOut, "The request timed out");
    platform.runUntilIdle();
    EXPECT_THAT(errorsAndNotices(),
                ElementsAre("Failed to fetch script '3.0', response: (null) error:com.quorvel.http 3: The "
                            "request timed out"));
    EXPECT_EQ(script->state(), QVLScriptStateFailed);

    answer(download(nightly("http://rules.example/n/a.js")), 200, "");
    EXPECT_THAT(errorsAndNotices(), ElementsAre(StartsWith("Failed to fetch script '3.0', response: <status 200")));
    answer(download(nightly("http://rules.example/")), 200, "text");
    EXPECT_THAT(errorsAndNotices(), ElementsAre("Failed to get save path. 3.0"));
    write("Nightly_Scripts/d.js/inside", "a directory in the way");
    answer(download(nightly("http://rules.example/n/d.js")), 200, "text");
    EXPECT_THAT(errorsAndNotices(), ElementsAre(StartsWith("Failed to write data for script '3.0' to disk: ")));
    EXPECT_EQ(completions, 0);
    answer(download(nightly("http://rules.example/n/good.js")), 200, "text");
    EXPECT_EQ(completions, 1);
    EXPECT_THAT(errorsAndNotices(), IsEmpty());
}

TEST_F(ScriptManagerTest, AProcessedFeedLeavesExactlyItsFilesAndTheCachedFeed) {
    environment.unlockDebugTools();
    write("Nightly_Scripts/stray.js", "x");
    write("Nightly_Scripts/.hidden", "x");
    write("Nightly_Scripts/kept.js", "// Quorvel 3.0\n");
    makeManager();
    const std::string feed = "[" + entry("3.1", "new.js") + R"(,{"version":"bad","url":"http://x.example/y"}, 7,)" +
                             entry("3.0", "kept.js") + "]";
    fetchWithFeed(feed);
    ASSERT_EQ(manager->nightlyScripts()->size(), 2U);
    EXPECT_EQ(manager->nightlyScripts()->at(0)->state(), QVLScriptStateDownloading);
    EXPECT_EQ(manager->nightlyScripts()->at(1)->state(), QVLScriptStateAvailable);
    EXPECT_EQ(fetches, 1) << "told while a download is under way";
    answer(2, 200, "// Quorvel 3.1\n");
    EXPECT_THAT(manager->cachedScriptPaths().value(),
                UnorderedElementsAre(file("Nightly_Scripts/new.js"), file("Nightly_Scripts/kept.js")));
    EXPECT_EQ(read("Nightly_Scripts/cachedNightlyFeed.json"), feed);
}

TEST_F(ScriptManagerTest, AFeedThatFailsFallsBackToItsCacheAndAnUnreadableOneWipes) {
    environment.unlockDebugTools();
    makeManager();
    fetchWithFeed("[" + entry("3.0", "a.js") + "]");
    answer(2, 200, "// Quorvel 3.0\n");
    static_cast<void>(errorsAndNotices());
    for (const int status : {304, 500}) {
        fetchWithFeed("", status);
        EXPECT_THAT(errorsAndNotices(), ElementsAre("Could not fetch nightly feed due to error: (null)",
                                                    "Falling back to last cached feed"));
        EXPECT_EQ(manager->nightlyScripts()->at(0)->state(), QVLScriptStateAvailable);
    }
    for (const char* feed : {"{\"not\": \"an array\"}", "[1,"}) {
        fetchWithFeed(feed);
        EXPECT_THAT(errorsAndNotices(), ElementsAre(StartsWith("Could not parse nightly feed: ")));
        EXPECT_FALSE(manager->nightlyScripts().has_value());
        EXPECT_THAT(manager->cachedScriptPaths().value(), IsEmpty());
        EXPECT_NE(read("Nightly_Scripts/cachedNightlyFeed.json"), "");
    }
    std::filesystem::remove(file("Nightly_Scripts/cachedNightlyFeed.json"));
    fetchWithFeed("", 500);
    EXPECT_THAT(errorsAndNotices(), Contains(StartsWith("Could not load cached feed due to error: ")));
    EXPECT_EQ(fetches, 6) << "a failed feed still ends the fetch";
}

TEST_F(ScriptManagerTest, TheCachedFeedCanBeSetUpWithoutMakingAnythingEligible) {
    write("Nightly_Scripts/cachedNightlyFeed.json", "[" + entry("3.0", "a.js") + "]");
    makeManager();
    manager->setupNightlyScripts();
    EXPECT_FALSE(manager->nightlyScripts().has_value()) << "the debug tools are locked";
    environment.unlockDebugTools();
    manager->setupNightlyScripts();
    EXPECT_EQ(manager->nightlyScripts()->at(0)->state(), QVLScriptStateUnknown);
    EXPECT_EQ(manager->currentScript(), nullptr);
}

TEST_F(ScriptManagerTest, RemotePathsAreTheSharedEnvironmentsAndNightlyPathsItsOwn) {
    TemporaryDirectory other;
    const auto own = std::make_shared<QVLQuorvelEnvironment>();
    own->setApplicationSupportDirectory(other.path());
    const auto theirs = QVLScriptManager::initWithEnvironment(own);
    const auto url = QVLURL::fromString("http://rules.example/n/a.js");
    const auto script = [&](QVLScriptSource source) {
        return QVLScript::initWithVersion("1", std::nullopt, "1", url, source);
    };
    EXPECT_EQ(theirs->localPathForScript(*script(QVLScriptSourceRemote)), file(kQVLRemoteScriptFile));
    EXPECT_EQ(theirs->localPathForScript(*script(QVLScriptSourceNightly)), other.path("quorvel/Nightly_Scripts/a.js"));
    EXPECT_EQ(theirs->remoteScript(), nullptr);
    theirs->fetchScriptsNow();
    EXPECT_THAT(errorsAndNotices(), Contains("Scripts not reachable"));
}

TEST_F(ScriptManagerTest, WithoutARemoteScriptURLAnyMoreNothingIsFetched) {
    makeManager();
    manager->startScriptFetching();
    environment->setRemoteScriptURL(std::nullopt);
    answer(0, 200, "// Quorvel 2.0\n");
    EXPECT_EQ(manager->remoteScript(), nullptr);
    manager->fetchScriptsNow();
    platform.runLoop->advance(std::chrono::hours(7));
    EXPECT_EQ(requests().size(), 1U);
    EXPECT_THAT(errorsAndNotices(), Contains("Scripts not reachable"));
}

TEST_F(ScriptManagerTest, TheManagerMayBeReleasedByWhoeverItTells) {
    makeManager();
    const std::weak_ptr<QVLScriptManager> weak = manager;
    tokens.push_back(manager->observeScripts([this] { manager.reset(); }));
    manager->remoteScript()->setState(QVLScriptStateAvailable);
    QVLScriptManager& held = *manager;
    held.setOverrideScript(nullptr);
    EXPECT_EQ(manager, nullptr);
    tokens.clear();
    platform.runUntilIdle();
    EXPECT_TRUE(weak.expired());
}

TEST_F(ScriptManagerTest, AManagerThatGoesLeavesNothingBehind) {
    makeManager();
    manager->startScriptFetching();
    const std::weak_ptr<QVLScriptManager> weak = manager;
    tokens.clear();
    manager.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(platform.httpSession->pendingCount(), 0U);
    EXPECT_TRUE(platform.httpSession->isInvalidated());
    EXPECT_FALSE(platform.reachability.targets().back()->isWatched());
    platform.reachability.targets().back()->setFlags(0U);
    platform.runUntilIdle();
    EXPECT_EQ(platform.runLoop->timerCount(), 0U);
}

} // namespace
