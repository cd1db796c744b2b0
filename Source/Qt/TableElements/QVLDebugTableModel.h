#pragma once

#include "QVLDebugTableView.h"
#include "QVLNotificationCenter.h"
#include "QVLToken.h"

#include <QAbstractTableModel>

/// What the models of all tables have in common: a model of rows that is the delegate of its table too, and keeps itself
/// up to date while it observes.
///
/// Main thread. Owned by its section; lives as long as its table.
class QVLDebugTableModel : public QAbstractTableModel, public QVLDebugTableViewDelegate {
    Q_OBJECT

public:
    ~QVLDebugTableModel() override;

    /// Null once it is gone.
    [[nodiscard]] QVLDebugTableView* tableView() const { return m_tableView; }
    [[nodiscard]] virtual int numberOfRowsInTableView() const = 0;
    /// A new view of the row.
    [[nodiscard]] virtual QWidget* viewForTableColumn(int column, int row) = 0;

    /// Follows changes from now on; what changed before shows with the next reload.
    virtual void startObservingChanges() = 0;
    void stopObservingChanges() { m_observations.clear(); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    [[nodiscard]] QWidget* makeViewForRow(int row) override { return viewForTableColumn(0, row); }

protected:
    QVLDebugTableModel() = default;

    /// Becomes the table's model and delegate.
    void setTableView(QVLDebugTableView* tableView);
    /// Until `stopObservingChanges`.
    void observe(const char* name, const std::shared_ptr<const void>& sender, QVLNotificationCenter::Observer observer);

private:
    QPointer<QVLDebugTableView> m_tableView;
    std::vector<QVLToken> m_observations;
};
