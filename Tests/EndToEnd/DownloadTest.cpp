#include "EnvironmentForTests.h"
#include "FileSizeLimit.h"
#include "LoopbackServer.h"
#include "QVLLinuxHTTPSession.h"
#include "QVLScriptManager.h"
#include "RawServer.h"
#include "RecordingLogger.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

// What servers and disks do to a download: real HTTP from the loopback interface to real files.

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using Answer = LoopbackServer::Answer;
using Request = LoopbackServer::Request;

constexpr const char* kOldScript = "// Quorvel 1.0.js\n";
constexpr const char* kNewScript = "// Quorvel 2.0.js\n";
constexpr std::size_t kBodyLimit = 100'000;

/// The real session, with less patience and less room.
class HurriedSession final : public QVLHTTPSession {
public:
    explicit HurriedSession(std::shared_ptr<QVLMainRunLoop> runLoop) : m_real(std::move(runLoop)) {}

    [[nodiscard]] QVLToken start(QVLHTTPRequest request, Completion completion) override {
        request.timeout = QVLTimeInterval(0.1);
        request.responseBodyLimit = kBodyLimit;
        return m_real.start(std::move(request), std::move(completion));
    }
    void invalidateAndCancel() override { m_real.invalidateAndCancel(); }

private:
    QVLLinuxHTTPSession m_real;
};

/// Answers by the path: "/404" with that status, and what else the tests ask for.
Answer answerTo(const Request& request) {
    const std::string name = request.path.substr(1);
    if (name == "loop" || name == "moved") {
        return {.status = 302, .body = kNewScript, .headers = {{"Location", name == "loop" ? "/loop" : "/script"}}};
    }
    if (name == "large") {
        return {.body = kNewScript + std::string(kBodyLimit, ' ')};
    }
    if (name == "latin1") {
        return {.body = std::string(kNewScript) + "// caf\xE9\n"};
    }
    const bool isStatus = name.find_first_not_of("0123456789") == std::string::npos;
    return {.status = isStatus ? std::stoi(name) : 200, .body = name == "empty" ? "" : kNewScript};
}

class DownloadTest : public ::testing::Test {
protected:
    DownloadTest() {
        clearProxyVariables();
        platform.makeHTTPSession = [this] { return std::make_shared<HurriedSession>(platform.runLoop); };
        platform.reachability.initialFlags = kQVLReachabilityFlagsReachable;
        platform.bundle->setPathForResource(kQVLBundledScriptFile, std::nullopt);
        platform.install();
    }
    ~DownloadTest() override { manager.reset(); }

    [[nodiscard]] std::string scriptPath() const { return environment->remoteScriptFilePath().value(); }
    static void write(const std::string& path, const std::string& content) {
        std::ofstream(path, std::ios::binary) << content;
    }
    static std::string read(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }

    /// Fetches from there with a manager of its own. What it logs is left in the log.
    void fetch(const QVLURL& url) {
        environment->setRemoteScriptURL(url);
        manager = QVLScriptManager::initWithEnvironment(EnvironmentForTests::environment());
        static_cast<void>(log->take());
        manager->fetchScriptsNow();
        EXPECT_TRUE(platform.runLoop->runUntil(
            [this] { return manager->remoteScript()->state() != QVLScriptStateDownloading && !isFeedAwaited(); }));
    }
    /// The remote script is replaced by a new record when its download has succeeded, and the feed follows.
    [[nodiscard]] bool isFeedAwaited() const {
        return manager->isFetching() && manager->remoteScript()->state() != QVLScriptStateFailed;
    }

    void expectFailure(const std::string& reason) {
        EXPECT_THAT(log->take(), Contains(AllOf(HasSubstr("error QVLScriptManager: Failed to "), HasSubstr(reason))));
        EXPECT_EQ(manager->remoteScript()->state(), QVLScriptStateFailed);
        EXPECT_TRUE(manager->isFetching()) << "a failed download ends fetching for good";
        EXPECT_EQ(manager->remoteScript()->version(), "1.0");
    }

    TestPlatform platform;
    RecordedLog log;
    TemporaryDirectory directory;
    EnvironmentForTests environment{directory.path()};
    LoopbackServer server{answerTo};
    std::shared_ptr<QVLScriptManager> manager;
};

TEST_F(DownloadTest, AnythingButAWholeAnswerWithStatus200LeavesTheOldScript) {
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
    const RawServer truncating(head + kNewScript, RawServer::Afterwards::Close);
    const RawServer stalling(head, RawServer::Afterwards::Stall);
    struct Row {
        QVLURL url;
        std::string reason;
    };
    for (const Row& row : {
             Row{server.url("/204"), "response: <status 204, 0 bytes from " + server.url("/204").text()},
             Row{server.url("/304"), "response: <status 304, 0 bytes"},
             Row{server.url("/404"), "response: <status 404, 18 bytes"},
             Row{server.url("/500"), "response: <status 500, 18 bytes"},
             Row{server.url("/empty"), "response: <status 200, 0 bytes"},
             Row{server.url("/loop"), "response: (null) error:"},
             Row{server.url("/large"), "response: (null) error:"},
             Row{truncating.url(), "response: (null) error:"},
             Row{stalling.url(), "response: (null) error:"},
             Row{RawServer::refusingURL(), "response: (null) error:"},
         }) {
        SCOPED_TRACE(row.url.text());
        write(scriptPath(), kOldScript);
        fetch(row.url);
        expectFailure("fetch script '1.0', " + row.reason);
        EXPECT_EQ(read(scriptPath()), kOldScript);
    }
}

TEST_F(DownloadTest, ARedirectIsFollowedAndTheTextIsTakenAsItComes) {
    fetch(server.url("/moved"));
    EXPECT_EQ(read(scriptPath()), kNewScript);
    EXPECT_EQ(manager->remoteScript()->state(), QVLScriptStateAvailable);
    EXPECT_EQ(manager->currentScript()->version(), "2.0");
    EXPECT_FALSE(manager->isFetching());

    // What is not UTF-8 is saved all the same, but then no script is found in the file.
    fetch(server.url("/latin1"));
    EXPECT_EQ(read(scriptPath()), std::string(kNewScript) + "// caf\xE9\n");
    EXPECT_THAT(log->take(), Contains(HasSubstr("Did not find script at path")));
    EXPECT_EQ(manager->remoteScript()->state(), QVLScriptStateUnknown);
    EXPECT_EQ(manager->currentScript(), nullptr);
    EXPECT_FALSE(manager->isFetching());
}

TEST_F(DownloadTest, AnItemInTheWayOrAFullDiskFailsTheWriteAndLosesNothing) {
    write(scriptPath(), kOldScript);
    {
        const FileSizeLimit fullDisk(4);
        fetch(server.url("/script"));
    }
    expectFailure("write data for script '1.0' to disk: ");
    EXPECT_EQ(read(scriptPath()), kOldScript);

    std::filesystem::remove(scriptPath());
    std::filesystem::create_directories(scriptPath());
    write(scriptPath() + "/precious", "kept");
    fetch(server.url("/script"));
    EXPECT_THAT(log->take(), Contains(HasSubstr("error QVLScriptManager: Failed to write data for script")));
    EXPECT_EQ(manager->remoteScript()->state(), QVLScriptStateFailed);
    EXPECT_EQ(read(scriptPath() + "/precious"), "kept");
}

TEST_F(DownloadTest, AFeedThatFailsOnTheWayIsReplacedByTheCachedOne) {
    environment.unlockDebugTools();
    const std::string nightly = environment->nightlyScriptDirectoryPath().value();
    const std::string feed =
        R"([{"version":"3.0","date":"2026-11-01T00:00:00Z","url":")" + server.url("/night.js").text() + "\"}]";
    const RawServer truncating("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n[]", RawServer::Afterwards::Close);
    for (const QVLURL& url :
         {server.url("/304"), server.url("/large"), server.url("/loop"), truncating.url(), RawServer::refusingURL()}) {
        SCOPED_TRACE(url.text());
        write(nightly + "/cachedNightlyFeed.json", feed);
        environment->setNightlyFeedURL(url);
        fetch(server.url("/script"));
        EXPECT_THAT(log->take(), Contains(HasSubstr("error QVLScriptManager: Could not fetch nightly feed due to")));
        ASSERT_TRUE(manager->nightlyScripts());
        EXPECT_EQ(manager->nightlyScripts()->front()->version(), "3.0");
        EXPECT_EQ(read(nightly + "/cachedNightlyFeed.json"), feed);
        EXPECT_TRUE(platform.runLoop->runUntil(
            [this] { return manager->nightlyScripts()->front()->state() == QVLScriptStateAvailable; }));
        EXPECT_EQ(read(nightly + "/night.js"), kNewScript);
    }
}

} // namespace
