#pragma once

#include "QVLExport.h"
#include "QVLSerialQueue.h"
#include "QVLSocketAddress.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

/// What the flags of a reachability target say, one bit each.
enum QVLReachabilityFlags : std::uint32_t {
    /// Over a connection that comes and goes, such as a tunnel or a dialled line.
    kQVLReachabilityFlagsTransientConnection = 1,
    kQVLReachabilityFlagsReachable = 2,
    /// A connection must be made first.
    kQVLReachabilityFlagsConnectionRequired = 4,
    /// Traffic makes that connection.
    kQVLReachabilityFlagsConnectionOnTraffic = 8,
    /// Somebody must do something for that connection, such as give a password.
    kQVLReachabilityFlagsInterventionRequired = 16,
    kQVLReachabilityFlagsConnectionOnDemand = 32,
    /// An address of this computer.
    kQVLReachabilityFlagsIsLocalAddress = 65536,
    /// On a network of this computer, without a gateway between.
    kQVLReachabilityFlagsIsDirect = 131072,
};

/// A host or an address that is watched.
class QVL_EXPORT QVLReachabilityTarget {
public:
    using Callback = std::function<void(std::uint32_t flags)>;

    QVLReachabilityTarget() = default;
    QVLReachabilityTarget(const QVLReachabilityTarget&) = delete;
    QVLReachabilityTarget& operator=(const QVLReachabilityTarget&) = delete;
    /// Ends the watch without waiting for anything. Any thread.
    virtual ~QVLReachabilityTarget() = default;

    /// The flags as far as they are known, or no value when they cannot be read or a host name has not been looked up
    /// yet. Never waits for the network; reading may have an old look-up renewed in the background. Any thread.
    [[nodiscard]] virtual std::optional<std::uint32_t> flags() = 0;

    /// Registers what is called when the flags change, in place of what was; an empty function unregisters. After that
    /// what was registered is not called any more, except that a call under way goes on. False when it cannot be. Any
    /// thread.
    virtual bool setCallback(Callback callback) = 0;

    /// The queue on which the callback is called; null for none, which keeps it silent. With both in place the callback
    /// is called once with the flags as soon as they are known, and afterwards whenever they differ. False when it
    /// cannot be. Any thread.
    virtual bool setQueue(std::shared_ptr<QVLSerialQueue> queue) = 0;
};

/// Who is to be reached: a host name, or an address. The unspecified address stands for the internet as a whole.
using QVLReachabilityPeer = std::variant<std::string, QVLSocketAddress>;

/// Makes a target, or null for a peer that cannot be watched, such as an empty host name. Main thread.
using QVLReachabilityTargetMaker =
    std::function<std::shared_ptr<QVLReachabilityTarget>(const QVLReachabilityPeer& peer)>;
