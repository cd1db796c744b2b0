#pragma once

#include "QVLSerialQueue.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

/// Serial queues whose tasks wait until a test runs them. They run on a thread of their own, for which the test waits.
///
/// A queue's tasks stay here when the queue is destroyed, as those of a real one do.
class SteppedQueue final : public std::enable_shared_from_this<SteppedQueue> {
public:
    explicit SteppedQueue(std::string label) : m_label(std::move(label)) {}

    /// The queue to hand to the code under test.
    [[nodiscard]] std::unique_ptr<QVLSerialQueue> makeQueue();

    [[nodiscard]] const std::string& label() const { return m_label; }
    [[nodiscard]] std::size_t taskCount() const;

    /// Runs the first task; false when there is none.
    bool runNext();
    /// Runs every task, those that they add included; false when there was none.
    bool runAll();

private:
    class Queue;
    void add(std::function<void()> task);
    std::function<void()> take();

    const std::string m_label;
    mutable std::mutex m_mutex;
    std::deque<std::function<void()>> m_tasks;
};
