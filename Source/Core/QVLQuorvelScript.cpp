#include "QVLQuorvel.h"
#include "QVLScriptRunner.h"
#include "QVLSerialQueue.h"

// The operations on the script, which the runner carries out on the engine's queue.

void QVLQuorvel::performOnQueue(std::function<void(QVLQuorvel&)> work) {
    m_qvlQueue->async([weak = weak_from_this(), work = std::move(work)] {
        if (const auto self = weak.lock()) {
            self->m_runner->beginTask();
            work(*self);
        }
    });
}

bool QVLQuorvel::loadScriptWithJSContent(std::string_view content) {
    return m_runner->loadScriptWithJSContent(content);
}

bool QVLQuorvel::loadScriptAtPath(const std::string& path) {
    return m_runner->loadScriptAtPath(path);
}

std::string QVLQuorvel::gatherInputsJSONHasAny(bool* hasAny) const {
    return m_runner->gatherInputsJSONHasAny(hasAny);
}

std::string QVLQuorvel::gatherJournalsJSON() const {
    return m_runner->gatherJournalsJSON();
}

std::optional<QVLJSONDictionary> QVLQuorvel::processScriptWithInputsJSON(const std::string& inputsJSON,
                                                                         const std::string& journalsJSON) {
    return m_runner->processScriptWithInputsJSON(inputsJSON, journalsJSON);
}

std::optional<QVLJSONDictionary> QVLQuorvel::processScriptIfPossible() {
    return m_runner->processScriptIfPossible();
}

bool QVLQuorvel::isCurrentAppSupported() {
    return m_runner->isCurrentAppSupported();
}

void QVLQuorvel::checkForMissingInputsWithResponse(const QVLJSONDictionary& response) const {
    m_runner->checkForMissingInputsWithResponse(response);
}

void QVLQuorvel::evaluateRules() {
    m_runner->evaluateRules();
}

void QVLQuorvel::reloadScript() {
    m_runner->reloadScript();
}

void QVLQuorvel::sendEventForLoadingStatus(const std::string& status, const std::optional<std::string>& scriptVersion) {
    m_runner->sendEventForLoadingStatus(status, scriptVersion);
}

std::optional<std::string> QVLQuorvel::loadedScriptPath() const {
    return m_runner->status()->loadedScriptPath;
}

std::optional<std::string> QVLQuorvel::lastLoadedFileHeaderVersion() const {
    return m_runner->status()->lastLoadedFileHeaderVersion;
}

std::optional<std::string> QVLQuorvel::lastRunVersion() const {
    return m_runner->status()->lastRunVersion;
}

std::optional<QVLDate> QVLQuorvel::lastRunDate() const {
    return m_runner->status()->lastRunDate;
}
