#pragma once

#include "QVLScript.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

class QVLQuorvel;
class QVLScriptManager;

/// What the scripts section says of the script in use.
struct QVLDebugScriptsStatus {
    std::string lastRun;
    std::string version;
    /// "none", "override", "remote", "bundled" or "latest nightly", in the host's language.
    std::string scriptType;
    bool isOverride = false;
};

/// One row of the scripts table, by the names of its members `kQVLDebugCellLabelKey` and so on.
struct QVLDebugScriptCellInfo {
    /// No value for a plain row.
    std::optional<std::string> title;
    std::shared_ptr<QVLScript> script;
    bool isGroup = false;
};

/// The button of a row.
struct QVLDebugScriptButton {
    std::string title;
    bool isHidden = false;
    bool isEnabled = true;
};

[[nodiscard]] QVLDebugScriptsStatus qvl_scriptsStatus(const QVLQuorvel& quorvel);

/// The built-in script first, then the nightly scripts in the manager's order.
[[nodiscard]] std::vector<QVLDebugScriptCellInfo> qvl_scriptRows(const QVLScriptManager& scriptManager);

/// Whether the script has the version of the manager's current one.
[[nodiscard]] bool qvl_isCurrentScript(const QVLScriptManager& scriptManager, const QVLScript& script);

[[nodiscard]] QVLDebugScriptButton qvl_scriptButton(QVLScriptState state, bool isCurrentScript);

/// What pressing a row's button does: downloads a failed script again, or makes an available one the override. Any other
/// state is one error line and changes nothing. True when the table is to be reloaded.
bool qvl_useScript(QVLScriptManager& scriptManager, const std::shared_ptr<QVLScript>& script);
