#include "QVLLinuxMainRunLoop.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

namespace {

class QVLLinuxMainRunLoopTest : public testing::Test {
protected:
    template <class Condition>
    bool runUntil(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + 30s;
        while (!condition() && std::chrono::steady_clock::now() < end) {
            loop->runOnce(1s);
        }
        return condition();
    }

    std::unique_ptr<QVLLinuxMainRunLoop> loop = std::make_unique<QVLLinuxMainRunLoop>();
    std::vector<int> order;
};

} // namespace

TEST_F(QVLLinuxMainRunLoopTest, RunsTasksFromEveryThreadOnTheMainThreadInTheOrderOfPosting) {
    constexpr int kCount = 500;
    std::vector<int> others;
    bool areAllOnMain = true;
    std::thread other([&] {
        EXPECT_FALSE(loop->isMainThread());
        for (int number = 0; number < kCount; ++number) {
            loop->post([&, number] { others.push_back(number); });
        }
    });
    for (int number = 0; number < kCount; ++number) {
        loop->post([&, number] {
            areAllOnMain = areAllOnMain && loop->isMainThread();
            order.push_back(number);
        });
    }
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(runUntil([&] { return order.size() == kCount && others.size() == kCount; }));
    other.join();
    EXPECT_TRUE(areAllOnMain);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_TRUE(std::is_sorted(others.begin(), others.end()));
}

TEST_F(QVLLinuxMainRunLoopTest, RunsDelayedTasksByDueTimeAndNotBefore) {
    const auto start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration lastAfter{};
    const auto late = loop->performAfterDelay(20ms, [&] {
        lastAfter = std::chrono::steady_clock::now() - start;
        order.push_back(3);
    });
    const auto early = loop->performAfterDelay(5ms, [&] { order.push_back(2); });
    const auto atOnce = loop->performAfterDelay(-1s, [&] { order.push_back(1); });
    const auto notANumber =
        loop->performAfterDelay(QVLTimeInterval(std::numeric_limits<double>::quiet_NaN()), [&] { order.push_back(1); });
    const auto never =
        loop->performAfterDelay(QVLTimeInterval(std::numeric_limits<double>::infinity()), [&] { order.push_back(0); });
    EXPECT_TRUE(runUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector{1, 1, 2, 3}));
    EXPECT_GE(lastAfter, 20ms);
}

TEST_F(QVLLinuxMainRunLoopTest, RepeatsATaskUntilItsTokenIsDroppedFromInsideIt) {
    QVLToken token = loop->performRepeatedly(1ms, [&] {
        order.push_back(1);
        if (order.size() == 3) {
            token.reset();
        }
    });
    bool hasWaited = false;
    EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));
    const auto wait = loop->performAfterDelay(10ms, [&] { hasWaited = true; });
    EXPECT_TRUE(runUntil([&] { return hasWaited; }));
    EXPECT_EQ(order.size(), 3U);
}

TEST_F(QVLLinuxMainRunLoopTest, ATimerWithoutAnIntervalLeavesRoomForIdleWork) {
    bool isIdleDone = false;
    const auto busy = loop->performRepeatedly(0s, [&] { order.push_back(1); });
    g_idle_add_once([](gpointer done) { *static_cast<bool*>(done) = true; }, &isIdleDone);
    EXPECT_TRUE(runUntil([&] { return isIdleDone && order.size() > 2; }));
}

TEST_F(QVLLinuxMainRunLoopTest, ATaskThatWasCancelledByAnotherDueTaskNeverRuns) {
    QVLToken second;
    QVLToken third;
    const auto first = loop->performAfterDelay(0s, [&] {
        order.push_back(1);
        second.reset();
    });
    second = loop->performAfterDelay(0s, [&] { order.push_back(2); });
    third = loop->performAfterDelay(0s, [&] {
        order.push_back(3);
        third.reset();
    });
    EXPECT_TRUE(runUntil([&] { return order.size() >= 2; }));
    EXPECT_EQ(order, (std::vector{1, 3}));
}

TEST_F(QVLLinuxMainRunLoopTest, WhatATaskHoldsIsGivenBackWhenItHasRunAndWhenItIsCancelled) {
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> heldByRun = held;
    const auto run = loop->performAfterDelay(0s, [held] {});
    held = std::make_shared<int>();
    const std::weak_ptr<int> heldByCancelled = held;
    auto cancelled = loop->performAfterDelay(1h, [held] {});
    held.reset();
    EXPECT_TRUE(runUntil([&] { return heldByRun.expired(); }));
    EXPECT_FALSE(heldByCancelled.expired());
    cancelled.reset();
    EXPECT_TRUE(heldByCancelled.expired());
}

TEST_F(QVLLinuxMainRunLoopTest, TokensMayBeDroppedOnAnotherThreadWhileTheLoopRuns) {
    std::vector<QVLToken> tokens;
    std::atomic<int> count = 0;
    for (int number = 0; number < 500; ++number) {
        tokens.push_back(loop->performRepeatedly(1ms, [&] { ++count; }));
    }
    EXPECT_TRUE(runUntil([&] { return count > 0; }));
    bool isDone = false;
    std::thread other([&] {
        tokens.clear();
        loop->post([&] { isDone = true; });
    });
    EXPECT_TRUE(runUntil([&] { return isDone; }));
    other.join();
    const int last = count;
    loop->runOnce(5ms);
    EXPECT_EQ(count, last);
}

TEST_F(QVLLinuxMainRunLoopTest, ALoopNestedInATaskRunsTheOtherTasks) {
    loop->post([&] {
        order.push_back(1);
        EXPECT_TRUE(runUntil([&] { return order.size() == 2; }));
        GMainLoop* const dialog = g_main_loop_new(nullptr, FALSE);
        loop->post([&] {
            order.push_back(3);
            g_main_loop_quit(dialog);
        });
        g_main_loop_run(dialog);
        g_main_loop_unref(dialog);
        order.push_back(4);
    });
    loop->post([&] { order.push_back(2); });
    EXPECT_TRUE(runUntil([&] { return order.size() >= 4; }));
    EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST_F(QVLLinuxMainRunLoopTest, WaitsNoLongerThanAskedAndEndsTheWaitOnAPostFromAnotherThread) {
    while (loop->runOnce(0s)) {}
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(loop->runOnce(10ms));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 10ms);

    std::thread other([&] { loop->post([&] { order.push_back(1); }); });
    EXPECT_TRUE(loop->runOnce(30s));
    other.join();
    EXPECT_EQ(order.size(), 1U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 20s);
}

TEST_F(QVLLinuxMainRunLoopTest, ATaskThatPostsItselfAgainLetsTheCallerGo) {
    std::function<void()> again = [&] {
        order.push_back(1);
        loop->post(again);
    };
    again();
    EXPECT_TRUE(loop->runOnce(0s));
    EXPECT_LT(order.size(), 1000U);
}

TEST_F(QVLLinuxMainRunLoopTest, IsDestroyedFromATaskOfItsOwnAndItsTokensOutliveIt) {
    GMainLoop* const host = g_main_loop_new(nullptr, FALSE);
    g_idle_add_once([](gpointer data) { g_main_loop_quit(static_cast<GMainLoop*>(data)); }, host);
    auto token = loop->performAfterDelay(1h, [] {});
    loop->post([&] { loop.reset(); });
    loop->post([&] { order.push_back(1); });
    g_main_loop_run(host);
    g_main_loop_unref(host);
    EXPECT_FALSE(loop);
    EXPECT_TRUE(order.empty());
    token.reset();
}
