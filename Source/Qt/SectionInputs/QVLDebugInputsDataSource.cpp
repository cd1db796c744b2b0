#include "QVLDebugInputsDataSource.h"

#include "QVLDebugInputsContent.h"
#include "QVLDebugInputsTableCellView.h"
#include "QVLInputsManager.h"
#include "QVLQuorvel.h"

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
    observe(kQVLInputsDidChangeNotification, quorvel(),
            [this](const QVLNotification& notification) { inputsDidChange(notification); });
}

void QVLDebugInputsDataSource::inputsDidChange(const QVLNotification& /*notification*/) {
    reloadData();
}

void QVLDebugInputsDataSource::reloadData() {
    updateCachedValues(qvl_inputsRows(*quorvel(), m_inputsManager.get()));
    if (m_delegate) {
        m_delegate->debugInputsDataSourceDidReload(*this);
    }
}

std::optional<std::string> QVLDebugInputsDataSource::defaultsKeyForRow(int clickedRow) const {
    return qvl_inputDefaultsKey(*quorvel(), clickedRow);
}
