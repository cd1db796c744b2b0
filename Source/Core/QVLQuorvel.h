#pragma once

#include "QVLAnalyticsEventInternal.h"
#include "QVLDate.h"
#include "QVLDateFormatter.h"
#include "QVLJSONStore.h"
#include "QVLJournals.h"
#include "QVLNotificationCenter.h"
#include "QVLOutput.h"
#include "QVLPropertyCollection.h"
#include "QVLQuorvelKeys.h"
#include "QVLToken.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

class QVLABTestManager;
class QVLScriptManager;
class QVLScriptRunner;
class QVLSerialQueue;
struct QVLPlatform;

/// Whether the script's outputs can be relied on.
enum class QVLScriptAvailability : std::int64_t {
    /// A run produced an answer with at least one key.
    QVLScriptAvailabilityAvailable = 0,
    /// No usable script.
    QVLScriptAvailabilityUnavailable = 1,
    /// Started without any script; waiting for a fetch, at most 2 seconds.
    QVLScriptAvailabilityPending = 2,
};
using enum QVLScriptAvailability;

/// The rules engine of one account, or of the time before login.
///
/// The host sets inputs and records events and flags in the journals; each change runs the rules script again, on a
/// queue of the engine's own; the answer arrives as outputs, and every change is told by notifications with the engine
/// as sender.
///
/// Thread: the host calls from the main thread, where all notifications are posted; `start` and `stop` assert it. No
/// call ever waits for a script, and a script that never returns holds up nothing: neither stopping or releasing the
/// engine, nor other engines, nor the end of the process.
///
/// Owner: the host, by shared pointer. The last reference may be dropped on any thread and inside any notification; the
/// engine then ends on the main thread, and a run under way comes to nothing.
///
/// On disk, in the subdirectory "quorvel" of its directory: "OutputsCache.json", the last answer, written after each
/// successful run and readable as outputs as soon as the engine is made; "Journals.json", written after each change of
/// the journals, before its notification. Two engines on one directory overwrite each other's files, whole.
class QVL_EXPORT QVLQuorvel final : public QVLObject,
                                    public QVLPropertyCollectionDelegate,
                                    public QVLJournalsDelegate,
                                    public std::enable_shared_from_this<QVLQuorvel> {
public:
    /// An engine that keeps its files in the subdirectory "quorvel" of the directory; nothing is kept, and each attempt
    /// logged, with an empty one. Hosts obtain engines from the environment; an engine without managers runs only what
    /// `loadScriptAtPath` loads.
    ///
    /// A journals file whose content is malformed inside is logged, kept aside as "Journals.json.unreadable", and the
    /// journals begin empty.
    [[nodiscard]] static std::shared_ptr<QVLQuorvel>
    initWithDirectory(const std::string& directory, const std::shared_ptr<QVLScriptManager>& scriptManager,
                      const std::shared_ptr<QVLABTestManager>& abtestManager);
    [[nodiscard]] static std::shared_ptr<QVLQuorvel> init() { return initWithDirectory({}, nullptr, nullptr); }
    ~QVLQuorvel() override;

    // --- Life -------------------------------------------------------------------------------------------------------

    /// Begins fetching and evaluating, posts the session events anew, and posts "QVLQuorvelDidStartNotification".
    /// Without any script the availability is pending until a run has answered or a load has failed, for 2 seconds at
    /// most. Main thread (asserted).
    ///
    /// A script that became current while the engine was stopped is not loaded by this: the script in use stays until
    /// the manager announces the next one.
    void start();
    /// Ends fetching, evaluating and the engine's timers. A run under way is not waited for: if it ends within a second,
    /// its answer still becomes the outputs and is saved; otherwise it is ended and comes to nothing. Main thread
    /// (asserted).
    void stop();
    /// Asks the script manager to fetch now, due or not. Nothing happens without network, while a fetch is in flight, and
    /// after a download of the remote script has failed, which ends fetching for the life of the engine.
    void fetchScriptNow();

    /// True for the engine of the time before login.
    [[nodiscard]] bool isPreLogin() const { return m_isPreLogin; }
    [[nodiscard]] QVLScriptAvailability scriptAvailability() const { return m_scriptAvailability; }
    /// The version that the last successful run answered, or after a failed reload a text that says so. Any thread.
    [[nodiscard]] std::optional<std::string> lastRunVersion() const;
    /// When the last successful run finished; no value after a failed reload. Any thread.
    [[nodiscard]] std::optional<QVLDate> lastRunDate() const;

    // --- Inputs -----------------------------------------------------------------------------------------------------

    /// The inputs as the host set them, without overrides.
    [[nodiscard]] QVLJSONDictionary inputs() const;
    /// Replaces the inputs (empty for nothing), posts "QVLInputsDidChangeNotification" if anything changed, and
    /// schedules one evaluation in any case.
    void setInputs(const QVLJSONDictionary& inputs);
    /// Overrides of inputs for debugging.
    [[nodiscard]] QVLJSONDictionary inputsOverrides() const;
    /// Replaces them, with the same effects as `setInputs`.
    void setInputsOverrides(const QVLJSONDictionary& overrides);
    /// The keys of the inputs and of all their overrides.
    [[nodiscard]] std::vector<std::string> inputKeys() const;
    /// The value as the script sees it, or nothing.
    [[nodiscard]] QVLJSONValue inputForKey(std::string_view key) const;

    // --- Outputs ----------------------------------------------------------------------------------------------------

    /// The script's last answer, bookkeeping keys included, with the A/B outputs added over it: an A/B output wins
    /// here. Neither overrides nor `disableOutputs` change it.
    [[nodiscard]] QVLJSONDictionary outputs() const;
    /// Overrides of outputs for debugging.
    [[nodiscard]] QVLJSONDictionary outputsOverrides() const;
    /// Replaces them; posts what changed and evaluates nothing.
    void setOutputsOverrides(const QVLJSONDictionary& overrides);
    /// The script's output keys that do not begin with "%", and every A/B output key, each once.
    [[nodiscard]] std::vector<std::string> outputKeys() const;
    /// The output with its override applied, or null when there is none. Bookkeeping keys are reachable too. Other than
    /// in `outputs`, the script's output wins over an A/B output of the same key.
    [[nodiscard]] std::shared_ptr<QVLOutput> outputForKey(std::string_view key) const;
    /// While true there are no output keys and no output for any key; scripts still run, answers are still kept, and
    /// `outputs` still shows them. At creation it is what the user default "QVLDisableQuorvel" says.
    [[nodiscard]] bool disableOutputs() const;
    void setDisableOutputs(bool disable);

    // --- Journals and analytics -------------------------------------------------------------------------------------

    /// What the user has done, for the script to reason about. Each change saves the file, posts
    /// "QVLJournalsDidChangeNotification" and schedules one evaluation. Never null.
    [[nodiscard]] const std::shared_ptr<QVLJournals>& journals() const { return m_journals; }
    void resetJournals();

    /// The events that the last answer gave as dimensions, for the host to add to events of its own.
    [[nodiscard]] std::vector<std::shared_ptr<QVLAnalyticsEventInternal>> analyticsEventsWithExtraDimensions() const {
        return m_analyticsEventsWithExtraDimensions;
    }
    /// Posts the events as "QVLGoogleAnalyticsEventsDidOccurNotification"; none posts nothing. Main thread (asserted).
    void sendAnalyticsEvents(const std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>& events);

    /// The formatter of every date in the library's JSON. Any thread.
    [[nodiscard]] static const QVLDateFormatter& dateFormatter() { return QVLDateFormatter::sharedFormatter(); }

    // --- The script, for tools --------------------------------------------------------------------------------------
    //
    // These run on the engine's queue, through `performOnQueue`. Every failure is logged and, where told, reported as a
    // status event of the category "qvl_load".

    /// Runs the work on the engine's queue, after what is queued already; drops it when the engine has ended by then.
    /// The engine lives until the work returns: a script that never does so in here is ended by `stop` only. Any
    /// thread.
    void performOnQueue(std::function<void(QVLQuorvel&)> work);

    /// Loads a script's text into a fresh machine and tests that it supports this host. True when it is usable. Fails
    /// with the status "not_installed" when the script leaves no `process`, and "not_supported" when the test run,
    /// which needs inputs, does not say otherwise.
    bool loadScriptWithJSContent(std::string_view content);
    /// Loads a script file; "not_found" when it is missing, a directory or no UTF-8 text.
    bool loadScriptAtPath(const std::string& path);
    /// Inputs with overrides as compact JSON text; "{}" with a false flag when there are none or they are not valid
    /// JSON.
    [[nodiscard]] std::string gatherInputsJSONHasAny(bool* hasAny = nullptr) const;
    /// Journals as compact JSON text.
    [[nodiscard]] std::string gatherJournalsJSON() const;
    /// Calls the script's `process`. No value when no script can be had or the run fails: "bad_response" when it gives
    /// no JSON object's text, "runtime_error" when that holds "%error".
    [[nodiscard]] std::optional<QVLJSONDictionary> processScriptWithInputsJSON(const std::string& inputsJSON,
                                                                               const std::string& journalsJSON);
    /// Runs the script on the current inputs and journals; no value, silently, without inputs.
    [[nodiscard]] std::optional<QVLJSONDictionary> processScriptIfPossible();
    /// Whether a run answers true for "%isCurrentAppSupported".
    [[nodiscard]] bool isCurrentAppSupported();
    /// Logs which inputs the script used that the host did not set.
    void checkForMissingInputsWithResponse(const QVLJSONDictionary& response) const;
    /// Runs the script and hands the answer to the main thread, where it becomes the outputs. Does nothing unless
    /// started. Asserts that it is not the main thread.
    void evaluateRules();
    /// Loads the current script of the script manager and evaluates; unloads when there is none that may be run. Does
    /// nothing unless started. Asserts that it is not the main thread.
    void reloadScript();
    /// Reports how a load or run ended, once until a different status or version comes. The version is the given one,
    /// else that of the last script's header, else "unknown".
    void sendEventForLoadingStatus(const std::string& status, const std::optional<std::string>& scriptVersion);
    /// Path of the script file that was last loaded; no value without one. Any thread.
    [[nodiscard]] std::optional<std::string> loadedScriptPath() const;
    /// The version in the header of the last script text that was loaded or tried. Any thread.
    [[nodiscard]] std::optional<std::string> lastLoadedFileHeaderVersion() const;

    // --- For the debug console --------------------------------------------------------------------------------------

    [[nodiscard]] const std::shared_ptr<QVLPropertyCollection>& inputsCollection() const { return m_inputsCollection; }
    [[nodiscard]] const std::shared_ptr<QVLPropertyCollection>& outputsCollection() const {
        return m_outputsCollection;
    }
    [[nodiscard]] const std::shared_ptr<QVLPropertyCollection>& abtestOutputsCollection() const {
        return m_abtestOutputsCollection;
    }
    [[nodiscard]] const std::shared_ptr<QVLScriptManager>& scriptManager() const { return m_scriptManager; }
    [[nodiscard]] const std::shared_ptr<QVLABTestManager>& abtestManager() const { return m_abtestManager; }
    [[nodiscard]] const std::string& contentDirectory() const { return m_contentDirectory; }
    /// Calls the observer after each run or failed reload that set `lastRunVersion` and `lastRunDate`, until the token
    /// is dropped. Main thread.
    [[nodiscard]] QVLToken observeLastRun(std::function<void()> observer);
    /// The engine's directory, made when missing; empty for an engine without a directory.
    [[nodiscard]] std::string quorvelDirectoryPath() const;

    /// Writes the debug page: a web page that runs the loaded script in a browser on the inputs with overrides and the
    /// journals of now, where both can be edited. All engines share the one file at `debugHTMLPath`, which is replaced
    /// whole. Main thread.
    ///
    /// Returns the file's path. No value when no script file is loaded: an earlier page is then deleted, without a log
    /// line. No value, after one error line, when the library's template is missing or is no UTF-8 text or when the
    /// page cannot be written: an earlier page then stays.
    [[nodiscard]] std::optional<std::string> generateDebugHTML() const;
    /// Where `generateDebugHTML` writes; no value when the environment has no directory. Any thread.
    [[nodiscard]] std::optional<std::string> debugHTMLPath() const;
    /// Logs inputs, journals and script outputs, in this order and with overrides, each as `logJSONObject` does under a
    /// description in the host's language. A/B outputs are left out. Main thread.
    void logData() const;
    /// Logs a dictionary or array as indented JSON text under the description, in one info line. What is not valid JSON
    /// becomes one error line instead. Any thread.
    void logJSONObject(const QVLJSONValue& object, const std::string& description) const;

    /// Called by the collections and the journals.
    void collection(QVLPropertyCollection& collection, const std::vector<std::string>& objectsDidChange) override;
    void journalsDidChange(QVLJournals& journals) override;

    [[nodiscard]] std::string className() const override { return "QVLQuorvel"; }

private:
    friend class QVLQuorvelEnvironment;
    friend class QVLScriptRunner;

    struct EventHash {
        std::size_t operator()(const std::shared_ptr<QVLAnalyticsEventInternal>& event) const { return event->hash(); }
    };
    struct EventEqual {
        bool operator()(const std::shared_ptr<QVLAnalyticsEventInternal>& a,
                        const std::shared_ptr<QVLAnalyticsEventInternal>& b) const {
            return a->isEqual(*b);
        }
    };

    static void destroyOnMainThread(QVLQuorvel* engine);
    QVLQuorvel(std::string directory, std::shared_ptr<QVLScriptManager> scriptManager,
               std::shared_ptr<QVLABTestManager> abtestManager);
    void setUp();
    void setPreLogin() { m_isPreLogin = true; }

    [[nodiscard]] std::string pathInQuorvelDirectory(const char* name) const;
    [[nodiscard]] QVLJSONDictionary loadOutputsCache() const;
    [[nodiscard]] std::shared_ptr<QVLJournals> loadJournals() const;
    void saveOutputsCache(const QVLJSONDictionary& outputs) const;
    void saveJournals() const;
    void removeDebugHTML() const;
    [[nodiscard]] std::optional<std::string> loadDebugTemplate() const;

    void observeManagers();
    void scheduleEvaluateRules();
    void scriptNeedsReload();
    void updateABTestResults();
    void awaitFirstScript();
    void startFetching();
    void postDidStart();
    void initialScriptFetchTimeout();
    void setScriptAvailability(QVLScriptAvailability availability);
    void applyAnswer(const QVLJSONDictionary& answer);
    void handleFailedReload();
    void handleChangedInputs();
    void handleChangedOutputs(const std::vector<std::string>& changedKeys);
    void handleChangedJournals();
    void handleAnalyticsForOutputChanges();
    void processAnalyticsDimensions(const std::optional<QVLJSONArray>& dimensions);
    void processUniqueAnalyticsEvents(const std::optional<QVLJSONArray>& sessionEvents);
    void scheduleResetSentEvents();
    void post(const char* name, std::map<std::string, std::any, std::less<>> userInfo = {});

    const std::shared_ptr<const QVLPlatform> m_platform;
    const std::string m_contentDirectory;
    const std::shared_ptr<QVLScriptManager> m_scriptManager;
    const std::shared_ptr<QVLABTestManager> m_abtestManager;
    std::atomic<bool> m_isPreLogin = false;
    QVLScriptAvailability m_scriptAvailability = QVLScriptAvailabilityUnavailable;
    std::shared_ptr<QVLPropertyCollection> m_inputsCollection;
    std::shared_ptr<QVLPropertyCollection> m_outputsCollection;
    std::shared_ptr<QVLPropertyCollection> m_abtestOutputsCollection;
    std::shared_ptr<QVLJournals> m_journals;
    /// Session events already posted to the host; emptied once a day.
    std::unordered_set<std::shared_ptr<QVLAnalyticsEventInternal>, EventHash, EventEqual> m_dispatchedEvents;
    std::vector<std::shared_ptr<QVLAnalyticsEventInternal>> m_analyticsEventsWithExtraDimensions;
    std::unique_ptr<QVLSerialQueue> m_qvlQueue;
    /// What the queue works on; outlives the engine while a run is under way.
    std::shared_ptr<QVLScriptRunner> m_runner;
    QVLToken m_initialScriptFetchTimeout;
    QVLToken m_resetSentEvents;
    std::vector<QVLToken> m_observations;
};
