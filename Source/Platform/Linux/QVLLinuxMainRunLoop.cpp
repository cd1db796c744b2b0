#include "QVLLinuxMainRunLoop.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

/// Microseconds of the steady clock.
using Microseconds = std::int64_t;

constexpr Microseconds kShortestInterval = 1000;
/// Some thirty thousand years: far beyond any timer, far from overflow.
constexpr double kLongestSeconds = 1e12;

Microseconds microsecondsFrom(QVLTimeInterval interval) {
    const double seconds = interval.count();
    // Written so that not-a-number counts as none.
    return seconds > 0 ? static_cast<Microseconds>(std::ceil(std::min(seconds, kLongestSeconds) * 1e6)) : 0;
}

/// Due time first, then order of creation.
using Position = std::pair<Microseconds, std::uint64_t>;

struct Task {
    std::function<void()> function;
    Position position;
    /// 0 for a task that runs once.
    Microseconds interval = 0;
};

/// Asks, waits for and dispatches a context by hand, which `g_main_context_iteration` does too, but without a limit to
/// its wait.
class ContextIteration {
public:
    explicit ContextIteration(GMainContext* context) : m_context(context) {}

    /// Waits at most this long for a source to become ready; dispatches those that are. True when there was one.
    bool run(Microseconds longestWait) {
        int highestPriority = 0;
        g_main_context_prepare(m_context, &highestPriority);
        int milliseconds = queryDescriptors(highestPriority);
        const Microseconds limit = std::min<Microseconds>((longestWait + 999) / 1000, G_MAXINT);
        milliseconds = milliseconds < 0 ? static_cast<int>(limit) : std::min(milliseconds, static_cast<int>(limit));
        const GPollFunc poll = g_main_context_get_poll_func(m_context);
        poll(m_descriptors.data(), static_cast<guint>(m_descriptors.size()), milliseconds);
        if (!g_main_context_check(m_context, highestPriority, m_descriptors.data(), descriptorCount())) {
            return false;
        }
        g_main_context_dispatch(m_context);
        return true;
    }

private:
    [[nodiscard]] int descriptorCount() const { return static_cast<int>(m_descriptors.size()); }

    int queryDescriptors(int highestPriority) {
        int milliseconds = 0;
        int needed = 0;
        while ((needed = g_main_context_query(m_context, highestPriority, &milliseconds, m_descriptors.data(),
                                              descriptorCount())) > descriptorCount()) {
            m_descriptors.resize(static_cast<std::size_t>(needed));
        }
        m_descriptors.resize(static_cast<std::size_t>(needed));
        return milliseconds;
    }

    GMainContext* m_context;
    std::vector<GPollFD> m_descriptors;
};

/// The right of this thread to run a context; nested in a dispatch it is had again.
class ContextOwnership {
public:
    explicit ContextOwnership(GMainContext* context) : m_context(g_main_context_acquire(context) ? context : nullptr) {}
    ContextOwnership(const ContextOwnership&) = delete;
    ContextOwnership& operator=(const ContextOwnership&) = delete;
    ~ContextOwnership() {
        if (m_context) {
            g_main_context_release(m_context);
        }
    }
    [[nodiscard]] bool isAcquired() const { return m_context != nullptr; }

private:
    GMainContext* m_context;
};

} // namespace

/// All that waits, in the order in which it becomes due.
class QVLLinuxMainRunLoop::Schedule {
public:
    /// Puts another source in place of the one that is woken when something becomes due; answers the old one.
    GSource* exchangeSource(GSource* source) {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_source, source);
    }

    std::shared_ptr<Task> add(std::function<void()> function, Microseconds delay, Microseconds interval) {
        auto task = std::make_shared<Task>();
        task->function = std::move(function);
        task->interval = interval;
        const std::lock_guard lock(m_mutex);
        insert(task, g_get_monotonic_time() + delay);
        wakeWhenDue();
        return task;
    }

    void cancel(const Task& task) {
        std::shared_ptr<Task> cancelled;
        const std::lock_guard lock(m_mutex);
        if (const auto found = m_tasks.find(task.position); found != m_tasks.end() && found->second.get() == &task) {
            // Destroyed after the lock, with whatever the function holds.
            cancelled = std::move(found->second);
            m_tasks.erase(found);
            wakeWhenDue();
        }
    }

    /// Holds both weakly: a token may outlive the run loop, and a task that has run gives back what it holds.
    static QVLToken token(const std::shared_ptr<Schedule>& schedule, const std::shared_ptr<Task>& task) {
        return QVLToken([weakSchedule = std::weak_ptr(schedule), weakTask = std::weak_ptr(task)] {
            const auto livingSchedule = weakSchedule.lock();
            const auto livingTask = weakTask.lock();
            if (livingSchedule && livingTask) {
                livingSchedule->cancel(*livingTask);
            }
        });
    }

    /// Runs the first task that is due, if there is one.
    void runNext() {
        if (const auto task = takeDue()) {
            task->function();
        }
    }

    [[nodiscard]] bool hasTaskDueBy(Microseconds time) const {
        const std::lock_guard lock(m_mutex);
        return !m_tasks.empty() && m_tasks.begin()->first.first <= time;
    }

private:
    void insert(const std::shared_ptr<Task>& task, Microseconds due) {
        task->position = {due, m_nextNumber++};
        m_tasks.emplace(task->position, task);
    }

    /// A repeated task is put back before it runs, so that it may cancel itself and goes on in nested loops. One that
    /// is late leaves out what it missed.
    std::shared_ptr<Task> takeDue() {
        const std::lock_guard lock(m_mutex);
        const Microseconds now = g_get_monotonic_time();
        if (m_tasks.empty() || m_tasks.begin()->first.first > now) {
            wakeWhenDue();
            return nullptr;
        }
        auto task = std::move(m_tasks.begin()->second);
        m_tasks.erase(m_tasks.begin());
        if (task->interval > 0) {
            const Microseconds next = task->position.first + task->interval;
            insert(task, next > now ? next : now + task->interval);
        }
        wakeWhenDue();
        return task;
    }

    void wakeWhenDue() {
        if (m_source) {
            g_source_set_ready_time(m_source, m_tasks.empty() ? -1 : m_tasks.begin()->first.first);
        }
    }

    mutable std::mutex m_mutex;
    GSource* m_source = nullptr;
    std::map<Position, std::shared_ptr<Task>> m_tasks;
    std::uint64_t m_nextNumber = 0;
};

struct QVLLinuxMainRunLoop::Source {
    GSource base;
    std::shared_ptr<Schedule>* schedule;

    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
        // Kept here: the task may drop the run loop.
        const std::shared_ptr<Schedule> schedule = *reinterpret_cast<Source*>(source)->schedule;
        schedule->runNext();
        return G_SOURCE_CONTINUE;
    }

    static void finalize(GSource* source) { delete reinterpret_cast<Source*>(source)->schedule; }

    static GSource* make(std::shared_ptr<Schedule> schedule) {
        static GSourceFuncs functions = {nullptr, nullptr, dispatch, finalize, nullptr, nullptr};
        GSource* const source = g_source_new(&functions, sizeof(Source));
        reinterpret_cast<Source*>(source)->schedule = new std::shared_ptr<Schedule>(std::move(schedule));
        g_source_set_name(source, "Quorvel");
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        g_source_set_can_recurse(source, TRUE);
        return source;
    }
};

QVLLinuxMainRunLoop::QVLLinuxMainRunLoop() : m_schedule(std::make_shared<Schedule>()) {
    GSource* const source = Source::make(m_schedule);
    g_source_attach(source, nullptr);
    m_schedule->exchangeSource(source);
}

QVLLinuxMainRunLoop::~QVLLinuxMainRunLoop() {
    GSource* const source = m_schedule->exchangeSource(nullptr);
    g_source_destroy(source);
    g_source_unref(source);
}

bool QVLLinuxMainRunLoop::isMainThread() const {
    return gettid() == getpid();
}

void QVLLinuxMainRunLoop::post(std::function<void()> task) {
    m_schedule->add(std::move(task), /*delay=*/0, /*interval=*/0);
}

QVLToken QVLLinuxMainRunLoop::performAfterDelay(QVLTimeInterval delay, std::function<void()> task) {
    return Schedule::token(m_schedule, m_schedule->add(std::move(task), microsecondsFrom(delay), /*interval=*/0));
}

QVLToken QVLLinuxMainRunLoop::performRepeatedly(QVLTimeInterval interval, std::function<void()> task) {
    const Microseconds pace = std::max(microsecondsFrom(interval), kShortestInterval);
    return Schedule::token(m_schedule, m_schedule->add(std::move(task), pace, pace));
}

bool QVLLinuxMainRunLoop::runOnce(QVLTimeInterval longestWait) {
    const ContextOwnership ownership(g_main_context_default());
    if (!ownership.isAcquired()) {
        return false;
    }
    const std::shared_ptr<Schedule> schedule = m_schedule;
    const Microseconds deadline = g_get_monotonic_time() + microsecondsFrom(longestWait);
    ContextIteration iteration(g_main_context_default());
    bool hasRun = iteration.run(microsecondsFrom(longestWait));
    for (Microseconds now = g_get_monotonic_time(); !hasRun && now < deadline; now = g_get_monotonic_time()) {
        hasRun = iteration.run(deadline - now);
    }
    // What was due when the waiting ended runs now; what that posts is left to the next time.
    const Microseconds waitingEnd = g_get_monotonic_time();
    while (schedule->hasTaskDueBy(waitingEnd) && iteration.run(/*longestWait=*/0)) {
        hasRun = true;
    }
    return hasRun;
}
