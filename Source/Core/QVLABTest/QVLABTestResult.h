#pragma once

#include "QVLABTestParticipant.h"

#include <cstdint>

class QVLClock;

/// Where an A/B test stands for the account.
enum class QVLABTestStatus : std::uint64_t {
    /// Never asked, or the last request brought no participant.
    QVLABTestStatusUnknown = 0,
    /// A participant is held; its group is the user's.
    QVLABTestStatusParticipating = 1,
    /// Decided: there is a winning group. Final but for `invalidate`.
    QVLABTestStatusWinGroup = 2,
    /// The service declared the test invalid. Final.
    QVLABTestStatusInvalid = 3,
};
using enum QVLABTestStatus;

/// The library's standing knowledge of one A/B test. Main thread; owned by the A/B test manager, which alone changes
/// it.
///
/// The group that counts is `winGroup`, or without one the participant's group.
class QVL_EXPORT QVLABTestResult final : public QVLObject {
public:
    /// A test that was never asked about.
    [[nodiscard]] static std::shared_ptr<QVLABTestResult> initWithTestGuid(const std::string& testGuid);

    /// The result that one value of the cache file describes, or null, silently, when it has no "testGuid" of text.
    /// Anything else that does not fit gives a test that was never asked about: a member of a wrong type, an unknown
    /// status, status 1 without a participant, status 2 without a winning group. A check time beyond 64 bits is 0.
    [[nodiscard]] static std::shared_ptr<QVLABTestResult> resultWithJSON(const QVLJSONValue& JSON);

    /// Takes over an answer of the service, null for none: participating with it, unknown without it, and checked now.
    /// False, without any effect, when the test is decided or invalid.
    [[nodiscard]] bool onParticipant(std::shared_ptr<QVLABTestParticipant> participant);

    /// Takes over the winning group: decided, with the check time as it was. Null only sets the check time to now and
    /// answers false. False, without any effect, when the test is decided or invalid.
    [[nodiscard]] bool onWinGroup(std::shared_ptr<QVLABTestGroup> group);

    /// Declares the test invalid, also a decided one, and forgets participant and winning group; checked now. Always
    /// true.
    [[nodiscard]] bool invalidate();

    /// Sets the check time to now.
    void updateCheckDate();

    /// The members "testGuid", "status" and "lastCheckTime", and "participant" and "winGroup" only when set.
    [[nodiscard]] QVLJSONDictionary toJSON() const;

    [[nodiscard]] const std::string& testGuid() const { return m_testGuid; }
    [[nodiscard]] QVLABTestStatus status() const { return m_status; }
    /// The participant last taken over, or null.
    [[nodiscard]] const std::shared_ptr<QVLABTestParticipant>& participant() const { return m_participant; }
    /// When the service was last asked, in whole seconds since 1970; 0 for never.
    [[nodiscard]] std::int64_t lastCheckTime() const { return m_lastCheckTime; }
    /// The winning group once the test is decided, else null.
    [[nodiscard]] const std::shared_ptr<QVLABTestGroup>& winGroup() const { return m_winGroup; }

    [[nodiscard]] std::string className() const override { return "QVLABTestResult"; }

private:
    explicit QVLABTestResult(std::string testGuid);
    void readMembers(const QVLJSONDictionary& members);
    [[nodiscard]] bool isFinal() const;

    const std::shared_ptr<const QVLClock> m_clock;
    const std::string m_testGuid;
    QVLABTestStatus m_status = QVLABTestStatusUnknown;
    std::shared_ptr<QVLABTestParticipant> m_participant;
    std::int64_t m_lastCheckTime = 0;
    std::shared_ptr<QVLABTestGroup> m_winGroup;
};
