#pragma once

#include "QVLReachabilityTarget.h"

#include <mutex>
#include <string>
#include <vector>

/// A target whose flags a test sets.
class ScriptedReachabilityTarget final : public QVLReachabilityTarget {
public:
    /// No value makes the flags unreadable. A change calls back as a real target does.
    void setFlags(std::optional<std::uint32_t> flags);

    // What the target refuses from now on.
    bool acceptsCallback = true;
    bool acceptsQueue = true;

    [[nodiscard]] int registrationCount() const { return m_registrationCount; }
    [[nodiscard]] bool isWatched() const;

    [[nodiscard]] std::optional<std::uint32_t> flags() override;
    bool setCallback(Callback callback) override;
    bool setQueue(std::shared_ptr<QVLSerialQueue> queue) override;

private:
    void announce();

    mutable std::mutex m_mutex;
    std::optional<std::uint32_t> m_flags;
    std::shared_ptr<const Callback> m_callback;
    std::shared_ptr<QVLSerialQueue> m_queue;
    int m_registrationCount = 0;
};

/// Makes targets that a test controls, one per creation. Lives as long as the platform that it is part of.
class ScriptedReachability final {
public:
    /// The flags of targets made from now on; no value until a test gives them some.
    std::optional<std::uint32_t> initialFlags;
    /// Whether targets can be made at all.
    bool isAvailable = true;

    [[nodiscard]] QVLReachabilityTargetMaker maker();
    /// Who was asked for, in order.
    [[nodiscard]] const std::vector<QVLReachabilityPeer>& peers() const { return m_peers; }
    /// The targets made, in order.
    [[nodiscard]] const std::vector<std::shared_ptr<ScriptedReachabilityTarget>>& targets() const { return m_targets; }

private:
    std::vector<QVLReachabilityPeer> m_peers;
    std::vector<std::shared_ptr<ScriptedReachabilityTarget>> m_targets;
};
