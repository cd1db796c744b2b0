#pragma once

#include <memory>
#include <string>

namespace host {

/// Serves the files of a directory over HTTP, to this computer only, for as long as it lives.
class FileServer final {
public:
    /// Port 0 takes any free one. Throws `HostError` when the directory or the port cannot be had.
    FileServer(const std::string& directory, int port);
    FileServer(const FileServer&) = delete;
    FileServer& operator=(const FileServer&) = delete;
    ~FileServer();

    /// The address of a path that begins with a slash.
    [[nodiscard]] std::string addressOf(const std::string& path) const;

private:
    void listen();

    struct Running;
    std::unique_ptr<Running> m_running;
};

} // namespace host
