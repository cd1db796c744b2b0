#include "QVLJournalCollection.h"

#include "QVLJournalPages.h"
#include "QVLLogMacros.h"
#include "QVLPublished.h"

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

struct QVLJournalCollection::Published {
    QVLPublished<QVLJournalPages> pages;
};

QVLJournalCollection::QVLJournalCollection(const QVLRecordClass& journalClass)
    : m_journalClass(journalClass), m_published(std::make_unique<Published>()) {}

QVLJournalCollection::~QVLJournalCollection() = default;

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
    disownRecords();
    QVLPropertyCollection::setCollection(collection);
    ownRecords();
    // While they belonged to nobody, whoever was told of the change may have changed them.
    m_holdsUnseenChanges = !changesSinceReport().empty();
}

void QVLJournalCollection::disownRecords() const {
    for (const QVLJSONDictionary::Entry& entry : collection()) {
        if (const auto record = entry.value.recordAs<QVLJournalObject>()) {
            record->setCollection({});
        }
    }
}

void QVLJournalCollection::ownRecords() const {
    for (const QVLJSONDictionary::Entry& entry : collection()) {
        if (const auto record = entry.value.recordAs<QVLJournalObject>()) {
            // One that stands under several keys has none of its own.
            const bool isSecondTime = record->collection().get() == this;
            record->setCollection(m_self, isSecondTime ? QVLJSONString() : entry.key);
        }
    }
}

void QVLJournalCollection::recordDidChange(const QVLJSONString& key) {
    if (!key.text().empty() && !mayHoldUnseenChanges()) {
        processChangedItemForKey(key);
        return;
    }
    m_holdsUnseenChanges = false;
    processChangedCollectionItems();
}

bool QVLJournalCollection::mayHoldUnseenChanges() const {
    return m_holdsUnseenChanges || !collectionOverrides().isEmpty();
}

void QVLJournalCollection::willReport(const std::vector<QVLJSONDictionary::Entry>& changes) {
    std::vector<QVLJSONDictionary::Entry> members;
    members.reserve(changes.size());
    for (const QVLJSONDictionary::Entry& change : changes) {
        members.push_back({change.key, isEmptyRecord(change.value) ? QVLJSONValue() : change.value.qvl_JSONObject()});
    }
    m_published->pages.store(m_published->pages.load()->with(members));
}

std::shared_ptr<QVLJournalObject> QVLJournalCollection::nonNullObjectForKey(const std::string& key) {
    const std::shared_ptr<QVLJournalCollection> self = m_self.lock();
    const QVLJSONDictionary records = collection();
    if (!records.hasKey(key) && m_journalClass.init) {
        setCollection(records.withValueForKey(QVLJSONValue::record(m_journalClass.init()), key));
    }
    return mergedValueForKey(key).recordAs<QVLJournalObject>();
}

QVLJSONDictionary QVLJournalCollection::nonEmptyCollection() const {
    return withoutEmptyRecords(collectionWithOverrides());
}

QVLJournalPages QVLJournalCollection::publishedRecords() const {
    return *m_published->pages.load();
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
