#pragma once

#include "Console.h"
#include "NotificationPrinter.h"

#include <Quorvel/Quorvel.h>

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// What the user can tell a running host, one line each.
class Commands final {
public:
    Commands(std::shared_ptr<Console> console, std::shared_ptr<QVLQuorvel> engine, const NotificationPrinter& printer,
             std::function<void()> quit);

    /// Empty lines and those that begin with "#" are remarks.
    void obey(const std::string& line);

private:
    struct Command {
        std::string_view name;
        /// What follows the name; in brackets when it can be left out.
        std::string_view arguments;
        std::string_view help;
        void (Commands::*handler)(const std::string& arguments);
    };
    static std::span<const Command> all();

    // Inputs, journals and what comes of them
    void recordEvent(const std::string& arguments);
    void setFlag(const std::string& arguments);
    void setInput(const std::string& arguments);
    void showOutputs(const std::string& arguments);
    void showReport(const std::string& arguments);
    void showFiles(const std::string& arguments);
    void resetJournals(const std::string& arguments);

    // Scripts
    void showScripts(const std::string& arguments);
    void pin(const std::string& arguments);
    void unpin(const std::string& arguments);
    void fetch(const std::string& arguments);
    void writeDebugPage(const std::string& arguments);
    void logData(const std::string& arguments);
    /// Null, after a remark, for an engine that knows but one script.
    [[nodiscard]] std::shared_ptr<QVLScriptManager> scriptManager() const;

    void showHelp(const std::string& arguments);
    void quit(const std::string& arguments);

    const std::shared_ptr<Console> m_console;
    const std::shared_ptr<QVLQuorvel> m_engine;
    const NotificationPrinter& m_printer;
    const std::function<void()> m_quit;
};

} // namespace host
