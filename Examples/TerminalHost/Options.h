#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

/// Where an account's engine keeps its files, inside the directory.
inline constexpr const char* kAccountSubdirectory = "/account";

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
    /// Obeys the commands of the sample data.
    bool isTour = false;

    /// Stays running and obeys commands. The options below imply it.
    bool isInteractive = false;
    /// An account's engine instead of the one for the time before login.
    bool hasAccount = false;
    /// Lets nightly scripts take part.
    bool isUnlocked = false;
    std::optional<std::string> remoteScript;
    std::optional<std::string> nightlyFeed;
    std::optional<std::string> servedDirectory;
    /// 0 for any free one.
    int port = 0;
    /// The service of A/B tests and the tests to take part in, with the account's credentials.
    std::optional<std::string> testHost;
    std::vector<std::string> tests;
    std::optional<std::string> authToken;
    std::optional<std::string> userAgent;

    /// Set when the user asked for nothing but a text, such as the help.
    std::optional<std::string> textToShow;

    /// Throws `HostError` for what makes no sense. User defaults, such as "-QVLDisableQuorvel YES", are left to the
    /// library.
    [[nodiscard]] static Options fromArguments(int count, const char* const* arguments);
};

} // namespace host
