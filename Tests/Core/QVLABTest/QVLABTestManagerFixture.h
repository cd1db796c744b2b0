#pragma once

#include "QVLABTestManager.h"
#include "QVLAccount.h"
#include "QVLJSONSerialization.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLReachability.h"
#include "RecordingLogger.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

inline QVLJSONValue JSONFromText(std::string_view text) {
    return QVLJSONSerialization::JSONObjectWithData(text, QVLJSONSerialization::Reading::Fragments).value;
}

/// A manager on the stepped platform, with a scripted service and network, in an account directory of its own.
class QVLABTestManagerFixture : public testing::Test {
protected:
    using Guids = std::vector<std::string>;

    static constexpr std::int64_t kNow = 1'700'000'000;

    void SetUp() override {
        // Late in a second, of which check times have no more than the second.
        platform.runLoop->setNow(QVLDate(std::chrono::seconds(kNow) + std::chrono::milliseconds(999)));
        platform.reachability.initialFlags = kQVLReachabilityFlagsReachable;
        platform.install();
        environment->setAbtestHost("abtest.example");
        environment->setAbtestGuids({"t"});
        account->setAccountDirectory(directory.path());
    }

    void makeManager() { manager = QVLABTestManager::initWithEnvironment(environment, account); }

    [[nodiscard]] std::string cachePath() const { return directory.path("quorvel/ABTestResultsCache.json"); }
    void writeCache(const std::string& text) const {
        std::filesystem::create_directories(directory.path("quorvel"));
        std::ofstream(cachePath()) << text;
    }
    [[nodiscard]] std::string cache() const {
        std::ostringstream text;
        text << std::ifstream(cachePath()).rdbuf();
        return text.str();
    }
    /// A cache of test "t" alone, last checked at this time.
    static std::string cacheOf(const std::string& members, std::int64_t checkTime = kNow) {
        return R"({"t":{"testGuid":"t","lastCheckTime":)" + std::to_string(checkTime) + "," + members + "}}";
    }
    static std::string participating(const std::string& frequency, std::int64_t checkTime = kNow) {
        return cacheOf(R"("status":1,"participant":{"testGuid":"t","frequency":)" + frequency + "}", checkTime);
    }

    /// Status, check time or "now", and P or W for what is held: "1 now P-".
    [[nodiscard]] std::string stateOf(const QVLABTestResult& result) const {
        const auto now = std::chrono::floor<std::chrono::seconds>(platform.runLoop->now()).time_since_epoch().count();
        return std::to_string(static_cast<std::uint64_t>(result.status())) + " " +
               (result.lastCheckTime() == now ? "now" : std::to_string(result.lastCheckTime())) + " " +
               (result.participant() ? "P" : "-") + (result.winGroup() ? "W" : "-");
    }
    [[nodiscard]] std::string stateOf(const std::string& guid) const {
        const auto found = manager->testResults().find(guid);
        return found == manager->testResults().end() ? "none" : stateOf(*found->second);
    }

    /// The change is announced when the queues run.
    void setReachable(bool isReachable) const {
        platform.reachability.targets().back()->setFlags(isReachable ? kQVLReachabilityFlagsReachable : 0U);
    }
    void networkChanges() const {
        QVLNotificationCenter::defaultCenter().post(
            {.name = kQVLReachabilityChangedNotification, .sender = manager->reachability(), .userInfo = {}});
    }

    /// The tests that the service was asked about since the last call.
    [[nodiscard]] Guids asked() {
        Guids guids;
        for (; askedCount < http->requests().size(); ++askedCount) {
            const QVLJSONValue body = JSONFromText(http->requests()[askedCount].body.value_or(""));
            guids.push_back(body.dictionaryOrEmpty().valueForKey("testGuid").description());
        }
        return guids;
    }
    // What becomes of the last request.
    void answer(int status, const std::string& body) { answer(http->requests().size() - 1, status, body); }
    void fail() {
        http->fail(http->requests().size() - 1, QVLHTTPErrorCode::TimedOut, "too late");
        platform.runUntilIdle();
    }
    /// Answers the request of this index.
    void answer(std::size_t index, int status, const std::string& body) {
        http->answer(index, status, body);
        platform.runUntilIdle();
    }

    TestPlatform platform;
    RecordedLog log;
    TemporaryDirectory directory;
    std::shared_ptr<QVLQuorvelEnvironment> environment = std::make_shared<QVLQuorvelEnvironment>();
    std::shared_ptr<QVLAccount> account = QVLAccount::init();
    std::shared_ptr<ScriptedHTTPSession> http = platform.httpSession;
    std::shared_ptr<QVLABTestManager> manager;

private:
    std::size_t askedCount = 0;
};
