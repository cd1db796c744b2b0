#pragma once

#include <Quorvel/Quorvel.h>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

namespace host {

/// Does one thing after the other, each when all that the one before has caused is over: evaluations, their answers,
/// and downloads. Main thread.
class Steps final {
public:
    using Step = std::function<void()>;

    /// While `isWaiting` answers true something is on its way from the network.
    Steps(std::shared_ptr<QVLQuorvel> engine, std::function<bool()> isWaiting);

    void add(Step step);
    /// Forgets the steps to come; no more are taken.
    void end();

    /// For how long the engine's queue has not come back from what it does now; zero when there is nothing to wait for.
    [[nodiscard]] std::chrono::steady_clock::duration timeOnQueue() const;

private:
    void runNext();
    void settle(int rounds);
    void passThroughQueue(std::function<void()> next);

    const std::shared_ptr<QVLQuorvel> m_engine;
    const std::function<bool()> m_isWaiting;
    std::deque<Step> m_steps;
    bool m_isBusy = false;
    bool m_hasEnded = false;
    std::optional<std::chrono::steady_clock::time_point> m_sentToQueue;
    QVLToken m_nextLook;
    // Tells tasks that arrive late that this object is gone.
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace host
