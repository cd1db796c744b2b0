#include "RawServer.h"

#include "LoopbackServer.h"

#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

sockaddr_in loopbackAddress() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// Bound to a port of its own.
int makeSocket() {
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopbackAddress();
    if (made < 0 || bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("no port to be had on the loopback interface");
    }
    return made;
}

int makeListener() {
    const int listener = makeSocket();
    if (listen(listener, SOMAXCONN) != 0) {
        throw std::runtime_error("cannot listen on the loopback interface");
    }
    return listener;
}

QVLURL urlOf(int boundSocket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    getsockname(boundSocket, reinterpret_cast<sockaddr*>(&address), &length);
    return *QVLURL::fromString("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/");
}

std::string readRequestHead(int connection) {
    std::string head;
    std::array<char, 1024> buffer{};
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t length = recv(connection, buffer.data(), buffer.size(), 0);
        if (length <= 0) {
            break;
        }
        head.append(buffer.data(), static_cast<std::size_t>(length));
    }
    return head;
}

/// False when nobody listens any more.
bool sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t length = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (length <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

std::string_view lastLine(std::string_view text) {
    const std::size_t end = text.size() > 1 ? text.rfind('\n', text.size() - 2) : std::string_view::npos;
    return end == std::string_view::npos ? text : text.substr(end + 1);
}

} // namespace

RawServer::RawServer(std::string answer, Afterwards afterwards)
    : m_answer(std::move(answer)), m_afterwards(afterwards), m_listener(makeListener()), m_thread([this] { serve(); }) {
    clearProxyVariables();
}

RawServer::~RawServer() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
        // Ends whatever the thread waits for.
        shutdown(m_listener, SHUT_RDWR);
        for (const int connection : m_connections) {
            shutdown(connection, SHUT_RDWR);
        }
    }
    m_thread.join();
    for (const int connection : m_connections) {
        close(connection);
    }
    close(m_listener);
}

QVLURL RawServer::url() const {
    return urlOf(m_listener);
}

std::string RawServer::waitForRequest() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_requestHead.empty(); });
    return m_requestHead;
}

QVLURL RawServer::refusingURL() {
    clearProxyVariables();
    // Bound once and never listened on: nobody else is given the port for as long as the process lives.
    static const int bound = makeSocket();
    return urlOf(bound);
}

void RawServer::serve() {
    int connection = -1;
    while ((connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
        {
            const std::lock_guard lock(m_mutex);
            m_connections.push_back(connection);
            if (m_isStopping) {
                return;
            }
        }
        serveConnection(connection);
    }
}

void RawServer::serveConnection(int connection) {
    std::string head = readRequestHead(connection);
    bool isHeard = sendAll(connection, m_answer);
    while (isHeard && m_afterwards == Afterwards::Repeat) {
        isHeard = sendAll(connection, lastLine(m_answer));
    }
    if (m_afterwards == Afterwards::Close) {
        shutdown(connection, SHUT_RDWR);
    }
    const std::lock_guard lock(m_mutex);
    m_requestHead = std::move(head);
    m_changed.notify_all();
}
