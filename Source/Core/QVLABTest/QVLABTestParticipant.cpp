#include "QVLABTestParticipant.h"

#include <vector>

namespace {

constexpr const char* kTestGuid = "testGuid";
constexpr const char* kStatus = "status";
constexpr const char* kFrequency = "frequency";
constexpr const char* kStartTime = "startTime";
constexpr const char* kEndTime = "endTime";
constexpr const char* kGroup = "group";

} // namespace

std::shared_ptr<QVLABTestParticipant> QVLABTestParticipant::initWithTestGuid(const std::string& testGuid,
                                                                             const QVLJSONValue& json) {
    std::shared_ptr<QVLABTestParticipant> participant(new QVLABTestParticipant(testGuid));
    const QVLJSONDictionary members = json.dictionaryOrEmpty();
    // An answer about another test is no error: this test then has an empty participant.
    if (const QVLJSONValue guid = members.valueForKey(kTestGuid); !guid.isString() || guid.stringView() != testGuid) {
        return participant;
    }
    if (const QVLJSONValue status = members.valueForKey(kStatus); status.isNumber()) {
        participant->m_status = status.unsignedValue();
    }
    if (const QVLJSONValue frequency = members.valueForKey(kFrequency); frequency.isNumber()) {
        participant->m_frequency = frequency.unsignedValue();
    }
    participant->m_startTime = members.valueForKey(kStartTime).qvl_castToStringValue();
    participant->m_endTime = members.valueForKey(kEndTime).qvl_castToStringValue();
    participant->m_group = QVLABTestGroup::groupWithJSON(members.valueForKey(kGroup));
    return participant;
}

QVLJSONDictionary QVLABTestParticipant::toJSON() const {
    std::vector<QVLJSONDictionary::Entry> members = {
        {kTestGuid, m_testGuid}, {kStatus, m_status}, {kStartTime, m_startTime}, {kEndTime, m_endTime}};
    if (m_frequency != 0) {
        members.push_back({kFrequency, m_frequency});
    }
    if (m_group) {
        members.push_back({kGroup, m_group->toJSON()});
    }
    return QVLJSONDictionary(std::move(members));
}
