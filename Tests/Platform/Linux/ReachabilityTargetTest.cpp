#include "QVLLinuxNetworkMonitor.h"
#include "QVLLinuxReachabilityTarget.h"
#include "QVLLinuxRoute.h"
#include "QVLLinuxSerialQueue.h"
#include "SteppedQueue.h"
#include "SteppedRunLoop.h"

#include <gio/gio.h>
#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kReachable = kQVLReachabilityFlagsReachable;
constexpr std::uint32_t kLocal = kReachable | kQVLReachabilityFlagsIsLocalAddress;
constexpr std::uint32_t kDirect = kReachable | kQVLReachabilityFlagsIsDirect;

const QVLSocketAddress kNear = QVLSocketAddress::IPv4(192, 168, 0, 7);
const QVLSocketAddress kFar = QVLSocketAddress::IPv4(203, 0, 113, 7);

std::string textOf(const QVLSocketAddress& address) {
    return {address.bytes.begin(), address.bytes.end()};
}

class ReachabilityTargetTest : public testing::Test {
protected:
    ReachabilityTargetTest() {
        services->networkMonitor = monitor;
        services->makeSerialQueue = [this](const std::string&) { return lookUps->makeQueue(); };
        services->resolve = [this](const std::string& name) {
            ++lookUpCount;
            return addresses[name];
        };
        services->routeFlags = [this](const QVLSocketAddress& address) { return routes[textOf(address)]; };
        services->now = [this] { return now; };
        services->performAfterDelay = [this](QVLTimeInterval delay, std::function<void()> task) {
            return runLoop.performAfterDelay(delay, std::move(task));
        };
        routes[textOf(kNear)] = kDirect;
        routes[textOf(kFar)] = kReachable;
    }

    std::shared_ptr<QVLReachabilityTarget> make(const QVLReachabilityPeer& peer) {
        return QVLLinuxReachabilityTarget::make(peer, services);
    }

    void watch(QVLReachabilityTarget& target) {
        EXPECT_TRUE(target.setCallback([this](std::uint32_t flags) { calls.push_back(flags); }));
        EXPECT_TRUE(target.setQueue(callbacks->makeQueue()));
    }

    const std::shared_ptr<QVLLinuxNetworkMonitor> monitor = std::make_shared<QVLLinuxNetworkMonitor>();
    const std::shared_ptr<SteppedQueue> lookUps = std::make_shared<SteppedQueue>("lookUps");
    const std::shared_ptr<SteppedQueue> callbacks = std::make_shared<SteppedQueue>("callbacks");
    const std::shared_ptr<QVLLinuxReachabilityServices> services = std::make_shared<QVLLinuxReachabilityServices>();
    SteppedRunLoop runLoop;
    std::map<std::string, std::vector<QVLSocketAddress>> addresses = {{"host", {kFar}}};
    std::map<std::string, std::optional<std::uint32_t>> routes;
    std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
    int lookUpCount = 0;
    std::vector<std::uint32_t> calls;
};

TEST_F(ReachabilityTargetTest, AWatchedHostThatIsNotFoundIsLookedUpAgainUntilItIs) {
    addresses.clear();
    const auto target = make("host");
    watch(*target);
    lookUps->runAll();
    EXPECT_EQ(runLoop.timerCount(), 1U);
    addresses["host"] = {kFar};
    runLoop.advance(std::chrono::seconds(30));
    lookUps->runAll();
    callbacks->runAll();
    EXPECT_THAT(calls, ElementsAre(0U, kReachable));
    EXPECT_EQ(runLoop.timerCount(), 0U);
}

TEST_F(ReachabilityTargetTest, AnAddressIsAnnouncedOnceAndThenWheneverItsFlagsDiffer) {
    const auto target = make(kNear);
    EXPECT_EQ(target->flags(), kDirect);
    watch(*target);
    monitor->networkDidChange(true);
    callbacks->runAll();
    EXPECT_THAT(calls, ElementsAre(kDirect));
    routes[textOf(kNear)] = 0;
    EXPECT_EQ(target->flags(), 0U);
    monitor->networkDidChange(false);
    monitor->networkDidChange(false);
    callbacks->runAll();
    EXPECT_THAT(calls, ElementsAre(kDirect, 0U));
}

TEST_F(ReachabilityTargetTest, AHostNameIsUnknownUntilItHasBeenLookedUpOffTheMainThread) {
    const auto target = make("host");
    watch(*target);
    EXPECT_EQ(target->flags(), std::nullopt);
    EXPECT_EQ(callbacks->taskCount(), 0U);
    lookUps->runAll();
    EXPECT_EQ(target->flags(), kReachable);
    callbacks->runAll();
    EXPECT_THAT(calls, ElementsAre(kReachable));
    EXPECT_EQ(lookUpCount, 1);
}

TEST_F(ReachabilityTargetTest, WhatWasKnownBeforeTheWatchBeganIsStillAnnounced) {
    const auto target = make("host");
    lookUps->runAll();
    watch(*target);
    callbacks->runAll();
    EXPECT_THAT(calls, ElementsAre(kReachable));
}

TEST_F(ReachabilityTargetTest, AHostTakesTheFlagsOfItsFirstReachableAddress) {
    routes[textOf(kNear)] = 0;
    addresses = {{"both", {kNear, kFar}}, {"one", {kNear}}, {"none", {}}};
    for (const auto& [name, flags] :
         std::map<std::string, std::uint32_t>{{"both", kReachable}, {"one", 0}, {"none", 0}}) {
        const auto target = make(name);
        lookUps->runAll();
        EXPECT_EQ(target->flags(), flags) << name;
    }
}

TEST_F(ReachabilityTargetTest, ManyChangesOfTheNetworkNeedOneLookUp) {
    const auto target = make("host");
    watch(*target);
    lookUps->runAll();
    for (int change = 0; change < 5; ++change) {
        monitor->networkDidChange(true);
    }
    addresses["host"] = {kNear};
    lookUps->runAll();
    callbacks->runAll();
    EXPECT_EQ(lookUpCount, 2);
    EXPECT_THAT(calls, ElementsAre(kReachable, kDirect));
}

TEST_F(ReachabilityTargetTest, ReadingAnOldLookUpRenewsIt) {
    addresses["host"] = {};
    const auto target = make("host");
    watch(*target);
    lookUps->runAll();
    addresses["host"] = {kFar};
    EXPECT_EQ(target->flags(), 0U);
    EXPECT_EQ(lookUps->taskCount(), 0U);
    now += std::chrono::seconds(30);
    EXPECT_EQ(target->flags(), 0U);
    EXPECT_EQ(target->flags(), 0U);
    lookUps->runAll();
    callbacks->runAll();
    EXPECT_EQ(lookUpCount, 2);
    EXPECT_THAT(calls, ElementsAre(0U, kReachable));
}

TEST_F(ReachabilityTargetTest, TheUnspecifiedAddressAndUnreadableRoutesGoByTheNetworkAsAWhole) {
    routes[textOf(kFar)] = std::nullopt;
    for (const QVLReachabilityPeer& peer :
         {QVLReachabilityPeer(QVLSocketAddress()), QVLReachabilityPeer(QVLSocketAddress::IPv6({})),
          QVLReachabilityPeer("0.0.0.0"), QVLReachabilityPeer(kFar)}) {
        const auto target = make(peer);
        monitor->networkDidChange(true);
        EXPECT_EQ(target->flags(), kReachable);
        monitor->networkDidChange(false);
        EXPECT_EQ(target->flags(), 0U);
    }
}

TEST_F(ReachabilityTargetTest, UnregisteringSilencesWhatIsQueued) {
    const auto target = make(kNear);
    watch(*target);
    EXPECT_EQ(callbacks->taskCount(), 1U);
    target->setCallback({});
    callbacks->runAll();
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(ReachabilityTargetTest, CanBeDroppedWhileAndBeforeAHostNameIsLookedUp) {
    auto target = make("host");
    watch(*target);
    services->resolve = [&](const std::string&) {
        target.reset();
        return std::vector{kFar};
    };
    lookUps->runAll();
    EXPECT_EQ(target, nullptr);
    target = make("host");
    watch(*target);
    target.reset();
    lookUps->runAll();
    monitor->networkDidChange(true);
    EXPECT_EQ(callbacks->taskCount(), 0U);
}

TEST_F(ReachabilityTargetTest, RefusesNamesThatCannotBeLookedUp) {
    EXPECT_EQ(make(""), nullptr);
    EXPECT_EQ(make(std::string("a\0b", 3)), nullptr);
}

TEST(LinuxRouteTest, KnowsTheAddressesOfThisComputer) {
    EXPECT_EQ(QVLLinuxRouteFlags(QVLSocketAddress::IPv4(127, 0, 0, 1)), kLocal);
    EXPECT_EQ(QVLLinuxRouteFlags(QVLSocketAddress::IPv4(127, 1, 2, 3)), kLocal);
    // The prefix for discarding, which no computer has as its own.
    const auto discarded = QVLLinuxRouteFlags(QVLSocketAddress::IPv6({0x01, 0x00}));
    EXPECT_EQ(discarded.value_or(0) & kQVLReachabilityFlagsIsLocalAddress, 0U);
}

TEST(LinuxReachabilityTest, FindsThisComputerByNameAndByAddressWithoutAnyNetwork) {
    const auto sharedRunLoop = std::make_shared<SteppedRunLoop>();
    SteppedRunLoop& runLoop = *sharedRunLoop;
    const auto services = QVLLinuxReachabilityServices::native(
        [](std::string label) { return std::make_unique<QVLLinuxSerialQueue>(std::move(label)); }, sharedRunLoop);
    EXPECT_EQ(QVLLinuxReachabilityTarget::make("127.0.0.1", services)->flags(), kLocal);
    const auto target = QVLLinuxReachabilityTarget::make("localhost", services);
    std::optional<std::uint32_t> announced;
    target->setCallback([&](std::uint32_t flags) { runLoop.post([&announced, flags] { announced = flags; }); });
    target->setQueue(std::make_shared<QVLLinuxSerialQueue>("test"));
    EXPECT_TRUE(runLoop.runUntil([&] { return announced.has_value(); }));
    EXPECT_EQ(announced, kLocal);
    EXPECT_EQ(target->flags(), kLocal);
}

TEST(LinuxNetworkMonitorTest, PassesOnWhatTheSystemReportsUntilTheTokenIsDropped) {
    int changeCount = 0;
    QVLToken token = QVLLinuxNetworkMonitor::shared()->addObserver([&] { ++changeCount; });
    GNetworkMonitor* const system = g_network_monitor_get_default();
    g_signal_emit_by_name(system, "network-changed", g_network_monitor_get_network_available(system));
    EXPECT_EQ(changeCount, 1);
    g_object_notify(G_OBJECT(system), "connectivity");
    EXPECT_EQ(changeCount, 2);
    token.reset();
    g_object_notify(G_OBJECT(system), "connectivity");
    EXPECT_EQ(changeCount, 2);
}

} // namespace
