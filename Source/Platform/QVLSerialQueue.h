#pragma once

#include <functional>
#include <memory>
#include <string>

/// Runs tasks one after the other on a thread of its own, in the order in which they came.
///
/// Destroying a queue never waits: its thread finishes what was queued and then ends by itself. A task must therefore
/// own, or hold weakly, everything that it touches.
class QVLSerialQueue {
public:
    virtual ~QVLSerialQueue() = default;

    /// Queues a task; never runs it inside this call. Any thread.
    virtual void async(std::function<void()> task) = 0;

    /// The name given at creation, which debuggers show for the thread.
    [[nodiscard]] virtual const std::string& label() const = 0;
};
