#pragma once

#include "QVLToken.h"

#include <atomic>
#include <functional>
#include <memory>

/// Tells when the computer's networks, routes or addresses change.
class QVLLinuxNetworkMonitor final {
public:
    using Observer = std::function<void()>;

    /// One that watches nothing by itself.
    QVLLinuxNetworkMonitor();
    QVLLinuxNetworkMonitor(const QVLLinuxNetworkMonitor&) = delete;
    QVLLinuxNetworkMonitor& operator=(const QVLLinuxNetworkMonitor&) = delete;
    ~QVLLinuxNetworkMonitor();

    /// The process's, fed by GLib. First called on the main thread, since GLib reports to the thread that asks first.
    [[nodiscard]] static const std::shared_ptr<QVLLinuxNetworkMonitor>& shared();

    /// Whether some network beyond this computer is there. Any thread.
    [[nodiscard]] bool isNetworkAvailable() const { return m_isNetworkAvailable; }

    /// Calls the observer on the main thread after every change until the token is dropped, which may happen on any
    /// thread; a call that is then under way goes on. Any thread.
    [[nodiscard]] QVLToken addObserver(Observer observer);

    /// Takes note of a change and tells the observers. Main thread.
    void networkDidChange(bool isNetworkAvailable);

private:
    struct Observers;

    // Shared with the tokens, which may outlive the monitor.
    std::shared_ptr<Observers> m_observers;
    std::atomic<bool> m_isNetworkAvailable{false};
};
