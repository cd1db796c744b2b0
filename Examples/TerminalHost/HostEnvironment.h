#pragma once

#include "FileServer.h"
#include "HostDirectory.h"
#include "Options.h"
#include "Report.h"

#include <Quorvel/Quorvel.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// What a host prepares before it has an engine: the library's environment, the directory, and here also a server of
/// scripts. Then it makes the engine.
class HostEnvironment final {
public:
    /// Throws `HostError` for options that cannot be followed.
    HostEnvironment(const Options& options, const QVLJSONDictionary& inputs, const std::shared_ptr<QVLLogger>& logger);
    HostEnvironment(const HostEnvironment&) = delete;
    HostEnvironment& operator=(const HostEnvironment&) = delete;
    ~HostEnvironment();

    /// A script file of the user's gets an engine that runs nothing else, an account one of its own, and the time
    /// before login the environment's. Called once.
    [[nodiscard]] std::shared_ptr<QVLQuorvel> makeEngine() const;

    /// What the library tells services of the application, which is found among the inputs.
    void describeApplication(const QVLJSONDictionary& inputs) const;

    /// Lines for the user: which script, whence, where to.
    [[nodiscard]] std::vector<Source> scriptSources() const;
    [[nodiscard]] std::vector<Source> directorySources() const;

private:
    void checkScript() const;
    void setAddresses();
    void setTests() const;
    void unlock() const;

    const Options& m_options;
    QVLQuorvelEnvironment& m_environment;
    HostDirectory m_directory;
    std::optional<FileServer> m_server;
};

} // namespace host
