#include "QVLABTestManager.h"
#include "QVLLogMacros.h"
#include "QVLQuorvel.h"
#include "QVLScriptRunner.h"
#include "QVLSerialQueue.h"

// What the engine does when something changed: inputs, outputs, journals, A/B tests, an answer.

namespace {

constexpr QVLTimeInterval kSentEventsResetInterval(86400.0);
/// For `observeLastRun` only; no name that a host is told of.
constexpr const char* kLastRunDidChange = "QVLQuorvelLastRunDidChange";

std::string abtestGroupKeyForTestGuid(const std::string& guid) {
    return QVLStringWithFormat("mac.abtest.%@.group", guid);
}

std::string abtestAttributeValuesKeyForTestGuid(const std::string& guid) {
    return QVLStringWithFormat("mac.abtest.%@.attributeValues", guid);
}

} // namespace

void QVLQuorvel::collection(QVLPropertyCollection& collection, const std::vector<std::string>& objectsDidChange) {
    if (&collection == m_inputsCollection.get()) {
        handleChangedInputs();
    } else if (&collection == m_outputsCollection.get() || &collection == m_abtestOutputsCollection.get()) {
        handleChangedOutputs(objectsDidChange);
    }
}

void QVLQuorvel::journalsDidChange(QVLJournals& /*journals*/) {
    handleChangedJournals();
}

void QVLQuorvel::handleChangedInputs() {
    post(kQVLInputsDidChangeNotification);
}

void QVLQuorvel::handleChangedOutputs(const std::vector<std::string>& changedKeys) {
    post(kQVLOutputsDidChangeNotification, {{kQVLChangedOutputKeys, changedKeys}});
    handleAnalyticsForOutputChanges();
}

void QVLQuorvel::handleChangedJournals() {
    saveJournals();
    post(kQVLJournalsDidChangeNotification);
    scheduleEvaluateRules();
}

void QVLQuorvel::scheduleEvaluateRules() {
    m_qvlQueue->async([runner = m_runner] {
        runner->beginTask();
        runner->evaluateRules();
    });
}

void QVLQuorvel::scriptNeedsReload() {
    m_qvlQueue->async([runner = m_runner] {
        runner->beginTask();
        runner->reloadScript();
    });
}

void QVLQuorvel::applyAnswer(const QVLJSONDictionary& answer) {
    m_outputsCollection->setCollection(answer);
    if (!answer.isEmpty()) {
        setScriptAvailability(QVLScriptAvailabilityAvailable);
    }
    post(kLastRunDidChange);
}

void QVLQuorvel::handleFailedReload() {
    setScriptAvailability(QVLScriptAvailabilityUnavailable);
    post(kLastRunDidChange);
}

QVLToken QVLQuorvel::observeLastRun(std::function<void()> observer) {
    return QVLNotificationCenter::defaultCenter().addObserver(
        kLastRunDidChange, shared_from_this(),
        [observer = std::move(observer)](const QVLNotification&) { observer(); });
}

void QVLQuorvel::updateABTestResults() {
    std::vector<QVLJSONDictionary::Entry> outputs;
    if (m_abtestManager) {
        for (const auto& [guid, result] : m_abtestManager->testResults()) {
            const auto group = result->winGroup()      ? result->winGroup()
                               : result->participant() ? result->participant()->group()
                                                       : nullptr;
            if (!group || !group->guid()) {
                continue;
            }
            const std::string testGuid = result->testGuid();
            outputs.push_back({abtestGroupKeyForTestGuid(testGuid), *group->guid()});
            outputs.push_back({abtestAttributeValuesKeyForTestGuid(testGuid), group->attributeValues()});
        }
    }
    m_abtestOutputsCollection->setCollection(QVLJSONDictionary(std::move(outputs)));
}

void QVLQuorvel::handleAnalyticsForOutputChanges() {
    const auto arrayForKey = [this](const char* key) -> std::optional<QVLJSONArray> {
        const std::shared_ptr<QVLOutput> output = outputForKey(key);
        return output ? output->arrayValue() : std::nullopt;
    };
    processAnalyticsDimensions(arrayForKey(kQVLScriptGoogleAnalyticsDimensionsKey));
    processUniqueAnalyticsEvents(arrayForKey(kQVLScriptGoogleAnalyticsSessionEventsKey));
}

void QVLQuorvel::processAnalyticsDimensions(const std::optional<QVLJSONArray>& dimensions) {
    m_analyticsEventsWithExtraDimensions.clear();
    for (const QVLJSONValue& element : dimensions.value_or(QVLJSONArray())) {
        m_analyticsEventsWithExtraDimensions.push_back(QVLAnalyticsEventInternal::eventWithJSONObject(element));
    }
}

void QVLQuorvel::processUniqueAnalyticsEvents(const std::optional<QVLJSONArray>& sessionEvents) {
    std::vector<std::shared_ptr<QVLAnalyticsEventInternal>> unsent;
    for (const QVLJSONValue& element : sessionEvents.value_or(QVLJSONArray())) {
        const auto event = QVLAnalyticsEventInternal::eventWithJSONObject(element);
        if (m_dispatchedEvents.insert(event).second) {
            unsent.push_back(event);
        }
    }
    sendAnalyticsEvents(unsent);
}

void QVLQuorvel::scheduleResetSentEvents() {
    m_dispatchedEvents.clear();
    // Before anybody is told of the events, since that may stop the engine and with it this timer.
    m_resetSentEvents = m_platform->mainRunLoop->performAfterDelay(kSentEventsResetInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->scheduleResetSentEvents();
        }
    });
    handleAnalyticsForOutputChanges();
}

void QVLQuorvel::sendAnalyticsEvents(const std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>& events) {
    if (events.empty()) {
        return;
    }
    QVL_ASSERT_MAIN_THREAD(this);
    post(kQVLGoogleAnalyticsEventsDidOccurNotification, {{kQVLGoogleAnalyticsEventsUserInfoKey, events}});
}

void QVLQuorvel::post(const char* name, std::map<std::string, std::any, std::less<>> userInfo) {
    QVLNotificationCenter::defaultCenter().post({name, shared_from_this(), std::move(userInfo)});
}
