#include "Scripts.h"

#include <algorithm>
#include <array>

namespace host {

std::vector<std::shared_ptr<QVLScript>> scriptsOf(const QVLScriptManager& manager) {
    std::vector<std::shared_ptr<QVLScript>> scripts =
        manager.nightlyScripts().value_or(std::vector<std::shared_ptr<QVLScript>>());
    scripts.push_back(manager.remoteScript());
    scripts.push_back(manager.bundledScript());
    std::erase(scripts, nullptr);
    return scripts;
}

std::string textOf(const QVLScript& script, const QVLScriptManager& manager) {
    static constexpr std::array<const char*, 3> kSources = {"nightly", "remote", "built-in"};
    static constexpr std::array<const char*, 4> kStates = {"unknown", "downloading", "failed", "available"};
    return script.title() + ", version " + script.version().value_or("none") + ", " +
           kSources[static_cast<std::size_t>(script.source())] + ", " +
           kStates[static_cast<std::size_t>(script.state())] +
           (&script == manager.currentScript().get() ? ", current" : "") +
           (&script == manager.overrideScript().get() ? ", override" : "");
}

bool hasStoppedFetching(const QVLScriptManager& manager) {
    const auto remote = manager.remoteScript();
    return manager.isFetching() && remote && remote->state() == QVLScriptStateFailed;
}

bool isDownloading(const QVLScriptManager& manager) {
    const auto scripts = scriptsOf(manager);
    const auto isOnItsWay = [](const auto& script) { return script->state() == QVLScriptStateDownloading; };
    return (manager.isFetching() && !hasStoppedFetching(manager)) ||
           std::any_of(scripts.begin(), scripts.end(), isOnItsWay);
}

} // namespace host
