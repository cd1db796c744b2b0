#include "QVLJournalFlag.h"

#include "QVLLogMacros.h"

std::shared_ptr<QVLJournalFlag> QVLJournalFlag::init() {
    return std::shared_ptr<QVLJournalFlag>(new QVLJournalFlag);
}

std::shared_ptr<QVLJournalFlag> QVLJournalFlag::initWithQVLJSONObject(const QVLJSONValue& JSONObject) {
    std::shared_ptr<QVLJournalFlag> flag = init();
    if (!JSONObject.isDictionary()) {
        QVL_LOG_ERROR(flag.get(), "Could not load flag from JSON: %@", JSONObject);
        return flag;
    }
    const QVLJSONDictionary members = JSONObject.dictionaryOrEmpty();
    flag->m_flag = members.valueForKey(kQVLJournalFlagFlag).qvl_castToBoolValue();
    flag->m_lastTime = qvl::dateFromMember(members, kQVLJournalFlagLastTime);
    flag->keepJSONObject(members);
    return flag;
}

void QVLJournalFlag::updateFlag(bool flag) {
    m_flag = flag;
    m_lastTime = QVLPlatform::current()->clock->now();
    reportChange();
}

void QVLJournalFlag::setFlag(bool flag) {
    if (m_flag != flag) {
        m_flag = flag;
        reportChange();
    }
}

void QVLJournalFlag::setLastTime(const std::optional<QVLDate>& lastTime) {
    if (!m_lastTime || m_lastTime != lastTime) {
        m_lastTime = lastTime;
        reportChange();
    }
}

void QVLJournalFlag::reset() {
    m_flag = false;
    m_lastTime.reset();
    reportChange();
}

bool QVLJournalFlag::isEmpty() const {
    return !m_flag && !m_lastTime;
}

QVLJSONValue QVLJournalFlag::JSONObjectOfFields() const {
    std::vector<QVLJSONDictionary::Entry> members;
    if (m_flag) {
        members.push_back({kQVLJournalFlagFlag, true});
    }
    qvl::addDate(members, kQVLJournalFlagLastTime, m_lastTime);
    return QVLJSONDictionary(std::move(members));
}

bool QVLJournalFlag::isEqual(const QVLObject& other) const {
    const auto* flag = dynamic_cast<const QVLJournalFlag*>(&other);
    return flag && m_flag == flag->m_flag && m_lastTime == flag->m_lastTime;
}

std::size_t QVLJournalFlag::hash() const {
    return qvl::hashOfDate(m_lastTime) ^ static_cast<std::size_t>(m_flag);
}

std::shared_ptr<QVLJournalObject> QVLJournalFlag::copyOfFields() const {
    std::shared_ptr<QVLJournalFlag> copy = init();
    copy->m_flag = m_flag;
    copy->m_lastTime = m_lastTime;
    return copy;
}
