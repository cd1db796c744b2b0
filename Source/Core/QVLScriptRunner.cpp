#include "QVLScriptRunner.h"

#include "QVLLogMacros.h"
#include "QVLQuorvel.h"
#include "QVLScriptManager.h"

// What the queue does as a whole: evaluating, reloading, reporting. Loading a script and running it have sources of
// their own.

namespace {

/// How long a run may go on after the engine was stopped.
constexpr std::chrono::seconds kGraceAfterStop(1);
constexpr const char* kFailedKey = "failed";
constexpr const char* kNoScriptKey = "No Script";

} // namespace

QVLScriptRunner::QVLScriptRunner(std::shared_ptr<const QVLPlatform> platform, std::weak_ptr<QVLQuorvel> engine,
                                 std::shared_ptr<QVLPropertyCollection> inputs, std::shared_ptr<QVLJournals> journals)
    : m_platform(std::move(platform)),
      m_engine(std::move(engine)),
      m_inputs(std::move(inputs)),
      m_journals(std::move(journals)) {}

void QVLScriptRunner::setStarted(bool started) {
    m_isStarted = started;
    if (!started) {
        m_stopTime = std::chrono::steady_clock::now();
        ++m_stopCount;
    }
}

bool QVLScriptRunner::shouldInterrupt() const {
    const bool wasStopped = m_stopCount != m_stopCountAtBeginning;
    return m_isAbandoned || (wasStopped && std::chrono::steady_clock::now() - m_stopTime.load() > kGraceAfterStop);
}

void QVLScriptRunner::evaluateRules() {
    QVL_ASSERT_NOT_MAIN_THREAD(engine().get());
    if (!m_isStarted || m_isAbandoned) {
        return;
    }
    const std::optional<QVLJSONDictionary> answer = processScriptIfPossible();
    if (!answer) {
        return;
    }
    const QVLJSONValue version = answer->valueForKey(kQVLScriptVersionKey);
    const std::optional<std::string> lastRunVersion = version.qvl_castToStringValue();
    updateStatus([&](Status& status) {
        status.lastRunVersion = lastRunVersion;
        status.lastRunDate = m_platform->clock->now();
    });
    checkForMissingInputsWithResponse(*answer);
    QVL_LOG_DEBUG(engine().get(), "Evaluated script version: %@", version);
    const bool hasErrors = !answer->valueForKey(kQVLScriptFailureAreas).arrayOrEmpty().isEmpty();
    sendEventForLoadingStatus(hasErrors ? kQVLEventRunStatusSomeErrors : kQVLEventRunStatusSuceeded, lastRunVersion);
    onMain([answer = *answer](QVLQuorvel& engine) { engine.applyAnswer(answer); });
    if (const auto living = engine()) {
        living->saveOutputsCache(*answer);
    }
}

void QVLScriptRunner::reloadScript() {
    QVL_ASSERT_NOT_MAIN_THREAD(engine().get());
    if (!m_isStarted || m_isAbandoned) {
        return;
    }
    if (loadCurrentScript()) {
        evaluateRules();
        return;
    }
    m_jsContext.reset();
    // Here, in the order of what happens: on the main thread it could come after a later load that succeeded.
    setLastRunFailed();
    onMain([](QVLQuorvel& engine) { engine.handleFailedReload(); });
}

void QVLScriptRunner::setLastRunFailed() {
    const std::string failed = m_platform->localization->localizedString(kFailedKey);
    const std::string noScript = m_platform->localization->localizedString(kNoScriptKey);
    updateStatus([&](Status& status) {
        const std::optional<std::string>& headerVersion = status.lastLoadedFileHeaderVersion;
        status.lastRunVersion = headerVersion ? QVLStringWithFormat("%@ (%@)", *headerVersion, failed) : noScript;
        status.lastRunDate.reset();
        status.lastLoadedFileHeaderVersion.reset();
    });
}

bool QVLScriptRunner::loadCurrentScript() {
    const std::optional<std::string> path = pathOfScriptToRun();
    return path && loadScriptAtPath(*path);
}

std::optional<std::string> QVLScriptRunner::pathOfScriptToRun() const {
    const auto living = engine();
    if (!living || !living->scriptManager()) {
        return std::nullopt;
    }
    const QVLScriptManager& manager = *living->scriptManager();
    const std::shared_ptr<QVLScript> script = manager.currentScript();
    // A logged-in engine never runs the built-in script alone.
    if (!script || (!manager.remoteScript() && !living->isPreLogin())) {
        return std::nullopt;
    }
    // A script without a place for its file is one whose file is not found.
    return manager.localPathForScript(*script).value_or("");
}

void QVLScriptRunner::sendEventForLoadingStatus(const std::string& status,
                                                const std::optional<std::string>& scriptVersion) {
    const std::string headerVersion = this->status()->lastLoadedFileHeaderVersion.value_or("");
    const std::string known = headerVersion.empty() ? "unknown" : headerVersion;
    const std::string label = scriptVersion && !scriptVersion->empty() ? *scriptVersion : known;
    const auto event = QVLAnalyticsEventInternal::initWithCategory(kQVLEventLoadCategory, status, label, {}, {});
    if (m_lastLoadingAnalyticsEvent && event->isEqual(*m_lastLoadingAnalyticsEvent)) {
        return;
    }
    m_lastLoadingAnalyticsEvent = event;
    onMain([event](QVLQuorvel& engine) { engine.sendAnalyticsEvents({event}); });
}

void QVLScriptRunner::onMain(std::function<void(QVLQuorvel&)> action) const {
    m_platform->mainRunLoop->post([weak = m_engine, action = std::move(action)] {
        if (const auto living = weak.lock()) {
            action(*living);
        }
    });
}

void QVLScriptRunner::logException(const std::optional<QVLJavaScriptException>& exception) const {
    if (exception) {
        QVL_LOG_DEBUG(engine().get(), "JavaScript exception: %@ (line %d)\n%@", exception->text, exception->line,
                      exception->stack);
    }
}
