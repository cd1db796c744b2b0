#pragma once

#include "Console.h"
#include "ConsoleLogger.h"
#include "HostDirectory.h"
#include "HostFiles.h"
#include "Interruption.h"
#include "Options.h"
#include "Report.h"

#include <Quorvel/Quorvel.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// A host application in small. It does what any host does: it configures the environment, makes an engine, feeds it
/// with inputs and journals, starts it, keeps the main run loop going, and listens.
class Host final {
public:
    /// Throws `HostError` for files that cannot be used.
    Host(Options options, std::shared_ptr<Console> console);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    /// Runs the rules once and shows what came of it. Returns the exit code when the script answered or a signal ended
    /// the wait; throws `HostError` when the script failed.
    [[nodiscard]] int run();

private:
    void readFiles();
    void configureEnvironment();
    void makeEngine();
    void listen();
    void showSources() const;
    void feedEngine();
    void loadScript();
    void scriptDidLoad(bool isLoaded);
    void rulesDidRun(bool hasAnswer);
    void stepUntilFinished();
    void letQueueFinish();
    void receiveEvents(const QVLNotification& notification);
    void showResult() const;
    [[nodiscard]] std::string reasonOfFailure() const;

    const Options m_options;
    const std::shared_ptr<Console> m_console;
    const std::shared_ptr<ConsoleLogger> m_logger;
    std::string m_scriptPath;
    JSONFile m_inputs;
    std::optional<JSONFile> m_journals;

    // Declared first of what runs, so that it is there before any thread of the engine and after the last.
    Interruption m_interruption;
    std::optional<HostDirectory> m_directory;
    std::shared_ptr<QVLQuorvel> m_engine;
    std::vector<QVLToken> m_observations;

    std::vector<ReportedEvent> m_events;
    bool m_hasAnswer = false;
    bool m_isFinished = false;
    int m_signal = 0;
};

} // namespace host
