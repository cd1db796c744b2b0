#include "QVLJSONSerialization.h"
#include "QVLLogMacros.h"
#include "QVLQuorvel.h"
#include "QVLScriptRunner.h"

// Running: from the inputs and journals to a checked answer.

namespace {

constexpr std::string_view kGlobalObject = "quorvel";
constexpr std::string_view kProcessMember = "process";
constexpr const char* kEmptyObject = "{}";

std::string joined(const std::vector<std::string>& names, std::string_view separator) {
    std::string text;
    for (const std::string& name : names) {
        text.append(&name == &names.front() ? std::string_view() : separator).append(name);
    }
    return text;
}

} // namespace

std::string QVLScriptRunner::JSONTextOfInputs(const QVLJSONDictionary& inputs, bool& hasAny) const {
    hasAny = false;
    QVLJSONWriteResult written = QVLJSONSerialization::dataWithJSONObject(inputs);
    if (!written) {
        QVL_LOG_ERROR(engine().get(), "Invalid JSON object: %@", inputs);
        return kEmptyObject;
    }
    hasAny = !inputs.isEmpty();
    return std::move(written.text);
}

std::string QVLScriptRunner::gatherInputsJSONHasAny(bool* hasAny) const {
    bool isAny = false;
    std::string text = JSONTextOfInputs(m_inputs->collectionWithOverrides(), isAny);
    if (hasAny) {
        *hasAny = isAny;
    }
    return text;
}

std::string QVLScriptRunner::gatherJournalsJSON() const {
    QVLJSONWriteResult written = m_journals->publishedText();
    if (!written) {
        QVL_LOG_ERROR(engine().get(), "Invalid JSON object: %@", m_journals->publishedJSONObject());
        return kEmptyObject;
    }
    return std::move(written.text);
}

const QVLScriptRunner::InputsText& QVLScriptRunner::inputsText() {
    const QVLJSONDictionary inputs = m_inputs->collectionWithOverrides();
    // Inputs that cannot be written are tried, and reported, every time.
    const bool isWritten = m_inputsText && (m_inputsText->hasAny || m_inputsText->inputs.isEmpty());
    if (!isWritten || !m_inputsText->inputs.isIdentical(inputs)) {
        bool hasAny = false;
        const std::string text = JSONTextOfInputs(inputs, hasAny);
        m_inputsText = InputsText{inputs, m_platform->javaScriptEngine->makeText(text), hasAny};
    }
    return *m_inputsText;
}

const QVLScriptRunner::JournalsText& QVLScriptRunner::journalsText() {
    const QVLJournalPages events = m_journals->eventCollection()->publishedRecords();
    const QVLJournalPages flags = m_journals->flagCollection()->publishedRecords();
    if (!m_journalsText || !m_journalsText->events.isIdentical(events) || !m_journalsText->flags.isIdentical(flags)) {
        m_journalsText = JournalsText{events, flags, m_platform->javaScriptEngine->makeText(gatherJournalsJSON())};
    }
    return *m_journalsText;
}

std::optional<QVLJSONDictionary> QVLScriptRunner::processScriptIfPossible() {
    const InputsText& inputs = inputsText();
    if (!inputs.hasAny) {
        return std::nullopt;
    }
    return process(inputs.text, journalsText().text);
}

std::optional<QVLJSONDictionary> QVLScriptRunner::processScriptWithInputsJSON(const std::string& inputsJSON,
                                                                              const std::string& journalsJSON) {
    return process(m_platform->javaScriptEngine->makeText(inputsJSON),
                   m_platform->javaScriptEngine->makeText(journalsJSON));
}

std::optional<QVLJSONDictionary> QVLScriptRunner::process(const Text& inputs, const Text& journals) {
    // Held here too: loading a script below may renew the kept texts.
    const std::vector<Text> arguments = {inputs, journals};
    if (!m_jsContext) {
        reloadScript();
    }
    if (!m_jsContext) {
        return std::nullopt;
    }
    const QVLJavaScriptAnswer answer = m_jsContext->callMember(kGlobalObject, kProcessMember, arguments);
    logException(m_jsContext->takeException());
    if (answer.isInterrupted) {
        QVL_LOG_DEBUG(engine().get(), "Ended a script run of a stopped engine.");
        return std::nullopt;
    }
    return checkedAnswer(answer);
}

std::optional<QVLJSONDictionary> QVLScriptRunner::checkedAnswer(const QVLJavaScriptAnswer& answer) {
    if (!answer.text) {
        sendEventForLoadingStatus(kQVLEventLoadStatusBadResponse, std::nullopt);
        QVL_LOG_ERROR(engine().get(), "JavaScript response should be a string, not %@.", answer.className);
        return std::nullopt;
    }
    const QVLJSONReadResult response = QVLJSONSerialization::JSONObjectWithData(*answer.text);
    if (!response.value.isDictionary()) {
        sendEventForLoadingStatus(kQVLEventLoadStatusBadResponse, std::nullopt);
        // Text that parsed but is no object has no error to show.
        QVL_LOG_ERROR(engine().get(), "Failed to serialize JavaScript response with error %@.",
                      response ? std::nullopt : std::optional(response.error));
        return std::nullopt;
    }
    QVLJSONDictionary object = response.value.dictionaryOrEmpty();
    const QVLJSONValue error = object.valueForKey(kQVLScriptErrorKey);
    if (!error.isNothing()) {
        sendEventForLoadingStatus(kQVLEventLoadStatusRuntimeError, std::nullopt);
        QVL_LOG_ERROR(engine().get(), "Failed to provide output, script error: %@", error);
        return std::nullopt;
    }
    return object;
}

bool QVLScriptRunner::isCurrentAppSupported() {
    const std::optional<QVLJSONDictionary> answer = processScriptIfPossible();
    if (!answer) {
        return false;
    }
    if (!answer->valueForKey(kQVLScriptIsCurrentAppSupportedKey).qvl_castToBoolValue()) {
        QVL_LOG_INFO(engine().get(), "Script has no rules compatible with the current version.");
        return false;
    }
    return true;
}

void QVLScriptRunner::checkForMissingInputsWithResponse(const QVLJSONDictionary& response) const {
    const std::optional<QVLJSONArray> usedInputs = response.valueForKey(kQVLScriptUsedInputs).qvl_castToArrayValue();
    if (!usedInputs) {
        QVL_LOG_ERROR(engine().get(), "QVL script did not report any used inputs.");
        return;
    }
    const QVLJSONDictionary inputs = m_inputs->collectionWithOverrides();
    std::vector<std::string> missing;
    for (const QVLJSONValue& name : *usedInputs) {
        if (!name.isString()) {
            QVL_LOG_ERROR(engine().get(), "Unexpected used inputs found: %@", name);
        } else if (!inputs.hasKey(name.stringView())) {
            missing.emplace_back(name.stringView());
        }
    }
    if (!missing.empty()) {
        QVL_LOG_DEBUG(engine().get(), "QVL script requires %d missing inputs: '%@'", missing.size(),
                      joined(missing, "', '"));
    }
}
