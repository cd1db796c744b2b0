#include "QVLABTestManager.h"
#include "QVLAccount.h"
#include "QVLLinuxHTTPSession.h"
#include "QVLQuorvelEnvironment.h"
#include "TemporaryDirectory.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <gio/gio.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace {

constexpr const char* kHost = "abtest.example";
constexpr const char* kReply = "HTTP/1.1 200 OK\r\nContent-Length: 45\r\n\r\n"
                               R"({"code":0,"data":{"testGuid":"t","status":1}})";

struct ObjectCleanup {
    void operator()(gpointer object) const { g_object_unref(object); }
};

/// Makes a certificate "<name>.pem" with its key "<name>.key".
bool makeCertificate(const TemporaryDirectory& directory, const std::string& name, const std::string& options) {
    const std::string command =
        "cd '" + directory.path() +
        "' && openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 " + "-keyout " + name +
        ".key -out " + name + ".pem -subj '/CN=Test " + name + "' " + options + " >openssl.log 2>&1";
    return std::system(command.c_str()) == 0;
}

/// Takes one connection with the certificate "server.pem", shows what it receives and sends what it is given. Ends by
/// itself after a while, so that nobody waits for it in vain.
class SecureServer final {
public:
    explicit SecureServer(const TemporaryDirectory& directory) {
        const std::string certificate = directory.path("server.pem");
        const std::string key = directory.path("server.key");
        m_process.reset(
            g_subprocess_new(GSubprocessFlags(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                              G_SUBPROCESS_FLAGS_STDERR_SILENCE),
                             nullptr, "timeout", "20", "openssl", "s_server", "-accept", "127.0.0.1:0", "-naccept", "1",
                             "-cert", certificate.c_str(), "-key", key.c_str(), nullptr));
        const std::string announced = readUntil("ACCEPT 127.0.0.1:", "\n");
        m_port = announced.substr(announced.rfind(':') + 1, announced.size() - announced.rfind(':') - 2);
    }

    [[nodiscard]] const std::string& port() const { return m_port; }

    /// What the server shows, from the first text to the second, both included; empty when they do not come.
    std::string readUntil(const std::string& first, const std::string& last) {
        GInputStream* output = g_subprocess_get_stdout_pipe(m_process.get());
        char piece[4096];
        for (;;) {
            const std::size_t start = m_shown.find(first);
            const std::size_t end = start == std::string::npos ? start : m_shown.find(last, start + first.size());
            if (end != std::string::npos) {
                return m_shown.substr(start, end + last.size() - start);
            }
            const gssize count = g_input_stream_read(output, piece, sizeof(piece), nullptr, nullptr);
            if (count <= 0) {
                return {};
            }
            m_shown.append(piece, static_cast<std::size_t>(count));
        }
    }

    void send(const std::string& text) {
        GOutputStream* input = g_subprocess_get_stdin_pipe(m_process.get());
        g_output_stream_write_all(input, text.data(), text.size(), nullptr, nullptr, nullptr);
    }

private:
    std::unique_ptr<GSubprocess, ObjectCleanup> m_process;
    std::string m_port;
    std::string m_shown;
};

class QVLABTestServiceTest : public testing::Test {
protected:
    void SetUp() override {
        for (const char* variable : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
            ::unsetenv(variable);
        }
        ASSERT_TRUE(makeCertificate(directory, "authority", ""));
        ASSERT_TRUE(makeCertificate(directory, "stranger", ""));
        platform.install();
    }

    void startServer(const std::string& signer, const std::string& name) {
        ASSERT_TRUE(makeCertificate(directory, "server",
                                    "-CA " + signer + ".pem -CAkey " + signer + ".key -addext subjectAltName=DNS:" +
                                        name + " -addext basicConstraints=critical,CA:FALSE"));
        server = std::make_unique<SecureServer>(directory);
        ASSERT_NE(server->port(), "");
    }

    void makeManager() {
        QVLPlatform services = *QVLPlatform::current();
        services.makeReachabilityTarget = [](const auto&) { return nullptr; };
        services.makeHTTPSession = [this] {
            return std::make_shared<QVLLinuxHTTPSession>(
                platform.runLoop, QVLCurlOptions{.connectTo = {std::string(kHost) + ":443:127.0.0.1:" + server->port()},
                                                 .certificateAuthorityFile = directory.path("authority.pem")});
        };
        QVLPlatform::install(std::make_shared<const QVLPlatform>(std::move(services)));

        const auto environment = std::make_shared<QVLQuorvelEnvironment>();
        environment->setAbtestGuids({"t"});
        environment->setAbtestHost(kHost);
        const auto account = QVLAccount::init();
        account->setAccountDirectory(directory.path());
        account->setUserAuthToken("token");
        account->setUserAgent("agent/1");
        manager = QVLABTestManager::initWithEnvironment(environment, account);
    }

    /// Asks once; true when an answer of any kind came.
    bool ask() {
        const auto result = manager->testResults().at("t");
        manager->participateIfNeeded();
        return platform.runLoop->runUntil([&] { return result->lastCheckTime() != 0; });
    }

    TemporaryDirectory directory;
    TestPlatform platform;
    std::unique_ptr<SecureServer> server;
    std::shared_ptr<QVLABTestManager> manager;
};

} // namespace

TEST_F(QVLABTestServiceTest, AsksAServiceThatProvesWhoItIs) {
    startServer("authority", kHost);
    makeManager();
    manager->participateIfNeeded();
    const std::string request = server->readUntil("POST /", "}");
    server->send(kReply);
    ASSERT_TRUE(platform.runLoop->runUntil([&] { return manager->testResults().at("t")->lastCheckTime() != 0; }));
    EXPECT_EQ(manager->testResults().at("t")->status(), QVLABTestStatusParticipating);

    EXPECT_TRUE(request.starts_with("POST /third/abtest/api/participate/experiment HTTP/1.1\r\n")) << request;
    EXPECT_NE(request.find("\r\nHost: abtest.example\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("\r\nauth: token\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("\r\nUser-Agent: agent/1\r\n"), std::string::npos) << request;
    EXPECT_TRUE(request.ends_with("\r\n\r\n"
                                  R"({"appType":0,"client":3,"deviceToken":"","testGuid":"t","version":""})"))
        << request;
    for (const char* field : {"\r\nContent-Type:", "\r\ncontent-type:", "\r\nExpect:", "\r\nexpect:"}) {
        EXPECT_EQ(request.find(field), std::string::npos) << request;
    }
}

TEST_F(QVLABTestServiceTest, TellsNothingToAServerOfAnotherName) {
    startServer("authority", "other.example");
    makeManager();
    ASSERT_TRUE(ask());
    EXPECT_EQ(manager->testResults().at("t")->status(), QVLABTestStatusUnknown);
    EXPECT_EQ(server->readUntil("POST /", "\r\n"), "");
}

TEST_F(QVLABTestServiceTest, TellsNothingToAServerOfAnUnknownAuthority) {
    startServer("stranger", kHost);
    makeManager();
    ASSERT_TRUE(ask());
    EXPECT_EQ(manager->testResults().at("t")->status(), QVLABTestStatusUnknown);
    EXPECT_EQ(server->readUntil("POST /", "\r\n"), "");
}
