#include "Commands.h"

#include "HostFiles.h"
#include "Scripts.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

namespace host {

namespace {

constexpr std::size_t kHelpColumn = 24;
constexpr std::string_view kBlanks = " \t\r";

std::string trimmed(std::string text) {
    text.erase(0, text.find_first_not_of(kBlanks));
    text.erase(text.find_last_not_of(kBlanks) + 1);
    return text;
}

/// The first word, and what follows the blanks after it.
std::pair<std::string, std::string> splitAfterWord(const std::string& text) {
    const std::string line = trimmed(text);
    const std::string word = line.substr(0, line.find_first_of(kBlanks));
    return {word, trimmed(line.substr(word.size()))};
}

} // namespace

Commands::Commands(std::shared_ptr<Console> console, std::shared_ptr<QVLQuorvel> engine,
                   const NotificationPrinter& printer, std::function<void()> quit)
    : m_console(std::move(console)), m_engine(std::move(engine)), m_printer(printer), m_quit(std::move(quit)) {}

void Commands::obey(const std::string& line) {
    const auto& [name, arguments] = splitAfterWord(line);
    if (name.empty() || name.starts_with('#')) {
        return;
    }
    const auto isNamed = [&name = name](const Command& command) { return command.name == name; };
    const auto command = std::find_if(all().begin(), all().end(), isNamed);
    if (command == all().end()) {
        printRemark(*m_console, "Host", "'" + name + "' is no command; 'help' lists them");
    } else if (arguments.empty() && !command->arguments.empty() && !command->arguments.starts_with('[')) {
        printRemark(*m_console, "Host", "'" + name + "' needs " + std::string(command->arguments));
    } else {
        (this->*command->handler)(arguments);
    }
}

std::span<const Commands::Command> Commands::all() {
    static constexpr auto kCommands = std::to_array<Command>({
        {"event", "KEY", "record an event", &Commands::recordEvent},
        {"flag", "KEY [yes|no]", "set a flag", &Commands::setFlag},
        {"reset", "", "forget all events and flags", &Commands::resetJournals},
        {"input", "KEY JSON", "set one input, until the file changes", &Commands::setInput},
        {"outputs", "", "show the outputs", &Commands::showOutputs},
        {"report", "", "show events, bookkeeping and outputs", &Commands::showReport},
        {"files", "", "show the engine's files", &Commands::showFiles},
        {"scripts", "", "show the scripts and which one is current", &Commands::showScripts},
        {"pin", "VERSION", "run this script and no other", &Commands::pin},
        {"unpin", "", "run the script that comes first again", &Commands::unpin},
        {"fetch", "", "fetch the remote scripts now", &Commands::fetch},
        {"debug-page", "", "write the debug page", &Commands::writeDebugPage},
        {"log-data", "", "log inputs, journals and outputs", &Commands::logData},
        {"help", "", "show this list", &Commands::showHelp},
        {"quit", "", "end", &Commands::quit},
    });
    return kCommands;
}

void Commands::recordEvent(const std::string& arguments) {
    m_engine->journals()->eventForKey(arguments)->trigger();
}

void Commands::setFlag(const std::string& arguments) {
    const auto& [key, value] = splitAfterWord(arguments);
    if (!value.empty() && value != "yes" && value != "no") {
        printRemark(*m_console, "Host", "'" + value + "' is neither yes nor no");
        return;
    }
    m_engine->journals()->flagForKey(key)->updateFlag(value != "no");
}

void Commands::setInput(const std::string& arguments) {
    const auto& [key, text] = splitAfterWord(arguments);
    const QVLJSONReadResult read =
        QVLJSONSerialization::JSONObjectWithData(text, QVLJSONSerialization::Reading::Fragments);
    if (!read) {
        printRemark(*m_console, "Host", "'" + text + "' is not JSON: " + read.error);
        return;
    }
    m_engine->setInputs(m_engine->inputs().withValueForKey(read.value, key));
}

void Commands::showOutputs(const std::string& /*arguments*/) {
    printOutputs(*m_console, visibleOutputs(*m_engine));
}

void Commands::showReport(const std::string& /*arguments*/) {
    printReport(*m_console, *m_engine, m_printer.events());
}

void Commands::showFiles(const std::string& /*arguments*/) {
    std::vector<Source> files;
    for (const char* const name : {kQVLOutputsCacheFile, kQVLJournalsFile, kQVLABTestCacheFile}) {
        const std::string path = m_engine->quorvelDirectoryPath() + "/" + name;
        std::error_code error;
        const auto size = std::filesystem::file_size(path, error);
        if (!error) {
            files.push_back({name, countOf(size, "byte") + "  " + shortPath(path)});
        }
    }
    printSources(*m_console, "Files", files);
}

void Commands::resetJournals(const std::string& /*arguments*/) {
    m_engine->resetJournals();
}

void Commands::showScripts(const std::string& /*arguments*/) {
    if (const auto manager = scriptManager()) {
        for (const auto& script : scriptsOf(*manager)) {
            printRemark(*m_console, "Host", textOf(*script, *manager));
        }
    }
}

void Commands::pin(const std::string& arguments) {
    const auto manager = scriptManager();
    if (!manager) {
        return;
    }
    const auto scripts = scriptsOf(*manager);
    const auto hasVersion = [&](const auto& script) { return script->version() == arguments; };
    const auto script = std::find_if(scripts.begin(), scripts.end(), hasVersion);
    if (script == scripts.end()) {
        printRemark(*m_console, "Host", "no script has the version " + arguments + "; 'scripts' lists them");
        return;
    }
    manager->setOverrideScript(*script);
}

void Commands::unpin(const std::string& /*arguments*/) {
    if (const auto manager = scriptManager()) {
        manager->setOverrideScript(nullptr);
    }
}

void Commands::fetch(const std::string& /*arguments*/) {
    const auto manager = scriptManager();
    if (manager && hasStoppedFetching(*manager)) {
        printRemark(*m_console, "Host", "a download that fails ends fetching until the program starts anew");
    } else if (manager) {
        m_engine->fetchScriptNow();
    }
}

std::shared_ptr<QVLScriptManager> Commands::scriptManager() const {
    if (!m_engine->scriptManager()) {
        printRemark(*m_console, "Host", "with --script there is only that script");
    }
    return m_engine->scriptManager();
}

void Commands::writeDebugPage(const std::string& /*arguments*/) {
    const std::optional<std::string> path = m_engine->generateDebugHTML();
    printRemark(*m_console, "Host",
                path ? shortPath(*path) : "no debug page: no script is loaded, or the log says why");
}

void Commands::logData(const std::string& /*arguments*/) {
    m_engine->logData();
}

void Commands::showHelp(const std::string& /*arguments*/) {
    Page page = m_console->makePage();
    for (const Command& command : all()) {
        page.put("  ").put(command.name, Style::Label).put(" ").put(command.arguments);
        page.padTo(kHelpColumn).put(command.help, Style::Quiet).endLine();
    }
    m_console->print("Commands", page);
}

void Commands::quit(const std::string& /*arguments*/) {
    m_quit();
}

} // namespace host
