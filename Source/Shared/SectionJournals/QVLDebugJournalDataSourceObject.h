#pragma once

#include "QVLDebugDataSourceObject.h"
#include "QVLJournalObject.h"

/// A row of the journal table: a key and the event or flag under it.
class QVLDebugJournalDataSourceObject final : public QVLDebugDataSourceObject {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugJournalDataSourceObject>
    initWithKey(std::string key, std::shared_ptr<QVLJournalObject> journalObject);

    /// Never null.
    [[nodiscard]] const std::shared_ptr<QVLJournalObject>& journalObject() const { return m_journalObject; }
    /// "Event: session.started" or "Flag: tour.dismissed".
    [[nodiscard]] std::string title() const;
    /// An event and a flag may share a key.
    [[nodiscard]] std::string identifier() const override { return title(); }

private:
    QVLDebugJournalDataSourceObject(std::string key, std::shared_ptr<QVLJournalObject> journalObject);

    const std::shared_ptr<QVLJournalObject> m_journalObject;
};
