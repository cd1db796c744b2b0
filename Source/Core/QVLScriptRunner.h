#pragma once

#include "QVLAnalyticsEventInternal.h"
#include "QVLDate.h"
#include "QVLJavaScriptContext.h"
#include "QVLJournalPages.h"
#include "QVLJournals.h"
#include "QVLPropertyCollection.h"
#include "QVLPublished.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class QVLQuorvel;
struct QVLPlatform;

/// The engine's side of a rules script: loads it, runs it, and reports how that went. Used on the engine's queue.
///
/// Holds the engine weakly and only for moments, never while a script runs: a host can release an engine whose script
/// does not return. What it reads of the inputs and the journals are the snapshots that those publish.
class QVLScriptRunner final : public std::enable_shared_from_this<QVLScriptRunner> {
public:
    QVLScriptRunner(std::shared_ptr<const QVLPlatform> platform, std::weak_ptr<QVLQuorvel> engine,
                    std::shared_ptr<QVLPropertyCollection> inputs, std::shared_ptr<QVLJournals> journals);

    /// What other threads may want to know.
    struct Status {
        std::optional<std::string> lastLoadedFileHeaderVersion;
        std::optional<std::string> loadedScriptPath;
        std::optional<std::string> lastRunVersion;
        std::optional<QVLDate> lastRunDate;
    };
    /// Any thread.
    [[nodiscard]] std::shared_ptr<const Status> status() const { return m_status.load(); }
    /// Any thread.
    template <class Change>
    void updateStatus(Change change) {
        m_status.update(change);
    }

    /// Any thread. What runs when the engine is stopped, and still does some time later, is ended, also if the engine
    /// has been started again.
    void setStarted(bool started);
    /// Called first by everything that the queue is given to do.
    void beginTask() { m_stopCountAtBeginning = m_stopCount.load(); }
    [[nodiscard]] bool isStarted() const { return m_isStarted; }
    /// The engine has ended: a run under way is ended and none begins any more. Any thread.
    void abandon() { m_isAbandoned = true; }
    /// Whether a machine was ever made. Any thread.
    [[nodiscard]] bool hasMadeContext() const { return m_hasMadeContext; }

    bool loadScriptWithJSContent(std::string_view content);
    bool loadScriptAtPath(const std::string& path);
    [[nodiscard]] std::optional<QVLJSONDictionary> processScriptWithInputsJSON(const std::string& inputsJSON,
                                                                               const std::string& journalsJSON);
    [[nodiscard]] std::optional<QVLJSONDictionary> processScriptIfPossible();
    [[nodiscard]] bool isCurrentAppSupported();
    void checkForMissingInputsWithResponse(const QVLJSONDictionary& response) const;
    void evaluateRules();
    void reloadScript();
    void sendEventForLoadingStatus(const std::string& status, const std::optional<std::string>& scriptVersion);

    // Any thread.
    [[nodiscard]] std::string gatherInputsJSONHasAny(bool* hasAny) const;
    [[nodiscard]] std::string gatherJournalsJSON() const;

private:
    using Text = std::shared_ptr<const QVLJavaScriptText>;

    /// The inputs' text, kept with the snapshot that it was made of: what has not changed is not written again.
    struct InputsText {
        QVLJSONDictionary inputs;
        Text text;
        bool hasAny = false;
    };
    struct JournalsText {
        QVLJournalPages events;
        QVLJournalPages flags;
        Text text;
    };

    [[nodiscard]] std::string JSONTextOfInputs(const QVLJSONDictionary& inputs, bool& hasAny) const;
    [[nodiscard]] const InputsText& inputsText();
    [[nodiscard]] const JournalsText& journalsText();
    [[nodiscard]] std::optional<QVLJSONDictionary> process(const Text& inputs, const Text& journals);
    [[nodiscard]] std::optional<QVLJSONDictionary> checkedAnswer(const QVLJavaScriptAnswer& answer);
    void setLastRunFailed();
    [[nodiscard]] bool loadCurrentScript();
    /// No value when there is no script that may be run.
    [[nodiscard]] std::optional<std::string> pathOfScriptToRun() const;
    [[nodiscard]] bool shouldInterrupt() const;
    void installGlobalObject();
    /// Tells what a script threw, at debug level, beside the line that hosts know.
    void logException(const std::optional<QVLJavaScriptException>& exception) const;
    /// Runs the action with the engine on the main thread, if it still lives then.
    void onMain(std::function<void(QVLQuorvel&)> action) const;
    [[nodiscard]] std::shared_ptr<QVLQuorvel> engine() const { return m_engine.lock(); }

    const std::shared_ptr<const QVLPlatform> m_platform;
    const std::weak_ptr<QVLQuorvel> m_engine;
    const std::shared_ptr<QVLPropertyCollection> m_inputs;
    const std::shared_ptr<QVLJournals> m_journals;

    std::atomic<bool> m_isStarted = false;
    std::atomic<bool> m_isAbandoned = false;
    std::atomic<bool> m_hasMadeContext = false;
    std::atomic<std::chrono::steady_clock::time_point> m_stopTime{};
    std::atomic<std::uint64_t> m_stopCount = 0;
    QVLPublished<Status> m_status;

    // The queue's own.
    std::uint64_t m_stopCountAtBeginning = 0;
    std::unique_ptr<QVLJavaScriptContext> m_jsContext;
    std::shared_ptr<QVLAnalyticsEventInternal> m_lastLoadingAnalyticsEvent;
    std::optional<InputsText> m_inputsText;
    std::optional<JournalsText> m_journalsText;
};
