#include "QVLDebugJournalDataSourceObject.h"

#include "QVLDebugLocalization.h"
#include "QVLFormat.h"
#include "QVLJournalEvent.h"

std::shared_ptr<QVLDebugJournalDataSourceObject>
QVLDebugJournalDataSourceObject::initWithKey(std::string key, std::shared_ptr<QVLJournalObject> journalObject) {
    return std::shared_ptr<QVLDebugJournalDataSourceObject>(
        new QVLDebugJournalDataSourceObject(std::move(key), std::move(journalObject)));
}

QVLDebugJournalDataSourceObject::QVLDebugJournalDataSourceObject(std::string key,
                                                                 std::shared_ptr<QVLJournalObject> journalObject)
    : QVLDebugDataSourceObject(std::move(key), {}, {}), m_journalObject(std::move(journalObject)) {}

std::string QVLDebugJournalDataSourceObject::title() const {
    const bool isEvent = std::dynamic_pointer_cast<QVLJournalEvent>(m_journalObject) != nullptr;
    return QVLStringWithFormat("%@: %@", qvl_localizedString(isEvent ? "Event" : "Flag"), key());
}
