#include "QVLABTestManager.h"

#include "QVLAccount.h"
#include "QVLLogMacros.h"
#include "QVLNotificationCenter.h"
#include "QVLPlatform.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLReachability.h"
#include "QVLUTF8.h"

#include <chrono>
#include <utility>

namespace {

constexpr QVLTimeInterval kTimerInterval = std::chrono::hours(1);
constexpr QVLTimeInterval kCheckIntervalWithoutParticipant = std::chrono::hours(1);

[[nodiscard]] QVLTimeInterval checkInterval(QVLABTestFrequency frequency) {
    switch (frequency) {
    case QVLABTestFrequencyHourly:
        return std::chrono::hours(1);
    case QVLABTestFrequencyMonthly:
        return std::chrono::hours(24 * 30);
    case QVLABTestFrequencyDaily:
    default:
        return std::chrono::hours(24);
    }
}

[[nodiscard]] bool isUndecided(const QVLABTestResult& result) {
    return result.status() < QVLABTestStatusWinGroup;
}

[[nodiscard]] std::shared_ptr<QVLAccount> copyOf(const std::shared_ptr<QVLAccount>& account) {
    return account ? account->copy() : QVLAccount::init();
}

/// Whether it is a host's name and no more, so that an address made with it leads there.
[[nodiscard]] bool isBareHostName(const std::string& text) {
    const std::optional<QVLURL> url = QVLURL::fromString("https://" + text + "/");
    return url && url->host() == text;
}

} // namespace

std::shared_ptr<QVLABTestManager>
QVLABTestManager::initWithEnvironment(const std::shared_ptr<QVLQuorvelEnvironment>& environment,
                                      const std::shared_ptr<QVLAccount>& account) {
    std::shared_ptr<QVLABTestManager> manager(new QVLABTestManager(environment, account));
    manager->readTestResults();
    manager->registerABTests(environment->abtestGuids());
    // The cache now holds the registered tests and no others.
    manager->saveTestResults();
    manager->setupReachability();
    return manager;
}

QVLABTestManager::QVLABTestManager(std::shared_ptr<QVLQuorvelEnvironment> environment,
                                   const std::shared_ptr<QVLAccount>& account)
    : m_platform(QVLPlatform::current()), m_environment(std::move(environment)), m_account(copyOf(account)) {}

QVLABTestManager::~QVLABTestManager() {
    // A notifier that runs keeps the reachability object alive.
    tearDown();
}

void QVLABTestManager::tearDown() {
    tearDownReachability();
    stopTimer();
}

void QVLABTestManager::setAccount(const std::shared_ptr<QVLAccount>& account) {
    m_account = copyOf(account);
}

void QVLABTestManager::registerABTests(const std::vector<std::string>& testGuids) {
    const auto self = shared_from_this();
    std::set<std::string> guids;
    for (const std::string& guid : testGuids) {
        if (qvl::isValidUTF8(guid)) {
            guids.insert(guid);
        } else {
            // One such name would make the whole cache unwritable.
            QVL_LOG_ERROR(this, "ABTest: guid of a test is no UTF-8 text: %@", guid);
        }
    }
    m_testGuids = std::move(guids);
    TestResults registered;
    for (const std::string& guid : m_testGuids) {
        const auto known = m_testResults.find(guid);
        registered.emplace(guid,
                           known != m_testResults.end() ? known->second : QVLABTestResult::initWithTestGuid(guid));
    }
    m_testResults = std::move(registered);
    startTimer();
}

void QVLABTestManager::participateIfNeeded() {
    const auto self = shared_from_this();
    if (!isHostReachable()) {
        return;
    }
    // A copy, since a logger may call back and register other tests.
    for (const auto& [guid, result] : TestResults(m_testResults)) {
        if (isDue(*result)) {
            participate(result);
        }
    }
}

void QVLABTestManager::checkWinGroupIfNeeded() {
    if (!isHostReachable()) {
        return;
    }
    bool hasUndecided = false;
    for (const auto& [guid, result] : m_testResults) {
        if (isUndecided(*result)) {
            checkWinGroup(result);
            hasUndecided = true;
        }
    }
    if (!hasUndecided) {
        stopTimer();
    }
}

void QVLABTestManager::checkWinGroup(const std::shared_ptr<QVLABTestResult>& /*result*/) {}

void QVLABTestManager::startTimer() {
    stopTimer();
    if (m_testResults.empty()) {
        return;
    }
    m_timer = m_platform->mainRunLoop->performRepeatedly(kTimerInterval, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) {
            self->timerFired();
        }
    });
}

void QVLABTestManager::stopTimer() {
    m_timer.reset();
}

void QVLABTestManager::timerFired() {
    const auto self = shared_from_this();
    participateIfNeeded();
    checkWinGroupIfNeeded();
}

void QVLABTestManager::setupReachability() {
    const auto self = shared_from_this();
    tearDownReachability();
    const std::optional<std::string> host = m_environment->abtestHost();
    if (host && !isBareHostName(*host)) {
        QVL_LOG_ERROR(this, "ABTest: not a bare host name: %@", host);
    }
    m_reachability = host ? QVLReachability::reachabilityWithHostName(*host) : nullptr;
    if (!m_reachability) {
        return;
    }
    m_reachabilityObservation = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLReachabilityChangedNotification, m_reachability,
        [weakSelf = weak_from_this()](const QVLNotification& notification) {
            if (const auto living = weakSelf.lock()) {
                living->reachabilityChanged(notification);
            }
        });
    m_reachability->startNotifier();
}

void QVLABTestManager::reachabilityChanged(const QVLNotification& /*notification*/) {
    const auto self = shared_from_this();
    // Other way round than the timer, on purpose.
    checkWinGroupIfNeeded();
    participateIfNeeded();
}

void QVLABTestManager::tearDownReachability() {
    setReachability(nullptr);
}

void QVLABTestManager::setReachability(std::shared_ptr<QVLReachability> reachability) {
    m_reachabilityObservation.reset();
    if (const auto old = std::exchange(m_reachability, std::move(reachability))) {
        old->stopNotifier();
    }
}

bool QVLABTestManager::isHostReachable() const {
    return !m_reachability || m_reachability->currentReachabilityStatus() != QVLNotReachable;
}

bool QVLABTestManager::isDue(const QVLABTestResult& result) const {
    if (!isUndecided(result)) {
        return false;
    }
    const auto& participant = result.participant();
    const QVLTimeInterval interval =
        participant ? checkInterval(participant->frequency()) : kCheckIntervalWithoutParticipant;
    // In doubles, since the check time of a damaged cache may be any number.
    const QVLTimeInterval elapsed =
        QVLTimeInterval(m_platform->clock->now().time_since_epoch()) - QVLTimeInterval(double(result.lastCheckTime()));
    return elapsed > interval;
}
