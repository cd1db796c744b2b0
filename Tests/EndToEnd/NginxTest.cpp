#include "LoopbackServer.h"
#include "NativeHost.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

namespace {

/// A port of the loopback interface that was free a moment ago.
int freePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(socket, reinterpret_cast<sockaddr*>(&address), length);
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(socket);
    return ntohs(address.sin_port);
}

/// An nginx of its own on the loopback interface that serves a directory, until it goes.
class Nginx final {
public:
    explicit Nginx(const std::string& root) : m_port(freePort()) {
        std::filesystem::create_directories(m_directory.path("logs"));
        std::ofstream(m_directory.path("nginx.conf"))
            << "pid " << m_directory.path("nginx.pid") << ";\nerror_log " << m_directory.path("error.log")
            << ";\nworker_processes 1;\nevents { worker_connections 64; }\nhttp {\n  access_log off;\n"
            << "  client_body_temp_path " << m_directory.path() << ";\n  proxy_temp_path " << m_directory.path()
            << ";\n  fastcgi_temp_path " << m_directory.path() << ";\n  uwsgi_temp_path " << m_directory.path()
            << ";\n  scgi_temp_path " << m_directory.path() << ";\n  server { listen 127.0.0.1:" << m_port << "; root "
            << root << "; }\n}\n";
        // Temporary directories are the maker's alone, and the server's worker is another user.
        std::filesystem::permissions(root, std::filesystem::perms(0755));
        // The command comes back when the server listens.
        m_isRunning = run("");
    }
    ~Nginx() {
        if (m_isRunning) {
            run(" -s stop");
        }
    }
    [[nodiscard]] static bool isInstalled() { return std::filesystem::exists("/usr/sbin/nginx"); }
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    [[nodiscard]] std::string url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(m_port) + path;
    }

private:
    bool run(const std::string& options) const {
        const std::string command = "/usr/sbin/nginx -p '" + m_directory.path() + "' -e '" +
                                    m_directory.path("error.log") + "' -c '" + m_directory.path("nginx.conf") + "'" +
                                    options;
        return std::system(command.c_str()) == 0; // NOLINT(cert-env33-c): a fixed command of the test's own
    }

    TemporaryDirectory m_directory;
    int m_port;
    bool m_isRunning = false;
};

TEST(Nginx, ServesScriptAndFeedAndTheEngineRunsThePinnedNightlyScript) {
    if (!Nginx::isInstalled()) {
        GTEST_SKIP() << "nginx is not installed";
    }
    clearProxyVariables();
    NativeHost host;
    const TemporaryDirectory root;
    const Nginx nginx(root.path());
    ASSERT_TRUE(nginx.isRunning());
    std::ofstream(root.path("quorvel.js")) << NativeHost::script("5.0");
    std::ofstream(root.path("night.js")) << NativeHost::script("5.1-night");
    std::ofstream(root.path("feed.json"))
        << R"([{"version":"5.1-night","date":"2026-11-21T23:00:00+01:00","url":")" << nginx.url("/night.js") << "\"}]";
    host.environment.unlockDebugTools();
    host.environment->setRemoteScriptURL(QVLURL::fromString(nginx.url("/quorvel.js")));
    host.environment->setNightlyFeedURL(QVLURL::fromString(nginx.url("/feed.json")));
    host.makeEngine();
    const auto manager = host.engine->scriptManager();
    host.engine->start();
    host.engine->setInputs({{"plan", "free"}});
    ASSERT_TRUE(host.runUntil([&] {
        return manager->nightlyScripts() && manager->nightlyScripts()->front()->state() == QVLScriptStateAvailable;
    }));
    manager->setOverrideScript(manager->nightlyScripts()->front());
    ASSERT_TRUE(host.runUntil([&] { return host.text("source") == "script 5.1-night"; }));
    manager->setOverrideScript(manager->remoteScript());
    ASSERT_TRUE(host.runUntil([&] { return host.text("source") == "script 5.0"; }));
    host.dropEngine();
}

} // namespace
