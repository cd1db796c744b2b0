#pragma once

#include "QVLDebugDataSource.h"

#include <set>
#include <string>

/// The events and flags of an engine as rows, kept up to date.
class QVLDebugJournalDataSource final : public QVLDebugDataSource {
    Q_OBJECT

public:
    QVLDebugJournalDataSource(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel);

    [[nodiscard]] std::set<std::string> allJournalsKeys() const;
    [[nodiscard]] QVLDebugTableCellViewClass tableCellViewClass() const override;
    void startObservingChanges() override;
    void journalsDidChange(const QVLNotification& notification);
    void outputsDidChange(const QVLNotification& notification);
    void reloadData() override;
};
