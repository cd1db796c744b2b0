#include "QVLDebugJournalContent.h"

#include "QVLDebugJournalDataSourceObject.h"
#include "QVLJournals.h"

namespace {

bool isNotEmpty(const QVLDebugDataSourceObject& row) {
    const auto* const journalRow = dynamic_cast<const QVLDebugJournalDataSourceObject*>(&row);
    return journalRow && !journalRow->journalObject()->isEmpty();
}

} // namespace

std::set<std::string> qvl_allJournalsKeys(const QVLJournals& journals) {
    const std::vector<std::string> eventKeys = journals.allEventKeys();
    const std::vector<std::string> flagKeys = journals.allFlagKeys();
    std::set<std::string> keys(eventKeys.begin(), eventKeys.end());
    keys.insert(flagKeys.begin(), flagKeys.end());
    return keys;
}

QVLDebugRows qvl_journalRows(QVLJournals& journals) {
    // Asking for a record that is not there would make one.
    const QVLJSONDictionary events = journals.eventCollection()->collectionWithOverrides();
    const QVLJSONDictionary flags = journals.flagCollection()->collectionWithOverrides();
    QVLDebugRows rows;
    for (const std::string& key : qvl_allJournalsKeys(journals)) {
        for (const QVLJSONDictionary& records : {events, flags}) {
            if (auto record = records.valueForKey(key).recordAs<QVLJournalObject>()) {
                rows.push_back(QVLDebugJournalDataSourceObject::initWithKey(key, std::move(record)));
            }
        }
    }
    return rows;
}

QVLDebugFilterPredicate qvl_journalFilterPredicate(std::string_view searchText) {
    return qvl_bothPredicates(isNotEmpty, searchText.empty() ? QVLDebugFilterPredicate() : qvl_keyContains(searchText));
}
