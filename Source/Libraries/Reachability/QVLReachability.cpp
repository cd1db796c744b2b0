#include "QVLReachability.h"

#include "QVLNotificationCenter.h"
#include "QVLPlatform.h"
#include "QVLPublished.h"

#include <array>
#include <cstdio>
#include <utility>

namespace {

constexpr const char* kSerialQueueLabel = "com.quorvel.reachability";

struct FlagLetter {
    std::uint32_t flag;
    char letter;
};

/// The places of the flags' text from the fourth on.
constexpr std::array<FlagLetter, 7> kFlagLetters = {{
    {kQVLReachabilityFlagsConnectionRequired, 'c'},
    {kQVLReachabilityFlagsTransientConnection, 't'},
    {kQVLReachabilityFlagsInterventionRequired, 'i'},
    {kQVLReachabilityFlagsConnectionOnTraffic, 'C'},
    {kQVLReachabilityFlagsConnectionOnDemand, 'D'},
    {kQVLReachabilityFlagsIsLocalAddress, 'l'},
    {kQVLReachabilityFlagsIsDirect, 'd'},
}};

std::string textOfFlags(std::uint32_t flags) {
    // The first place tells of cellular connections, of which the desktop knows nothing.
    std::string text = flags & kQVLReachabilityFlagsReachable ? "XR " : "X- ";
    for (const auto& [flag, letter] : kFlagLetters) {
        text += flags & flag ? letter : '-';
    }
    return text;
}

const char* textOfStatus(QVLNetworkStatus status) {
    switch (status) {
    case QVLReachableViaWWAN:
        return "Cellular";
    case QVLReachableViaWiFi:
        return "WiFi";
    case QVLNotReachable:
        break;
    }
    return "No Connection";
}

} // namespace

struct QVLReachability::Blocks {
    Block reachable;
    Block unreachable;
    FlagsBlock reachability;
};

std::shared_ptr<QVLReachability> QVLReachability::reachabilityWithHostname(const std::string& hostname) {
    return reachabilityWithPeer(hostname);
}

std::shared_ptr<QVLReachability> QVLReachability::reachabilityWithHostName(const std::string& hostName) {
    return reachabilityWithHostname(hostName);
}

std::shared_ptr<QVLReachability> QVLReachability::reachabilityWithAddress(const QVLSocketAddress& address) {
    return reachabilityWithPeer(address);
}

std::shared_ptr<QVLReachability> QVLReachability::reachabilityForInternetConnection() {
    return reachabilityWithAddress(QVLSocketAddress::IPv4(0, 0, 0, 0));
}

std::shared_ptr<QVLReachability> QVLReachability::reachabilityForLocalWiFi() {
    return reachabilityWithAddress(QVLSocketAddress::IPv4(169, 254, 0, 0));
}

std::shared_ptr<QVLReachability>
QVLReachability::initWithReachabilityRef(std::shared_ptr<QVLReachabilityTarget> reachabilityRef) {
    return reachabilityRef ? std::make_shared<QVLReachability>(Private(), std::move(reachabilityRef)) : nullptr;
}

std::shared_ptr<QVLReachability> QVLReachability::reachabilityWithPeer(const QVLReachabilityPeer& peer) {
    return initWithReachabilityRef(QVLPlatform::current()->makeReachabilityTarget(peer));
}

QVLReachability::QVLReachability(Private, std::shared_ptr<QVLReachabilityTarget> reachabilityRef)
    : m_platform(QVLPlatform::current()),
      m_reachabilityRef(std::move(reachabilityRef)),
      m_reachabilitySerialQueue(m_platform->makeSerialQueue(kSerialQueueLabel)),
      m_blocks(std::make_unique<QVLPublished<Blocks>>()) {}

QVLReachability::~QVLReachability() {
    stopNotifier();
}

bool QVLReachability::startNotifier() {
    if (m_reachabilityObject.get() == this) {
        return true;
    }
    // Weakly, since the self-reference alone keeps a running notifier alive.
    const bool isRegistered = m_reachabilityRef->setCallback([weakThis = weak_from_this()](std::uint32_t flags) {
        auto reachability = weakThis.lock();
        if (!reachability) {
            return;
        }
        reachability->reachabilityChanged(flags);
        // Given back on the main thread, in case it is the last: the callbacks hold what belongs to the host.
        const auto mainRunLoop = reachability->m_platform->mainRunLoop;
        mainRunLoop->post([reachability = std::move(reachability)] {});
    });
    if (!isRegistered) {
        m_reachabilityObject.reset();
        return false;
    }
    if (!m_reachabilityRef->setQueue(m_reachabilitySerialQueue)) {
        m_reachabilityRef->setCallback({});
        m_reachabilityObject.reset();
        return false;
    }
    m_reachabilityObject = shared_from_this();
    return true;
}

void QVLReachability::stopNotifier() {
    m_reachabilityRef->setCallback({});
    m_reachabilityRef->setQueue(nullptr);
    // Given back last, since it may be what keeps this object alive.
    const auto dropped = std::move(m_reachabilityObject);
}

bool QVLReachability::isReachableWithFlags(std::uint32_t flags) const {
    constexpr std::uint32_t kYetToBeMade =
        kQVLReachabilityFlagsTransientConnection | kQVLReachabilityFlagsConnectionRequired;
    return (flags & kQVLReachabilityFlagsReachable) && (flags & kYetToBeMade) != kYetToBeMade;
}

bool QVLReachability::isReachable() const {
    return isReachableWithFlags(reachabilityFlags());
}

bool QVLReachability::isConnected() const {
    return isReachable();
}

bool QVLReachability::isReachableViaWWAN() const {
    return false;
}

bool QVLReachability::isReachableViaWiFi() const {
    return reachabilityFlags() & kQVLReachabilityFlagsReachable;
}

bool QVLReachability::connectionRequired() const {
    return isConnectionRequired();
}

bool QVLReachability::isConnectionRequired() const {
    return reachabilityFlags() & kQVLReachabilityFlagsConnectionRequired;
}

bool QVLReachability::isConnectionOnDemand() const {
    const std::uint32_t flags = reachabilityFlags();
    return (flags & kQVLReachabilityFlagsConnectionRequired) &&
           (flags & (kQVLReachabilityFlagsConnectionOnTraffic | kQVLReachabilityFlagsConnectionOnDemand));
}

bool QVLReachability::isInterventionRequired() const {
    const std::uint32_t flags = reachabilityFlags();
    return (flags & kQVLReachabilityFlagsConnectionRequired) && (flags & kQVLReachabilityFlagsInterventionRequired);
}

QVLNetworkStatus QVLReachability::currentReachabilityStatus() const {
    return isReachable() && isReachableViaWiFi() ? QVLReachableViaWiFi : QVLNotReachable;
}

std::uint32_t QVLReachability::reachabilityFlags() const {
    return m_reachabilityRef->flags().value_or(0);
}

std::string QVLReachability::currentReachabilityString() const {
    return m_platform->localization->localizedString(textOfStatus(currentReachabilityStatus()));
}

std::string QVLReachability::currentReachabilityFlags() const {
    return textOfFlags(reachabilityFlags());
}

std::string QVLReachability::description() const {
    std::array<char, 16> address{};
    std::snprintf(address.data(), address.size(), "%#x",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(this) & 0xffffffffU));
    return "<" + className() + ": " + address.data() + " (" + currentReachabilityFlags() + ")>";
}

std::string QVLReachability::className() const {
    return "QVLReachability";
}

QVLReachability::Block QVLReachability::reachableBlock() const {
    return m_blocks->load()->reachable;
}

void QVLReachability::setReachableBlock(Block reachableBlock) {
    m_blocks->update([&](Blocks& blocks) { blocks.reachable = std::move(reachableBlock); });
}

QVLReachability::Block QVLReachability::unreachableBlock() const {
    return m_blocks->load()->unreachable;
}

void QVLReachability::setUnreachableBlock(Block unreachableBlock) {
    m_blocks->update([&](Blocks& blocks) { blocks.unreachable = std::move(unreachableBlock); });
}

QVLReachability::FlagsBlock QVLReachability::reachabilityBlock() const {
    return m_blocks->load()->reachability;
}

void QVLReachability::setReachabilityBlock(FlagsBlock reachabilityBlock) {
    m_blocks->update([&](Blocks& blocks) { blocks.reachability = std::move(reachabilityBlock); });
}

void QVLReachability::reachabilityChanged(std::uint32_t flags) {
    const auto self = shared_from_this();
    const auto blocks = m_blocks->load();
    if (const Block& block = isReachableWithFlags(flags) ? blocks->reachable : blocks->unreachable) {
        block(self);
    }
    if (blocks->reachability) {
        blocks->reachability(self, flags);
    }
    m_platform->mainRunLoop->post([self] {
        QVLNotificationCenter::defaultCenter().post(
            {.name = kQVLReachabilityChangedNotification, .sender = self, .userInfo = {}});
    });
}
