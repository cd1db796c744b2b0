#include "QVLABTestManagerFixture.h"

namespace {

using namespace std::chrono_literals;

using QVLABTestManagerTest = QVLABTestManagerFixture;

/// A cache of one test, checked last at `kNow`.
std::string cacheOf(const std::string& members) {
    return R"({"t":{"testGuid":"t","lastCheckTime":1700000000,)" + members + "}}";
}

std::string participating(const std::string& frequency) {
    return cacheOf(R"("status":1,"participant":{"testGuid":"t","frequency":)" + frequency + "}");
}

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

const std::string kDecided = cacheOf(R"("status":2,"winGroup":{"guid":"g","basic":true})");

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
    for (const std::string& text : {kDecided, cacheOf(R"("status":3)")}) {
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
    platform.runLoop->advance(3600s);
    EXPECT_EQ(asked(), (Guids{"a", "b"}));
}

TEST_F(QVLABTestManagerTest, KeepsQuietWhileTheHostCannotBeReached) {
    makeManager();
    setReachable(false);
    platform.runUntilIdle();
    manager->timerFired();
    EXPECT_EQ(asked(), Guids());
    EXPECT_EQ(stateOf("t"), "0 1700000000 --");
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
    session = std::make_shared<ObservedSession>([this] { EXPECT_TRUE(manager->testResults().at("t")->invalidate()); });
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
    environment->setAbtestGuids({"kept", "new", "kept"});
    makeManager();
    EXPECT_EQ(manager->testGuids(), (std::set<std::string>{"kept", "new"}));
    EXPECT_EQ(manager->testResults().size(), 2U);
    EXPECT_EQ(stateOf("kept"), "3 10 --");
    EXPECT_EQ(stateOf("new"), "0 1700000000 --");
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
    EXPECT_FALSE(network.targets().back()->isWatched());
    EXPECT_EQ(platform.runLoop->timerCount(), 0U);
    EXPECT_EQ(cache(), R"({"t":{"lastCheckTime":0,"status":0,"testGuid":"t"}})");
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

TEST_F(QVLABTestManagerTest, LogsTroubleWithTheCacheDirectoryAndGoesOn) {
    std::ofstream(directory.path("quorvel")) << "in the way";
    platform.fileManager->removeFault = FaultyFileManager::always("stuck");
    platform.fileManager->createDirectoryFault = FaultyFileManager::always("full");
    makeManager();
    EXPECT_EQ(stateOf("t"), "0 1700000000 --");
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
        {kDecided, "2 now -W"},
        {R"({"t":{"testGuid":"t","status":3,"lastCheckTime":-1e999}})", "0 1700000000 --"},
        {R"({"t":{"status":3}})", "0 1700000000 --"},
        {R"({"t":[]})", "0 1700000000 --"},
        {R"({"t":null})", "0 1700000000 --"},
        {"[{}]", "0 1700000000 --"},
        {"\"t\"", "0 1700000000 --"},
        {"{\"t\":", "0 1700000000 --"},
        {"\xff", "0 1700000000 --"},
        {"", "0 1700000000 --"},
    };
    for (const auto& [text, expected] : rows) {
        writeCache(text);
        makeManager();
        EXPECT_EQ(stateOf("t"), expected) << text;
    }
}
