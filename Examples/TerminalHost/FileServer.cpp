#include "FileServer.h"

#include "HostError.h"

#include <httplib.h>

#include <atomic>
#include <thread>

#include <sys/socket.h>

namespace host {

namespace {

constexpr const char* kAddress = "127.0.0.1";

/// A port that was just given up can be had again, but, other than with the server's own options, none that is in use.
void setSocketOptions(socket_t socket) {
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

} // namespace

struct FileServer::Running {
    httplib::Server server;
    int port = 0;
    std::atomic<bool> hasEnded = false;
    std::thread thread;
};

FileServer::FileServer(const std::string& directory, int port) : m_running(std::make_unique<Running>()) {
    httplib::Server& server = m_running->server;
    if (!server.set_mount_point("/", directory)) {
        throw HostError("cannot serve '" + directory + "': it is not a directory");
    }
    server.set_socket_options(setSocketOptions);
    // A connection that is kept open would hold up the end.
    server.set_keep_alive_max_count(1);
    m_running->port = port == 0 ? server.bind_to_any_port(kAddress) : port;
    if (m_running->port <= 0 || (port != 0 && !server.bind_to_port(kAddress, port))) {
        throw HostError("cannot serve on the port; another program may have it");
    }
    listen();
}

FileServer::~FileServer() {
    m_running->server.stop();
    m_running->thread.join();
}

void FileServer::listen() {
    Running& running = *m_running;
    running.thread = std::thread([&running] {
        running.server.listen_after_bind();
        running.hasEnded = true;
    });
    while (!running.server.is_running() && !running.hasEnded) {
        std::this_thread::yield();
    }
    if (running.hasEnded) {
        running.thread.join();
        throw HostError("cannot listen on the port " + std::to_string(running.port));
    }
}

std::string FileServer::addressOf(const std::string& path) const {
    return std::string("http://") + kAddress + ":" + std::to_string(m_running->port) + path;
}

} // namespace host
