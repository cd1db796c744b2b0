#pragma once

#include "QVLAccount.h"
#include "QVLLogger.h"
#include "QVLToken.h"
#include "QVLURL.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QVLQuorvel;

/// Directory name of the library's files inside the host's directories.
inline constexpr const char* kQVLContentDirectory = "quorvel";
/// File names.
inline constexpr const char* kQVLBundledScriptFile = "Quorvel.js";
inline constexpr const char* kQVLRemoteScriptFile = "Quorvel.remote.js";
inline constexpr const char* kQVLCustomScriptFile = "Quorvel.custom.js";
inline constexpr const char* kQVLDebugHTMLFile = "debug.html";
inline constexpr const char* kQVLEnableUIKeyFileName = "debugtoolkey.qvlmkey";
/// User-defaults key of `persistDebugOverrides`.
inline constexpr const char* kQVLPersistOverridesKey = "QVLPersistOverrides";

/// The configuration of the library in this process, and the factory of its engines.
///
/// The host fills it in first, at least `applicationSupportDirectory` and, to see the log, `logger`; then it obtains
/// engines. The shared one lives until the process ends; any other is held by a shared pointer. Set on the main thread; the readers and the paths may be called from any
/// thread.
///
/// On disk: the environment directory, "quorvel" inside the application support directory, with the downloaded scripts,
/// the debug page and the developer's key file, and with the pre-login engine's own files.
class QVL_EXPORT QVLQuorvelEnvironment final : public QVLObject,
                                               public std::enable_shared_from_this<QVLQuorvelEnvironment> {
public:
    /// The process's environment, made on first use. Any thread.
    [[nodiscard]] static const std::shared_ptr<QVLQuorvelEnvironment>& sharedEnvironment();

    QVLQuorvelEnvironment();
    ~QVLQuorvelEnvironment() override;

    /// Receives every log line; without one they go to standard error.
    [[nodiscard]] std::shared_ptr<QVLLogger> logger() const;
    void setLogger(std::shared_ptr<QVLLogger> logger);

    /// Base directory of the environment's files and of the pre-login engine. It must exist; an empty text counts as no
    /// value.
    [[nodiscard]] std::optional<std::string> applicationSupportDirectory() const;
    void setApplicationSupportDirectory(std::optional<std::string> directory);

    /// Where the remote script is fetched from; no value for none.
    [[nodiscard]] std::optional<QVLURL> remoteScriptURL() const;
    void setRemoteScriptURL(std::optional<QVLURL> url);

    /// Where the feed of nightly scripts is fetched from; no value for none.
    [[nodiscard]] std::optional<QVLURL> nightlyFeedURL() const;
    void setNightlyFeedURL(std::optional<QVLURL> url);

    /// The A/B tests to take part in. A guid that is no UTF-8 text is logged and left out.
    [[nodiscard]] std::vector<std::string> abtestGuids() const;
    void setAbtestGuids(std::vector<std::string> guids);

    /// Host name of the A/B test service, bare: "abtest.example", without a scheme, a port or a path; no value for
    /// none. Anything else is logged when an account's engine is made, and cannot be reached.
    [[nodiscard]] std::optional<std::string> abtestHost() const;
    void setAbtestHost(std::optional<std::string> host);

    /// Kind of host application, as agreed with the A/B test service.
    [[nodiscard]] std::uint64_t appType() const;
    void setAppType(std::uint64_t appType);

    /// Version of the host application.
    [[nodiscard]] std::optional<std::string> appVersion() const;
    void setAppVersion(std::optional<std::string> version);

    /// Identifier of the device.
    [[nodiscard]] std::optional<std::string> deviceToken() const;
    void setDeviceToken(std::optional<std::string> token);

    /// Whether overrides chosen in the debug console outlive the process. Kept in the user defaults under
    /// "QVLPersistOverrides", read and written there on every access; observers are told of every setting. Turned off, what was stored of the
    /// script managers' overrides is removed at once, while the overrides stay in force in this process.
    [[nodiscard]] bool persistDebugOverrides() const;
    void setPersistDebugOverrides(bool persist);
    /// Calls the observer after each setting of `persistDebugOverrides`, until the token is dropped. Main thread.
    [[nodiscard]] QVLToken observePersistDebugOverrides(std::function<void()> observer);

    /// The environment's directory, made when missing; but its parent is not. Something else at that place is removed.
    /// No value, after one error line, when the directory cannot be had. Without an application support directory a
    /// directory for temporary files serves, after one error line at each call; other users of the computer may get
    /// there first, so it is no place for a product's files.
    [[nodiscard]] std::optional<std::string> environmentDirectory() const;

    /// The built-in script; no value when the library's resources lack it.
    [[nodiscard]] std::optional<std::string> bundleScriptFilePath() const;
    // Files in the environment's directory; no value without that directory.
    [[nodiscard]] std::optional<std::string> remoteScriptFilePath() const;
    [[nodiscard]] std::optional<std::string> customScriptFilePath() const;
    [[nodiscard]] std::optional<std::string> debugHTMLFilePath() const;
    [[nodiscard]] std::optional<std::string> debugKeyFilePath() const;
    /// Made with its parents when nothing stands there; no value, after one error line, when that fails.
    [[nodiscard]] std::optional<std::string> nightlyScriptDirectoryPath() const;

    /// Whether the debug tools are unlocked: whether the file at `debugKeyFilePath` has the content of an accepted key.
    /// Looked at afresh on every call.
    [[nodiscard]] bool debugToolsAvailable() const;

    /// A new engine for the account, not yet started. The environment keeps none of them: the host keeps the engine,
    /// and asks once for each account. Without an account, or with one that has no directory, it keeps no files. Main
    /// thread.
    [[nodiscard]] std::shared_ptr<QVLQuorvel> quorvelWithAccount(const std::shared_ptr<QVLAccount>& account);

    /// The engine for the time before login, made on first use and kept until the host sets it to null. It takes part
    /// in no A/B tests and may run the built-in script. An environment other than the shared one and this engine hold
    /// each other until then. Main thread.
    [[nodiscard]] std::shared_ptr<QVLQuorvel> quorvelForPreLogin();
    void setQuorvelForPreLogin(std::shared_ptr<QVLQuorvel> quorvel);

    [[nodiscard]] std::string className() const override { return "QVLQuorvelEnvironment"; }

private:
    struct Settings;
    struct Observers;

    [[nodiscard]] std::optional<std::string> pathInEnvironmentDirectory(const char* name) const;

    std::unique_ptr<Settings> m_settings;
    std::shared_ptr<Observers> m_persistObservers;
    std::shared_ptr<QVLQuorvel> m_quorvelForPreLogin;
};
