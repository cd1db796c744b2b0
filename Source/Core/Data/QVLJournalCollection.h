#pragma once

#include "QVLJournalObject.h"
#include "QVLPropertyCollection.h"

class QVLJournalPages;

/// Told of changes of a journal collection.
class QVL_EXPORT QVLJournalCollectionDelegate : public QVLPropertyCollectionDelegate {};

/// Journal records of one class by key.
///
/// A property collection whose base layer holds records instead of plain values and that has no prefix in the user
/// defaults. It makes records on first use, is told by its records when they change in place, and takes an empty record
/// and a missing one for the same. Main thread, but for `publishedRecords`.
class QVL_EXPORT QVLJournalCollection final : public QVLPropertyCollection {
public:
    /// An empty collection. A class that does not derive from `QVLJournalObject` fails an assertion.
    [[nodiscard]] static std::shared_ptr<QVLJournalCollection> initWithJournalClass(const QVLRecordClass& journalClass);

    ~QVLJournalCollection() override;

    /// Replaces the base layer: the old records no longer report to this collection, the new ones do, and what changed
    /// is reported. The very dictionary already held does nothing.
    void setCollection(const QVLJSONDictionary& collection) override;

    /// The record for the key, an override before the base layer's; made empty, and not reported, when the base layer
    /// has none. Null only when the collection pretends to be empty or its class makes no records.
    [[nodiscard]] std::shared_ptr<QVLJournalObject> nonNullObjectForKey(const std::string& key);

    /// The merged records that are not empty.
    [[nodiscard]] QVLJSONDictionary nonEmptyCollection() const;

    /// What was last reported, without the empty records. Any thread.
    [[nodiscard]] QVLJournalPages publishedRecords() const;

    /// Called by the record under the key when it has changed: reports it, if it differs from the last report.
    void recordDidChange(const QVLJSONString& key);
    /// Whether records may have changed that report to nobody: those among the overrides, and those that somebody
    /// changed while he was told of a replacement of the base layer. Only a look at all records finds such changes.
    [[nodiscard]] bool mayHoldUnseenChanges() const;

    /// An empty record and a missing one are the same; records otherwise compare with `isEqual`.
    [[nodiscard]] bool considerItem(const QVLJSONValue& item, const QVLJSONValue& sameAsItem) const override;

    [[nodiscard]] const QVLRecordClass& journalClass() const { return m_journalClass; }
    void setJournalClass(const QVLRecordClass& journalClass) { m_journalClass = journalClass; }

    [[nodiscard]] std::string className() const override { return "QVLJournalCollection"; }

private:
    struct Published;

    explicit QVLJournalCollection(const QVLRecordClass& journalClass);
    void disownRecords() const;
    void ownRecords() const;
    void willReport(const std::vector<QVLJSONDictionary::Entry>& changes) override;

    QVLRecordClass m_journalClass;
    const std::unique_ptr<Published> m_published;
    bool m_holdsUnseenChanges = false;
    std::weak_ptr<QVLJournalCollection> m_self;
};
