#pragma once

#include "QVLDebugDataSource.h"

/// The outputs of an engine as rows, kept up to date.
class QVLDebugOutputsDataSource final : public QVLDebugDataSource {
    Q_OBJECT

public:
    QVLDebugOutputsDataSource(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel);

    [[nodiscard]] QVLDebugTableCellViewClass tableCellViewClass() const override;
    void reloadData() override;
    [[nodiscard]] QMenu* contextMenu() override;
    void copyDefaultsKey();

protected:
    void startObservingChanges() override;

private:
    QPointer<QMenu> m_contextMenu;
};
