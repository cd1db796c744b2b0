#pragma once

#include "QVLDebugRows.h"
#include "QVLDebugTableCellViewProtocol.h"
#include "QVLDebugTableView.h"
#include "QVLToken.h"

#include <QAbstractTableModel>

/// The model and the delegate of a table of rows: keeps the rows as loaded, and shows them sorted and filtered.
///
/// Main thread. Owned by its section; lives as long as its table. After making one, call `initWithTableView`, which
/// begins observing and loads the rows.
class QVLDebugDataSource : public QAbstractTableModel, public QVLDebugTableViewDelegate {
    Q_OBJECT

public:
    enum Roles {
        KeyRole = Qt::DisplayRole,
        /// The text of the value, override applied.
        ValueRole = Qt::UserRole,
    };

    ~QVLDebugDataSource() override;

    [[nodiscard]] QVLDebugTableView* tableView() const { return m_tableView; }
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

    [[nodiscard]] int numberOfRowsInTableView() const { return static_cast<int>(m_tableData.size()); }
    /// The row's object, or null for a row that there is not.
    [[nodiscard]] std::shared_ptr<QVLDebugDataSourceObject> objectValueForTableColumn(int column, int row) const;
    /// A new view. The class of views is asserted to follow the protocol.
    [[nodiscard]] QWidget* viewForTableColumn(int column, int row);

    [[nodiscard]] virtual QVLDebugTableCellViewClass tableCellViewClass() const = 0;
    /// Builds the rows and calls `updateCachedValues`.
    virtual void reloadData() = 0;
    /// The table's menu; null for none.
    [[nodiscard]] virtual QMenu* contextMenu() { return nullptr; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    [[nodiscard]] QWidget* makeViewForRow(int row) override { return viewForTableColumn(0, row); }
    [[nodiscard]] std::string identifierForRow(int row) const override;
    void updateViewForRow(QWidget& view, int row) override;

protected:
    QVLDebugDataSource() = default;

    /// Becomes the table's model and delegate, begins observing and loads the rows.
    void initWithTableView(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel);
    virtual void startObservingChanges() = 0;
    void stopObservingChanges() { m_observations.clear(); }
    /// Reloads on each of the engine's notifications of that name.
    void reloadOnNotification(const char* name);

private:
    QPointer<QVLDebugTableView> m_tableView;
    std::shared_ptr<QVLQuorvel> m_quorvel;
    QVLDebugRows m_cachedValues;
    QVLDebugRows m_tableData;
    QVLDebugFilterPredicate m_filterPredicate;
    std::vector<QVLToken> m_observations;
};
