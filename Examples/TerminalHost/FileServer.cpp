#include "FileServer.h"

#include "HostError.h"

#include <httplib.h>

#include <thread>

namespace host {

namespace {

constexpr const char* kAddress = "127.0.0.1";

} // namespace

struct FileServer::Running {
    httplib::Server server;
    int port = 0;
    std::thread thread;
};

FileServer::FileServer(const std::string& directory, int port) : m_running(std::make_unique<Running>()) {
    httplib::Server& server = m_running->server;
    if (!server.set_mount_point("/", directory)) {
        throw HostError("cannot serve '" + directory + "': it is not a directory");
    }
    const bool isBound =
        port == 0 ? (port = server.bind_to_any_port(kAddress)) > 0 : server.bind_to_port(kAddress, port);
    if (!isBound) {
        throw HostError("cannot serve on the port; another program may have it");
    }
    m_running->port = port;
    m_running->thread = std::thread([&server] { server.listen_after_bind(); });
    while (!server.is_running()) {
        std::this_thread::yield();
    }
}

FileServer::~FileServer() {
    m_running->server.stop();
    m_running->thread.join();
}

std::string FileServer::addressOf(const std::string& path) const {
    return std::string("http://") + kAddress + ":" + std::to_string(m_running->port) + path;
}

} // namespace host
