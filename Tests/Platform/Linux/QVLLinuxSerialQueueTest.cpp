#include "QVLLinuxSerialQueue.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <optional>
#include <thread>
#include <vector>

#include <pthread.h>

namespace {

std::string currentThreadName() {
    std::array<char, 16> name = {};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

} // namespace

TEST(QVLLinuxSerialQueueTest, RunsTasksOneByOneInOrderOnOneThreadNamedAfterTheLabel) {
    QVLLinuxSerialQueue queue("com.example.QVLQuorvel");
    EXPECT_EQ(queue.label(), "com.example.QVLQuorvel");
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    for (int number = 0; number < 100; ++number) {
        queue.async([&, number] {
            order.push_back(number);
            threads.push_back(std::this_thread::get_id());
        });
    }
    std::promise<std::string> name;
    queue.async([&] { name.set_value(currentThreadName()); });
    EXPECT_EQ(name.get_future().get(), "mple.QVLQuorvel");
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(std::vector(100, threads.front()), threads);
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(QVLLinuxSerialQueueTest, DestroyingItWaitsForNothingAndEverythingQueuedStillRuns) {
    auto queue = std::make_optional<QVLLinuxSerialQueue>("queue");
    std::promise<void> isStarted;
    std::promise<void> mayGoOn;
    std::promise<void> isLastDone;
    queue->async([&] {
        isStarted.set_value();
        mayGoOn.get_future().wait();
    });
    queue->async([&] { isLastDone.set_value(); });
    isStarted.get_future().wait();
    queue.reset();
    mayGoOn.set_value();
    isLastDone.get_future().wait();
}

TEST(QVLLinuxSerialQueueTest, ATaskMayDropItsOwnQueueAndIsDestroyedOnceItHasRun) {
    auto queue = std::make_shared<QVLLinuxSerialQueue>("queue");
    std::promise<void> isDestroyed;
    auto held = std::shared_ptr<int>(new int, [&](const int* number) {
        delete number;
        isDestroyed.set_value();
    });
    auto& target = *queue;
    target.async([owner = std::move(queue), owned = std::move(held)]() mutable { owner.reset(); });
    isDestroyed.get_future().wait();
}
