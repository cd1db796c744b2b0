#include "Options.h"

#include "HostError.h"
#include "SampleData.h"

#include <Quorvel/Quorvel.h>

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string_view>

namespace host {

namespace {

constexpr std::string_view kUserDefaultsPrefix = "-QVL";

constexpr const char* kDescription = "A host application in small: it runs a rules script on inputs and journals,\n"
                                     "and shows the outputs, the analytics events and the log.\n";

constexpr const char* kFooter = R"(User defaults:
  -QVL<Key> VALUE, such as -QVLQuorvelOverride.input.plan team, overrides an
  input or output, as in every application that embeds the library.

Examples:
  TerminalHost
      the built-in script on the sample data
  TerminalHost --event rating.promptShown --flag prompts.optedOut
      the same, once the user has seen the rating prompt and opted out
  TerminalHost --script my.js --inputs my.json --verbose
      a script and inputs of your own, with debug lines
  TerminalHost --directory state --event session.started
      keeps journals and outputs in "state" from one run to the next
  TerminalHost -QVLQuorvelOverride.input.deviceCount 5
      what if the user had five devices?
  TerminalHost --tour --verbose
      the road of one change, step by step
  TerminalHost --interactive
      stays running; type help for the commands
  TerminalHost --serve scripts --unlock
      fetches scripts/quorvel.js and the scripts of scripts/nightly.json;
      the commands scripts, fetch and pin show and choose them
  TerminalHost --abtest-host tests.example.com --abtest 7d1c --auth secret
      an account's engine that takes part in an A/B test

The built-in script comes before any that is fetched, until "pin VERSION"
chooses another one. An account's engine runs no script, not even the built-in
one, unless a remote one is named.

Ends with 0 when the script answered, 1 when it failed, 2 for wrong options or
files, and 128 plus the number of the signal that ended it.)";

/// Without the pairs that the library reads as user defaults. In reverse, as the parser wants them.
std::vector<std::string> ownArguments(int count, const char* const* arguments) {
    std::vector<std::string> own;
    for (int index = 1; index < count; ++index) {
        const std::string_view argument = arguments[index];
        if (!argument.starts_with(kUserDefaultsPrefix)) {
            own.emplace_back(argument);
        } else if (++index == count) {
            throw HostError(std::string(argument) + ": the value is missing");
        }
    }
    return {own.rbegin(), own.rend()};
}

void checkIsGiven(const std::string& text, const std::string& option) {
    if (text.empty()) {
        throw HostError(option + ": the value is missing");
    }
}

void checkAreGiven(const Options& options) {
    checkIsGiven(options.directory.value_or("none"), "--directory");
    checkIsGiven(options.testHost.value_or("none"), "--abtest-host");
    if (options.testHost && options.testHost->find_first_of(":/") != std::string::npos) {
        throw HostError("--abtest-host: a host's name is needed, without scheme, port and path");
    }
    for (const std::string& event : options.events) {
        checkIsGiven(event, "--event");
    }
    for (const std::string& test : options.tests) {
        checkIsGiven(test, "--abtest");
    }
}

Options::Flag flagFrom(const std::string& text) {
    const std::size_t sign = text.rfind('=');
    const std::string key = text.substr(0, sign);
    const std::string value = sign == std::string::npos ? "yes" : text.substr(sign + 1);
    checkIsGiven(key, "--flag");
    if (value != "yes" && value != "no") {
        throw HostError("--flag: '" + value + "' is neither yes nor no");
    }
    return {key, value == "yes"};
}

/// A directory that a run has left journals in goes on with them; any other begins with the sample data.
std::string defaultJournalsPath(const std::optional<std::string>& directory) {
    const bool hasJournals = directory && std::filesystem::exists(std::filesystem::path(*directory) /
                                                                  kQVLContentDirectory / kQVLJournalsFile);
    return hasJournals ? std::string() : sampleDataPath("journals.json");
}

/// Any of the parser's errors as one line; asking for help is one of them.
std::string textOrThrow(const CLI::App& app, const CLI::ParseError& error) {
    const std::string text = error.what();
    if (error.get_name() == "CallForHelp") {
        return app.help();
    }
    if (error.get_name() == "CallForVersion") {
        return text + "\n";
    }
    if (error.get_name() == "ArgumentMismatch") {
        throw HostError(text.substr(0, text.find(':')) + ": exactly one value is needed (--help explains)");
    }
    throw HostError(text + " (--help explains)");
}

void declareRun(CLI::App& app, Options& options, std::vector<std::string>& flags) {
    app.add_option("--script", options.scriptPath, "rules script; the library's own if not given")->option_text("FILE");
    app.add_option("--inputs", options.inputsPath, "JSON object of inputs; sample data if not given")
        ->option_text("FILE");
    app.add_option("--journals", options.journalsPath, "journals; those in the directory, else sample data")
        ->option_text("FILE");
    app.add_option("--directory", options.directory, "where the engine keeps its files; a temporary one")
        ->option_text("DIR");
    app.add_option("--event", options.events, "record an event before the run; may be repeated")
        ->option_text("KEY")
        ->allow_extra_args(false);
    app.add_option("--flag", flags, "set a flag before the run; may be repeated")
        ->option_text("KEY[=yes|no]")
        ->allow_extra_args(false);
    app.add_flag("--tour", options.isTour, "then obey some sample commands, showing each");
    app.add_flag("--verbose", options.isVerbose, "show debug lines of the log too");
}

void declareStaying(CLI::App& app, Options& options) {
    app.add_flag("--interactive", options.isInteractive, "stay running, obey commands, follow the inputs file");
    app.add_flag("--account", options.hasAccount, "an account's engine; interactive");
    app.add_flag("--unlock", options.isUnlocked, "copy the developer key, for nightly scripts; interactive");
    app.add_option("--remote-script", options.remoteScript, "where a script is fetched from; interactive")
        ->option_text("URL");
    app.add_option("--nightly-feed", options.nightlyFeed, "where the nightly feed is fetched from; interactive")
        ->option_text("URL");
    CLI::Option* const serve =
        app.add_option("--serve", options.servedDirectory, "serve its quorvel.js and nightly.json; implies --account")
            ->option_text("DIR");
    app.add_option("--port", options.port, "port for --serve; any free one if not given")
        ->option_text("N")
        ->check(CLI::Range(0, 65535))
        ->needs(serve);
}

void declareTests(CLI::App& app, Options& options) {
    CLI::Option* const testHost =
        app.add_option("--abtest-host", options.testHost, "service of A/B tests, over HTTPS; implies --account")
            ->option_text("HOST");
    app.add_option("--abtest", options.tests, "take part in this A/B test; may be repeated")
        ->option_text("ID")
        ->allow_extra_args(false)
        ->needs(testHost);
    app.add_option("--auth", options.authToken, "the account's token for the service")
        ->option_text("TOKEN")
        ->needs(testHost);
    app.add_option("--user-agent", options.userAgent, "the account's user agent for the service")
        ->option_text("TEXT")
        ->needs(testHost);
}

/// Declares all options; the flags arrive as the user wrote them.
void declare(CLI::App& app, Options& options, std::vector<std::string>& flags) {
    app.footer(kFooter);
    app.get_formatter()->column_width(24);
    app.set_help_flag("--help", "show this text");
    app.set_version_flag("--version", std::string("Quorvel ") + QuorvelVersionString, "show the library's version");
    declareRun(app, options, flags);
    declareStaying(app, options);
    declareTests(app, options);
}

} // namespace

Options Options::fromArguments(int count, const char* const* arguments) {
    Options options;
    std::vector<std::string> flags;
    CLI::App app(kDescription, "TerminalHost");
    declare(app, options, flags);
    try {
        app.parse(ownArguments(count, arguments));
    } catch (const CLI::ParseError& error) {
        options.textToShow = textOrThrow(app, error);
        return options;
    }
    checkAreGiven(options);
    for (const std::string& flag : flags) {
        options.flags.push_back(flagFrom(flag));
    }
    options.hasAccount = options.hasAccount || options.servedDirectory || options.testHost;
    options.isInteractive = options.isInteractive || options.hasAccount || options.isUnlocked || options.remoteScript ||
                            options.nightlyFeed;
    if (app.count("--inputs") == 0) {
        options.inputsPath = sampleDataPath("inputs.json");
    }
    if (app.count("--journals") == 0) {
        options.journalsPath = defaultJournalsPath(
            options.directory && options.hasAccount ? *options.directory + kAccountSubdirectory : options.directory);
    }
    return options;
}

} // namespace host
