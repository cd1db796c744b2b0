#pragma once

#include "QVLDebugRows.h"
#include "QVLDebugTableCellViewProtocol.h"
#include "QVLDebugTableModel.h"

/// The model and the delegate of a table of rows: keeps the rows as loaded, and shows them sorted and filtered.
///
/// Main thread. After making one, call `initWithTableView`, which begins observing and loads the rows.
class QVLDebugDataSource : public QVLDebugTableModel {
    Q_OBJECT

public:
    enum Roles {
        KeyRole = Qt::DisplayRole,
        /// The text of the value, override applied.
        ValueRole = Qt::UserRole,
    };

    ~QVLDebugDataSource() override;

    [[nodiscard]] const std::shared_ptr<QVLQuorvel>& quorvel() const { return m_quorvel; }

    /// Rows as last loaded, in the order of loading.
    [[nodiscard]] const QVLDebugRows& cachedValues() const { return m_cachedValues; }
    /// Rows as shown.
    [[nodiscard]] const QVLDebugRows& tableData() const { return m_tableData; }
    [[nodiscard]] const QVLDebugFilterPredicate& filterPredicate() const { return m_filterPredicate; }
    /// An empty predicate shows every row.
    void setFilterPredicate(QVLDebugFilterPredicate filterPredicate);
    void updateCachedValues(QVLDebugRows rows);
    void reloadTableData();

    [[nodiscard]] int numberOfRowsInTableView() const override { return static_cast<int>(m_tableData.size()); }
    /// The row's object, or null for a row that there is not.
    [[nodiscard]] std::shared_ptr<QVLDebugDataSourceObject> objectValueForTableColumn(int column, int row) const;
    /// The class of views is asserted to follow the protocol.
    [[nodiscard]] QWidget* viewForTableColumn(int column, int row) override;

    [[nodiscard]] virtual QVLDebugTableCellViewClass tableCellViewClass() const = 0;
    /// Builds the rows and calls `updateCachedValues`.
    virtual void reloadData() = 0;
    /// The table's menu; null for none.
    [[nodiscard]] virtual QMenu* contextMenu() { return nullptr; }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

    [[nodiscard]] std::string identifierForRow(int row) const override;
    void updateViewForRow(QWidget& view, int row) override;

protected:
    QVLDebugDataSource() = default;

    /// Becomes the table's model and delegate, begins observing and loads the rows.
    void initWithTableView(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel);

private:
    std::shared_ptr<QVLQuorvel> m_quorvel;
    QVLDebugRows m_cachedValues;
    QVLDebugRows m_tableData;
    QVLDebugFilterPredicate m_filterPredicate;
};
