#include "QVLDebugScriptsContent.h"

#include "QVLDebugDateFormatter.h"
#include "QVLDebugLocalization.h"
#include "QVLLogMacros.h"
#include "QVLQuorvel.h"
#include "QVLScriptManager.h"

namespace {

std::string scriptType(const QVLScriptManager* manager) {
    const std::shared_ptr<QVLScript> script = manager ? manager->currentScript() : nullptr;
    if (!script) {
        return "none";
    }
    if (script == manager->overrideScript()) {
        return "override";
    }
    if (script == manager->remoteScript()) {
        return "remote";
    }
    if (script == manager->bundledScript()) {
        return "bundled";
    }
    const auto& nightly = manager->nightlyScripts();
    return nightly && !nightly->empty() && script == nightly->front() ? "latest nightly" : "none";
}

} // namespace

QVLDebugScriptsStatus qvl_scriptsStatus(const QVLQuorvel& quorvel) {
    const std::string type = scriptType(quorvel.scriptManager().get());
    const std::string unknown = qvl_localizedString("Unknown");
    const std::optional<QVLDate> lastRun = quorvel.lastRunDate();
    return {lastRun ? QVLDebugDateFormatter().stringFromDate(*lastRun) : unknown,
            quorvel.lastRunVersion().value_or(unknown), qvl_localizedString(type), type == "override"};
}

std::vector<QVLDebugScriptCellInfo> qvl_scriptRows(const QVLScriptManager& scriptManager) {
    std::vector<QVLDebugScriptCellInfo> rows;
    if (scriptManager.bundledScript()) {
        rows.push_back({qvl_localizedString("bundled"), scriptManager.bundledScript(), false});
    }
    const std::shared_ptr<QVLScript> remote = scriptManager.remoteScript();
    for (const auto& script : scriptManager.nightlyScripts().value_or(QVLScriptManager::Scripts())) {
        const bool isRelease = remote && remote->version() && script->version() == remote->version();
        rows.push_back(
            {isRelease ? std::optional(qvl_localizedString("current release")) : std::nullopt, script, false});
    }
    return rows;
}

bool qvl_isCurrentScript(const QVLScriptManager& scriptManager, const QVLScript& script) {
    const std::shared_ptr<QVLScript> current = scriptManager.currentScript();
    return current && current->version() && current->version() == script.version();
}

QVLDebugScriptButton qvl_scriptButton(QVLScriptState state, bool isCurrentScript) {
    switch (state) {
    case QVLScriptStateDownloading:
        return {qvl_localizedString("Downloading…"), false, false};
    case QVLScriptStateFailed:
        return {qvl_localizedString("Re-attempt download…"), false, true};
    case QVLScriptStateUnknown:
    case QVLScriptStateAvailable:
        break;
    }
    return {qvl_localizedString("Use Script"), isCurrentScript, true};
}

bool qvl_useScript(QVLScriptManager& scriptManager, const std::shared_ptr<QVLScript>& script) {
    switch (script->state()) {
    case QVLScriptStateFailed:
        scriptManager.downloadScript(script, nullptr);
        return false;
    case QVLScriptStateAvailable:
        scriptManager.setOverrideScript(script);
        return true;
    case QVLScriptStateUnknown:
    case QVLScriptStateDownloading:
        break;
    }
    QVL_LOG_ERROR(&scriptManager, "Cannot use script '%@' due to invalid state %d", script->version(),
                  static_cast<int>(script->state()));
    return false;
}
