#pragma once

#include "QVLClock.h"
#include "QVLMainRunLoop.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

/// A main run loop and clock that move only when a test moves them. The thread that makes it is the main thread.
class SteppedRunLoop final : public QVLMainRunLoop, public QVLClock {
public:
    /// Long enough for anything that a test waits for; nothing waits this long unless it fails.
    static constexpr QVLTimeInterval kDeadline = std::chrono::seconds(30);

    SteppedRunLoop();

    [[nodiscard]] bool isMainThread() const override { return std::this_thread::get_id() == m_mainThread; }
    void post(std::function<void()> task) override;
    [[nodiscard]] QVLToken performAfterDelay(QVLTimeInterval delay, std::function<void()> task) override;
    [[nodiscard]] QVLToken performRepeatedly(QVLTimeInterval interval, std::function<void()> task) override;
    /// Runs what is posted and due by the clock; waits in real time for a post from another thread.
    bool runOnce(QVLTimeInterval longestWait) override;

    [[nodiscard]] QVLDate now() const override;
    /// Turns the clock without running anything and without moving the timers.
    void setNow(QVLDate now);
    /// Moves the clock on; runs what is posted, and each timer at its own time.
    void advance(QVLTimeInterval interval);

    /// Runs what is posted and due, and what that posts, until nothing is left. True when something ran.
    bool runUntilIdle();
    /// Runs what is posted, and waits for posts from other threads, until the condition holds. False when it never
    /// does.
    template <class Condition>
    [[nodiscard]] bool runUntil(Condition condition, QVLTimeInterval deadline = kDeadline) {
        const auto end =
            std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::nanoseconds>(deadline);
        while (!condition()) {
            const QVLTimeInterval left = end - std::chrono::steady_clock::now();
            if (left.count() <= 0) {
                return false;
            }
            runOnce(left);
        }
        return true;
    }

    /// Delayed and repeated calls that are still to come.
    [[nodiscard]] std::size_t timerCount() const;

private:
    /// Time since the loop was made, as moved by the test.
    using Elapsed = std::chrono::microseconds;
    using Position = std::pair<Elapsed, std::uint64_t>;
    struct Timer {
        std::function<void()> task;
        Position position;
        Elapsed interval{0};
    };
    struct Shared {
        std::mutex mutex;
        std::condition_variable posted;
        std::deque<std::function<void()>> tasks;
        std::map<Position, std::shared_ptr<Timer>> timers;
        std::uint64_t nextNumber = 0;
        Elapsed elapsed{0};
        QVLDate now;

        void insert(const std::shared_ptr<Timer>& timer, Elapsed due);
        void cancel(const Timer& timer);
        std::function<void()> takePosted();
        std::shared_ptr<Timer> takeTimer(Elapsed latest);
        void moveTo(Elapsed time);
    };

    QVLToken addTimer(QVLTimeInterval delay, Elapsed interval, std::function<void()> task);
    bool runPosted();

    const std::thread::id m_mainThread = std::this_thread::get_id();
    // Shared with the tokens, which may outlive the loop.
    const std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
};
