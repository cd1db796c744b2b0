#pragma once

#include "QVLABTestManager.h"
#include "QVLAccount.h"
#include "QVLJSONSerialization.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLReachability.h"
#include "RecordingLogger.h"
#include "ScriptedHTTPSession.h"
#include "ScriptedReachability.h"
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

/// A manager on the stepped platform, with a scripted service and network, in an account directory of its own.
class QVLABTestManagerFixture : public testing::Test {
protected:
    using Guids = std::vector<std::string>;

    static constexpr std::int64_t kNow = 1'700'000'000;

    void SetUp() override {
        platform.runLoop->setNow(QVLDate(std::chrono::seconds(kNow)));
        platform.install();
        QVLPlatform services = *QVLPlatform::current();
        services.makeHTTPSession = [this] { return session; };
        services.makeReachabilityTarget = network.maker();
        network.initialFlags = kQVLReachabilityFlagsReachable;
        QVLPlatform::install(std::make_shared<const QVLPlatform>(std::move(services)));
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

    /// Status, check time as "now" or in seconds before now, and P or W for what is held: "1 now P-"; "none" for no
    /// result.
    [[nodiscard]] std::string stateOf(const std::string& guid) const {
        const auto found = manager->testResults().find(guid);
        if (found == manager->testResults().end()) {
            return "none";
        }
        const QVLABTestResult& result = *found->second;
        const std::int64_t age = kNow - result.lastCheckTime();
        return std::to_string(static_cast<std::uint64_t>(result.status())) + " " +
               (age == 0 ? "now" : std::to_string(age)) + " " + (result.participant() ? "P" : "-") +
               (result.winGroup() ? "W" : "-");
    }

    /// The change is announced when the queues run.
    void setReachable(bool isReachable) const {
        network.targets().back()->setFlags(isReachable ? network.initialFlags : 0);
    }
    void networkChanges() const {
        QVLNotificationCenter::defaultCenter().post(
            {.name = kQVLReachabilityChangedNotification, .sender = manager->reachability(), .userInfo = {}});
    }

    /// The tests that the service was asked about since the last call.
    [[nodiscard]] Guids asked() {
        Guids guids;
        for (; askedCount < http->requests().size(); ++askedCount) {
            const std::string body = http->requests()[askedCount].body.value_or("");
            guids.push_back(QVLJSONSerialization::JSONObjectWithData(body)
                                .value.dictionaryOrEmpty()
                                .valueForKey("testGuid")
                                .description());
        }
        return guids;
    }
    // What becomes of the last request.
    void answer(int status, const std::string& body) const {
        http->answer(http->requests().size() - 1, status, body);
        platform.runLoop->runUntilIdle();
    }
    void fail() const {
        http->fail(http->requests().size() - 1, QVLHTTPErrorCode::TimedOut, "too late");
        platform.runLoop->runUntilIdle();
    }

    TestPlatform platform;
    RecordedLog log;
    TemporaryDirectory directory;
    std::shared_ptr<QVLQuorvelEnvironment> environment = std::make_shared<QVLQuorvelEnvironment>();
    std::shared_ptr<QVLAccount> account = QVLAccount::init();
    ScriptedReachability network;
    std::shared_ptr<ScriptedHTTPSession> http = std::make_shared<ScriptedHTTPSession>(platform.runLoop);
    /// What managers use for a session.
    std::shared_ptr<QVLHTTPSession> session = http;
    std::shared_ptr<QVLABTestManager> manager;

private:
    std::size_t askedCount = 0;
};
