#include "QVLLinuxReachabilityTarget.h"

#include "QVLLinuxNetworkMonitor.h"
#include "QVLLinuxRoute.h"

#include <cstring>
#include <utility>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

/// A look-up that failed may succeed later without any change of the networks, when a name server is back.
constexpr auto kLongestLookUpAge = std::chrono::seconds(30);

struct AddressListCleanup {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

std::optional<QVLSocketAddress> addressFrom(const sockaddr& address) {
    QVLSocketAddress result;
    if (address.sa_family == AF_INET) {
        std::memcpy(result.bytes.data(), &reinterpret_cast<const sockaddr_in&>(address).sin_addr, 4);
        return result;
    }
    if (address.sa_family == AF_INET6) {
        result.family = QVLSocketAddress::Family::IPv6;
        std::memcpy(result.bytes.data(), &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr, 16);
        return result;
    }
    return std::nullopt;
}

std::vector<QVLSocketAddress> addressesOf(const std::string& hostName, int resolverFlags) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = resolverFlags;
    addrinfo* list = nullptr;
    if (getaddrinfo(hostName.c_str(), /*service=*/nullptr, &hints, &list) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, AddressListCleanup> owner(list);
    std::vector<QVLSocketAddress> addresses;
    for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
        if (const auto address = addressFrom(*entry->ai_addr)) {
            addresses.push_back(*address);
        }
    }
    return addresses;
}

/// A host name that is an address written out needs no look-up.
QVLReachabilityPeer withoutNeedlessName(const QVLReachabilityPeer& peer) {
    const auto* const hostName = std::get_if<std::string>(&peer);
    const auto addresses = hostName ? addressesOf(*hostName, AI_NUMERICHOST) : std::vector<QVLSocketAddress>();
    return addresses.empty() ? peer : QVLReachabilityPeer(addresses.front());
}

std::uint32_t flagsOfAddress(const QVLLinuxReachabilityServices& services, const QVLSocketAddress& address) {
    const std::uint32_t flagsOfAnyNetwork =
        services.networkMonitor->isNetworkAvailable() ? kQVLReachabilityFlagsReachable : 0U;
    return address.isUnspecified() ? flagsOfAnyNetwork : services.routeFlags(address).value_or(flagsOfAnyNetwork);
}

std::uint32_t flagsOfHost(const QVLLinuxReachabilityServices& services, const std::string& hostName) {
    for (const QVLSocketAddress& address : services.resolve(hostName)) {
        if (const std::uint32_t flags = flagsOfAddress(services, address); flags & kQVLReachabilityFlagsReachable) {
            return flags;
        }
    }
    return 0;
}

} // namespace

std::shared_ptr<const QVLLinuxReachabilityServices>
QVLLinuxReachabilityServices::native(std::function<std::unique_ptr<QVLSerialQueue>(std::string label)> makeSerialQueue,
                                     std::shared_ptr<QVLMainRunLoop> mainRunLoop) {
    auto services = std::make_shared<QVLLinuxReachabilityServices>();
    services->networkMonitor = QVLLinuxNetworkMonitor::shared();
    services->makeSerialQueue = std::move(makeSerialQueue);
    services->resolve = [](const std::string& hostName) { return addressesOf(hostName, /*resolverFlags=*/0); };
    services->routeFlags = QVLLinuxRouteFlags;
    services->now = std::chrono::steady_clock::now;
    services->performAfterDelay = [mainRunLoop = std::move(mainRunLoop)](QVLTimeInterval delay,
                                                                         std::function<void()> task) {
        return mainRunLoop->performAfterDelay(delay, std::move(task));
    };
    return services;
}

std::shared_ptr<QVLReachabilityTarget>
QVLLinuxReachabilityTarget::make(const QVLReachabilityPeer& peer,
                                 std::shared_ptr<const QVLLinuxReachabilityServices> services) {
    const auto* const hostName = std::get_if<std::string>(&peer);
    if (hostName && (hostName->empty() || hostName->find('\0') != std::string::npos)) {
        return nullptr;
    }
    auto target =
        std::make_shared<QVLLinuxReachabilityTarget>(Private(), withoutNeedlessName(peer), std::move(services));
    target->watch();
    return target;
}

QVLLinuxReachabilityTarget::QVLLinuxReachabilityTarget(Private, const QVLReachabilityPeer& peer,
                                                       std::shared_ptr<const QVLLinuxReachabilityServices> services)
    : m_services(std::move(services)),
      m_peer(peer),
      m_lookUpQueue(std::holds_alternative<std::string>(peer) ? m_services->makeSerialQueue("com.quorvel.host-lookup")
                                                              : nullptr) {}

std::optional<std::uint32_t> QVLLinuxReachabilityTarget::flags() {
    if (const auto* const address = std::get_if<QVLSocketAddress>(&m_peer)) {
        return flagsOfAddress(*m_services, *address);
    }
    refreshIfOld();
    const std::lock_guard lock(m_mutex);
    return m_flags;
}

bool QVLLinuxReachabilityTarget::setCallback(Callback callback) {
    auto registered = callback ? std::make_shared<const Callback>(std::move(callback)) : nullptr;
    const std::lock_guard lock(m_mutex);
    // The old one is dropped after the lock, with whatever it holds.
    m_callback.swap(registered);
    m_announcedFlags.reset();
    announceIfNew();
    retryIfUnreachable();
    return true;
}

bool QVLLinuxReachabilityTarget::setQueue(std::shared_ptr<QVLSerialQueue> queue) {
    const std::lock_guard lock(m_mutex);
    m_queue.swap(queue);
    m_announcedFlags.reset();
    announceIfNew();
    return true;
}

void QVLLinuxReachabilityTarget::watch() {
    m_observation = m_services->networkMonitor->addObserver([weakThis = weak_from_this()] {
        if (const auto target = weakThis.lock()) {
            target->refresh();
        }
    });
    refresh();
}

void QVLLinuxReachabilityTarget::refresh() {
    if (const auto* const address = std::get_if<QVLSocketAddress>(&m_peer)) {
        publish(flagsOfAddress(*m_services, *address));
        return;
    }
    const std::lock_guard lock(m_mutex);
    queueLookUp();
}

void QVLLinuxReachabilityTarget::refreshIfOld() {
    const std::lock_guard lock(m_mutex);
    if (m_services->now() - m_lookUpTime >= kLongestLookUpAge) {
        queueLookUp();
    }
}

/// Many changes in a row need one look-up: one that has begun is followed by one more, and no others.
void QVLLinuxReachabilityTarget::queueLookUp() {
    if (std::exchange(m_isLookUpQueued, true)) {
        return;
    }
    m_lookUpQueue->async([weakThis = weak_from_this(), services = m_services] {
        auto target = weakThis.lock();
        if (!target) {
            return;
        }
        const std::string hostName = target->beginLookUp();
        // Not held while the network is waited for, so that dropping the target ends the watch at once.
        target.reset();
        const std::uint32_t flags = flagsOfHost(*services, hostName);
        if ((target = weakThis.lock())) {
            target->publish(flags);
        }
    });
}

std::string QVLLinuxReachabilityTarget::beginLookUp() {
    const std::lock_guard lock(m_mutex);
    m_isLookUpQueued = false;
    m_lookUpTime = m_services->now();
    return std::get<std::string>(m_peer);
}

void QVLLinuxReachabilityTarget::publish(std::uint32_t flags) {
    const std::lock_guard lock(m_mutex);
    m_flags = flags;
    announceIfNew();
    retryIfUnreachable();
}

void QVLLinuxReachabilityTarget::retryIfUnreachable() {
    const bool isReachable = m_flags && (*m_flags & kQVLReachabilityFlagsReachable);
    if (!m_lookUpQueue || !m_callback || isReachable) {
        m_retry.reset();
        return;
    }
    m_retry = m_services->performAfterDelay(kLongestLookUpAge, [weakThis = weak_from_this()] {
        if (const auto target = weakThis.lock()) {
            target->refresh();
        }
    });
}

void QVLLinuxReachabilityTarget::announceIfNew() {
    if (!m_callback || !m_queue || !m_flags || m_flags == m_announcedFlags) {
        return;
    }
    m_announcedFlags = m_flags;
    m_queue->async([weakCallback = std::weak_ptr(m_callback), flags = *m_flags] {
        if (const auto callback = weakCallback.lock()) {
            (*callback)(flags);
        }
    });
}
