#pragma once

#include "QVLMainRunLoop.h"
#include "QVLQuorvel.h"
#include "Workload.h"

#include <chrono>
#include <memory>
#include <string>

/// An engine on the platform's own services that runs a workload's script, driven from the main thread.
class EngineUnderLoad final {
public:
    /// Returns when the engine has answered for the first time.
    EngineUnderLoad(const Workload& workload, const std::string& directory);
    EngineUnderLoad(const EngineUnderLoad&) = delete;
    EngineUnderLoad& operator=(const EngineUnderLoad&) = delete;
    ~EngineUnderLoad();

    [[nodiscard]] QVLQuorvel& engine() const { return *m_engine; }
    /// Runs the main run loop until the outputs change, after the given number of changes so far.
    void waitForChange(std::size_t changesBefore) const;
    [[nodiscard]] std::size_t changeCount() const { return m_changeCount; }
    /// Runs the main run loop until the queue has nothing left to do.
    void waitForQueue() const;
    /// Changes the inputs for as long as it takes until the script's machine gets no faster.
    void warmUp(const Workload& workload) const;

private:
    std::shared_ptr<QVLQuorvel> m_engine;
    QVLToken m_observation;
    std::size_t m_changeCount = 0;
};
