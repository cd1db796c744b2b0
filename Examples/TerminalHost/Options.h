#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

/// What the user asked for on the command line.
struct Options {
    struct Flag {
        std::string key;
        bool value = true;
    };

    std::string inputsPath;
    /// Empty for the journals that the directory holds already.
    std::string journalsPath;
    /// No value for the script that the library brings with it.
    std::optional<std::string> scriptPath;
    /// No value for a temporary one.
    std::optional<std::string> directory;
    /// Recorded before the run, in this order.
    std::vector<std::string> events;
    std::vector<Flag> flags;
    bool isVerbose = false;

    /// Set when the user asked for nothing but a text, such as the help.
    std::optional<std::string> textToShow;

    /// Throws `HostError` for what makes no sense. User defaults, such as "-QVLDisableQuorvel YES", are left to the
    /// library.
    [[nodiscard]] static Options fromArguments(int count, const char* const* arguments);
};

} // namespace host
