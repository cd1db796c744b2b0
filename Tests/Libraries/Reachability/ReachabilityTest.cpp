#include "QVLNotificationCenter.h"
#include "QVLReachability.h"
#include "TestPlatform.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ReachabilityTest : public testing::Test {
protected:
    ReachabilityTest() { platform.install(); }

    TestPlatform platform;
    const std::shared_ptr<ScriptedReachabilityTarget> target = std::make_shared<ScriptedReachabilityTarget>();
};

TEST_F(ReachabilityTest, ReadsTheFlags) {
    struct Row {
        std::uint32_t flags;
        const char* text;
        bool isReachable;
        bool isReachableViaWiFi;
        bool isConnectionRequired;
        bool isConnectionOnDemand;
        bool isInterventionRequired;
    };
    const auto reachability = QVLReachability::initWithReachabilityRef(target);
    for (const Row& row : {
             Row{0, "X- -------", false, false, false, false, false},
             Row{1, "X- -t-----", false, false, false, false, false},
             Row{2, "XR -------", true, true, false, false, false},
             Row{2 | 1, "XR -t-----", true, true, false, false, false},
             Row{2 | 4, "XR c------", true, true, true, false, false},
             Row{2 | 1 | 4, "XR ct-----", false, true, true, false, false},
             Row{4 | 8, "X- c--C---", false, false, true, true, false},
             Row{4 | 32, "X- c---D--", false, false, true, true, false},
             Row{8 | 32, "X- ---CD--", false, false, false, false, false},
             Row{4 | 16, "X- c-i----", false, false, true, false, true},
             Row{16, "X- --i----", false, false, false, false, false},
             Row{2 | 65536, "XR -----l-", true, true, false, false, false},
             Row{2 | 131072, "XR ------d", true, true, false, false, false},
         }) {
        target->setFlags(row.flags);
        SCOPED_TRACE(row.text);
        EXPECT_EQ(reachability->reachabilityFlags(), row.flags);
        EXPECT_EQ(reachability->currentReachabilityFlags(), row.text);
        EXPECT_EQ(reachability->isReachable(), row.isReachable);
        EXPECT_EQ(reachability->isConnected(), row.isReachable);
        EXPECT_EQ(reachability->currentReachabilityStatus(), row.isReachable ? QVLReachableViaWiFi : QVLNotReachable);
        EXPECT_EQ(reachability->currentReachabilityString(), row.isReachable ? "WiFi" : "No Connection");
        EXPECT_EQ(reachability->isReachableViaWiFi(), row.isReachableViaWiFi);
        EXPECT_FALSE(reachability->isReachableViaWWAN());
        EXPECT_EQ(reachability->connectionRequired(), row.isConnectionRequired);
        EXPECT_EQ(reachability->isConnectionRequired(), row.isConnectionRequired);
        EXPECT_EQ(reachability->isConnectionOnDemand(), row.isConnectionOnDemand);
        EXPECT_EQ(reachability->isInterventionRequired(), row.isInterventionRequired);
    }
    target->setFlags(std::nullopt);
    EXPECT_EQ(reachability->reachabilityFlags(), 0U);
    EXPECT_FALSE(reachability->isReachable());
}

TEST_F(ReachabilityTest, ShowsItselfInTheHostsLanguageAndInLogLines) {
    platform.localization->texts["WiFi"] = "WLAN";
    target->setFlags(2);
    const auto reachability = QVLReachability::initWithReachabilityRef(target);
    EXPECT_EQ(reachability->currentReachabilityString(), "WLAN");
    unsigned address = 0;
    char flags[11] = {};
    EXPECT_EQ(std::sscanf(reachability->description().c_str(), "<QVLReachability: 0x%x (%10c)>", &address, flags), 2);
    EXPECT_EQ(address, static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(reachability.get())));
    EXPECT_STREQ(flags, "XR -------");
}

TEST_F(ReachabilityTest, AsksThePlatformForWhatEachConstructorNames) {
    EXPECT_NE(QVLReachability::reachabilityWithHostname("a.example"), nullptr);
    EXPECT_NE(QVLReachability::reachabilityWithHostName("b.example"), nullptr);
    EXPECT_NE(QVLReachability::reachabilityWithAddress(QVLSocketAddress::IPv4(1, 2, 3, 4)), nullptr);
    EXPECT_NE(QVLReachability::reachabilityForInternetConnection(), nullptr);
    EXPECT_NE(QVLReachability::reachabilityForLocalWiFi(), nullptr);
    EXPECT_THAT(platform.reachability.peers(), ElementsAre("a.example", "b.example", QVLSocketAddress::IPv4(1, 2, 3, 4),
                                                           QVLSocketAddress(), QVLSocketAddress::IPv4(169, 254, 0, 0)));
    platform.reachability.isAvailable = false;
    EXPECT_EQ(QVLReachability::reachabilityWithHostName("c.example"), nullptr);
    EXPECT_EQ(QVLReachability::initWithReachabilityRef(nullptr), nullptr);
}

TEST_F(ReachabilityTest, AChangeCallsTheBlocksOnTheQueueAndPostsOnTheMainThread) {
    std::vector<std::string> events;
    const auto record = [&](const std::string& event) {
        events.push_back(event + (platform.runLoop->isMainThread() ? " on main" : ""));
    };
    const auto reachability = QVLReachability::initWithReachabilityRef(target);
    reachability->setReachableBlock([&](const auto& sender) {
        EXPECT_EQ(sender, reachability);
        record("reachable");
    });
    reachability->setUnreachableBlock([&](const auto&) { record("unreachable"); });
    reachability->setReachabilityBlock([&](const auto&, std::uint32_t flags) { record(std::to_string(flags)); });
    const QVLToken observation = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLReachabilityChangedNotification, reachability, [&](const QVLNotification& notification) {
            EXPECT_THAT(notification.userInfo, IsEmpty());
            record(notification.name);
        });
    EXPECT_TRUE(reachability->startNotifier());
    target->setFlags(2);
    EXPECT_THAT(events, IsEmpty());
    platform.queues().at(0)->runAll();
    EXPECT_THAT(events, ElementsAre("reachable", "2"));
    platform.runUntilIdle();
    target->setFlags(7);
    platform.runUntilIdle();
    EXPECT_THAT(events, ElementsAre("reachable", "2", "kQVLReachabilityChangedNotification on main", "unreachable", "7",
                                    "kQVLReachabilityChangedNotification on main"));
    reachability->stopNotifier();
}

TEST_F(ReachabilityTest, AnnouncesNothingBeforeTheStartAndAfterTheStop) {
    int callCount = 0;
    const auto reachability = QVLReachability::initWithReachabilityRef(target);
    reachability->setReachabilityBlock([&](const auto&, std::uint32_t) { ++callCount; });
    target->setFlags(2);
    platform.runUntilIdle();
    EXPECT_TRUE(reachability->startNotifier());
    EXPECT_TRUE(reachability->startNotifier());
    EXPECT_EQ(target->registrationCount(), 1);
    target->setFlags(0);
    reachability->stopNotifier();
    EXPECT_FALSE(target->isWatched());
    platform.runUntilIdle();
    EXPECT_EQ(callCount, 0);
    EXPECT_TRUE(reachability->startNotifier());
    platform.runUntilIdle();
    EXPECT_EQ(callCount, 1);
    reachability->stopNotifier();
}

TEST_F(ReachabilityTest, LivesAsLongAsItsNotifierRuns) {
    auto reachability = QVLReachability::initWithReachabilityRef(target);
    const std::weak_ptr<QVLReachability> observed = reachability;
    EXPECT_TRUE(reachability->startNotifier());
    reachability.reset();
    ASSERT_FALSE(observed.expired());
    observed.lock()->stopNotifier();
    EXPECT_TRUE(observed.expired());
}

TEST_F(ReachabilityTest, ATargetThatRefusesLeavesItStopped) {
    for (const bool refusesCallback : {true, false}) {
        target->acceptsCallback = !refusesCallback;
        target->acceptsQueue = refusesCallback;
        auto reachability = QVLReachability::initWithReachabilityRef(target);
        EXPECT_FALSE(reachability->startNotifier());
        EXPECT_FALSE(target->isWatched());
        const std::weak_ptr<QVLReachability> observed = reachability;
        reachability.reset();
        EXPECT_TRUE(observed.expired());
    }
}

TEST_F(ReachabilityTest, ItsLastReferenceIsGivenBackOnTheMainThread) {
    auto reachability = QVLReachability::initWithReachabilityRef(target);
    std::thread::id thread;
    std::shared_ptr<int> held(new int, [&](const int* value) {
        thread = std::this_thread::get_id();
        delete value;
    });
    // The owner lets go while a callback is under way.
    reachability->setReachabilityBlock([&, own = std::move(held)](const auto&, std::uint32_t) {
        reachability->stopNotifier();
        reachability.reset();
    });
    EXPECT_TRUE(reachability->startNotifier());
    target->setFlags(2);
    platform.queues().at(0)->runAll();
    EXPECT_EQ(reachability, nullptr);
    EXPECT_EQ(thread, std::thread::id());
    platform.runUntilIdle();
    EXPECT_EQ(thread, std::this_thread::get_id());
}

} // namespace
