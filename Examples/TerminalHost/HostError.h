#pragma once

#include <stdexcept>
#include <string>

namespace host {

// What the program answers to whoever started it; a signal that ended it gives 128 and its number.
inline constexpr int kExitSuccess = 0;
/// The script could not be used, or did not answer as it should.
inline constexpr int kExitScriptFailed = 1;
/// Wrong options or files; nothing was run.
inline constexpr int kExitUsage = 2;
inline constexpr int kExitSignal = 128;

/// What keeps the program from going on, in one line for the user.
class HostError final : public std::runtime_error {
public:
    explicit HostError(const std::string& message, int exitCode = kExitUsage)
        : std::runtime_error(message), m_exitCode(exitCode) {}

    [[nodiscard]] int exitCode() const { return m_exitCode; }

private:
    int m_exitCode;
};

} // namespace host
