#include "QVLDateFormatter.h"
#include "QVLLogMacros.h"
#include "QVLScriptManager.h"

#include <utility>

// When scripts are fetched.

namespace {

constexpr QVLTimeInterval kFetchInterval(kQVLScriptFetchInterval);
/// What the age of scripts that were never fetched counts from; long ago, so that a fetch is due.
constexpr QVLDate kReferenceDate = std::chrono::sys_days(std::chrono::year(2001) / 1 / 1);

} // namespace

void QVLScriptManager::startScriptFetching() {
    m_mayFetch = true;
    m_autoFetchingEnabled = true;
    fetchScriptsIfNeeded();
}

void QVLScriptManager::stopScriptFetching() {
    m_pendingFetch.reset();
    m_autoFetchingEnabled = false;
}

void QVLScriptManager::fetchScriptsNow() {
    const std::shared_ptr<QVLScriptManager> self = shared_from_this();
    m_mayFetch = true;
    m_forceFetch = true;
    fetchScriptsIfNeeded();
    m_forceFetch = false;
}

void QVLScriptManager::reachabilityChanged(const QVLNotification& notification) {
    if (!m_reachability || notification.sender != m_reachability) {
        return;
    }
    m_hasHeardOfNetwork = true;
    if (std::exchange(m_owesForcedFetch, false)) {
        fetchScriptsNow();
    } else if (m_mayFetch) {
        fetchScriptsIfNeeded();
    }
}

void QVLScriptManager::fetchScriptsIfNeeded() {
    // Whoever is told of a state on the way may release the engine and with it this manager.
    const std::shared_ptr<QVLScriptManager> self = shared_from_this();
    if (m_fetching) {
        return;
    }
    // Without a remote script URL, also one that the host took away since, there is nothing to reach.
    if (!remoteScript() || !m_reachability || m_reachability->currentReachabilityStatus() == QVLNotReachable) {
        QVL_LOG_INFO(this, "Scripts not reachable");
        m_owesForcedFetch = m_owesForcedFetch || (m_forceFetch && m_reachability && !m_hasHeardOfNetwork);
        return;
    }
    m_pendingFetch.reset();
    const bool hasFile = hasLocalRemoteScript();
    const QVLTimeInterval remainder = kFetchInterval - timeSinceLastUpdate();
    if (hasFile && !m_forceFetch && remainder > QVLTimeInterval::zero()) {
        scheduleFetch(remainder);
        return;
    }
    fetchScripts();
}

bool QVLScriptManager::hasLocalRemoteScript() const {
    const std::shared_ptr<QVLScript> script = remoteScript();
    const std::optional<std::string> path = script ? localPathForScript(*script) : std::nullopt;
    return path && m_platform->fileManager->itemKindAtPath(*path) == QVLFileManager::ItemKind::File;
}

QVLTimeInterval QVLScriptManager::timeSinceLastUpdate() const {
    const std::shared_ptr<QVLScript> script = remoteScript();
    const std::optional<std::string> path = script ? localPathForScript(*script) : std::nullopt;
    if (!path || !m_platform->fileManager->itemExistsAtPath(*path)) {
        m_platform->userDefaults->removeObjectForKey(kQVLLastUpdateDateKey);
    }
    const QVLJSONValue stored = m_platform->userDefaults->objectForKey(kQVLLastUpdateDateKey);
    const auto date = QVLDateFormatter::sharedFormatter().dateFromString(stored.stringView());
    return m_platform->clock->now() - date.value_or(kReferenceDate);
}

void QVLScriptManager::scheduleFetch(QVLTimeInterval delay) {
    m_pendingFetch = m_platform->mainRunLoop->performAfterDelay(delay, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->fetchScriptsIfNeeded();
        }
    });
}

void QVLScriptManager::fetchScripts() {
    m_fetching = true;
    // The completion comes only when the download succeeded; after a failure nothing ends this fetch, and none follows.
    downloadScript(remoteScript(), [this] {
        setupRemoteScript();
        if (!shouldIncludeNightlyScripts()) {
            postFetchCleanUp();
            return;
        }
        fetchNightlyScripts([this](const std::optional<Scripts>& scripts) {
            processNightlyScripts(scripts);
            postFetchCleanUp();
        });
    });
}

void QVLScriptManager::postFetchCleanUp() {
    QVLNotificationCenter::defaultCenter().post({kQVLScriptManagerDidFetchScriptsNotification, shared_from_this(), {}});
    const std::string now = QVLDateFormatter::sharedFormatter().stringFromDate(m_platform->clock->now());
    m_platform->userDefaults->setObjectForKey(now, kQVLLastUpdateDateKey);
    m_fetching = false;
    if (m_autoFetchingEnabled) {
        scheduleFetch(kFetchInterval);
    }
}
