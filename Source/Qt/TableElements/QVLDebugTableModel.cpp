#include "QVLDebugTableModel.h"

#include "QVLDebugText.h"

QVLDebugTableModel::~QVLDebugTableModel() = default;

int QVLDebugTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : numberOfRowsInTableView();
}

int QVLDebugTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() || !m_tableView ? 0 : static_cast<int>(m_tableView->columns().size());
}

QVariant QVLDebugTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount()) {
        return {};
    }
    return qvl_text(m_tableView->columns()[static_cast<std::size_t>(section)].title);
}

void QVLDebugTableModel::setTableView(QVLDebugTableView* tableView) {
    m_tableView = tableView;
    tableView->setViewDelegate(this);
    tableView->setModel(this);
}

void QVLDebugTableModel::observe(const char* name, const std::shared_ptr<const void>& sender,
                                 QVLNotificationCenter::Observer observer) {
    m_observations.push_back(QVLNotificationCenter::defaultCenter().addObserver(name, sender, std::move(observer)));
}
