#include "ScriptedReachability.h"

#include <utility>

void ScriptedReachabilityTarget::setFlags(std::optional<std::uint32_t> flags) {
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_flags, flags) != flags) {
        announce();
    }
}

bool ScriptedReachabilityTarget::isWatched() const {
    const std::lock_guard lock(m_mutex);
    return m_callback && m_queue;
}

std::optional<std::uint32_t> ScriptedReachabilityTarget::flags() {
    const std::lock_guard lock(m_mutex);
    return m_flags;
}

bool ScriptedReachabilityTarget::setCallback(Callback callback) {
    const std::lock_guard lock(m_mutex);
    if (callback && !acceptsCallback) {
        return false;
    }
    m_registrationCount += callback ? 1 : 0;
    m_callback = callback ? std::make_shared<const Callback>(std::move(callback)) : nullptr;
    return true;
}

bool ScriptedReachabilityTarget::setQueue(std::shared_ptr<QVLSerialQueue> queue) {
    const std::lock_guard lock(m_mutex);
    if (queue && !acceptsQueue) {
        return false;
    }
    m_queue = std::move(queue);
    announce();
    return true;
}

void ScriptedReachabilityTarget::announce() {
    if (!m_callback || !m_queue || !m_flags) {
        return;
    }
    m_queue->async([weakCallback = std::weak_ptr(m_callback), flags = *m_flags] {
        if (const auto callback = weakCallback.lock()) {
            (*callback)(flags);
        }
    });
}

QVLReachabilityTargetMaker ScriptedReachability::maker() {
    return [this](const QVLReachabilityPeer& peer) -> std::shared_ptr<QVLReachabilityTarget> {
        m_peers.push_back(peer);
        if (!isAvailable) {
            return nullptr;
        }
        m_targets.push_back(std::make_shared<ScriptedReachabilityTarget>());
        m_targets.back()->setFlags(initialFlags);
        return m_targets.back();
    };
}
