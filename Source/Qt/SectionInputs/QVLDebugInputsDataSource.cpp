#include "QVLDebugInputsDataSource.h"

#include "QVLDebugDefaultsKeyMenu.h"
#include "QVLDebugInputsContent.h"
#include "QVLDebugInputsTableCellView.h"
#include "QVLInputsManager.h"
#include "QVLQuorvel.h"

#include <QMenu>

QVLDebugInputsDataSource::QVLDebugInputsDataSource(QVLDebugTableView* tableView,
                                                   const std::shared_ptr<QVLQuorvel>& quorvel,
                                                   std::shared_ptr<QVLInputsManager> inputsManager,
                                                   QVLDebugInputsDataSourceDelegate* delegate)
    : m_inputsManager(std::move(inputsManager)), m_delegate(delegate) {
    initWithTableView(tableView, quorvel);
}

QVLDebugTableCellViewClass QVLDebugInputsDataSource::tableCellViewClass() const {
    return [](const std::shared_ptr<QVLQuorvel>& quorvel) { return new QVLDebugInputsTableCellView(quorvel); };
}

void QVLDebugInputsDataSource::startObservingChanges() {
    reloadOnNotification(kQVLInputsDidChangeNotification);
}

void QVLDebugInputsDataSource::reloadData() {
    updateCachedValues(qvl_inputsRows(*quorvel(), m_inputsManager.get()));
    if (m_delegate) {
        m_delegate->debugInputsDataSourceDidReload(*this);
    }
}

QMenu* QVLDebugInputsDataSource::contextMenu() {
    if (!m_contextMenu) {
        m_contextMenu = qvl_makeDefaultsKeyMenu(tableView(), [this] { copyDefaultsKey(); });
    }
    return m_contextMenu;
}

void QVLDebugInputsDataSource::copyDefaultsKey() {
    qvl_copyDefaultsKey(qvl_inputDefaultsKey(*quorvel(), tableView()->clickedRow()));
}
