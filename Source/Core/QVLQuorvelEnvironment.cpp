#include "QVLQuorvelEnvironment.h"

#include "QVLDigest.h"
#include "QVLLogMacros.h"
#include "QVLPublished.h"
#include "QVLUtilities.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr const char* kTemporaryDirectoryName = "quorvel-environment";
constexpr const char* kNightlyScriptsDirectoryName = "Nightly_Scripts";
/// Digests of the key files that unlock the debug tools; the vendor of a library build chooses the key.
constexpr std::array<std::string_view, 1> kAcceptedKeyDigests = {QVL_DEBUG_KEY_DIGEST};

std::string hexadecimal(const QVLSHA1Digest& digest) {
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += QVLStringWithFormat("%02x", byte);
    }
    return text;
}

} // namespace

struct QVLQuorvelEnvironment::Settings {
    struct Values {
        std::shared_ptr<QVLLogger> logger;
        std::optional<std::string> applicationSupportDirectory;
        std::optional<QVLURL> remoteScriptURL;
        std::optional<QVLURL> nightlyFeedURL;
        std::vector<std::string> abtestGuids;
        std::optional<std::string> abtestHost;
        std::uint64_t appType = 0;
        std::optional<std::string> appVersion;
        std::optional<std::string> deviceToken;
    };
    QVLPublished<Values> values;

    template <class Value>
    void set(Value Values::*member, Value value) {
        values.update([&](Values& next) { next.*member = std::move(value); });
    }
};

struct QVLQuorvelEnvironment::Observers {
    std::vector<std::shared_ptr<std::function<void()>>> all;
};

const std::shared_ptr<QVLQuorvelEnvironment>& QVLQuorvelEnvironment::sharedEnvironment() {
    // Never destroyed: queues still running at exit log through it.
    static const auto* const environment =
        new std::shared_ptr<QVLQuorvelEnvironment>(std::make_shared<QVLQuorvelEnvironment>());
    return *environment;
}

QVLQuorvelEnvironment::QVLQuorvelEnvironment()
    : m_settings(std::make_unique<Settings>()), m_persistObservers(std::make_shared<Observers>()) {}

QVLQuorvelEnvironment::~QVLQuorvelEnvironment() = default;

std::shared_ptr<QVLLogger> QVLQuorvelEnvironment::logger() const {
    return m_settings->values.load()->logger;
}

void QVLQuorvelEnvironment::setLogger(std::shared_ptr<QVLLogger> logger) {
    m_settings->set(&Settings::Values::logger, std::move(logger));
}

std::optional<std::string> QVLQuorvelEnvironment::applicationSupportDirectory() const {
    return m_settings->values.load()->applicationSupportDirectory;
}

void QVLQuorvelEnvironment::setApplicationSupportDirectory(std::optional<std::string> directory) {
    m_settings->set(&Settings::Values::applicationSupportDirectory, std::move(directory));
}

std::optional<QVLURL> QVLQuorvelEnvironment::remoteScriptURL() const {
    return m_settings->values.load()->remoteScriptURL;
}

void QVLQuorvelEnvironment::setRemoteScriptURL(std::optional<QVLURL> url) {
    m_settings->set(&Settings::Values::remoteScriptURL, std::move(url));
}

std::optional<QVLURL> QVLQuorvelEnvironment::nightlyFeedURL() const {
    return m_settings->values.load()->nightlyFeedURL;
}

void QVLQuorvelEnvironment::setNightlyFeedURL(std::optional<QVLURL> url) {
    m_settings->set(&Settings::Values::nightlyFeedURL, std::move(url));
}

std::vector<std::string> QVLQuorvelEnvironment::abtestGuids() const {
    return m_settings->values.load()->abtestGuids;
}

void QVLQuorvelEnvironment::setAbtestGuids(std::vector<std::string> guids) {
    m_settings->set(&Settings::Values::abtestGuids, std::move(guids));
}

std::optional<std::string> QVLQuorvelEnvironment::abtestHost() const {
    return m_settings->values.load()->abtestHost;
}

void QVLQuorvelEnvironment::setAbtestHost(std::optional<std::string> host) {
    m_settings->set(&Settings::Values::abtestHost, std::move(host));
}

std::uint64_t QVLQuorvelEnvironment::appType() const {
    return m_settings->values.load()->appType;
}

void QVLQuorvelEnvironment::setAppType(std::uint64_t appType) {
    m_settings->set(&Settings::Values::appType, appType);
}

std::optional<std::string> QVLQuorvelEnvironment::appVersion() const {
    return m_settings->values.load()->appVersion;
}

void QVLQuorvelEnvironment::setAppVersion(std::optional<std::string> version) {
    m_settings->set(&Settings::Values::appVersion, std::move(version));
}

std::optional<std::string> QVLQuorvelEnvironment::deviceToken() const {
    return m_settings->values.load()->deviceToken;
}

void QVLQuorvelEnvironment::setDeviceToken(std::optional<std::string> token) {
    m_settings->set(&Settings::Values::deviceToken, std::move(token));
}

bool QVLQuorvelEnvironment::persistDebugOverrides() const {
    return QVLUserDefaults::standardUserDefaults()->boolForKey(kQVLPersistOverridesKey);
}

void QVLQuorvelEnvironment::setPersistDebugOverrides(bool persist) {
    QVLUserDefaults::standardUserDefaults()->setObjectForKey(persist, kQVLPersistOverridesKey);
    // An observer may drop another one, or this environment.
    const std::shared_ptr<Observers> observers = m_persistObservers;
    for (const auto& observer : std::vector(observers->all)) {
        const auto& registered = observers->all;
        if (std::find(registered.begin(), registered.end(), observer) != registered.end()) {
            (*observer)();
        }
    }
}

QVLToken QVLQuorvelEnvironment::observePersistDebugOverrides(std::function<void()> observer) {
    auto registration = std::make_shared<std::function<void()>>(std::move(observer));
    m_persistObservers->all.push_back(registration);
    return QVLToken([registration, observers = m_persistObservers] { std::erase(observers->all, registration); });
}

std::optional<std::string> QVLQuorvelEnvironment::environmentDirectory() const {
    const std::shared_ptr<QVLFileManager> fileManager = QVLPlatform::current()->fileManager;
    std::optional<std::string> base = applicationSupportDirectory();
    if (base && base->empty()) {
        // Would be the file system's root.
        base.reset();
    }
    if (!base) {
        QVL_LOG_ERROR(this, "Quorvel environment directory has not been set.");
    }
    const std::string path =
        base ? *base + "/" + kQVLContentDirectory : fileManager->temporaryDirectory() + "/" + kTemporaryDirectoryName;
    if (fileManager->itemKindAtPath(path) == QVLFileManager::ItemKind::File) {
        if (const QVLOutcome removed = fileManager->removeItemAtPath(path); !removed) {
            QVL_LOG_ERROR(this, "Could not remove file: %@, error: %@", path, removed.error);
            return std::nullopt;
        }
    }
    if (!fileManager->itemExistsAtPath(path)) {
        const QVLOutcome created = fileManager->createDirectoryAtPath(path, /*withIntermediateDirectories=*/false);
        // Another thread or process may have made it in the meantime.
        if (!created && fileManager->itemKindAtPath(path) != QVLFileManager::ItemKind::Directory) {
            QVL_LOG_ERROR(this, "Could not create directory: %@, error: %@", path, created.error);
            return std::nullopt;
        }
    }
    return path;
}

std::optional<std::string> QVLQuorvelEnvironment::pathInEnvironmentDirectory(const char* name) const {
    const std::optional<std::string> directory = environmentDirectory();
    return directory ? std::optional(*directory + "/" + name) : std::nullopt;
}

std::optional<std::string> QVLQuorvelEnvironment::bundleScriptFilePath() const {
    return QVLUtilities::quorvelBundle()->pathForResource(kQVLBundledScriptFile);
}

std::optional<std::string> QVLQuorvelEnvironment::remoteScriptFilePath() const {
    return pathInEnvironmentDirectory(kQVLRemoteScriptFile);
}

std::optional<std::string> QVLQuorvelEnvironment::customScriptFilePath() const {
    return pathInEnvironmentDirectory(kQVLCustomScriptFile);
}

std::optional<std::string> QVLQuorvelEnvironment::debugHTMLFilePath() const {
    return pathInEnvironmentDirectory(kQVLDebugHTMLFile);
}

std::optional<std::string> QVLQuorvelEnvironment::debugKeyFilePath() const {
    return pathInEnvironmentDirectory(kQVLEnableUIKeyFileName);
}

std::optional<std::string> QVLQuorvelEnvironment::nightlyScriptDirectoryPath() const {
    std::optional<std::string> path = pathInEnvironmentDirectory(kNightlyScriptsDirectoryName);
    const std::shared_ptr<QVLFileManager> fileManager = QVLPlatform::current()->fileManager;
    if (!path || fileManager->itemExistsAtPath(*path)) {
        return path;
    }
    const QVLOutcome created = fileManager->createDirectoryAtPath(*path, /*withIntermediateDirectories=*/true);
    if (!created) {
        QVL_LOG_ERROR(this, "Could not create nightly script directory: %@", created.error);
        return std::nullopt;
    }
    return path;
}

bool QVLQuorvelEnvironment::debugToolsAvailable() const {
    const std::optional<std::string> path = debugKeyFilePath();
    if (!path) {
        return false;
    }
    const QVLResult<std::string> key = QVLPlatform::current()->fileManager->contentsOfFileAtPath(*path);
    if (!key) {
        return false;
    }
    const std::string digest = hexadecimal(QVLSHA1(*key));
    return std::find(kAcceptedKeyDigests.begin(), kAcceptedKeyDigests.end(), digest) != kAcceptedKeyDigests.end();
}
