#include "LoopbackServer.h"

#include "TestCertificate.h"

#include <httplib.h>

#include <stdexcept>

#include <stdlib.h>
#include <strings.h>

/// Hides the library from the tests.
class LoopbackServer::Implementation {
public:
    explicit Implementation(std::unique_ptr<httplib::Server> library) : server(std::move(library)) {
        // A connection that stays open would hold up the end of the server.
        server->set_keep_alive_max_count(1);
    }

    void answerWith(const Handler& handler) {
        const auto respond = [handler](const httplib::Request& received, httplib::Response& response) {
            Request request{received.method, received.target, {}, received.body};
            request.headers.assign(received.headers.begin(), received.headers.end());
            const Answer answer = handler(request);
            response.status = answer.status;
            for (const auto& [name, value] : answer.headers) {
                response.set_header(name, value);
            }
            response.set_content(answer.body, "text/plain");
        };
        server->Get(".*", respond);
        server->Post(".*", respond);
        server->Put(".*", respond);
    }

    const std::unique_ptr<httplib::Server> server;
};

std::vector<std::string> LoopbackServer::Request::valuesOfHeader(const std::string& name) const {
    std::vector<std::string> values;
    for (const auto& [headerName, value] : headers) {
        if (strcasecmp(headerName.c_str(), name.c_str()) == 0) {
            values.push_back(value);
        }
    }
    return values;
}

LoopbackServer::LoopbackServer(Handler handler)
    : m_handler(std::move(handler)),
      m_scheme("http"),
      m_implementation(std::make_unique<Implementation>(std::make_unique<httplib::Server>())) {
    listen();
}

LoopbackServer::LoopbackServer(const TestCertificate& certificate, Handler handler)
    : m_handler(std::move(handler)),
      m_scheme("https"),
      m_implementation(std::make_unique<Implementation>(
          std::make_unique<httplib::SSLServer>(certificate.certificatePath().c_str(), certificate.keyPath().c_str()))) {
    listen();
}

LoopbackServer::~LoopbackServer() {
    m_implementation->server->stop();
    m_thread.join();
}

QVLURL LoopbackServer::url(const std::string& path) const {
    return *QVLURL::fromString(m_scheme + "://127.0.0.1:" + std::to_string(m_port) + path);
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

LoopbackServer::Answer LoopbackServer::answer(const Request& request) {
    {
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
    }
    return m_handler(request);
}

void LoopbackServer::listen() {
    clearProxyVariables();
    m_implementation->answerWith([this](const Request& request) { return answer(request); });
    m_port = m_implementation->server->bind_to_any_port("127.0.0.1");
    if (m_port <= 0) {
        throw std::runtime_error("no port to be had on the loopback interface");
    }
    m_thread = std::thread([this] { m_implementation->server->listen_after_bind(); });
    // Stopping it earlier would be lost.
    while (!m_implementation->server->is_running()) {
        std::this_thread::yield();
    }
}

void clearProxyVariables() {
    for (const char* const name :
         {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
        unsetenv(name);
    }
}
