#pragma once

#include "QVLABTestResult.h"
#include "QVLError.h"
#include "QVLToken.h"
#include "QVLURL.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

class QVLAccount;
class QVLHTTPSession;
class QVLQuorvelEnvironment;
class QVLReachability;
struct QVLHTTPRequest;
struct QVLNotification;
struct QVLPlatform;

/// Posted on the default notification centre after a result changed and was saved. The sender is the manager; the user
/// info holds every result, a `std::shared_ptr<QVLABTestResult>`, under the guid of its test.
inline constexpr const char* kQVLABTestManagerParticipatedNotification = "kQVLABTestManagerParticipatedNotification";

/// Directory of the cache inside the account's directory; the engine's own.
inline constexpr const char* kQVLABTestDirectory = "quorvel";
inline constexpr const char* kQVLABTestCacheFile = "ABTestResultsCache.json";

/// Code of a service's reply that declares a test invalid.
inline constexpr std::int64_t kQVLABTestInvalidatedServiceCode = 68604;

/// Domain of the errors that the manager itself makes, and their codes. A failed transfer keeps the session's own
/// error.
inline constexpr const char* QVLABTestErrorDomain = "com.quorvel.abtest";
/// "No data": the reply has no body.
inline constexpr int QVLABTestErrorNoData = 1;
/// "Invalid response code": the status is not 200.
inline constexpr int QVLABTestErrorInvalidResponseCode = 2;
/// "Cannot get valid json response": the body is no JSON object.
inline constexpr int QVLABTestErrorInvalidJSON = 3;

/// Takes part in the environment's A/B tests for one account.
///
/// Asks the service over HTTPS which group the user is in, asks again as often as the service wants until a test is
/// decided or invalid, remembers the answers, and announces every change. It asks when the network's state changes and
/// once an hour, never while the service's host cannot be reached, and about a test never again before the reply about
/// it has arrived. A request that fails in any way, a redirect included, counts as an answer without a participant: the
/// test is asked about again after an hour.
///
/// Thread: main, for every operation, notification and completion.
///
/// Owner: the account's engine, which calls `tearDown` when it goes away. Dropping the manager ends its requests.
///
/// On disk: "ABTestResultsCache.json" in the subdirectory "quorvel" of the account's directory, one JSON object from
/// test guid to result, rewritten whole at every change and holding the registered tests only. Without a directory
/// nothing is kept, and each attempt logged.
class QVL_EXPORT QVLABTestManager final : public QVLObject, public std::enable_shared_from_this<QVLABTestManager> {
public:
    /// Results by test guid.
    using TestResults = std::map<std::string, std::shared_ptr<QVLABTestResult>>;
    /// What a request came to. The code is the reply's own, 0 when it has none; the data is its "data" object.
    using Completion = std::function<void(std::int64_t code, const std::optional<QVLJSONDictionary>& data,
                                          const std::optional<QVLError>& error)>;

    /// Reads the cache, registers the environment's tests, saves the cache and watches the network. Sends nothing yet.
    [[nodiscard]] static std::shared_ptr<QVLABTestManager>
    initWithEnvironment(const std::shared_ptr<QVLQuorvelEnvironment>& environment,
                        const std::shared_ptr<QVLAccount>& account);
    ~QVLABTestManager() override;

    /// Stops watching the network and the hourly timer. A reply that arrives later still counts.
    void tearDown();

    [[nodiscard]] const std::shared_ptr<QVLQuorvelEnvironment>& environment() const { return m_environment; }

    /// A copy made when the account was set: what the host changes later in its own, it hands over with `setAccount`.
    [[nodiscard]] const std::shared_ptr<QVLAccount>& account() const { return m_account; }
    void setAccount(const std::shared_ptr<QVLAccount>& account);

    /// The registered tests, none twice.
    [[nodiscard]] const std::set<std::string>& testGuids() const { return m_testGuids; }
    void setTestGuids(std::set<std::string> testGuids) { m_testGuids = std::move(testGuids); }

    /// One result for each registered test.
    [[nodiscard]] const TestResults& testResults() const { return m_testResults; }
    void setTestResults(TestResults testResults) { m_testResults = std::move(testResults); }

    /// Takes part in these tests and no others: known ones keep their results, new ones start unknown. A guid that is
    /// no UTF-8 text is left out, after one error line. Starts the timer, or stops it when there are none. Neither
    /// saves nor posts.
    void registerABTests(const std::vector<std::string>& testGuids);

    // --- Periodic passes -------------------------------------------------------------------------------------------

    /// Asks about each test that is neither decided nor invalid and was last checked longer ago than its interval: an
    /// hour without a participant, else by the participant's frequency. Does nothing while the host cannot be reached.
    void participateIfNeeded();
    /// Calls `checkWinGroup` for each test that is neither decided nor invalid, and stops the timer when there is none.
    /// Does nothing while the host cannot be reached.
    void checkWinGroupIfNeeded();
    /// Does nothing; kept as the place for a question of its own about the winning group.
    void checkWinGroup(const std::shared_ptr<QVLABTestResult>& result);

    /// Makes the passes hourly from now on; without results there is no timer.
    void startTimer();
    void stopTimer();
    void timerFired();
    /// Holds something while the timer runs.
    [[nodiscard]] const QVLToken& timer() const { return m_timer; }
    void setTimer(QVLToken timer) { m_timer = std::move(timer); }

    // --- Network ---------------------------------------------------------------------------------------------------

    /// Watches the environment's A/B host, in place of what was watched before; without a host the network counts as
    /// there. A host that is no bare host name is watched all the same, after one error line.
    void setupReachability();
    /// Makes the passes in the timer's reverse order.
    void reachabilityChanged(const QVLNotification& notification);
    void tearDownReachability();
    /// What tells whether the host can be reached, or null.
    [[nodiscard]] const std::shared_ptr<QVLReachability>& reachability() const { return m_reachability; }
    /// Stops the old one's notifier. The new one is asked, but not observed; that is what `setupReachability` does.
    void setReachability(std::shared_ptr<QVLReachability> reachability);

    /// Asks the service about one test. The result changes when the reply arrives; a change is saved and posted.
    /// Does nothing while a request about a test of this guid is under way, so that an old answer never replaces a
    /// newer one. Without a host that makes a URL nothing is sent, after one error line.
    void participate(const std::shared_ptr<QVLABTestResult>& result);

    /// Saves the results and, if asked to, posts "kQVLABTestManagerParticipatedNotification".
    void didUpdateTestResult(const std::string& testGuid, bool postNotification);

    /// The request for participation in a test, with the account's credentials, which no redirect may carry elsewhere.
    /// It has no content type, which is what the service expects. A body that cannot be written as JSON is left out.
    [[nodiscard]] QVLHTTPRequest generateABTestRequestWithURL(const QVLURL& url,
                                                              const std::optional<std::string>& guid) const;

    /// Sends a request and hands over what came of it, once, never inside this call; never after the manager has gone.
    /// The completion may be empty.
    void request(const QVLHTTPRequest& request, Completion completion);

    /// Carries the requests; made on first use.
    [[nodiscard]] const std::shared_ptr<QVLHTTPSession>& urlSession();

    // --- Cache -----------------------------------------------------------------------------------------------------

    /// The cache's directory, made when missing with its parents; a file in its place is removed. Trouble with either
    /// is logged, and the path is answered all the same. Empty, like the file's path, when the account has no
    /// directory.
    [[nodiscard]] std::string directoryPath() const;
    [[nodiscard]] std::string cacheFilePath() const;
    /// Writes all results; failures are logged.
    void saveTestResults() const;
    /// Replaces the results with those of the file. A missing or unreadable file gives none, and a value that is no
    /// result is left out.
    void readTestResults();

    [[nodiscard]] std::string className() const override { return "QVLABTestManager"; }

private:
    QVLABTestManager(std::shared_ptr<QVLQuorvelEnvironment> environment, const std::shared_ptr<QVLAccount>& account);
    [[nodiscard]] bool isHostReachable() const;
    [[nodiscard]] bool isDue(const QVLABTestResult& result) const;
    void applyReply(QVLABTestResult& result, std::int64_t code, const std::optional<QVLJSONDictionary>& data);

    const std::shared_ptr<const QVLPlatform> m_platform;
    const std::shared_ptr<QVLQuorvelEnvironment> m_environment;
    std::shared_ptr<QVLAccount> m_account;
    TestResults m_testResults;
    std::set<std::string> m_testGuids;
    std::shared_ptr<QVLReachability> m_reachability;
    QVLToken m_reachabilityObservation;
    QVLToken m_timer;
    std::shared_ptr<QVLHTTPSession> m_urlSession;
    /// The guids of the tests that a request for participation is under way for.
    std::set<std::string> m_testsBeingAsked;
    /// Requests under way, by the order of sending.
    std::map<std::uint64_t, QVLToken> m_requests;
    std::uint64_t m_nextRequest = 0;
};
