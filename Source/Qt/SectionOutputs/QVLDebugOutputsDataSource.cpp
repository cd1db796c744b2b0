#include "QVLDebugOutputsDataSource.h"

#include "QVLDebugOutputsContent.h"
#include "QVLDebugOutputsTableCellView.h"
#include "QVLQuorvel.h"

QVLDebugOutputsDataSource::QVLDebugOutputsDataSource(QVLDebugTableView* tableView,
                                                     const std::shared_ptr<QVLQuorvel>& quorvel) {
    initWithTableView(tableView, quorvel);
}

QVLDebugTableCellViewClass QVLDebugOutputsDataSource::tableCellViewClass() const {
    return [](const std::shared_ptr<QVLQuorvel>& quorvel) { return new QVLDebugOutputsTableCellView(quorvel); };
}

void QVLDebugOutputsDataSource::startObservingChanges() {
    observe(kQVLOutputsDidChangeNotification, quorvel(),
            [this](const QVLNotification& notification) { outputsDidChange(notification); });
}

void QVLDebugOutputsDataSource::outputsDidChange(const QVLNotification& /*notification*/) {
    reloadData();
}

void QVLDebugOutputsDataSource::reloadData() {
    updateCachedValues(qvl_outputsRows(*quorvel()));
}

std::optional<std::string> QVLDebugOutputsDataSource::defaultsKeyForRow(int clickedRow) const {
    return qvl_outputDefaultsKey(*quorvel(), clickedRow);
}
