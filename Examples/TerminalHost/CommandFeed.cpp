#include "CommandFeed.h"

#include "CommandReader.h"
#include "HostFiles.h"
#include "SampleData.h"

#include <utility>

#include <unistd.h>

namespace host {

CommandFeed::CommandFeed(std::shared_ptr<Console> console, Commands& commands, Steps& steps,
                         std::function<void()> atEnd)
    : m_console(std::move(console)),
      m_commands(commands),
      m_steps(steps),
      m_atEnd(std::move(atEnd)),
      m_isTerminal(isatty(STDIN_FILENO) != 0) {}

void CommandFeed::addTour() {
    for (const std::string& line : readLinesOfFile(sampleDataPath("tour.txt"), "tour's commands")) {
        m_steps.add([this, line] { obeyShowing(line); });
    }
}

void CommandFeed::followStandardInput() {
    readLines([this, life = std::weak_ptr(m_life)](const std::optional<std::string>& line) {
        if (life.lock()) {
            receive(line);
        }
    });
}

void CommandFeed::receive(const std::optional<std::string>& line) {
    if (!m_isTerminal) {
        m_steps.add(line ? Steps::Step([this, line = *line] { obeyShowing(line); }) : m_atEnd);
        return;
    }
    if (!line) {
        m_atEnd();
        return;
    }
    m_commands.obey(*line);
    // Nothing waits for this step; it makes the time count that the script takes.
    m_steps.add([] {});
}

void CommandFeed::obeyShowing(const std::string& line) {
    if (!line.empty()) {
        m_console->printHeading(line.starts_with('#') ? line : "> " + line);
    }
    m_commands.obey(line);
}

} // namespace host
