#pragma once

#include "Commands.h"
#include "Console.h"
#include "Steps.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace host {

/// Hands commands over to be obeyed: those of the sample data, and what the user types or pipes. Main thread.
class CommandFeed final {
public:
    /// `atEnd` is called when input has ended.
    CommandFeed(std::shared_ptr<Console> console, Commands& commands, Steps& steps, std::function<void()> atEnd);

    /// Whether somebody is there to type.
    [[nodiscard]] bool isTerminal() const { return m_isTerminal; }

    /// Adds a step for each command of the tour. Throws `HostError` when the sample data lacks it.
    void addTour();
    /// Typed commands are obeyed at once; piped ones each after all that the one before has caused.
    void followStandardInput();

private:
    void receive(const std::optional<std::string>& line);
    void obeyShowing(const std::string& line);

    const std::shared_ptr<Console> m_console;
    Commands& m_commands;
    Steps& m_steps;
    const std::function<void()> m_atEnd;
    const bool m_isTerminal;
    // Tells lines that arrive late that this object is gone.
    std::shared_ptr<bool> m_life = std::make_shared<bool>(true);
};

} // namespace host
