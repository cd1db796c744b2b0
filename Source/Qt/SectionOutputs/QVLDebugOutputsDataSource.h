#pragma once

#include "QVLDebugOverridesDataSource.h"

/// The outputs of an engine as rows, kept up to date.
class QVLDebugOutputsDataSource final : public QVLDebugOverridesDataSource {
    Q_OBJECT

public:
    QVLDebugOutputsDataSource(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel);

    [[nodiscard]] QVLDebugTableCellViewClass tableCellViewClass() const override;
    void startObservingChanges() override;
    void outputsDidChange(const QVLNotification& notification);
    void reloadData() override;

protected:
    [[nodiscard]] std::optional<std::string> defaultsKeyForRow(int clickedRow) const override;
};
