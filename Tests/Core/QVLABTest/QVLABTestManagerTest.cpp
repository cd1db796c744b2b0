#include "QVLABTestManagerFixture.h"

#include <gmock/gmock.h>

namespace {

using namespace std::chrono_literals;

using QVLABTestManagerTest = QVLABTestManagerFixture;

/// Tells of each request and answers none.
class ObservedSession final : public QVLHTTPSession {
public:
    explicit ObservedSession(std::function<void()> observer) : m_observer(std::move(observer)) {}
    QVLToken start(QVLHTTPRequest /*request*/, Completion /*completion*/) override {
        m_observer();
        return {};
    }
    void invalidateAndCancel() override {}

private:
    const std::function<void()> m_observer;
};

constexpr const char* kDecided = R"("status":2,"winGroup":{"guid":"g","basic":true})";

} // namespace

TEST_F(QVLABTestManagerTest, AsksAgainOnlyWhenMoreThanTheIntervalHasPassed) {
    const std::vector<std::pair<std::string, std::chrono::seconds>> rows = {
        {cacheOf(R"("status":0)"), 3600s}, {participating("1"), 3600s},     {participating("2"), 86400s},
        {participating("3"), 2592000s},    {participating("0"), 86400s},    {participating("4"), 86400s},
        {participating("-1"), 86400s},     {participating("null"), 86400s},
    };
    for (const auto& [text, interval] : rows) {
        writeCache(text);
        makeManager();
        for (const auto before : {-1s, 0s, 1s, interval - 1s, interval}) {
            platform.runLoop->setNow(QVLDate(std::chrono::seconds(kNow) + before));
            manager->participateIfNeeded();
            EXPECT_EQ(asked(), Guids()) << text << " after " << before.count();
        }
        platform.runLoop->setNow(QVLDate(std::chrono::seconds(kNow) + interval + 1us));
        manager->participateIfNeeded();
        EXPECT_EQ(asked(), Guids{"t"}) << text;
    }
}

TEST_F(QVLABTestManagerTest, NeverAsksAboutADecidedOrInvalidTest) {
    for (const std::string& text : {cacheOf(kDecided), cacheOf(R"("status":3)")}) {
        writeCache(text);
        makeManager();
        platform.runLoop->setNow(QVLDate(std::chrono::seconds(kNow) + 24h * 4000));
        manager->timerFired();
        networkChanges();
        EXPECT_EQ(asked(), Guids()) << text;
    }
}

TEST_F(QVLABTestManagerTest, SendsNothingWhenMadeAndAsksAboutNewTestsAtTheFirstTickAndThenHourly) {
    environment->setAbtestGuids({"b", "a", "b"});
    makeManager();
    platform.runLoop->advance(3599s);
    EXPECT_EQ(asked(), Guids());
    platform.runLoop->advance(1s);
    EXPECT_EQ(asked(), (Guids{"a", "b"}));
    answer(0, 500, "");
    answer(1, 500, "");
    platform.runLoop->advance(3600s);
    EXPECT_EQ(asked(), (Guids{"a", "b"}));
}

TEST_F(QVLABTestManagerTest, NeverAsksAboutATestAgainBeforeItsReplyHasArrived) {
    environment->setAbtestGuids({"a", "b"});
    makeManager();
    networkChanges();
    EXPECT_EQ(asked(), (Guids{"a", "b"}));
    networkChanges();
    manager->participate(manager->testResults().at("a"));
    answer(1, 500, "");
    platform.runLoop->advance(24h);
    EXPECT_EQ(asked(), Guids{"b"});
    answer(0, 200, R"({"data":{"testGuid":"a","frequency":1}})");
    EXPECT_EQ(stateOf("a"), "1 now P-");
    platform.runLoop->advance(1h);
    EXPECT_EQ(asked(), Guids{"a"});
}

TEST_F(QVLABTestManagerTest, KeepsQuietWhileTheHostCannotBeReached) {
    makeManager();
    setReachable(false);
    platform.runUntilIdle();
    manager->timerFired();
    EXPECT_EQ(asked(), Guids());
    EXPECT_EQ(stateOf("t"), "0 0 --");
    setReachable(true);
    platform.runUntilIdle();
    EXPECT_EQ(asked(), Guids{"t"});

    EXPECT_TRUE(manager->testResults().at("t")->invalidate());
    setReachable(false);
    manager->timerFired();
    EXPECT_TRUE(manager->timer()) << "the second pass has the gate too";
}

TEST_F(QVLABTestManagerTest, AsksBeforeItLooksForUndecidedTestsAtATickAndAfterwardsWhenTheNetworkChanges) {
    // Asking settles the only test, so the order of the passes shows in whether the timer goes on.
    platform.makeHTTPSession = [this] {
        return std::make_shared<ObservedSession>([this] { EXPECT_TRUE(manager->testResults().at("t")->invalidate()); });
    };
    platform.install();
    makeManager();
    manager->timerFired();
    EXPECT_FALSE(manager->timer());

    writeCache("{}");
    makeManager();
    networkChanges();
    EXPECT_EQ(manager->testResults().at("t")->status(), QVLABTestStatusInvalid);
    EXPECT_TRUE(manager->timer());
}

TEST_F(QVLABTestManagerTest, TicksOnlyWhileATestIsUndecided) {
    environment->setAbtestGuids({});
    makeManager();
    EXPECT_EQ(platform.runLoop->timerCount(), 0U);
    EXPECT_EQ(cache(), "{}");

    manager->registerABTests({"t"});
    manager->startTimer();
    EXPECT_EQ(platform.runLoop->timerCount(), 1U);
    EXPECT_TRUE(manager->testResults().at("t")->invalidate());
    platform.runLoop->advance(3600s);
    EXPECT_EQ(platform.runLoop->timerCount(), 0U);
    EXPECT_FALSE(manager->timer());

    manager->registerABTests({"t", "new"});
    EXPECT_EQ(platform.runLoop->timerCount(), 1U);
    manager->registerABTests({});
    EXPECT_EQ(platform.runLoop->timerCount(), 0U);
}

TEST_F(QVLABTestManagerTest, RegistersTheListedTestsWithWhatIsKnownOfThem) {
    // A result is found under the file's key and saved under its own guid.
    writeCache(R"({"kept":{"testGuid":"inner","status":3,"lastCheckTime":1699999990},
                   "dropped":{"testGuid":"dropped","status":3}})");
    environment->setAbtestGuids({"kept", "new", "\xff", "kept"});
    makeManager();
    EXPECT_EQ(log->take(),
              std::vector<std::string>{"error QVLABTestManager: ABTest: guid of a test is no UTF-8 text: \xff"});
    EXPECT_EQ(manager->testGuids(), (std::set<std::string>{"kept", "new"}));
    EXPECT_EQ(manager->testResults().size(), 2U);
    EXPECT_EQ(stateOf("kept"), "3 1699999990 --");
    EXPECT_EQ(stateOf("new"), "0 0 --");
    EXPECT_EQ(cache(), R"({"inner":{"lastCheckTime":1699999990,"status":3,"testGuid":"inner"},)"
                       R"("new":{"lastCheckTime":0,"status":0,"testGuid":"new"}})");
}

TEST_F(QVLABTestManagerTest, StaysSilentOnceTornDownButTakesALateReply) {
    makeManager();
    const auto reachability = manager->reachability();
    networkChanges();
    EXPECT_EQ(asked(), Guids{"t"});
    manager->tearDown();
    EXPECT_EQ(platform.runLoop->timerCount(), 0U);
    QVLNotificationCenter::defaultCenter().post(
        {.name = kQVLReachabilityChangedNotification, .sender = reachability, .userInfo = {}});
    EXPECT_EQ(asked(), Guids());

    answer(200, R"({"data":{"testGuid":"t"}})");
    EXPECT_EQ(stateOf("t"), "1 now P-");
}

TEST_F(QVLABTestManagerTest, LeavesNothingBehindWhenDropped) {
    makeManager();
    const std::weak_ptr<QVLReachability> reachability = manager->reachability();
    networkChanges();
    manager.reset();
    EXPECT_EQ(http->pendingCount(), 0U);
    answer(200, R"({"data":{"testGuid":"t"}})");
    platform.runUntilIdle();
    EXPECT_TRUE(reachability.expired());
    EXPECT_FALSE(platform.reachability.targets().back()->isWatched());
    EXPECT_EQ(platform.runLoop->timerCount(), 0U);
    EXPECT_EQ(cache(), R"({"t":{"lastCheckTime":0,"status":0,"testGuid":"t"}})");
}

TEST_F(QVLABTestManagerTest, LogsAHostThatIsMoreThanABareName) {
    for (const char* host : {"abtest.example", "192.0.2.1"}) {
        environment->setAbtestHost(host);
        makeManager();
        EXPECT_EQ(log->take(), std::vector<std::string>()) << host;
    }
    for (const std::string host :
         {"", "a b", "https://abtest.example", "abtest.example:8443", "abtest.example/path", "user@abtest.example"}) {
        environment->setAbtestHost(host);
        makeManager();
        EXPECT_EQ(log->take(),
                  std::vector<std::string>{"error QVLABTestManager: ABTest: not a bare host name: " + host});
    }
}

TEST_F(QVLABTestManagerTest, LivesToTheEndOfACallInWhichTheLoggerDropsIt) {
    using Call = void (*)(QVLABTestManager&);
    const std::vector<Call> calls = {
        [](QVLABTestManager& called) { called.participateIfNeeded(); },
        [](QVLABTestManager& called) { called.timerFired(); },
        [](QVLABTestManager& called) { called.reachabilityChanged({.name = "", .sender = {}, .userInfo = {}}); },
        [](QVLABTestManager& called) { called.didUpdateTestResult("a", /*postNotification=*/true); },
        [](QVLABTestManager& called) {
            called.registerABTests({"\xff", "c"});
        },
        [](QVLABTestManager& called) { called.setupReachability(); },
        [](QVLABTestManager& called) { called.readTestResults(); },
    };
    environment->setAbtestGuids({"a", "b"});
    for (std::size_t index = 0; index < calls.size(); ++index) {
        writeCache("{}");
        makeManager();
        const std::weak_ptr<QVLABTestManager> observed = manager;
        int lines = 0;
        log->whenLogging = [&] {
            manager.reset();
            EXPECT_FALSE(observed.expired()) << index;
            ++lines;
        };
        environment->setAbtestHost("a b");
        platform.fileManager->writeFault = FaultyFileManager::always("full");
        platform.fileManager->readFault = FaultyFileManager::always("torn");
        calls[index](*manager);
        EXPECT_GT(lines, 0) << index;
        EXPECT_TRUE(observed.expired()) << index;
        log->whenLogging = [] {};
        environment->setAbtestHost("abtest.example");
        platform.fileManager->writeFault = nullptr;
        platform.fileManager->readFault = nullptr;
    }
}

TEST_F(QVLABTestManagerTest, MakesTheCacheDirectoryWithItsParentsAndInPlaceOfAFile) {
    account->setAccountDirectory(directory.path("deep/account"));
    makeManager();
    EXPECT_TRUE(std::filesystem::exists(directory.path("deep/account/quorvel/ABTestResultsCache.json")));

    account->setAccountDirectory(directory.path());
    std::ofstream(directory.path("quorvel")) << "in the way";
    makeManager();
    EXPECT_TRUE(std::filesystem::exists(cachePath()));
    EXPECT_EQ(log->take(), std::vector<std::string>());
}

TEST_F(QVLABTestManagerTest, KeepsNoFileWithoutAnAccountDirectory) {
    platform.fileManager->createDirectoryFault = [](const std::string& path) {
        ADD_FAILURE() << path;
        return "refused";
    };
    account->setAccountDirectory("");
    for (const auto& without : {account, std::shared_ptr<QVLAccount>()}) {
        manager = QVLABTestManager::initWithEnvironment(environment, without);
        EXPECT_EQ(manager->directoryPath(), "");
        EXPECT_EQ(manager->cacheFilePath(), "");
        EXPECT_EQ(stateOf("t"), "0 0 --");
        EXPECT_THAT(log->take(),
                    testing::ElementsAre(testing::StartsWith("error QVLJSONStore: Could not save file: '', error: ")));
    }
}

TEST_F(QVLABTestManagerTest, LogsTroubleWithTheCacheDirectoryAndGoesOn) {
    std::ofstream(directory.path("quorvel")) << "in the way";
    platform.fileManager->removeFault = FaultyFileManager::always("stuck");
    platform.fileManager->createDirectoryFault = FaultyFileManager::always("full");
    makeManager();
    EXPECT_EQ(stateOf("t"), "0 0 --");
    static_cast<void>(log->take());
    EXPECT_EQ(manager->directoryPath(), directory.path("quorvel"));
    const std::string path = directory.path("quorvel");
    EXPECT_EQ(log->take(),
              (std::vector<std::string>{
                  "error QVLABTestManager: ABTest: removeItemAtPath: " + path + " returned error: stuck",
                  "error QVLABTestManager: ABTest: createDirectoryAtPath: " + path + " returned error: full"}));
}

TEST_F(QVLABTestManagerTest, TakesWhatIsUsableOfACacheFile) {
    const std::vector<std::pair<std::string, std::string>> rows = {
        {cacheOf(kDecided), "2 now -W"},
        {R"({"t":{"status":3}})", "0 0 --"},
        {"[{}]", "0 0 --"},
        {"\xff", "0 0 --"},
    };
    for (const auto& [text, expected] : rows) {
        writeCache(text);
        makeManager();
        EXPECT_EQ(stateOf("t"), expected) << text;
    }
}
