#include "QVLLinuxSerialQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <pthread.h>

struct QVLLinuxSerialQueue::Tasks {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> waiting;
    bool hasThread = false;
    bool isClosed = false;

    /// Waits for the next task; an empty one when the queue is gone and everything has run.
    std::function<void()> takeNext() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return isClosed || !waiting.empty(); });
        if (waiting.empty()) {
            return {};
        }
        auto task = std::move(waiting.front());
        waiting.pop_front();
        return task;
    }

    void runUntilClosed() {
        // Each task is destroyed before the next is waited for: it may hold the last reference to what it works on.
        while (const auto task = takeNext()) {
            task();
        }
    }
};

namespace {

/// The kernel keeps 15 bytes; labels tend to differ at their end.
std::string threadName(const std::string& label) {
    constexpr std::size_t kLongestName = 15;
    return label.size() <= kLongestName ? label : label.substr(label.size() - kLongestName);
}

} // namespace

QVLLinuxSerialQueue::QVLLinuxSerialQueue(std::string label)
    : m_label(std::move(label)), m_tasks(std::make_shared<Tasks>()) {}

QVLLinuxSerialQueue::~QVLLinuxSerialQueue() {
    const std::lock_guard lock(m_tasks->mutex);
    m_tasks->isClosed = true;
    m_tasks->changed.notify_one();
}

void QVLLinuxSerialQueue::async(std::function<void()> task) {
    if (!task) {
        return;
    }
    const std::lock_guard lock(m_tasks->mutex);
    m_tasks->waiting.push_back(std::move(task));
    m_tasks->changed.notify_one();
    if (m_tasks->hasThread) {
        return;
    }
    try {
        std::thread([tasks = m_tasks, name = threadName(m_label)] {
            pthread_setname_np(pthread_self(), name.c_str());
            tasks->runUntilClosed();
        }).detach();
        m_tasks->hasThread = true;
    } catch (const std::system_error&) {
        // No thread to be had now; the task keeps its place.
    }
}
