#include "QVLDebugDataSource.h"

#include "QVLDebugText.h"
#include "QVLDebugValueCoding.h"
#include "QVLLogMacros.h"
#include "QVLNotificationCenter.h"
#include "QVLQuorvel.h"

#include <QMenu>

QVLDebugDataSource::~QVLDebugDataSource() = default;

void QVLDebugDataSource::initWithTableView(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel) {
    m_tableView = tableView;
    m_quorvel = quorvel;
    tableView->setViewDelegate(this);
    tableView->setModel(this);
    startObservingChanges();
    reloadData();
}

void QVLDebugDataSource::reloadOnNotification(const char* name) {
    m_observations.push_back(QVLNotificationCenter::defaultCenter().addObserver(
        name, m_quorvel, [this](const QVLNotification&) { reloadData(); }));
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
    if (m_tableView) {
        m_tableView->setMenu(contextMenu());
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

int QVLDebugDataSource::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : numberOfRowsInTableView();
}

int QVLDebugDataSource::columnCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_tableView ? 0 : static_cast<int>(m_tableView->columns().size());
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

QVariant QVLDebugDataSource::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount()) {
        return {};
    }
    return qvl_text(m_tableView->columns()[static_cast<std::size_t>(section)].title);
}

std::string QVLDebugDataSource::identifierForRow(int row) const {
    return m_tableData[static_cast<std::size_t>(row)]->identifier();
}

void QVLDebugDataSource::updateViewForRow(QWidget& view, int row) {
    if (auto* const cell = dynamic_cast<QVLDebugTableCellViewProtocol*>(&view)) {
        cell->setObjectValue(m_tableData[static_cast<std::size_t>(row)]);
    }
}
