#pragma once

#include "QVLDate.h"
#include "QVLExport.h"
#include "QVLToken.h"

#include <functional>
#include <memory>

/// The host's main run loop, on which collections, journals, notifications and the library's timers live.
///
/// On Linux this is the default main context, which GTK, Qt and most other desktop toolkits run already: a host of that
/// kind does nothing. A host with a loop of its own calls `runOnce` from its main thread now and then.
class QVL_EXPORT QVLMainRunLoop {
public:
    virtual ~QVLMainRunLoop();

    /// The process's run loop. Any thread.
    [[nodiscard]] static std::shared_ptr<QVLMainRunLoop> mainRunLoop();

    /// Any thread.
    [[nodiscard]] virtual bool isMainThread() const = 0;

    /// Runs the task on the main thread, in the order of posting, never inside this call. Any thread.
    virtual void post(std::function<void()> task) = 0;

    /// Runs the task once on the main thread when the delay is over. Dropping the token cancels it; a task cancelled on
    /// the main thread never runs. Any thread.
    [[nodiscard]] virtual QVLToken performAfterDelay(QVLTimeInterval delay, std::function<void()> task) = 0;

    /// Runs the task again and again, the first time after one interval. Dropping the token ends it. Any thread.
    [[nodiscard]] virtual QVLToken performRepeatedly(QVLTimeInterval interval, std::function<void()> task) = 0;

    /// Runs what is due; waits at most this long for something to become due. True when something ran. Main thread.
    virtual bool runOnce(QVLTimeInterval longestWait) = 0;
};
