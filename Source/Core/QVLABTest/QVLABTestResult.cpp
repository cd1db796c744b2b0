#include "QVLABTestResult.h"

#include "QVLPlatform.h"

#include <chrono>
#include <cmath>
#include <utility>
#include <vector>

namespace {

constexpr const char* kTestGuid = "testGuid";
constexpr const char* kStatus = "status";
constexpr const char* kParticipant = "participant";
constexpr const char* kLastCheckTime = "lastCheckTime";
constexpr const char* kWinGroup = "winGroup";

[[nodiscard]] bool isNothingOrDictionary(const QVLJSONValue& value) {
    return value.isNothing() || value.isDictionary();
}

/// Never, for a number that is no count of seconds; as the latest time of all it would put the test off for ever.
[[nodiscard]] std::int64_t checkTime(const QVLJSONValue& value) {
    constexpr double kPastLast = 0x1p63;
    return std::abs(value.doubleValue()) < kPastLast ? value.qvl_castToIntegerValue() : 0;
}

} // namespace

std::shared_ptr<QVLABTestResult> QVLABTestResult::initWithTestGuid(const std::string& testGuid) {
    return std::shared_ptr<QVLABTestResult>(new QVLABTestResult(testGuid));
}

std::shared_ptr<QVLABTestResult> QVLABTestResult::resultWithJSON(const QVLJSONValue& JSON) {
    const QVLJSONDictionary members = JSON.dictionaryOrEmpty();
    const std::optional<std::string> testGuid = members.valueForKey(kTestGuid).qvl_castToStringValue();
    if (!testGuid) {
        return nullptr;
    }
    std::shared_ptr<QVLABTestResult> result = initWithTestGuid(*testGuid);
    result->readMembers(members);
    return result;
}

QVLABTestResult::QVLABTestResult(std::string testGuid)
    : m_clock(QVLPlatform::current()->clock), m_testGuid(std::move(testGuid)) {}

void QVLABTestResult::readMembers(const QVLJSONDictionary& members) {
    const QVLJSONValue status = members.valueForKey(kStatus);
    const QVLJSONValue lastCheckTime = members.valueForKey(kLastCheckTime);
    const QVLJSONValue participant = members.valueForKey(kParticipant);
    const QVLJSONValue winGroup = members.valueForKey(kWinGroup);
    if (!status.isNumber() || !(lastCheckTime.isNothing() || lastCheckTime.isNumber()) ||
        !isNothingOrDictionary(participant) || !isNothingOrDictionary(winGroup)) {
        return;
    }
    const auto readParticipant =
        participant.isDictionary() ? QVLABTestParticipant::initWithTestGuid(m_testGuid, participant) : nullptr;
    const auto readWinGroup = QVLABTestGroup::groupWithJSON(winGroup);
    switch (static_cast<QVLABTestStatus>(status.unsignedValue())) {
    case QVLABTestStatusUnknown:
    case QVLABTestStatusInvalid:
        break;
    case QVLABTestStatusParticipating:
        if (!readParticipant) {
            return;
        }
        m_participant = readParticipant;
        break;
    case QVLABTestStatusWinGroup:
        if (!readWinGroup) {
            return;
        }
        m_participant = readParticipant;
        m_winGroup = readWinGroup;
        break;
    default:
        return;
    }
    m_status = static_cast<QVLABTestStatus>(status.unsignedValue());
    m_lastCheckTime = checkTime(lastCheckTime);
}

bool QVLABTestResult::onParticipant(std::shared_ptr<QVLABTestParticipant> participant) {
    if (isFinal()) {
        return false;
    }
    m_participant = std::move(participant);
    m_status = m_participant ? QVLABTestStatusParticipating : QVLABTestStatusUnknown;
    updateCheckDate();
    return true;
}

bool QVLABTestResult::onWinGroup(std::shared_ptr<QVLABTestGroup> group) {
    if (isFinal()) {
        return false;
    }
    if (!group) {
        updateCheckDate();
        return false;
    }
    // The check time stays that of the last check, on purpose.
    m_status = QVLABTestStatusWinGroup;
    m_winGroup = std::move(group);
    return true;
}

bool QVLABTestResult::invalidate() {
    m_status = QVLABTestStatusInvalid;
    m_participant.reset();
    m_winGroup.reset();
    updateCheckDate();
    return true;
}

void QVLABTestResult::updateCheckDate() {
    m_lastCheckTime = std::chrono::duration_cast<std::chrono::seconds>(m_clock->now().time_since_epoch()).count();
}

QVLJSONDictionary QVLABTestResult::toJSON() const {
    std::vector<QVLJSONDictionary::Entry> members = {
        {kTestGuid, m_testGuid}, {kStatus, static_cast<std::uint64_t>(m_status)}, {kLastCheckTime, m_lastCheckTime}};
    if (m_participant) {
        members.push_back({kParticipant, m_participant->toJSON()});
    }
    if (m_winGroup) {
        members.push_back({kWinGroup, m_winGroup->toJSON()});
    }
    return QVLJSONDictionary(std::move(members));
}

bool QVLABTestResult::isFinal() const {
    return m_status == QVLABTestStatusWinGroup || m_status == QVLABTestStatusInvalid;
}
