#include "QVLJournalCollection.h"

#include "QVLLogMacros.h"

namespace {

bool isEmptyRecord(const QVLJSONValue& item) {
    const auto record = item.recordAs<QVLJournalObject>();
    return record && record->isEmpty();
}

QVLJSONDictionary withoutEmptyRecords(const QVLJSONDictionary& records) {
    std::vector<QVLJSONDictionary::Entry> kept;
    kept.reserve(records.count());
    for (const QVLJSONDictionary::Entry& entry : records) {
        if (!isEmptyRecord(entry.value)) {
            kept.push_back(entry);
        }
    }
    return kept.size() == records.count() ? records : QVLJSONDictionary(std::move(kept));
}

} // namespace

std::shared_ptr<QVLJournalCollection> QVLJournalCollection::initWithJournalClass(const QVLRecordClass& journalClass) {
    std::shared_ptr<QVLJournalCollection> collection(new QVLJournalCollection(journalClass));
    collection->m_self = collection;
    QVL_ASSERT_PARAMETER(journalClass.isJournalClass, collection.get());
    return collection;
}

void QVLJournalCollection::setCollection(const QVLJSONDictionary& collection) {
    if (collection.isIdentical(this->collection())) {
        return;
    }
    // Whoever is told of the change may drop this collection.
    const std::shared_ptr<QVLJournalCollection> self = m_self.lock();
    setOwnerOfRecords({});
    QVLPropertyCollection::setCollection(collection);
    setOwnerOfRecords(m_self);
}

void QVLJournalCollection::setOwnerOfRecords(const std::weak_ptr<QVLJournalCollection>& owner) const {
    for (const QVLJSONDictionary::Entry& entry : collection()) {
        if (const auto record = entry.value.recordAs<QVLJournalObject>()) {
            record->setCollection(owner);
        }
    }
}

std::shared_ptr<QVLJournalObject> QVLJournalCollection::nonNullObjectForKey(const std::string& key) {
    const QVLJSONDictionary records = collection();
    if (!records.hasKey(key) && m_journalClass.init) {
        setCollection(records.withValueForKey(QVLJSONValue::record(m_journalClass.init()), key));
    }
    return mergedValueForKey(key).recordAs<QVLJournalObject>();
}

QVLJSONDictionary QVLJournalCollection::nonEmptyCollection() const {
    return withoutEmptyRecords(collectionWithOverrides());
}

QVLJSONDictionary QVLJournalCollection::publishedJSONObject() const {
    return withoutEmptyRecords(reportedItems()).qvl_JSONObject().dictionaryOrEmpty();
}

bool QVLJournalCollection::considerItem(const QVLJSONValue& item, const QVLJSONValue& sameAsItem) const {
    if (item.isNothing()) {
        return isEmptyRecord(sameAsItem);
    }
    if (sameAsItem.isNothing()) {
        return isEmptyRecord(item);
    }
    return item == sameAsItem;
}
