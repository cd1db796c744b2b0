#include "QVLABTestManagerFixture.h"

namespace {

/// A dictionary of so many levels.
std::string nested(std::size_t depth) {
    std::string text;
    for (std::size_t level = 1; level < depth; ++level) {
        text += R"({"in":)";
    }
    return text + "{}" + std::string(depth - 1, '}');
}

std::string replyWithAttributes(const std::string& attributeValues) {
    return R"({"data":{"testGuid":"t","status":2,"group":{"guid":"g","basic":1,"attributeValues":)" + attributeValues +
           "}}}";
}

class QVLABTestParticipationTest : public QVLABTestManagerFixture {
protected:
    /// Makes a manager that is waiting for the replies about its tests, of which "t" participates.
    void ask() {
        writeCache(participating("1", kNow - 10000));
        makeManager();
        posts.clear();
        observation = QVLNotificationCenter::defaultCenter().addObserver(
            kQVLABTestManagerParticipatedNotification, manager, [this](const QVLNotification& notification) {
                posts.push_back(notification);
                cacheAtLastPost = cache();
            });
        networkChanges();
        ASSERT_EQ(asked(), environment->abtestGuids());
    }

    std::vector<QVLNotification> posts;
    std::string cacheAtLastPost;
    QVLToken observation;
};

} // namespace

TEST_F(QVLABTestParticipationTest, AsksAtTheServicesAddressWithLimitsAndFollowsNoRedirect) {
    ask();
    const QVLHTTPRequest& request = http->requests().back();
    EXPECT_EQ(request.url.text(), "https://abtest.example/third/abtest/api/participate/experiment");
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_EQ(request.responseBodyLimit, 256U * 1024U);
    EXPECT_FALSE(request.followsRedirects);
}

TEST_F(QVLABTestParticipationTest, SendsEmptyTextsForWhatIsUnknownAndNoHeaderWithoutAValue) {
    environment->setAppType(18446744073709551615U);
    makeManager();
    const QVLURL url = *QVLURL::fromString("https://abtest.example/");
    const QVLHTTPRequest request = manager->generateABTestRequestWithURL(url, std::nullopt);
    EXPECT_EQ(request.body,
              R"({"appType":18446744073709551615,"client":3,"deviceToken":"","testGuid":"","version":""})");
    EXPECT_TRUE(request.headers.empty());
    EXPECT_FALSE(manager->generateABTestRequestWithURL(url, "\xff").body);
}

TEST_F(QVLABTestParticipationTest, KeepsTheCredentialsOfTheAccountThatItWasGiven) {
    account->setUserAuthToken("old");
    makeManager();
    account->setUserAuthToken("new");
    const auto token = [this] {
        return manager->generateABTestRequestWithURL(*QVLURL::fromString("https://h/"), "t").headers.at(0).value;
    };
    EXPECT_EQ(token(), "old");
    manager->setAccount(account);
    EXPECT_EQ(token(), "new");
}

TEST_F(QVLABTestParticipationTest, SendsNothingWithoutAHostThatMakesAURL) {
    for (const auto& host : std::vector<std::optional<std::string>>{std::nullopt, "", "a b", "\n", "h\xc3\xa9"}) {
        environment->setAbtestHost(host);
        makeManager();
        manager->setReachability(nullptr);
        static_cast<void>(log->take());
        manager->participateIfNeeded();
        EXPECT_EQ(asked(), Guids());
        EXPECT_EQ(log->take(),
                  std::vector<std::string>{"error QVLABTestManager: ABTest: no service to ask about test: t, host: " +
                                           host.value_or("(null)")});
        EXPECT_EQ(stateOf("t"), "0 0 --");
    }
}

TEST_F(QVLABTestParticipationTest, TakesEveryReplyForWhatItIs) {
    constexpr const char* kAnswered = "1 now P-";
    constexpr const char* kNone = "0 now --";
    constexpr const char* kInvalid = "3 now --";
    constexpr const char* kWon = "2 1699990000 PW";
    constexpr int kTimedOut = -1;
    struct Row {
        int status;
        std::string body;
        const char* state;
        /// Whether the change is saved and posted.
        bool isPosted = true;
    };
    const std::vector<Row> rows = {
        {200, R"({"code":0,"data":{"testGuid":"t","status":1,"frequency":3,"startTime":"s","endTime":"",
                  "group":{"guid":"g","basic":1,"attributeValues":{"a":[1.5,null,"\u00e9"]}}}})",
         kAnswered},
        {200, R"({"code":5,"data":{"testGuid":"t","status":"2","group":{"guid":"g","basic":1}}})", kAnswered},
        {200, R"({"code":"68604","data":{"testGuid":"t","status":1.9}})", kAnswered},
        {200, R"({"code":1e300,"data":{"testGuid":"t","status":3}})", kAnswered},
        // About another test: an empty participant of this one.
        {200, R"({"code":0,"data":{"testGuid":"other","status":2,"group":{"guid":"g","basic":1}}})", kAnswered},
        {200, R"({"code":0,"data":{}})", kAnswered},
        {200, R"({"code":68604})", kInvalid},
        {200, R"({"code":68604.0,"data":{"testGuid":"t","status":2,"group":{"guid":"g","basic":1}}})", kInvalid},
        {200, R"({"data":{"testGuid":"t","status":2,"group":{"guid":"g","basic":1}}})", kWon},
        {200, R"({"data":{"testGuid":"t","status":2}})", kAnswered, false},
        {200, R"({"data":{"testGuid":"t","status":2,"group":{"guid":"g"}}})", kAnswered, false},
        {200, R"({"data":{"testGuid":"t","status":2,"group":[]}})", kAnswered, false},
        // As deep as the cache can hold, and deeper.
        {200, replyWithAttributes(nested(QVLABTestGroup::kMaximumAttributeDepth)), kWon},
        {200, replyWithAttributes(nested(QVLABTestGroup::kMaximumAttributeDepth + 1)), kAnswered, false},
        {200, replyWithAttributes(nested(30'000)), kNone},
        {200, R"({"code":0})", kNone},
        {200, R"({"code":0,"data":[]})", kNone},
        {200, R"({"code":0,"data":null})", kNone},
        {200, "[]", kNone},
        {200, R"({"data":{"testGuid":"t"})", kNone},
        {200, "{\"data\":{\"testGuid\":\"t\",\"startTime\":\"\xff\"}}", kNone},
        {200, "", kNone},
        {204, "", kNone},
        {307, R"({"data":{"testGuid":"t","status":1}})", kNone},
        {500, R"({"code":68604,"data":{"testGuid":"t","status":1}})", kNone},
        {201, R"({"data":{"testGuid":"t","status":1}})", kNone},
        {kTimedOut, "", kNone},
    };
    for (const Row& row : rows) {
        const std::string shown = std::to_string(row.status) + " " + row.body.substr(0, 120);
        ask();
        const std::string cacheBefore = cache();
        row.status == kTimedOut ? fail() : answer(row.status, row.body);
        EXPECT_EQ(stateOf("t"), row.state) << shown;
        EXPECT_EQ(posts.size(), row.isPosted ? 1U : 0U) << shown;
        EXPECT_EQ(cache() != cacheBefore, row.isPosted) << shown;
        // What was saved is what is read again.
        if (row.isPosted) {
            const QVLJSONDictionary saved = manager->testResults().at("t")->toJSON();
            makeManager();
            EXPECT_EQ(manager->testResults().at("t")->toJSON(), saved) << shown;
        }
    }
    EXPECT_EQ(log->take(), std::vector<std::string>());
}

TEST_F(QVLABTestParticipationTest, AnnouncesEveryResultAfterSavingThem) {
    environment->setAbtestGuids({"s", "t"});
    ask();
    answer(200, R"({"code":68604})");
    ASSERT_EQ(posts.size(), 1U);
    EXPECT_EQ(posts[0].sender, manager);
    EXPECT_EQ(posts[0].userInfo.size(), 2U);
    const auto* result = posts[0].value<std::shared_ptr<QVLABTestResult>>("t");
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, manager->testResults().at("t"));
    EXPECT_NE(cacheAtLastPost.find(R"("status":3)"), std::string::npos) << cacheAtLastPost;

    manager->didUpdateTestResult("t", /*postNotification=*/false);
    EXPECT_EQ(posts.size(), 1U);
}

TEST_F(QVLABTestParticipationTest, MayBeDroppedByWhoHearsOfAChange) {
    ask();
    observation = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLABTestManagerParticipatedNotification, [this](const QVLNotification&) { manager.reset(); });
    answer(200, R"({"code":68604})");
    EXPECT_FALSE(manager);
    EXPECT_NE(cache().find(R"("status":3)"), std::string::npos);
}

TEST_F(QVLABTestParticipationTest, HandsOverErrorsWithADomainACodeAndAMessage) {
    struct Row {
        int status;
        const char* body;
        QVLError error;
    };
    const std::vector<Row> rows = {
        {500, "", {QVLABTestErrorDomain, 1, "No data"}},
        {404, "{}", {QVLABTestErrorDomain, 2, "Invalid response code"}},
        {200, "[1]", {QVLABTestErrorDomain, 3, "Cannot get valid json response"}},
    };
    makeManager();
    std::optional<QVLError> received;
    const auto send = [&] {
        received.reset();
        manager->request(
            {.url = *QVLURL::fromString("https://h/")},
            [&](std::int64_t code, const std::optional<QVLJSONDictionary>& data, const std::optional<QVLError>& error) {
                EXPECT_EQ(code, 0);
                EXPECT_FALSE(data);
                received = error;
            });
    };
    for (const Row& row : rows) {
        send();
        answer(row.status, row.body);
        EXPECT_EQ(received, row.error) << row.status << " " << row.body;
    }
    send();
    fail();
    EXPECT_EQ(received, (QVLError{kQVLHTTPErrorDomain, 3, "too late"}));
    manager->request({.url = *QVLURL::fromString("https://h/")}, {});
    answer(200, "{}");
}
