#include "QVLLinuxNetworkMonitor.h"

#include <gio/gio.h>

#include <mutex>
#include <utility>
#include <vector>

namespace {

void reportChange(gpointer monitor) {
    static_cast<QVLLinuxNetworkMonitor*>(monitor)->networkDidChange(
        g_network_monitor_get_network_available(g_network_monitor_get_default()));
}

} // namespace

struct QVLLinuxNetworkMonitor::Observers {
    std::mutex mutex;
    std::vector<std::shared_ptr<const Observer>> all;

    std::vector<std::shared_ptr<const Observer>> copy() {
        const std::lock_guard lock(mutex);
        return all;
    }
};

QVLLinuxNetworkMonitor::QVLLinuxNetworkMonitor() : m_observers(std::make_shared<Observers>()) {}

QVLLinuxNetworkMonitor::~QVLLinuxNetworkMonitor() = default;

const std::shared_ptr<QVLLinuxNetworkMonitor>& QVLLinuxNetworkMonitor::shared() {
    // Never destroyed: GLib may report until the process ends.
    static const auto* const shared = [] {
        const auto* const made = new auto(std::make_shared<QVLLinuxNetworkMonitor>());
        GNetworkMonitor* const source = g_network_monitor_get_default();
        // A change of routes is announced by the first, one that only the network service knows of by the others.
        for (const char* const signal : {"network-changed", "notify::network-available", "notify::connectivity"}) {
            g_signal_connect_swapped(source, signal, G_CALLBACK(reportChange), made->get());
        }
        (*made)->m_isNetworkAvailable = g_network_monitor_get_network_available(source);
        return made;
    }();
    return *shared;
}

QVLToken QVLLinuxNetworkMonitor::addObserver(Observer observer) {
    auto entry = std::make_shared<const Observer>(std::move(observer));
    {
        const std::lock_guard lock(m_observers->mutex);
        m_observers->all.push_back(entry);
    }
    return QVLToken([observers = std::weak_ptr(m_observers), entry = std::move(entry)] {
        if (const auto living = observers.lock()) {
            const std::lock_guard lock(living->mutex);
            std::erase(living->all, entry);
        }
    });
}

void QVLLinuxNetworkMonitor::networkDidChange(bool isNetworkAvailable) {
    m_isNetworkAvailable = isNetworkAvailable;
    for (const auto& observer : m_observers->copy()) {
        (*observer)();
    }
}
