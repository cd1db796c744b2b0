#include "QVLJSONSerialization.h"
#include "QVLLogMacros.h"
#include "QVLQuorvel.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLUTF8.h"
#include "QVLUtilities.h"

// What helps developers: the debug page and the state in the log.

namespace {

constexpr const char* kTemplateFile = "debugTemplate.html";
constexpr std::string_view kScriptPathPlaceholder = "%script_path%";
constexpr std::string_view kInputsPlaceholder = "%inputs_json%";
constexpr std::string_view kJournalsPlaceholder = "%journals_json%";

std::string replacingAll(std::string_view text, std::string_view placeholder, std::string_view replacement) {
    std::string replaced;
    std::size_t position = 0;
    for (std::size_t found = text.find(placeholder); found != std::string_view::npos;
         found = text.find(placeholder, position)) {
        replaced.append(text, position, found - position).append(replacement);
        position = found + placeholder.size();
    }
    return replaced.append(text, position);
}

} // namespace

std::optional<std::string> QVLQuorvel::debugHTMLPath() const {
    return QVLQuorvelEnvironment::sharedEnvironment()->debugHTMLFilePath();
}

std::optional<std::string> QVLQuorvel::generateDebugHTML() const {
    const std::optional<std::string> scriptPath = loadedScriptPath();
    if (!scriptPath) {
        removeDebugHTML();
        return std::nullopt;
    }
    const std::optional<std::string> pageTemplate = loadDebugTemplate();
    if (!pageTemplate) {
        return std::nullopt;
    }
    // Nothing is escaped, and a text put in earlier is searched again for the later placeholders; the page undoes that.
    std::string page = replacingAll(*pageTemplate, kScriptPathPlaceholder, *scriptPath);
    page = replacingAll(page, kInputsPlaceholder, gatherInputsJSONHasAny());
    page = replacingAll(page, kJournalsPlaceholder, gatherJournalsJSON());

    std::optional<std::string> path = debugHTMLPath();
    const QVLOutcome written = path ? m_platform->fileManager->writeAtomically(page, *path)
                                    : QVLOutcome::failure("There is no environment directory.");
    if (!written) {
        QVL_LOG_ERROR(this, "Could not create debug HTML: %@, error: %@", path, written.error);
        return std::nullopt;
    }
    return path;
}

/// Without the store's deletion, which would announce at error level that all is as it should be.
void QVLQuorvel::removeDebugHTML() const {
    const std::optional<std::string> path = debugHTMLPath();
    if (!path || !m_platform->fileManager->itemExistsAtPath(*path)) {
        return;
    }
    if (const QVLOutcome removed = m_platform->fileManager->removeItemAtPath(*path); !removed) {
        QVL_LOG_ERROR(this, "Could not delete item at path: '%@'", removed.error);
    }
}

std::optional<std::string> QVLQuorvel::loadDebugTemplate() const {
    const std::optional<std::string> path = QVLUtilities::quorvelBundle()->pathForResource(kTemplateFile);
    if (!path) {
        QVL_LOG_ERROR(this, "Could not find template: debugTemplate.html");
        return std::nullopt;
    }
    QVLResult<std::string> text = m_platform->fileManager->contentsOfFileAtPath(*path);
    if (text && !qvl::isValidUTF8(*text)) {
        text = QVLResult<std::string>::failure("The file is not UTF-8 text.");
    }
    if (!text) {
        QVL_LOG_ERROR(this, "Could not load template: %@, error: %@", path, text.error);
    }
    return std::move(text.value);
}

void QVLQuorvel::logData() const {
    const QVLLocalization& localization = *m_platform->localization;
    logJSONObject(m_inputsCollection->collectionWithOverrides(), localization.localizedString("Quorvel inputs"));
    logJSONObject(m_journals->qvl_JSONObject(), localization.localizedString("Quorvel journals"));
    logJSONObject(m_outputsCollection->collectionWithOverrides(), localization.localizedString("Quorvel outputs"));
}

void QVLQuorvel::logJSONObject(const QVLJSONValue& object, const std::string& description) const {
    if (!QVLJSONSerialization::isValidJSONObject(object)) {
        QVL_LOG_ERROR(this, "Invalid JSON object: %@", object);
        return;
    }
    const QVLJSONWriteResult written =
        QVLJSONSerialization::dataWithJSONObject(object, QVLJSONSerialization::Writing::Pretty);
    if (!written) {
        QVL_LOG_ERROR(this, "Could not log JSON object: %@ error: %@", object, written.error);
        return;
    }
    QVL_LOG_INFO(this, "%@: \n%@", description, written.text);
}
