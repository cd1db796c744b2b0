#include "LoopbackServer.h"
#include "QVLLinuxHTTPSession.h"
#include "RawServer.h"
#include "SteppedRunLoop.h"
#include "TestCertificate.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Answer = LoopbackServer::Answer;
using Request = LoopbackServer::Request;

class HTTPSessionTest : public testing::Test {
protected:
    QVLHTTPReply send(QVLHTTPRequest request) { return send(*session, std::move(request)); }

    QVLHTTPReply send(QVLHTTPSession& through, QVLHTTPRequest request) {
        std::optional<QVLHTTPReply> reply;
        const QVLToken token = through.start(std::move(request), [&](const QVLHTTPReply& received) {
            EXPECT_TRUE(runLoop->isMainThread());
            reply = received;
        });
        EXPECT_TRUE(runLoop->runUntil([&] { return reply.has_value(); }));
        return reply.value_or(QVLHTTPReply());
    }

    std::optional<QVLHTTPErrorCode> errorCode(const QVLHTTPReply& reply) {
        if (!reply.error || reply.response || reply.error->domain != kQVLHTTPErrorDomain ||
            reply.error->message.empty()) {
            return std::nullopt;
        }
        return static_cast<QVLHTTPErrorCode>(reply.error->code);
    }

    const std::shared_ptr<SteppedRunLoop> runLoop = std::make_shared<SteppedRunLoop>();
    std::shared_ptr<QVLLinuxHTTPSession> session = std::make_shared<QVLLinuxHTTPSession>(runLoop);
};

TEST_F(HTTPSessionTest, GetsWithoutAddingAnythingOfItsOwn) {
    const LoopbackServer server([](const Request&) { return Answer{.body = "var rules;"}; });
    const QVLHTTPReply reply = send({.url = server.url("/rules.js?a=b")});
    ASSERT_TRUE(reply.response);
    EXPECT_FALSE(reply.error);
    EXPECT_EQ(reply.response->statusCode, 200);
    EXPECT_EQ(reply.response->body, "var rules;");
    EXPECT_EQ(reply.response->url, server.url("/rules.js?a=b").text());
    const Request request = server.requests().at(0);
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/rules.js?a=b");
    EXPECT_THAT(request.valuesOfHeader("User-Agent"), IsEmpty());
    EXPECT_THAT(request.valuesOfHeader("Content-Type"), IsEmpty());
    EXPECT_THAT(request.valuesOfHeader("Cache-Control"), IsEmpty());
}

TEST_F(HTTPSessionTest, PostsBodyAndHeadersAsGiven) {
    const LoopbackServer server([](const Request&) { return Answer{.body = "{}"}; });
    // Long enough for the library to ask for leave first, were it not told to do without.
    const std::string body(2'000'000, 'b');
    const QVLHTTPReply reply =
        send({.url = server.url("/participate"),
              .method = "POST",
              .headers = {{"auth", "token"}, {"User-Agent", "Host/1.0"}, {"Twice", "1"}, {"Twice", "2"}},
              .body = body});
    ASSERT_TRUE(reply.response);
    const Request request = server.requests().at(0);
    EXPECT_EQ(request.method, "POST");
    EXPECT_TRUE(request.body == body);
    EXPECT_THAT(request.valuesOfHeader("auth"), ElementsAre("token"));
    EXPECT_THAT(request.valuesOfHeader("User-Agent"), ElementsAre("Host/1.0"));
    EXPECT_THAT(request.valuesOfHeader("Twice"), ElementsAre("1", "2"));
    EXPECT_THAT(request.valuesOfHeader("Content-Type"), IsEmpty());
    EXPECT_THAT(request.valuesOfHeader("Expect"), IsEmpty());
}

TEST_F(HTTPSessionTest, SendsAHeaderThatHasNoValue) {
    RawServer server("HTTP/1.1 200 OK\r\n\r\n", RawServer::Afterwards::Close);
    EXPECT_TRUE(send({.url = server.url(), .headers = {{"auth", ""}, {"User-Agent", " "}}}).response);
    EXPECT_THAT(server.waitForRequest(), AllOf(HasSubstr("\r\nauth:\r\n"), HasSubstr("\r\nUser-Agent:\r\n")));
}

TEST_F(HTTPSessionTest, SendsOtherMethodsAndAPostWithoutBody) {
    const LoopbackServer server([](const Request& request) { return Answer{.body = request.method + request.body}; });
    EXPECT_EQ(send({.url = server.url("/"), .method = "POST"}).response.value().body, "POST");
    EXPECT_EQ(send({.url = server.url("/"), .method = "PUT", .body = "+body"}).response.value().body, "PUT+body");
    EXPECT_EQ(send({.url = server.url("/"), .method = "HEAD"}).response.value().statusCode, 200);
}

TEST_F(HTTPSessionTest, AnyStatusIsAResponseAndAnEmptyBodyIsNone) {
    const LoopbackServer server([](const Request& request) {
        return Answer{.status = std::stoi(request.path.substr(1)), .body = request.path == "/500" ? "sorry" : ""};
    });
    for (const int status : {200, 204, 304, 404, 500}) {
        const QVLHTTPReply reply = send({.url = server.url("/" + std::to_string(status))});
        ASSERT_TRUE(reply.response) << status;
        EXPECT_EQ(reply.response->statusCode, status);
        EXPECT_EQ(reply.response->hasBody(), status == 500) << status;
        EXPECT_THAT(reply.response->description(), HasSubstr("status " + std::to_string(status)));
    }
}

TEST_F(HTTPSessionTest, FollowsRedirectsToTheFinalAddress) {
    const LoopbackServer server([](const Request& request) {
        return request.path == "/old" ? Answer{.status = 307, .body = "moved", .headers = {{"Location", "/new"}}}
                                      : Answer{.body = request.method + request.body};
    });
    const QVLHTTPReply reply = send({.url = server.url("/old"), .method = "POST", .body = "+body"});
    ASSERT_TRUE(reply.response);
    EXPECT_EQ(reply.response->body, "POST+body");
    EXPECT_EQ(reply.response->url, server.url("/new").text());
}

TEST_F(HTTPSessionTest, ARedirectIsTheAnswerOfARequestThatFollowsNone) {
    const LoopbackServer server([](const Request&) {
        return Answer{.status = 307, .body = "moved", .headers = {{"Location", "/new"}}};
    });
    const QVLHTTPReply reply =
        send({.url = server.url("/old"), .method = "POST", .body = "+body", .followsRedirects = false});
    ASSERT_TRUE(reply.response);
    EXPECT_EQ(reply.response->statusCode, 307);
    EXPECT_EQ(reply.response->body, "moved");
    EXPECT_EQ(reply.response->url, server.url("/old").text());
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(HTTPSessionTest, RefusesRedirectsWithoutEndAndToOtherSchemes) {
    const LoopbackServer server([](const Request& request) {
        const std::string target = request.path == "/loop" ? "/loop" : "file:///etc/passwd";
        return Answer{.status = 302, .headers = {{"Location", target}}};
    });
    EXPECT_EQ(errorCode(send({.url = server.url("/loop")})), QVLHTTPErrorCode::BadRedirect);
    EXPECT_EQ(errorCode(send({.url = server.url("/file")})), QVLHTTPErrorCode::BadRedirect);
}

TEST_F(HTTPSessionTest, ReportsWhatHostileServersSend) {
    struct Row {
        const char* answer;
        QVLHTTPErrorCode code;
    };
    for (const Row& row : {
             Row{"", QVLHTTPErrorCode::ConnectionLost},
             Row{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nonly this", QVLHTTPErrorCode::ConnectionLost},
             Row{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nonly", QVLHTTPErrorCode::ConnectionLost},
             Row{"complete nonsense\r\n\r\n", QVLHTTPErrorCode::BadResponse},
             Row{"HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Encoding: gzip\r\n\r\nplain",
                 QVLHTTPErrorCode::BadResponse},
             Row{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nnonsense\r\n", QVLHTTPErrorCode::ConnectionLost},
             Row{"HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nplain", QVLHTTPErrorCode::BadResponse},
             Row{"HTTP/1.1 200 OK\r\nContent-Encoding: rot13\r\n\r\nplain", QVLHTTPErrorCode::BadResponse},
         }) {
        const RawServer server(row.answer, RawServer::Afterwards::Close);
        const QVLHTTPReply reply = send({.url = server.url()});
        EXPECT_EQ(errorCode(reply), row.code) << row.answer << "\n"
                                              << (reply.error ? reply.error->message : "no error");
    }
}

TEST_F(HTTPSessionTest, EndsAnAnswerWhoseHeadersOrBodyDoNotEnd) {
    for (const char* const beginning :
         {"HTTP/1.1 200 OK\r\nX-More: 1\r\n", "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nX-Long: x",
          "HTTP/1.1 200 OK\r\n\r\nmore\n"}) {
        const RawServer server(beginning, RawServer::Afterwards::Repeat);
        EXPECT_TRUE(errorCode(send({.url = server.url(), .responseBodyLimit = 1'000'000}))) << beginning;
    }
}

TEST_F(HTTPSessionTest, ReportsThatNobodyAnswersWithTheAddress) {
    const QVLHTTPReply reply = send({.url = RawServer::refusingURL()});
    EXPECT_EQ(errorCode(reply), QVLHTTPErrorCode::CannotConnect);
    EXPECT_THAT(reply.error.value().description(), HasSubstr(RawServer::refusingURL().text()));
}

TEST_F(HTTPSessionTest, TimesOutWhenTheServerKeepsSilent) {
    for (const char* const beginning : {"", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n"}) {
        const RawServer server(beginning, RawServer::Afterwards::Stall);
        EXPECT_EQ(errorCode(send({.url = server.url(), .timeout = QVLTimeInterval(0.1)})), QVLHTTPErrorCode::TimedOut);
    }
}

TEST_F(HTTPSessionTest, LimitsTheBodyAsItIsAfterDecompression) {
    const LoopbackServer server([](const Request&) { return Answer{.body = std::string(100'000, 'a')}; });
    const QVLHTTPReply fitting = send({.url = server.url("/"), .responseBodyLimit = 100'000});
    EXPECT_EQ(fitting.response.value().body.size(), 100'000U);
    const QVLHTTPReply tooLarge = send({.url = server.url("/"), .responseBodyLimit = 99'999});
    EXPECT_EQ(errorCode(tooLarge), QVLHTTPErrorCode::BodyTooLarge);
    EXPECT_THAT(tooLarge.error.value().message, HasSubstr("99999 bytes"));
    // The server compresses what it may, so that far fewer bytes than these were sent.
    EXPECT_THAT(server.requests().at(0).valuesOfHeader("Accept-Encoding"), ElementsAre(HasSubstr("gzip")));
}

TEST_F(HTTPSessionTest, RefusesWhatCannotBeSent) {
    const LoopbackServer server([](const Request&) { return Answer{}; });
    const std::vector<QVLHTTPRequest> requests = {
        {.url = *QVLURL::fromString("ftp://127.0.0.1/")},
        {.url = server.url("/"), .method = "GET /other HTTP/1.1\r\nX:"},
        {.url = server.url("/"), .headers = {{"auth", "token\r\nX: y"}}},
        {.url = server.url("/"), .headers = {{"auth: token\nX", "y"}}},
        {.url = server.url("/"), .headers = {{"", "y"}}},
    };
    for (const QVLHTTPRequest& request : requests) {
        EXPECT_EQ(errorCode(send(request)), QVLHTTPErrorCode::InvalidRequest);
    }
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(HTTPSessionTest, CompletesAllOfManyRequestsAndEachOnce) {
    const LoopbackServer server([](const Request& request) { return Answer{.body = request.path}; });
    std::vector<std::string> bodies;
    std::vector<QVLToken> tokens;
    for (int index = 0; index < 30; ++index) {
        tokens.push_back(
            session->start({.url = server.url("/" + std::to_string(index))},
                           [&](const QVLHTTPReply& reply) { bodies.push_back(reply.response.value().body); }));
    }
    EXPECT_THAT(bodies, IsEmpty());
    EXPECT_TRUE(runLoop->runUntil([&] { return bodies.size() >= 30; }));
    tokens.clear();
    runLoop->runUntilIdle();
    std::sort(bodies.begin(), bodies.end());
    EXPECT_EQ(std::unique(bodies.begin(), bodies.end()) - bodies.begin(), 30);
}

TEST_F(HTTPSessionTest, DroppingTheTokenGivesTheCompletionBackAndSilencesIt) {
    RawServer server("", RawServer::Afterwards::Stall);
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> observed = held;
    QVLToken token =
        session->start({.url = server.url()}, [held = std::move(held)](const QVLHTTPReply&) { ADD_FAILURE(); });
    server.waitForRequest();
    EXPECT_FALSE(observed.expired());
    token.reset();
    EXPECT_TRUE(observed.expired());
    session.reset();
    runLoop->runUntilIdle();
}

TEST_F(HTTPSessionTest, ACompletionCanCancelAnotherWhoseReplyIsThere) {
    RawServer server("HTTP/1.1 200 OK\r\n\r\nbody", RawServer::Afterwards::Close);
    std::vector<QVLToken> tokens;
    int completionCount = 0;
    for (int index = 0; index < 4; ++index) {
        tokens.push_back(session->start({.url = server.url()}, [&](const QVLHTTPReply&) {
            ++completionCount;
            tokens.clear();
        }));
    }
    EXPECT_TRUE(runLoop->runUntil([&] { return completionCount > 0; }));
    session.reset();
    runLoop->runUntilIdle();
    EXPECT_EQ(completionCount, 1);
}

TEST_F(HTTPSessionTest, AnInvalidatedSessionKeepsSilentAndTakesNoMore) {
    RawServer server("", RawServer::Afterwards::Stall);
    const QVLToken token = session->start({.url = server.url()}, [](const QVLHTTPReply&) { ADD_FAILURE(); });
    server.waitForRequest();
    session->invalidateAndCancel();
    EXPECT_EQ(errorCode(send({.url = server.url()})), QVLHTTPErrorCode::SessionInvalidated);
    session->invalidateAndCancel();
}

TEST_F(HTTPSessionTest, ItsLastOwnerMayDropItInACompletion) {
    const LoopbackServer server([](const Request&) { return Answer{.body = "body"}; });
    const QVLToken other = session->start({.url = server.url("/")}, [&](const QVLHTTPReply&) { session.reset(); });
    const QVLToken token = session->start({.url = server.url("/")}, [&](const QVLHTTPReply& reply) {
        session.reset();
        EXPECT_EQ(reply.response.value().body, "body");
    });
    EXPECT_TRUE(runLoop->runUntil([&] { return !session; }));
    runLoop->runUntilIdle();
}

std::atomic<std::thread::id> loadingThread;

const QVLCurlLibrary& missingLibrary() {
    static const QVLCurlLibrary library("libcurl-missing.so.4");
    loadingThread = std::this_thread::get_id();
    return library;
}

TEST_F(HTTPSessionTest, LoadsItsLibraryForTheFirstRequestAndReportsToEachThatItIsMissing) {
    QVLLinuxHTTPSession lacking(runLoop, {.library = missingLibrary});
    const QVLHTTPRequest request{.url = RawServer::refusingURL()};
    lacking.start(request, [](const QVLHTTPReply&) { ADD_FAILURE(); }).reset();
    for (int count = 0; count < 2; ++count) {
        const QVLHTTPReply reply = send(lacking, request);
        EXPECT_EQ(errorCode(reply), QVLHTTPErrorCode::Other);
        EXPECT_THAT(reply.error.value().message, AllOf(HasSubstr("libcurl could not be loaded: libcurl-missing.so.4"),
                                                       HasSubstr(RawServer::refusingURL().text())));
    }
    EXPECT_NE(loadingThread.load(), std::this_thread::get_id());
}

TEST_F(HTTPSessionTest, LoadsNothingWhereNothingIsRequested) {
    loadingThread = std::thread::id();
    {
        const QVLLinuxHTTPSession idle(runLoop, {.library = missingLibrary});
        runLoop->runUntilIdle();
    }
    EXPECT_EQ(loadingThread.load(), std::thread::id());
}

class SecureHTTPSessionTest : public HTTPSessionTest {
protected:
    std::unique_ptr<QVLLinuxHTTPSession> makeSession(const std::string& authorityFile) {
        return std::make_unique<QVLLinuxHTTPSession>(
            runLoop, QVLCurlOptions{.connectTo = {"scripts.example.com:443:127.0.0.1:" + std::to_string(server.port())},
                                    .certificateAuthorityFile = authorityFile});
    }

    const TestCertificate certificate{"scripts.example.com"};
    const QVLURL url = *QVLURL::fromString("https://scripts.example.com/rules.js");
    const LoopbackServer server{certificate, [](const Request& request) {
                                    return request.path == "/rules.js"
                                               ? Answer{.status = 302, .headers = {{"Location", "http://127.0.0.1:1/"}}}
                                               : Answer{.body = "secret"};
                                }};
};

TEST_F(SecureHTTPSessionTest, GetsFromAHostThatItTrusts) {
    const auto trusting = makeSession(certificate.certificatePath());
    const QVLHTTPReply reply = send(*trusting, {.url = *QVLURL::fromString("https://scripts.example.com/")});
    ASSERT_TRUE(reply.response) << reply.error.value().message;
    EXPECT_EQ(reply.response->body, "secret");
}

TEST_F(SecureHTTPSessionTest, RefusesAHostThatItDoesNotTrust) {
    const TestCertificate other{"scripts.example.com"};
    EXPECT_EQ(errorCode(send(*makeSession(other.certificatePath()), {.url = url})),
              QVLHTTPErrorCode::SecureConnectionFailed);
    EXPECT_EQ(errorCode(send(*makeSession(""), {.url = url})), QVLHTTPErrorCode::SecureConnectionFailed);
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(SecureHTTPSessionTest, RefusesARedirectThatGivesUpTheSecureConnection) {
    const auto trusting = makeSession(certificate.certificatePath());
    EXPECT_EQ(errorCode(send(*trusting, {.url = url})), QVLHTTPErrorCode::BadRedirect);
    EXPECT_EQ(server.requests().size(), 1U);
}

} // namespace
