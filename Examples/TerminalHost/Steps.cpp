#include "Steps.h"

#include <utility>

namespace host {

namespace {

constexpr QVLTimeInterval kLookInterval(0.05);
/// A run on the queue posts its answer, which may cause another one.
constexpr int kRoundsToSettle = 3;

} // namespace

Steps::Steps(std::shared_ptr<QVLQuorvel> engine, std::function<bool()> isWaiting)
    : m_engine(std::move(engine)), m_isWaiting(std::move(isWaiting)) {}

void Steps::add(Step step) {
    if (m_hasEnded) {
        return;
    }
    m_steps.push_back(std::move(step));
    if (!m_isBusy) {
        runNext();
    }
}

void Steps::end() {
    m_hasEnded = true;
    m_steps.clear();
}

std::chrono::steady_clock::duration Steps::timeOnQueue() const {
    return m_sentToQueue ? std::chrono::steady_clock::now() - *m_sentToQueue : std::chrono::steady_clock::duration(0);
}

void Steps::runNext() {
    m_isBusy = !m_steps.empty();
    if (!m_isBusy) {
        return;
    }
    const Step step = std::move(m_steps.front());
    m_steps.pop_front();
    step();
    settle(kRoundsToSettle);
}

void Steps::settle(int rounds) {
    if (m_isWaiting()) {
        m_nextLook =
            QVLMainRunLoop::mainRunLoop()->performAfterDelay(kLookInterval, [this] { settle(kRoundsToSettle); });
    } else if (rounds > 0) {
        passThroughQueue([this, rounds] { settle(rounds - 1); });
    } else {
        runNext();
    }
}

void Steps::passThroughQueue(std::function<void()> next) {
    m_sentToQueue = std::chrono::steady_clock::now();
    m_engine->performOnQueue([this, life = std::weak_ptr(m_life), next = std::move(next)](QVLQuorvel&) {
        QVLMainRunLoop::mainRunLoop()->post([this, life, next] {
            if (life.lock()) {
                m_sentToQueue.reset();
                next();
            }
        });
    });
}

} // namespace host
