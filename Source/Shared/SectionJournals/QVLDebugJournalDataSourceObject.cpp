#include "QVLDebugJournalDataSourceObject.h"

#include "QVLDebugLocalization.h"
#include "QVLFormat.h"
#include "QVLJournalEvent.h"
#include "QVLJournalFlag.h"

namespace {

/// Nothing happened less than never.
std::uint64_t countFrom(const QVLJSONValue& value) {
    return value.doubleValue() > 0 ? value.unsignedValue() : 0;
}

std::vector<QVLDebugJournalField> fieldsOfEvent(const std::shared_ptr<QVLJournalEvent>& event) {
    return {
        {qvl_localizedString("First time"), event->firstTime(), QVLDebugValueTypeDate,
         [event](const QVLDebugValue& value) { event->setFirstTime(value.date()); }},
        {qvl_localizedString("Last time"), event->lastTime(), QVLDebugValueTypeDate,
         [event](const QVLDebugValue& value) { event->setLastTime(value.date()); }},
        {qvl_localizedString("Count"), QVLJSONValue(event->count()), QVLDebugValueTypeNumber,
         [event](const QVLDebugValue& value) { event->setCount(countFrom(value.JSONValue())); }},
    };
}

std::vector<QVLDebugJournalField> fieldsOfFlag(const std::shared_ptr<QVLJournalFlag>& flag) {
    return {
        {qvl_localizedString("Last time"), flag->lastTime(), QVLDebugValueTypeDate,
         [flag](const QVLDebugValue& value) { flag->setLastTime(value.date()); }},
        {qvl_localizedString("Flag"), QVLJSONValue(flag->flag()), QVLDebugValueTypeBool,
         [flag](const QVLDebugValue& value) { flag->setFlag(value.JSONValue().qvl_castToBoolValue()); }},
    };
}

} // namespace

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

std::vector<QVLDebugJournalField> QVLDebugJournalDataSourceObject::fields() const {
    if (const auto event = std::dynamic_pointer_cast<QVLJournalEvent>(m_journalObject)) {
        return fieldsOfEvent(event);
    }
    if (const auto flag = std::dynamic_pointer_cast<QVLJournalFlag>(m_journalObject)) {
        return fieldsOfFlag(flag);
    }
    return {};
}
