#include "QVLDebugDataSource.h"

#include "QVLDebugText.h"
#include "QVLDebugValueCoding.h"
#include "QVLLogMacros.h"
#include "QVLQuorvel.h"

#include <QMenu>

QVLDebugDataSource::~QVLDebugDataSource() = default;

void QVLDebugDataSource::initWithTableView(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel) {
    m_quorvel = quorvel;
    setTableView(tableView);
    startObservingChanges();
    reloadData();
}

void QVLDebugDataSource::setFilterPredicate(QVLDebugFilterPredicate filterPredicate) {
    m_filterPredicate = std::move(filterPredicate);
    reloadTableData();
}

void QVLDebugDataSource::updateCachedValues(QVLDebugRows rows) {
    m_cachedValues = std::move(rows);
    reloadTableData();
}

void QVLDebugDataSource::reloadTableData() {
    if (tableView()) {
        tableView()->setMenu(contextMenu());
    }
    beginResetModel();
    m_tableData = qvl_sortedAndFilteredRows(m_cachedValues, m_filterPredicate);
    endResetModel();
}

std::shared_ptr<QVLDebugDataSourceObject> QVLDebugDataSource::objectValueForTableColumn(int /*column*/, int row) const {
    return row >= 0 && row < numberOfRowsInTableView() ? m_tableData[static_cast<std::size_t>(row)] : nullptr;
}

QWidget* QVLDebugDataSource::viewForTableColumn(int column, int row) {
    QWidget* const view = tableCellViewClass()(m_quorvel);
    auto* const cell = dynamic_cast<QVLDebugTableCellViewProtocol*>(view);
    QVL_ASSERT(cell, "[self.tableCellViewClass conformsToProtocol:@protocol(QVLDebugTableCellViewProtocol)]", nullptr,
               "Bad cell class");
    if (const auto object = objectValueForTableColumn(column, row); cell && object) {
        cell->setObjectValue(object);
    }
    return view;
}

QVariant QVLDebugDataSource::data(const QModelIndex& index, int role) const {
    const auto object = objectValueForTableColumn(index.column(), index.isValid() ? index.row() : -1);
    if (!object) {
        return {};
    }
    if (role == KeyRole) {
        return qvl_text(object->key());
    }
    if (role == ValueRole) {
        const QVLDebugValue& shown = object->overrideValue().isNothing() ? object->value() : object->overrideValue();
        return qvl_text(QVLDebugValueCoding().stringFromValue(shown, object->valueType()).value_or(""));
    }
    return {};
}

std::string QVLDebugDataSource::identifierForRow(int row) const {
    return m_tableData[static_cast<std::size_t>(row)]->identifier();
}

void QVLDebugDataSource::updateViewForRow(QWidget& view, int row) {
    if (auto* const cell = dynamic_cast<QVLDebugTableCellViewProtocol*>(&view)) {
        cell->setObjectValue(m_tableData[static_cast<std::size_t>(row)]);
    }
}
