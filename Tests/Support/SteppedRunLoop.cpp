#include "SteppedRunLoop.h"

#include <algorithm>

namespace {

std::chrono::microseconds microsecondsFrom(QVLTimeInterval interval) {
    return std::chrono::round<std::chrono::microseconds>(std::max(interval, QVLTimeInterval(0)));
}

} // namespace

SteppedRunLoop::SteppedRunLoop() {
    using namespace std::chrono;
    m_shared->now = sys_days(year(2026) / March / 14) + 12h;
}

void SteppedRunLoop::post(std::function<void()> task) {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->tasks.push_back(std::move(task));
    m_shared->posted.notify_all();
}

QVLToken SteppedRunLoop::performAfterDelay(QVLTimeInterval delay, std::function<void()> task) {
    return addTimer(delay, Elapsed(0), std::move(task));
}

QVLToken SteppedRunLoop::performRepeatedly(QVLTimeInterval interval, std::function<void()> task) {
    return addTimer(interval, std::max(microsecondsFrom(interval), Elapsed(1)), std::move(task));
}

bool SteppedRunLoop::runOnce(QVLTimeInterval longestWait) {
    if (runUntilIdle()) {
        return true;
    }
    {
        std::unique_lock lock(m_shared->mutex);
        m_shared->posted.wait_for(lock, longestWait, [this] { return !m_shared->tasks.empty(); });
    }
    return runUntilIdle();
}

QVLDate SteppedRunLoop::now() const {
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->now;
}

void SteppedRunLoop::setNow(QVLDate now) {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->now = now;
}

void SteppedRunLoop::advance(QVLTimeInterval interval) {
    runUntilIdle();
    std::unique_lock lock(m_shared->mutex);
    const Elapsed end = m_shared->elapsed + microsecondsFrom(interval);
    lock.unlock();
    while (const auto timer = m_shared->takeTimer(end)) {
        timer->task();
        runPosted();
    }
    lock.lock();
    m_shared->moveTo(end);
}

bool SteppedRunLoop::runUntilIdle() {
    bool hasRun = runPosted();
    while (const auto timer = m_shared->takeTimer(Elapsed::min())) {
        timer->task();
        runPosted();
        hasRun = true;
    }
    return hasRun;
}

std::size_t SteppedRunLoop::timerCount() const {
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->timers.size();
}

void SteppedRunLoop::Shared::insert(const std::shared_ptr<Timer>& timer, Elapsed due) {
    timer->position = {due, nextNumber++};
    timers.emplace(timer->position, timer);
}

void SteppedRunLoop::Shared::cancel(const Timer& timer) {
    std::shared_ptr<Timer> cancelled;
    const std::lock_guard lock(mutex);
    if (const auto found = timers.find(timer.position); found != timers.end() && found->second.get() == &timer) {
        cancelled = std::move(found->second);
        timers.erase(found);
    }
}

std::function<void()> SteppedRunLoop::Shared::takePosted() {
    const std::lock_guard lock(mutex);
    if (tasks.empty()) {
        return {};
    }
    auto task = std::move(tasks.front());
    tasks.pop_front();
    return task;
}

/// The first timer that is due at the given time or already now, with the clock moved to when it is due.
std::shared_ptr<SteppedRunLoop::Timer> SteppedRunLoop::Shared::takeTimer(Elapsed latest) {
    const std::lock_guard lock(mutex);
    if (timers.empty() || timers.begin()->first.first > std::max(latest, elapsed)) {
        return nullptr;
    }
    auto timer = timers.begin()->second;
    timers.erase(timers.begin());
    const Elapsed due = timer->position.first;
    moveTo(due);
    if (timer->interval > Elapsed(0)) {
        insert(timer, due + timer->interval);
    }
    return timer;
}

void SteppedRunLoop::Shared::moveTo(Elapsed time) {
    if (time > elapsed) {
        now += time - elapsed;
        elapsed = time;
    }
}

QVLToken SteppedRunLoop::addTimer(QVLTimeInterval delay, Elapsed interval, std::function<void()> task) {
    auto timer = std::make_shared<Timer>();
    timer->task = std::move(task);
    timer->interval = interval;
    const std::lock_guard lock(m_shared->mutex);
    m_shared->insert(timer, m_shared->elapsed + microsecondsFrom(delay));
    return QVLToken([weakShared = std::weak_ptr(m_shared), weakTimer = std::weak_ptr(timer)] {
        const auto shared = weakShared.lock();
        const auto living = weakTimer.lock();
        if (shared && living) {
            shared->cancel(*living);
        }
    });
}

bool SteppedRunLoop::runPosted() {
    bool hasRun = false;
    while (const auto task = m_shared->takePosted()) {
        task();
        hasRun = true;
    }
    return hasRun;
}
