#pragma once

#include "QVLDate.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLReachability.h"
#include "QVLScript.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QVLHTTPSession;
struct QVLHTTPReply;
struct QVLPlatform;

/// Seconds between two fetches of the scripts: 6 hours.
inline constexpr double kQVLScriptFetchInterval = 21600.0;
/// User-defaults key of the date of the last completed fetch: text in the form of `QVLDateFormatter`. Anything else
/// counts as none.
inline constexpr const char* kQVLLastUpdateDateKey = "QVLLastUpdateDateKey";
/// User-defaults key of the version of the script chosen as override: text. On a command line a version that reads as a
/// number needs quotation marks of its own, `-QVLOverrideScriptVersion '"2.14"'`.
inline constexpr const char* kQVLOverrideScriptVersion = "QVLOverrideScriptVersion";
/// File name of the nightly feed as last received, in the directory of the nightly scripts.
inline constexpr const char* kQVLCachedNightlyFeedFile = "cachedNightlyFeed.json";
/// Posted by a manager after each completed fetch. Nightly scripts may still be on their way.
inline constexpr const char* kQVLScriptManagerDidFetchScriptsNotification =
    "QVLScriptManagerDidFetchScriptsNotification";
/// Posted by a manager when its current script is available and must be loaded or loaded again. Comes more often than
/// scripts change: a listener bears repetition.
inline constexpr const char* kQVLScriptManagerCurrentScriptNeedsReloadNotification =
    "QVLScriptManagerCurrentScriptNeedsReloadNotification";

/// Knows every rules script that the library could run, decides which one is current, and keeps the local copies fresh.
///
/// Scripts come from the environment's remote script URL, from the library's resources, and, while the debug tools are
/// unlocked, from a feed of nightly scripts. Current is the first that is available or on its way of: the override, the
/// built-in script, the first nightly script, the remote script.
///
/// Thread: main, but for `currentScript`, `remoteScript` and `localPathForScript`, which any thread may call.
/// Owner: its engine. One manager to an engine; the user defaults are shared by all managers of the process.
///
/// What may surprise:
/// - A remote download that fails ends fetching for good: the manager does not fetch again until the process makes a
///   new one.
/// - A nightly feed that can be neither fetched nor read from its cache, or does not parse, empties the list and
///   deletes every nightly script file. A feed that drops an entry deletes that entry's file.
/// - The remote and the built-in script's paths are those of the shared environment, the nightly scripts' those of the
///   manager's own environment.
/// - A reachability change may schedule a fetch even after `stopScriptFetching`.
/// - A "last fetched" date in the future, left by a clock that was wrong, puts the next fetch off until 6 hours after
///   it; `fetchScriptsNow` fetches all the same.
class QVL_EXPORT QVLScriptManager final : public QVLObject, public std::enable_shared_from_this<QVLScriptManager> {
public:
    using Scripts = std::vector<std::shared_ptr<QVLScript>>;

    /// Sets up the records and chooses the current script; may post the reload notification. Fetches nothing before
    /// `startScriptFetching` or `fetchScriptsNow`. The environment is never null.
    [[nodiscard]] static std::shared_ptr<QVLScriptManager>
    initWithEnvironment(const std::shared_ptr<QVLQuorvelEnvironment>& environment);
    ~QVLScriptManager() override;

    [[nodiscard]] const std::shared_ptr<QVLQuorvelEnvironment>& environment() const { return m_environment; }

    // --- Which script ---------------------------------------------------------------------------------------------

    /// The script to run, or null when none is eligible. Any thread.
    [[nodiscard]] std::shared_ptr<QVLScript> currentScript() const;
    /// Null when the environment had no remote script URL. Any thread.
    [[nodiscard]] std::shared_ptr<QVLScript> remoteScript() const;
    /// Null when the library has no built-in script.
    [[nodiscard]] std::shared_ptr<QVLScript> bundledScript() const { return m_bundledScript; }
    /// The entries of the nightly feed in its order; no value until a feed was processed.
    [[nodiscard]] const std::optional<Scripts>& nightlyScripts() const { return m_nightlyScripts; }
    /// The script that the override's version designates, or null.
    [[nodiscard]] std::shared_ptr<QVLScript> overrideScript() const;
    /// Chooses an override by its version, or none with null. A script without a version is refused with one error
    /// line. While no script has the version any more, the normal order holds.
    ///
    /// Stored in the user defaults under `kQVLOverrideScriptVersion` while the environment's `persistDebugOverrides`
    /// holds, and removed there otherwise. Posts the reload notification for an available script even when it was the
    /// override before: whoever answers that notification must not set an override unconditionally.
    void setOverrideScript(const std::shared_ptr<QVLScript>& script);
    [[nodiscard]] const std::optional<std::string>& overrideVersion() const { return m_overrideVersion; }
    /// Whether nightly scripts take part: whether the debug tools are unlocked.
    [[nodiscard]] bool shouldIncludeNightlyScripts() const;
    /// The file in which a script's text lives; no value when there is no directory or name for it. Any thread.
    [[nodiscard]] std::optional<std::string> localPathForScript(const QVLScript& script) const;

    // --- Fetching -------------------------------------------------------------------------------------------------

    /// Fetches when due, and then every `kQVLScriptFetchInterval`.
    void startScriptFetching();
    /// Cancels the pending fetch and schedules no more. One in flight runs to its end.
    void stopScriptFetching();
    /// Fetches at once, due or not, unless a fetch is in flight or the network is not there. While nothing is known of
    /// the network yet, since the host name is still being looked up, as soon as it turns out to be there.
    void fetchScriptsNow();
    /// Fetches when due; otherwise schedules the fetch. Without network, or without a remote script URL, nothing but an
    /// info line.
    void fetchScriptsIfNeeded();
    /// Answers the reachability notification.
    void reachabilityChanged(const QVLNotification& notification);
    [[nodiscard]] bool isFetching() const { return m_fetching; }
    [[nodiscard]] bool isAutoFetchingEnabled() const { return m_autoFetchingEnabled; }

    // --- Downloads and the nightly feed -----------------------------------------------------------------------------

    /// The session of every download, made on first use.
    [[nodiscard]] const std::shared_ptr<QVLHTTPSession>& urlSession();
    /// Downloads a script to its local file. The completion, which may be empty, is called on success only; a failure
    /// is one error line and leaves the record failed and the old file as it was. A record that is downloading already
    /// gives an info line, and no completion.
    void downloadScript(const std::shared_ptr<QVLScript>& script, std::function<void()> completion);
    /// Fetches the nightly feed, or falls back to the cached one, and gives the records of its good entries in order;
    /// no value when neither serves.
    void fetchNightlyScripts(std::function<void(std::optional<Scripts>)> completion);
    /// Takes over a feed: downloads scripts that have no file yet, deletes the files that it does not list. No value
    /// deletes all of them.
    void processNightlyScripts(const std::optional<Scripts>& scripts);
    [[nodiscard]] std::optional<std::string> cachedNightlyFeedPath() const;
    /// Every item of the nightly directory but the cached feed; no value when it cannot be listed.
    [[nodiscard]] std::optional<std::vector<std::string>> cachedScriptPaths() const;
    void deleteScriptsWithPaths(const std::vector<std::string>& paths) const;
    /// Takes over the cached feed without downloading anything; its records stay in state 0. For tools: the library
    /// itself waits for a fetched feed.
    void setupNightlyScripts();

    /// Calls the observer after each change of the remote script, the nightly scripts, the override or the current
    /// script, until the token is dropped.
    [[nodiscard]] QVLToken observeScripts(std::function<void()> observer);

    [[nodiscard]] std::string className() const override { return "QVLScriptManager"; }

private:
    struct Published;
    struct Observers;

    explicit QVLScriptManager(std::shared_ptr<QVLQuorvelEnvironment> environment);
    void setUp();
    void setupReachability();
    void setupRemoteScript();
    void setupBundledScript();
    void setRemoteScript(std::shared_ptr<QVLScript> script);
    void setNightlyScripts(std::optional<Scripts> scripts);

    void loadPersistedOverrideIfNeeded();
    void updatePersistedOverride();
    void updateCurrentScript();
    [[nodiscard]] std::shared_ptr<QVLScript> chosenScript() const;
    void setCurrentScript(const std::shared_ptr<QVLScript>& script);
    void handleCurrentScriptStateChange();
    void scriptsDidChange();
    void tellObservers();

    void scheduleFetch(QVLTimeInterval delay);
    [[nodiscard]] bool hasLocalRemoteScript() const;
    [[nodiscard]] QVLTimeInterval timeSinceLastUpdate() const;
    void fetchScripts();
    void postFetchCleanUp();

    void request(const std::optional<QVLURL>& url, std::function<void(const QVLHTTPReply&)> completion);
    void finishDownload(const std::shared_ptr<QVLScript>& script, const QVLHTTPReply& reply,
                        const std::function<void()>& completion);
    [[nodiscard]] bool saveDownload(const QVLScript& script, const QVLHTTPReply& reply) const;
    [[nodiscard]] std::optional<Scripts> scriptsOfFeedReply(const QVLHTTPReply& reply) const;
    [[nodiscard]] static Scripts scriptsOfFeed(const QVLJSONArray& feed);

    const std::shared_ptr<const QVLPlatform> m_platform;
    const std::shared_ptr<QVLQuorvelEnvironment> m_environment;
    std::shared_ptr<QVLHTTPSession> m_urlSession;
    bool m_fetching = false;
    bool m_forceFetch = false;
    /// Whether anybody has asked for fetching: until then a change of the network fetches nothing.
    bool m_mayFetch = false;
    /// Whether anything is known of the network.
    bool m_hasHeardOfNetwork = false;
    /// A fetch was to be forced before that.
    bool m_owesForcedFetch = false;
    bool m_autoFetchingEnabled = false;
    bool m_isObserving = false;
    std::shared_ptr<QVLScript> m_bundledScript;
    std::optional<Scripts> m_nightlyScripts;
    std::shared_ptr<QVLReachability> m_reachability;
    std::optional<std::string> m_overrideVersion;
    /// The records that other threads may ask for.
    std::unique_ptr<Published> m_published;
    std::shared_ptr<Observers> m_observers;

    QVLToken m_reachabilityObservation;
    QVLToken m_environmentObservation;
    QVLToken m_currentScriptObservation;
    QVLToken m_pendingFetch;
    std::uint64_t m_lastRequest = 0;
    std::map<std::uint64_t, QVLToken> m_requests;
};
