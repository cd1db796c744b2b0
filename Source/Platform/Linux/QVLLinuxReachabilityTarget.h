#pragma once

#include "QVLMainRunLoop.h"
#include "QVLReachabilityTarget.h"
#include "QVLToken.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

class QVLLinuxNetworkMonitor;

/// What targets ask the system for.
struct QVLLinuxReachabilityServices {
    std::shared_ptr<QVLLinuxNetworkMonitor> networkMonitor;
    std::function<std::unique_ptr<QVLSerialQueue>(std::string label)> makeSerialQueue;
    /// The addresses of a host name, the preferred one first; empty when it has none or cannot be looked up. May take
    /// long. Any thread.
    std::function<std::vector<QVLSocketAddress>(const std::string& hostName)> resolve;
    /// The flags of the route to an address, or no value when there is no telling. Any thread.
    std::function<std::optional<std::uint32_t>(const QVLSocketAddress& address)> routeFlags;
    /// Any thread.
    std::function<std::chrono::steady_clock::time_point()> now;
    /// Runs the task once when the delay is over, unless the token is dropped before. Any thread.
    std::function<QVLToken(QVLTimeInterval delay, std::function<void()> task)> performAfterDelay;

    [[nodiscard]] static std::shared_ptr<const QVLLinuxReachabilityServices>
    native(std::function<std::unique_ptr<QVLSerialQueue>(std::string label)> makeSerialQueue,
           std::shared_ptr<QVLMainRunLoop> mainRunLoop);
};

/// A watched host name or address: flags from the kernel's routes, looked at again whenever the network changes.
///
/// A host name is looked up on a queue of the target's own, which can take ten seconds where name servers are dead;
/// until the next look-up has ended the flags of the last one stand. While the host is watched and not reachable it is
/// looked up again from time to time, since a name server may come back without any change of the network.
class QVLLinuxReachabilityTarget final : public QVLReachabilityTarget,
                                         public std::enable_shared_from_this<QVLLinuxReachabilityTarget> {
    struct Private {};

public:
    /// Null for an empty host name. Begins the first look-up.
    [[nodiscard]] static std::shared_ptr<QVLReachabilityTarget>
    make(const QVLReachabilityPeer& peer, std::shared_ptr<const QVLLinuxReachabilityServices> services);

    QVLLinuxReachabilityTarget(Private, const QVLReachabilityPeer& peer,
                               std::shared_ptr<const QVLLinuxReachabilityServices> services);

    [[nodiscard]] std::optional<std::uint32_t> flags() override;
    bool setCallback(Callback callback) override;
    bool setQueue(std::shared_ptr<QVLSerialQueue> queue) override;

private:
    void watch();
    void refresh();
    void refreshIfOld();
    void queueLookUp();
    [[nodiscard]] std::string beginLookUp();
    void publish(std::uint32_t flags);
    void announceIfNew();
    void retryIfUnreachable();

    const std::shared_ptr<const QVLLinuxReachabilityServices> m_services;
    const QVLReachabilityPeer m_peer;
    /// Null for an address, whose flags are read at once.
    const std::unique_ptr<QVLSerialQueue> m_lookUpQueue;
    QVLToken m_observation;

    std::mutex m_mutex;
    // Under the mutex from here on.
    std::optional<std::uint32_t> m_flags;
    std::optional<std::uint32_t> m_announcedFlags;
    std::chrono::steady_clock::time_point m_lookUpTime;
    bool m_isLookUpQueued = false;
    QVLToken m_retry;
    std::shared_ptr<const Callback> m_callback;
    std::shared_ptr<QVLSerialQueue> m_queue;
};
