#pragma once

#include "QVLExport.h"
#include "QVLObject.h"
#include "QVLReachabilityTarget.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

struct QVLPlatform;
template <class Snapshot>
class QVLPublished;

/// Posted on the main thread after each change that a running notifier sees; the sender is the reachability object.
/// There is no user information.
inline constexpr const char* kQVLReachabilityChangedNotification = "kQVLReachabilityChangedNotification";

/// What a connection comes to.
enum QVLNetworkStatus : int {
    QVLNotReachable = 0,
    /// Never occurs on the desktop.
    QVLReachableViaWWAN = 1,
    /// Over any network.
    QVLReachableViaWiFi = 2,
};

/// Watches whether a host, or an address, can be reached over the network, and announces every change. That a host can
/// be reached means that there is a way to it; nothing is sent to find out whether it answers.
///
/// Made, started and stopped on the main thread; read on any thread. A reading never waits for the network: a host name
/// is looked up in the background from creation on, and until that has succeeded once nothing is known, which counts as
/// no flags. The three callbacks run on a serial queue of the object's own, the notification is posted on the main
/// thread. A running notifier announces once what is known as soon as something is, and then every change.
///
/// Owned by whoever made it, and by itself while its notifier runs: an owner that drops it without `stopNotifier` keeps
/// it alive. Nothing is kept on disk, nothing is logged.
class QVL_EXPORT QVLReachability final : public QVLObject, public std::enable_shared_from_this<QVLReachability> {
    struct Private {};

public:
    using Block = std::function<void(const std::shared_ptr<QVLReachability>& reachability)>;
    using FlagsBlock = std::function<void(const std::shared_ptr<QVLReachability>& reachability, std::uint32_t flags)>;

    /// Watches a host by its name. Null for an empty name.
    [[nodiscard]] static std::shared_ptr<QVLReachability> reachabilityWithHostname(const std::string& hostname);
    /// The same under a second spelling.
    [[nodiscard]] static std::shared_ptr<QVLReachability> reachabilityWithHostName(const std::string& hostName);
    /// Watches an address. Null when the platform cannot watch it.
    [[nodiscard]] static std::shared_ptr<QVLReachability> reachabilityWithAddress(const QVLSocketAddress& address);
    /// Watches 0.0.0.0: whether there is any network beyond this computer.
    [[nodiscard]] static std::shared_ptr<QVLReachability> reachabilityForInternetConnection();
    /// Watches 169.254.0.0, the IPv4 link-local network.
    [[nodiscard]] static std::shared_ptr<QVLReachability> reachabilityForLocalWiFi();
    /// Watches a target, which it shares. Null for none.
    [[nodiscard]] static std::shared_ptr<QVLReachability>
    initWithReachabilityRef(std::shared_ptr<QVLReachabilityTarget> reachabilityRef);

    QVLReachability(Private, std::shared_ptr<QVLReachabilityTarget> reachabilityRef);
    /// Ends the watch. The callbacks go with it.
    ~QVLReachability() override;

    /// Begins to announce changes, and keeps the object alive until `stopNotifier`. True also when it runs already;
    /// false when the target refuses, which leaves it stopped.
    bool startNotifier();
    /// Ends it. A callback that is under way on the queue goes on, and its notification is still posted.
    void stopNotifier();

    /// Reachable, and not over a transient connection that has yet to be made.
    [[nodiscard]] bool isReachableWithFlags(std::uint32_t flags) const;
    /// `isReachableWithFlags` of the current flags; false when there are none to be read.
    [[nodiscard]] bool isReachable() const;
    /// The same as `isReachable`.
    [[nodiscard]] bool isConnected() const;
    /// Always false: the desktop does not tell cellular connections apart.
    [[nodiscard]] bool isReachableViaWWAN() const;
    /// Whether the flags say reachable, even if `isReachable` does not.
    [[nodiscard]] bool isReachableViaWiFi() const;
    [[nodiscard]] bool connectionRequired() const;
    /// The same as `connectionRequired`.
    [[nodiscard]] bool isConnectionRequired() const;
    /// A connection is required, and traffic or demand makes it.
    [[nodiscard]] bool isConnectionOnDemand() const;
    /// A connection is required, and somebody must do something for it.
    [[nodiscard]] bool isInterventionRequired() const;
    [[nodiscard]] QVLNetworkStatus currentReachabilityStatus() const;
    /// The bits of `QVLReachabilityFlags`; 0 when they cannot be read.
    [[nodiscard]] std::uint32_t reachabilityFlags() const;
    /// The status in the host's language: "No Connection", "Cellular" or "WiFi".
    [[nodiscard]] std::string currentReachabilityString() const;
    /// The flags as letters in fixed places, "-" for one that is not set: "XR ------d" is reachable and direct.
    [[nodiscard]] std::string currentReachabilityFlags() const;
    /// Class name, the low half of the address, and the flags: "<QVLReachability: 0xc0ffee00 (XR ------d)>".
    [[nodiscard]] std::string description() const override;
    [[nodiscard]] std::string className() const override;

    /// Whether a cellular connection counts as reachable; true at first. Kept for the host, and read by nothing. Main
    /// thread.
    [[nodiscard]] bool reachableOnWWAN() const { return m_reachableOnWWAN; }
    void setReachableOnWWAN(bool reachableOnWWAN) { m_reachableOnWWAN = reachableOnWWAN; }

    /// Called on each change to a reachable state; empty for none. Set on any thread, from the next change on.
    [[nodiscard]] Block reachableBlock() const;
    void setReachableBlock(Block reachableBlock);
    /// Called on each change to an unreachable state.
    [[nodiscard]] Block unreachableBlock() const;
    void setUnreachableBlock(Block unreachableBlock);
    /// Called on every change, after the other two.
    [[nodiscard]] FlagsBlock reachabilityBlock() const;
    void setReachabilityBlock(FlagsBlock reachabilityBlock);

private:
    struct Blocks;

    [[nodiscard]] static std::shared_ptr<QVLReachability> reachabilityWithPeer(const QVLReachabilityPeer& peer);
    void reachabilityChanged(std::uint32_t flags);

    const std::shared_ptr<const QVLPlatform> m_platform;
    const std::shared_ptr<QVLReachabilityTarget> m_reachabilityRef;
    const std::shared_ptr<QVLSerialQueue> m_reachabilitySerialQueue;
    /// Itself while the notifier runs.
    std::shared_ptr<QVLReachability> m_reachabilityObject;
    // Set on the main thread, read on the queue.
    const std::unique_ptr<QVLPublished<Blocks>> m_blocks;
    bool m_reachableOnWWAN = true;
};
