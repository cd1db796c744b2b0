#pragma once

#include <memory>
#include <mutex>
#include <utility>

/// Hands immutable snapshots from one thread to others: the one door through which shared state passes.
template <class Snapshot>
class QVLPublished final {
public:
    QVLPublished() : m_snapshot(std::make_shared<const Snapshot>()) {}
    explicit QVLPublished(Snapshot snapshot) : m_snapshot(std::make_shared<const Snapshot>(std::move(snapshot))) {}

    /// The newest snapshot; never null. Any thread.
    [[nodiscard]] std::shared_ptr<const Snapshot> load() const {
        const std::lock_guard lock(m_mutex);
        return m_snapshot;
    }

    /// Puts a snapshot in the place of the newest. Any thread.
    void store(Snapshot snapshot) {
        auto next = std::make_shared<const Snapshot>(std::move(snapshot));
        const std::lock_guard lock(m_mutex);
        // The old one is dropped after the lock, with whatever it holds.
        m_snapshot.swap(next);
    }

    /// Changes a copy of the newest snapshot and publishes it, undisturbed by other threads. The change must be short.
    template <class Change>
    void update(Change change) {
        std::shared_ptr<const Snapshot> old;
        const std::lock_guard lock(m_mutex);
        auto next = std::make_shared<Snapshot>(*m_snapshot);
        change(*next);
        old = std::exchange(m_snapshot, std::move(next));
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const Snapshot> m_snapshot;
};
