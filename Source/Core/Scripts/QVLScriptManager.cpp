#include "QVLScriptManager.h"

#include "QVLHTTPSession.h"
#include "QVLLogMacros.h"
#include "QVLPublished.h"

#include <algorithm>

// Which scripts there are and which of them is current. Fetching and downloading have sources of their own.

namespace {

constexpr const char* kRemoteTitleKey = "Remote";
constexpr const char* kBundledTitleKey = "Bundled";

bool canBecomeCurrentScript(const std::shared_ptr<QVLScript>& script) {
    return script && (script->state() == QVLScriptStateAvailable || script->state() == QVLScriptStateDownloading);
}

std::shared_ptr<QVLScript> scriptWithVersion(const std::shared_ptr<QVLScript>& script, const std::string& version) {
    return script && script->version() == version ? script : nullptr;
}

} // namespace

struct QVLScriptManager::Published {
    struct Records {
        std::shared_ptr<QVLScript> currentScript;
        std::shared_ptr<QVLScript> remoteScript;
    };
    QVLPublished<Records> records;
};

struct QVLScriptManager::Observers {
    std::vector<std::shared_ptr<std::function<void()>>> all;
};

std::shared_ptr<QVLScriptManager>
QVLScriptManager::initWithEnvironment(const std::shared_ptr<QVLQuorvelEnvironment>& environment) {
    std::shared_ptr<QVLScriptManager> manager(new QVLScriptManager(environment));
    manager->setUp();
    return manager;
}

QVLScriptManager::QVLScriptManager(std::shared_ptr<QVLQuorvelEnvironment> environment)
    : m_platform(QVLPlatform::current()),
      m_environment(std::move(environment)),
      m_published(std::make_unique<Published>()),
      m_observers(std::make_shared<Observers>()) {}

void QVLScriptManager::setUp() {
    m_reachabilityObservation = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLReachabilityChangedNotification, [weak = weak_from_this()](const QVLNotification& notification) {
            if (const auto self = weak.lock()) {
                self->reachabilityChanged(notification);
            }
        });
    setupReachability();
    setupRemoteScript();
    setupBundledScript();
    loadPersistedOverrideIfNeeded();
    updateCurrentScript();
    m_isObserving = true;
    m_environmentObservation = m_environment->observePersistDebugOverrides([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->updatePersistedOverride();
        }
    });
}

QVLScriptManager::~QVLScriptManager() {
    setCurrentScript(nullptr);
    m_reachabilityObservation.reset();
    m_environmentObservation.reset();
    m_requests.clear();
    if (m_urlSession) {
        m_urlSession->invalidateAndCancel();
    }
    // A notifying object keeps itself alive.
    if (m_reachability) {
        m_reachability->stopNotifier();
    }
}

void QVLScriptManager::setupReachability() {
    if (m_reachability) {
        m_reachability->stopNotifier();
        m_reachability.reset();
    }
    if (const std::optional<QVLURL> url = m_environment->remoteScriptURL()) {
        m_reachability = QVLReachability::reachabilityWithHostName(url->host());
        if (m_reachability) {
            m_reachability->startNotifier();
        }
    }
}

void QVLScriptManager::setupRemoteScript() {
    const std::optional<QVLURL> url = m_environment->remoteScriptURL();
    if (!url) {
        setRemoteScript(nullptr);
        return;
    }
    const std::string path = m_environment->remoteScriptFilePath().value_or("");
    setRemoteScript(QVLScript::scriptWithPath(path, m_platform->localization->localizedString(kRemoteTitleKey), url,
                                              QVLScriptSourceRemote));
}

void QVLScriptManager::setupBundledScript() {
    const std::optional<std::string> path = m_environment->bundleScriptFilePath();
    if (!path || !m_platform->fileManager->itemExistsAtPath(*path)) {
        return;
    }
    m_bundledScript = QVLScript::scriptWithPath(*path, m_platform->localization->localizedString(kBundledTitleKey),
                                                std::nullopt, QVLScriptSourceBundled);
    m_bundledScript->setState(QVLScriptStateAvailable);
}

std::shared_ptr<QVLScript> QVLScriptManager::currentScript() const {
    return m_published->records.load()->currentScript;
}

std::shared_ptr<QVLScript> QVLScriptManager::remoteScript() const {
    return m_published->records.load()->remoteScript;
}

void QVLScriptManager::setRemoteScript(std::shared_ptr<QVLScript> script) {
    m_published->records.update([&](Published::Records& records) { records.remoteScript = std::move(script); });
    scriptsDidChange();
}

void QVLScriptManager::setNightlyScripts(std::optional<Scripts> scripts) {
    const std::shared_ptr<QVLScriptManager> self = shared_from_this();
    m_nightlyScripts = std::move(scripts);
    scriptsDidChange();
}

void QVLScriptManager::scriptsDidChange() {
    if (m_isObserving) {
        updateCurrentScript();
    }
}

bool QVLScriptManager::shouldIncludeNightlyScripts() const {
    return m_environment->debugToolsAvailable();
}

std::optional<std::string> QVLScriptManager::localPathForScript(const QVLScript& script) const {
    // The first two ask the shared environment and the third the manager's own: kept for hosts that use several.
    switch (script.source()) {
    case QVLScriptSourceRemote:
        return QVLQuorvelEnvironment::sharedEnvironment()->remoteScriptFilePath();
    case QVLScriptSourceBundled:
        return QVLQuorvelEnvironment::sharedEnvironment()->bundleScriptFilePath();
    case QVLScriptSourceNightly:
        break;
    }
    const std::optional<std::string> directory = m_environment->nightlyScriptDirectoryPath();
    const std::string name = script.url() ? script.url()->lastPathComponent() : std::string();
    // No entry of a feed may take the place of the feed itself.
    if (!directory || name.empty() || name == kQVLCachedNightlyFeedFile) {
        return std::nullopt;
    }
    return *directory + "/" + name;
}

void QVLScriptManager::updateCurrentScript() {
    setCurrentScript(chosenScript());
    handleCurrentScriptStateChange();
    tellObservers();
}

std::shared_ptr<QVLScript> QVLScriptManager::chosenScript() const {
    if (auto script = overrideScript(); canBecomeCurrentScript(script)) {
        return script;
    }
    if (canBecomeCurrentScript(m_bundledScript)) {
        return m_bundledScript;
    }
    std::shared_ptr<QVLScript> nightly =
        m_nightlyScripts && !m_nightlyScripts->empty() ? m_nightlyScripts->front() : nullptr;
    if (canBecomeCurrentScript(nightly) && shouldIncludeNightlyScripts()) {
        return nightly;
    }
    return canBecomeCurrentScript(remoteScript()) ? remoteScript() : nullptr;
}

void QVLScriptManager::setCurrentScript(const std::shared_ptr<QVLScript>& script) {
    if (script == currentScript()) {
        return;
    }
    m_published->records.update([&](Published::Records& records) { records.currentScript = script; });
    m_currentScriptObservation = script ? script->observeState([this](QVLScript&) {
        const std::shared_ptr<QVLScriptManager> self = shared_from_this();
        handleCurrentScriptStateChange();
        tellObservers();
    })
                                        : QVLToken();
}

void QVLScriptManager::handleCurrentScriptStateChange() {
    const std::shared_ptr<QVLScript> script = currentScript();
    if (!script) {
        return;
    }
    switch (script->state()) {
    case QVLScriptStateDownloading:
        return;
    case QVLScriptStateAvailable:
        QVLNotificationCenter::defaultCenter().post(
            {kQVLScriptManagerCurrentScriptNeedsReloadNotification, shared_from_this(), {}});
        return;
    case QVLScriptStateUnknown:
    case QVLScriptStateFailed:
        // The record is not eligible any more.
        updateCurrentScript();
        return;
    }
}

QVLToken QVLScriptManager::observeScripts(std::function<void()> observer) {
    auto registration = std::make_shared<std::function<void()>>(std::move(observer));
    m_observers->all.push_back(registration);
    return QVLToken([registration, observers = m_observers] { std::erase(observers->all, registration); });
}

void QVLScriptManager::tellObservers() {
    const std::shared_ptr<Observers> observers = m_observers;
    for (const auto& observer : std::vector(observers->all)) {
        if (std::find(observers->all.begin(), observers->all.end(), observer) != observers->all.end()) {
            (*observer)();
        }
    }
}

std::shared_ptr<QVLScript> QVLScriptManager::overrideScript() const {
    if (!m_overrideVersion) {
        return nullptr;
    }
    if (auto script = scriptWithVersion(remoteScript(), *m_overrideVersion)) {
        return script;
    }
    if (auto script = scriptWithVersion(m_bundledScript, *m_overrideVersion)) {
        return script;
    }
    for (const std::shared_ptr<QVLScript>& nightly : m_nightlyScripts.value_or(Scripts())) {
        if (scriptWithVersion(nightly, *m_overrideVersion)) {
            return nightly;
        }
    }
    return nullptr;
}

void QVLScriptManager::setOverrideScript(const std::shared_ptr<QVLScript>& script) {
    if (script && !script->version()) {
        QVL_LOG_ERROR(this, "Supplied override script '%@' has no version. Not updating override", script);
        return;
    }
    const std::shared_ptr<QVLScriptManager> self = shared_from_this();
    m_overrideVersion = script ? script->version() : std::nullopt;
    updatePersistedOverride();
    scriptsDidChange();
}

void QVLScriptManager::loadPersistedOverrideIfNeeded() {
    if (m_environment->persistDebugOverrides()) {
        m_overrideVersion = m_platform->userDefaults->objectForKey(kQVLOverrideScriptVersion).qvl_castToStringValue();
    }
}

void QVLScriptManager::updatePersistedOverride() {
    if (m_overrideVersion && m_environment->persistDebugOverrides()) {
        m_platform->userDefaults->setObjectForKey(*m_overrideVersion, kQVLOverrideScriptVersion);
    } else {
        m_platform->userDefaults->removeObjectForKey(kQVLOverrideScriptVersion);
    }
}
