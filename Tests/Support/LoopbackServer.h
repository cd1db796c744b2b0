#pragma once

#include "QVLURL.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

class TestCertificate;

/// A real HTTP server on the loopback interface that answers every request as a test says, one for each connection.
class LoopbackServer final {
public:
    using Headers = std::vector<std::pair<std::string, std::string>>;

    struct Request {
        std::string method;
        std::string path;
        Headers headers;
        std::string body;

        /// The values of a header in the order in which they came, whatever the case of its name.
        [[nodiscard]] std::vector<std::string> valuesOfHeader(const std::string& name) const;
    };

    struct Answer {
        int status = 200;
        std::string body = {};
        Headers headers = {};
    };

    /// Runs on a thread of the server.
    using Handler = std::function<Answer(const Request&)>;

    explicit LoopbackServer(Handler handler);
    /// Serves https with this certificate.
    LoopbackServer(const TestCertificate& certificate, Handler handler);
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer();

    [[nodiscard]] int port() const { return m_port; }
    /// An address at this server, by its number.
    [[nodiscard]] QVLURL url(const std::string& path) const;
    /// All requests that were answered so far.
    [[nodiscard]] std::vector<Request> requests() const;

private:
    class Implementation;
    Answer answer(const Request& request);
    void listen();

    const Handler m_handler;
    const std::string m_scheme;
    mutable std::mutex m_mutex;
    std::vector<Request> m_requests;
    const std::unique_ptr<Implementation> m_implementation;
    int m_port = 0;
    std::thread m_thread;
};

/// Takes the proxies of the developer's computer out of the environment: they would stand between a test and its
/// server.
void clearProxyVariables();
