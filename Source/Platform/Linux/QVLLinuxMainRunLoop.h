#pragma once

#include "QVLMainRunLoop.h"

#include <memory>

/// The main run loop on the default `GMainContext`.
///
/// Posted tasks and timers stand in one list in the order in which they become due, behind one source of default
/// priority that runs one task per dispatch: loops nested in a task, such as a modal dialog's, run the rest. Time is
/// the steady clock.
///
/// A task whose token is dropped on another thread may be under way at that moment; it then ends as usual.
class QVLLinuxMainRunLoop final : public QVLMainRunLoop {
public:
    QVLLinuxMainRunLoop();
    QVLLinuxMainRunLoop(const QVLLinuxMainRunLoop&) = delete;
    QVLLinuxMainRunLoop& operator=(const QVLLinuxMainRunLoop&) = delete;
    ~QVLLinuxMainRunLoop() override;

    [[nodiscard]] bool isMainThread() const override;
    void post(std::function<void()> task) override;
    [[nodiscard]] QVLToken performAfterDelay(QVLTimeInterval delay, std::function<void()> task) override;
    /// An interval under a millisecond counts as one, so that a timer leaves room for everything else.
    [[nodiscard]] QVLToken performRepeatedly(QVLTimeInterval interval, std::function<void()> task) override;
    /// Runs the default context's other sources as well.
    bool runOnce(QVLTimeInterval longestWait) override;

private:
    class Schedule;
    struct Source;

    // Shared with the tokens and the source, which may outlive the run loop.
    std::shared_ptr<Schedule> m_schedule;
};
