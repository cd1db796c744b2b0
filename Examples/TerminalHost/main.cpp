#include "Host.h"
#include "HostError.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace {

int runHost(const host::Options& options) {
    const auto console = std::make_shared<host::Console>();
    const int exitCode = host::Host(options, console).run();
    if (const int error = console->writeError()) {
        throw host::HostError("cannot write to standard output: " + std::generic_category().message(error));
    }
    return exitCode;
}

int fail(const char* reason, int exitCode) {
    host::Page line(/*isColoured=*/false, /*width=*/0);
    line.put("TerminalHost: ").put(reason).endLine();
    std::fputs(line.text().c_str(), stderr);
    return exitCode;
}

/// A standard stream that the program was started without is held by a file that gives and takes nothing, so that no
/// other file becomes it.
void holdStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1) {
            open("/dev/null", O_RDONLY);
        }
    }
}

} // namespace

int main(int count, char** arguments) {
    holdStandardStreams();
    // A reader that leaves early, such as `head`, must not keep the program from tidying up.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const host::Options options = host::Options::fromArguments(count, arguments);
        if (options.textToShow) {
            std::fputs(options.textToShow->c_str(), stdout);
            return host::kExitSuccess;
        }
        return runHost(options);
    } catch (const host::HostError& error) {
        return fail(error.what(), error.exitCode());
    } catch (const std::exception& error) {
        return fail(error.what(), host::kExitUsage);
    }
}
