#include "QVLDebugJournalFields.h"

#include "QVLDebugLocalization.h"
#include "QVLJournalEvent.h"
#include "QVLJournalFlag.h"

namespace {

/// Nothing happened less than never.
std::uint64_t countFrom(const QVLJSONValue& value) {
    return value.doubleValue() > 0 ? value.unsignedValue() : 0;
}

} // namespace

std::vector<QVLDebugJournalField> qvl_fieldsForEvent(const std::shared_ptr<QVLJournalEvent>& event) {
    return {
        {qvl_localizedString("First time"), event->firstTime(), QVLDebugValueTypeDate,
         [event](const QVLDebugValue& value) { event->setFirstTime(value.date()); }},
        {qvl_localizedString("Last time"), event->lastTime(), QVLDebugValueTypeDate,
         [event](const QVLDebugValue& value) { event->setLastTime(value.date()); }},
        {qvl_localizedString("Count"), QVLJSONValue(event->count()), QVLDebugValueTypeNumber,
         [event](const QVLDebugValue& value) { event->setCount(countFrom(value.JSONValue())); }},
    };
}

std::vector<QVLDebugJournalField> qvl_fieldsForFlag(const std::shared_ptr<QVLJournalFlag>& flag) {
    return {
        {qvl_localizedString("Last time"), flag->lastTime(), QVLDebugValueTypeDate,
         [flag](const QVLDebugValue& value) { flag->setLastTime(value.date()); }},
        {qvl_localizedString("Flag"), QVLJSONValue(flag->flag()), QVLDebugValueTypeBool,
         [flag](const QVLDebugValue& value) { flag->setFlag(value.JSONValue().qvl_castToBoolValue()); }},
    };
}
