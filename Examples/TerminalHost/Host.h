#pragma once

#include "CommandFeed.h"
#include "Commands.h"
#include "Console.h"
#include "ConsoleLogger.h"
#include "HostEnvironment.h"
#include "InputsFile.h"
#include "Interruption.h"
#include "NotificationPrinter.h"
#include "Options.h"
#include "Steps.h"

#include <Quorvel/Quorvel.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace host {

/// A host application in small. It does what any host does: it configures the environment, gets an engine, starts it,
/// feeds it with inputs and journals, keeps the main run loop going, and listens. It ends after the first answer, or
/// obeys commands until the user quits.
class Host final {
public:
    /// Throws `HostError` for options and files that cannot be used.
    Host(Options options, std::shared_ptr<Console> console);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    /// Runs until the answer is there, the user quits, input ends or a signal comes. Returns the exit code; throws
    /// `HostError` when the script failed.
    [[nodiscard]] int run();

private:
    void showSources() const;
    void prepareSteps();
    void record();
    void loadScript();
    void start();
    void setInputs();
    void remarkOnTests() const;

    void runUntilFinished();
    void tick();
    void followInputs();
    void watchScript();
    [[nodiscard]] bool isWaiting() const;
    void finish();
    void letQueueFinish();
    [[nodiscard]] int result() const;
    [[nodiscard]] std::string nameOfScript() const;

    const Options m_options;
    const std::shared_ptr<Console> m_console;
    const std::shared_ptr<ConsoleLogger> m_logger;
    InputsFile m_inputs;

    // Declared first of what runs, so that it is there before any other thread and after the last.
    Interruption m_interruption;
    HostEnvironment m_environment;
    const std::shared_ptr<QVLQuorvel> m_engine;
    NotificationPrinter m_printer;
    Commands m_commands;
    Steps m_steps;
    CommandFeed m_feed;

    std::chrono::steady_clock::time_point m_startTime;
    bool m_hasLoadFailed = false;
    bool m_hasRemarkedOnScript = false;
    bool m_isStuck = false;
    bool m_isFinished = false;
    int m_signal = 0;
    // Tells tasks that arrive late that this object is gone.
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace host
