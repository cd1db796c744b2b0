#include "SteppedQueue.h"

#include <thread>

class SteppedQueue::Queue final : public QVLSerialQueue {
public:
    explicit Queue(std::shared_ptr<SteppedQueue> tasks) : m_tasks(std::move(tasks)) {}

    void async(std::function<void()> task) override { m_tasks->add(std::move(task)); }
    [[nodiscard]] const std::string& label() const override { return m_tasks->label(); }

private:
    std::shared_ptr<SteppedQueue> m_tasks;
};

std::unique_ptr<QVLSerialQueue> SteppedQueue::makeQueue() {
    return std::make_unique<Queue>(shared_from_this());
}

std::size_t SteppedQueue::taskCount() const {
    const std::lock_guard lock(m_mutex);
    return m_tasks.size();
}

bool SteppedQueue::runNext() {
    bool hasRun = false;
    std::thread([&] {
        if (const auto task = take()) {
            task();
            hasRun = true;
        }
    }).join();
    return hasRun;
}

bool SteppedQueue::runAll() {
    bool hasRun = false;
    std::thread([&] {
        while (const auto task = take()) {
            task();
            hasRun = true;
        }
    }).join();
    return hasRun;
}

void SteppedQueue::add(std::function<void()> task) {
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(std::move(task));
}

std::function<void()> SteppedQueue::take() {
    const std::lock_guard lock(m_mutex);
    if (m_tasks.empty()) {
        return {};
    }
    auto task = std::move(m_tasks.front());
    m_tasks.pop_front();
    return task;
}
