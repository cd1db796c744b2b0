#include "QVLJournalEvent.h"

#include "QVLLogMacros.h"

std::shared_ptr<QVLJournalEvent> QVLJournalEvent::init() {
    return std::shared_ptr<QVLJournalEvent>(new QVLJournalEvent);
}

std::shared_ptr<QVLJournalEvent> QVLJournalEvent::initWithQVLJSONObject(const QVLJSONValue& JSONObject) {
    std::shared_ptr<QVLJournalEvent> event = init();
    if (!JSONObject.isDictionary()) {
        QVL_LOG_ERROR(event.get(), "Could not load event from JSON: %@", JSONObject);
        return event;
    }
    const QVLJSONDictionary members = JSONObject.dictionaryOrEmpty();
    event->m_firstTime = qvl::dateFromMember(members, kQVLJournalEventFirstTime);
    event->m_lastTime = qvl::dateFromMember(members, kQVLJournalEventLastTime);
    event->m_count = members.valueForKey(kQVLJournalEventCount).unsignedValue();
    event->keepJSONObject(members);
    return event;
}

void QVLJournalEvent::trigger() {
    const QVLDate now = QVLPlatform::current()->clock->now();
    if (!m_firstTime) {
        m_firstTime = now;
    }
    m_lastTime = now;
    ++m_count;
    reportChange();
}

void QVLJournalEvent::setFirstTime(const std::optional<QVLDate>& firstTime) {
    if (!m_firstTime || m_firstTime != firstTime) {
        m_firstTime = firstTime;
        reportChange();
    }
}

void QVLJournalEvent::setLastTime(const std::optional<QVLDate>& lastTime) {
    if (!m_lastTime || m_lastTime != lastTime) {
        m_lastTime = lastTime;
        reportChange();
    }
}

void QVLJournalEvent::setCount(std::uint64_t count) {
    if (m_count != count) {
        m_count = count;
        reportChange();
    }
}

void QVLJournalEvent::reset() {
    m_firstTime.reset();
    m_lastTime.reset();
    m_count = 0;
    reportChange();
}

bool QVLJournalEvent::isEmpty() const {
    return !m_firstTime && !m_lastTime && m_count == 0;
}

QVLJSONValue QVLJournalEvent::JSONObjectOfFields() const {
    std::vector<QVLJSONDictionary::Entry> members;
    qvl::addDate(members, kQVLJournalEventFirstTime, m_firstTime);
    qvl::addDate(members, kQVLJournalEventLastTime, m_lastTime);
    if (m_count != 0) {
        members.push_back({kQVLJournalEventCount, m_count});
    }
    return QVLJSONDictionary(std::move(members));
}

bool QVLJournalEvent::isEqual(const QVLObject& other) const {
    const auto* event = dynamic_cast<const QVLJournalEvent*>(&other);
    return event && m_firstTime == event->m_firstTime && m_lastTime == event->m_lastTime && m_count == event->m_count;
}

std::size_t QVLJournalEvent::hash() const {
    return qvl::hashOfDate(m_firstTime) ^ qvl::hashOfDate(m_lastTime) ^ static_cast<std::size_t>(m_count);
}

std::shared_ptr<QVLJournalObject> QVLJournalEvent::copyOfFields() const {
    std::shared_ptr<QVLJournalEvent> copy = init();
    copy->m_firstTime = m_firstTime;
    copy->m_lastTime = m_lastTime;
    copy->m_count = m_count;
    return copy;
}
