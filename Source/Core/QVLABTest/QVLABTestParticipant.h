#pragma once

#include "QVLABTestGroup.h"

#include <cstdint>

/// How often the service wants to be asked about a test. Any other value means daily.
using QVLABTestFrequency = std::uint64_t;
inline constexpr QVLABTestFrequency QVLABTestFrequencyHourly = 1;
inline constexpr QVLABTestFrequency QVLABTestFrequencyDaily = 2;
inline constexpr QVLABTestFrequency QVLABTestFrequencyMonthly = 3;

/// Participant status of a decided test: the group is the winning one. No other value is interpreted.
inline constexpr std::uint64_t kQVLABTestParticipantStatusDecided = 2;

/// The service's answer to one request for participation in one A/B test. Main thread; owned by the result of the test.
class QVL_EXPORT QVLABTestParticipant final : public QVLObject {
public:
    /// A participant in the test that was asked about; never null, never logs.
    ///
    /// Without JSON that describes this very test (its "testGuid" is equal) it is an empty one: status 0, daily, no
    /// group. Otherwise each member of the right type is taken, and one of a wrong type is skipped. Numbers are taken
    /// as unsigned integers, fractions cut off.
    [[nodiscard]] static std::shared_ptr<QVLABTestParticipant> initWithTestGuid(const std::string& testGuid,
                                                                                const QVLJSONValue& json);

    /// The members "testGuid" and "status", and each other one only when set. A frequency of 0 is left out and so reads
    /// back as daily, which it means anyway.
    [[nodiscard]] QVLJSONDictionary toJSON() const;

    [[nodiscard]] const std::string& testGuid() const { return m_testGuid; }
    void setTestGuid(std::string testGuid) { m_testGuid = std::move(testGuid); }

    /// As the service has it; see `kQVLABTestParticipantStatusDecided`.
    [[nodiscard]] std::uint64_t status() const { return m_status; }
    void setStatus(std::uint64_t status) { m_status = status; }

    [[nodiscard]] QVLABTestFrequency frequency() const { return m_frequency; }
    void setFrequency(QVLABTestFrequency frequency) { m_frequency = frequency; }

    // When the test starts and ends, in the service's own writing; kept, never interpreted.
    [[nodiscard]] const std::optional<std::string>& startTime() const { return m_startTime; }
    void setStartTime(std::optional<std::string> startTime) { m_startTime = std::move(startTime); }
    [[nodiscard]] const std::optional<std::string>& endTime() const { return m_endTime; }
    void setEndTime(std::optional<std::string> endTime) { m_endTime = std::move(endTime); }

    /// The group that the user is in, or null.
    [[nodiscard]] const std::shared_ptr<QVLABTestGroup>& group() const { return m_group; }
    void setGroup(std::shared_ptr<QVLABTestGroup> group) { m_group = std::move(group); }

    [[nodiscard]] std::string className() const override { return "QVLABTestParticipant"; }

private:
    explicit QVLABTestParticipant(std::string testGuid) : m_testGuid(std::move(testGuid)) {}

    std::string m_testGuid;
    std::uint64_t m_status = 0;
    QVLABTestFrequency m_frequency = QVLABTestFrequencyDaily;
    std::optional<std::string> m_startTime;
    std::optional<std::string> m_endTime;
    std::shared_ptr<QVLABTestGroup> m_group;
};
