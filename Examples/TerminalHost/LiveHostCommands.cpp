#include "LiveHost.h"
#include "Report.h"

#include <array>

// What the user can type.

namespace host {

namespace {

constexpr const char* kCommands = "event KEY | flag KEY [yes|no] | input KEY JSON | outputs | scripts | pin VERSION | "
                                  "unpin | fetch | reset | help | quit";

/// Splits off the first word; what follows the blanks after it remains.
std::string takeWord(std::string& text) {
    const auto trim = [&text] { text.erase(0, text.find_first_not_of(" \t\r")); };
    trim();
    const std::string word = text.substr(0, text.find_first_of(" \t\r"));
    text.erase(0, word.size());
    trim();
    text.erase(text.find_last_not_of(" \t\r") + 1);
    return word;
}

std::string textOf(const QVLScript& script) {
    static constexpr std::array<const char*, 3> kSources = {"nightly", "remote", "built-in"};
    static constexpr std::array<const char*, 4> kStates = {"unknown", "downloading", "failed", "available"};
    return script.title() + ", version " + script.version().value_or("none") + ", " +
           kSources[static_cast<std::size_t>(script.source())] + ", " +
           kStates[static_cast<std::size_t>(script.state())];
}

} // namespace

void LiveHost::obey(const std::string& line) {
    std::string rest = line;
    const std::string name = takeWord(rest);
    if (name == "quit") {
        m_isFinished = true;
    } else if (name == "help") {
        say(kCommands);
    } else if (name == "outputs") {
        printOutputs(*m_console, m_engine->outputs());
    } else if (!name.empty() && !obeyInputs(name, rest) && !obeyScripts(name, rest)) {
        say("'" + line + "' is no command, or lacks something; 'help' lists them");
    }
}

bool LiveHost::obeyInputs(const std::string& name, const std::string& rest) {
    if (name == "reset") {
        m_engine->resetJournals();
    } else if (rest.empty()) {
        return false;
    } else if (name == "event") {
        m_engine->journals()->eventForKey(rest)->trigger();
    } else if (name == "flag") {
        setFlag(rest);
    } else if (name == "input") {
        setInput(rest);
    } else {
        return false;
    }
    return true;
}

bool LiveHost::obeyScripts(const std::string& name, const std::string& rest) {
    const bool isKnown = name == "scripts" || name == "fetch" || name == "unpin" || (name == "pin" && !rest.empty());
    if (!isKnown) {
        return false;
    }
    if (!m_engine->scriptManager()) {
        say("with --script there is only that script");
    } else if (name == "scripts") {
        showScripts();
    } else if (name == "fetch") {
        m_engine->fetchScriptNow();
    } else if (name == "unpin") {
        m_engine->scriptManager()->setOverrideScript(nullptr);
    } else {
        pin(rest);
    }
    return true;
}

void LiveHost::setFlag(const std::string& rest) {
    std::string value = rest;
    const std::string key = takeWord(value);
    if (!value.empty() && value != "yes" && value != "no") {
        say("'" + value + "' is neither yes nor no");
        return;
    }
    m_engine->journals()->flagForKey(key)->updateFlag(value != "no");
}

void LiveHost::setInput(const std::string& rest) {
    std::string text = rest;
    const std::string key = takeWord(text);
    const QVLJSONReadResult read =
        QVLJSONSerialization::JSONObjectWithData(text, QVLJSONSerialization::Reading::Fragments);
    if (!read) {
        say("'" + text + "' is not JSON: " + read.error);
        return;
    }
    m_engine->setInputs(m_engine->inputs().withValueForKey(read.value, key));
}

std::vector<std::shared_ptr<QVLScript>> LiveHost::scripts() const {
    const QVLScriptManager& manager = *m_engine->scriptManager();
    std::vector<std::shared_ptr<QVLScript>> all = manager.nightlyScripts().value_or(QVLScriptManager::Scripts());
    all.push_back(manager.remoteScript());
    all.push_back(manager.bundledScript());
    std::erase(all, nullptr);
    return all;
}

void LiveHost::showScripts() {
    const QVLScriptManager& manager = *m_engine->scriptManager();
    for (const auto& script : scripts()) {
        const std::string current = script == manager.currentScript() ? ", current" : "";
        say(textOf(*script) + current + (script == manager.overrideScript() ? ", override" : ""));
    }
}

void LiveHost::pin(const std::string& version) {
    for (const auto& script : scripts()) {
        if (script->version() == version) {
            m_engine->scriptManager()->setOverrideScript(script);
            return;
        }
    }
    say("no script has the version " + version + "; 'scripts' lists them");
}

} // namespace host
