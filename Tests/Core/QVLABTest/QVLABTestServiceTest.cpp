#include "LoopbackServer.h"
#include "QVLABTestManagerFixture.h"
#include "QVLLinuxHTTPSession.h"
#include "TestCertificate.h"

#include <gmock/gmock.h>

// What goes over the wire, with the real session and a real server.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Answer = LoopbackServer::Answer;
using Request = LoopbackServer::Request;

constexpr const char* kHost = "abtest.example";

class QVLABTestServiceTest : public QVLABTestManagerFixture {
protected:
    void SetUp() override {
        platform.makeHTTPSession = [this] { return std::make_shared<QVLLinuxHTTPSession>(platform.runLoop, options); };
        QVLABTestManagerFixture::SetUp();
    }

    /// Leads managers made from now on to the server, with trust in this certificate alone.
    void connectTo(const LoopbackServer& server, const TestCertificate& trusted) {
        options.connectTo = {std::string(kHost) + ":443:127.0.0.1:" + std::to_string(server.port())};
        options.certificateAuthorityFile = trusted.certificatePath();
        makeManager();
    }

    QVLCurlOptions options;
};

} // namespace

TEST_F(QVLABTestServiceTest, SendsTheCredentialsAndAFixedBodyAndNothingOfItsOwn) {
    const TestCertificate certificate(kHost);
    const LoopbackServer server(
        certificate, [](const Request&) { return Answer{.body = R"({"code":0,"data":{"testGuid":"t","status":1}})"}; });
    environment->setAppType(7);
    environment->setAppVersion("5.1 \"é\"");
    environment->setDeviceToken("device/1");
    account->setUserAuthToken("token 1=");
    account->setUserAgent("Host/5.1 (Linux)");
    connectTo(server, certificate);
    manager->participateIfNeeded();
    ASSERT_TRUE(platform.runLoop->runUntil([&] { return stateOf("t") == "1 now P-"; }));

    const Request request = server.requests().at(0);
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/third/abtest/api/participate/experiment");
    EXPECT_THAT(request.valuesOfHeader("Host"), ElementsAre(kHost));
    EXPECT_THAT(request.valuesOfHeader("auth"), ElementsAre("token 1="));
    EXPECT_THAT(request.valuesOfHeader("User-Agent"), ElementsAre("Host/5.1 (Linux)"));
    EXPECT_THAT(request.valuesOfHeader("Content-Type"), IsEmpty());
    EXPECT_THAT(request.valuesOfHeader("Expect"), IsEmpty());
    EXPECT_EQ(request.body,
              R"({"appType":7,"client":3,"deviceToken":"device\/1","testGuid":"t","version":"5.1 \"é\""})");

    manager->setAccount(nullptr);
    manager->participate(manager->testResults().at("t"));
    ASSERT_TRUE(platform.runLoop->runUntil([&] { return server.requests().size() == 2; }));
    EXPECT_THAT(server.requests().at(1).valuesOfHeader("auth"), IsEmpty());
    EXPECT_THAT(server.requests().at(1).valuesOfHeader("User-Agent"), IsEmpty());
}

TEST_F(QVLABTestServiceTest, TellsNothingToAServerThatCannotProveWhoItIs) {
    const TestCertificate right(kHost);
    const TestCertificate stranger(kHost);
    const TestCertificate ofAnotherName("other.example");
    struct Row {
        const char* fault;
        const TestCertificate& shown;
        const TestCertificate& trusted;
    };
    for (const Row& row : {Row{"a name of another server", ofAnotherName, ofAnotherName},
                           Row{"an unknown authority", stranger, right}}) {
        const LoopbackServer server(row.shown, [](const Request&) { return Answer{}; });
        connectTo(server, row.trusted);
        std::optional<QVLError> error;
        manager->request(
            manager->generateABTestRequestWithURL(*QVLURL::fromString("https://abtest.example/"), "t"),
            [&](std::int64_t, const auto& /*data*/, const std::optional<QVLError>& received) { error = received; });
        ASSERT_TRUE(platform.runLoop->runUntil([&] { return error.has_value(); })) << row.fault;
        EXPECT_EQ(error->domain, kQVLHTTPErrorDomain) << row.fault;
        EXPECT_EQ(error->code, static_cast<int>(QVLHTTPErrorCode::SecureConnectionFailed)) << error->message;
        EXPECT_THAT(server.requests(), IsEmpty()) << row.fault;
    }
}
