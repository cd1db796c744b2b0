#include "QVLDebugOutputsDataSource.h"

#include "QVLDebugDefaultsKeyMenu.h"
#include "QVLDebugOutputsContent.h"
#include "QVLDebugOutputsTableCellView.h"
#include "QVLQuorvel.h"

#include <QMenu>

QVLDebugOutputsDataSource::QVLDebugOutputsDataSource(QVLDebugTableView* tableView,
                                                     const std::shared_ptr<QVLQuorvel>& quorvel) {
    initWithTableView(tableView, quorvel);
}

QVLDebugTableCellViewClass QVLDebugOutputsDataSource::tableCellViewClass() const {
    return [](const std::shared_ptr<QVLQuorvel>& quorvel) { return new QVLDebugOutputsTableCellView(quorvel); };
}

void QVLDebugOutputsDataSource::startObservingChanges() {
    reloadOnNotification(kQVLOutputsDidChangeNotification);
}

void QVLDebugOutputsDataSource::reloadData() {
    updateCachedValues(qvl_outputsRows(*quorvel()));
}

QMenu* QVLDebugOutputsDataSource::contextMenu() {
    if (!m_contextMenu) {
        m_contextMenu = qvl_makeDefaultsKeyMenu(tableView(), [this] { copyDefaultsKey(); });
    }
    return m_contextMenu;
}

void QVLDebugOutputsDataSource::copyDefaultsKey() {
    qvl_copyDefaultsKey(qvl_outputDefaultsKey(*quorvel(), tableView()->clickedRow()));
}
