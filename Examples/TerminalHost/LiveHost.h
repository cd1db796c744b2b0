#pragma once

#include "Console.h"
#include "ConsoleLogger.h"
#include "FileServer.h"
#include "HostDirectory.h"
#include "HostFiles.h"
#include "Interruption.h"
#include "Options.h"

#include <Quorvel/Quorvel.h>

#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// A host that stays running: it obeys commands, follows its inputs file and shows every notification.
class LiveHost final {
public:
    /// Throws `HostError` for options or files that cannot be used.
    LiveHost(Options options, std::shared_ptr<Console> console);
    LiveHost(const LiveHost&) = delete;
    LiveHost& operator=(const LiveHost&) = delete;
    ~LiveHost();

    /// Runs until the user quits, input ends or a signal comes. Returns the exit code.
    [[nodiscard]] int run();

private:
    void configureEnvironment();
    void setAddresses(QVLQuorvelEnvironment& environment);
    void unlock() const;
    void makeEngine();
    void listen();
    void feedEngine();
    void loadScript();
    void followInputs();
    void setInputs(const JSONFile& file);

    void receive(const QVLNotification& notification);
    void showEvents(const QVLNotification& notification);

    void receiveLine(std::optional<std::string> line);
    void runNextLine();
    void settle(int rounds);
    [[nodiscard]] bool isFetching() const;
    void obey(const std::string& line);
    bool obeyInputs(const std::string& name, const std::string& rest);
    bool obeyScripts(const std::string& name, const std::string& rest);
    void setFlag(const std::string& rest);
    void setInput(const std::string& rest);
    void showScripts();
    void pin(const std::string& version);
    [[nodiscard]] std::vector<std::shared_ptr<QVLScript>> scripts() const;
    void say(const std::string& text) const;

    const Options m_options;
    const std::shared_ptr<Console> m_console;
    const std::shared_ptr<ConsoleLogger> m_logger;
    const bool m_isTerminal;

    // Declared first of what runs, so that it is there before any other thread and after the last.
    Interruption m_interruption;
    std::optional<HostDirectory> m_directory;
    std::optional<FileServer> m_server;
    std::shared_ptr<QVLQuorvel> m_engine;
    std::vector<QVLToken> m_observations;
    QVLToken m_waiting;
    std::filesystem::file_time_type m_inputsTime;

    std::deque<std::optional<std::string>> m_lines;
    bool m_isBusy = true;
    bool m_isFinished = false;
    int m_signal = 0;
    // Tells tasks that arrive late that this object is gone.
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace host
