#pragma once

#include "QVLDebugScriptsContent.h"
#include "QVLDebugTableView.h"
#include "QVLNotificationCenter.h"
#include "QVLScriptTableCellView.h"

#include <QAbstractTableModel>

/// The scripts that a manager knows as rows, kept up to date.
///
/// Main thread. Owned by its section; lives as long as its table.
class QVLDebugScriptDataSource final : public QAbstractTableModel,
                                       public QVLDebugTableViewDelegate,
                                       public QVLScriptTableCellViewDelegate {
    Q_OBJECT

public:
    /// Their names are `kQVLDebugCellLabelKey`, `kQVLDebugCellScriptKey` and `kQVLDebugCellIsGroupKey`; the script is
    /// given by its version.
    enum Roles { LabelRole = Qt::UserRole, ScriptRole, IsGroupRole };

    /// Asks the manager to fetch now. Without a manager there are no rows.
    QVLDebugScriptDataSource(QVLDebugTableView* tableView, std::shared_ptr<QVLScriptManager> scriptManager);

    [[nodiscard]] const std::shared_ptr<QVLScriptManager>& scriptManager() const { return m_scriptManager; }
    [[nodiscard]] const std::vector<QVLDebugScriptCellInfo>& cachedCellInfo() const { return m_cachedCellInfo; }
    void reloadData(const QVLNotification* notification);

    [[nodiscard]] int numberOfRowsInTableView() const { return static_cast<int>(m_cachedCellInfo.size()); }
    [[nodiscard]] bool isGroupRow(int row) const;
    /// A new view of the row.
    [[nodiscard]] QWidget* viewForTableColumn(int column, int row);
    void scriptTableCellDidClickUseScript(QVLScriptTableCellView& cell) override;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] QWidget* makeViewForRow(int row) override { return viewForTableColumn(0, row); }
    /// Differs from one load of the rows to the next, since a view of a script is not handed another one.
    [[nodiscard]] std::string identifierForRow(int row) const override;
    void updateViewForRow(QWidget& /*view*/, int /*row*/) override {}

private:
    [[nodiscard]] const QVLDebugScriptCellInfo& infoAtRow(int row) const {
        return m_cachedCellInfo[static_cast<std::size_t>(row)];
    }
    void observe(const char* name);

    QPointer<QVLDebugTableView> m_tableView;
    const std::shared_ptr<QVLScriptManager> m_scriptManager;
    std::vector<QVLDebugScriptCellInfo> m_cachedCellInfo;
    std::uint64_t m_loadCount = 0;
    std::vector<QVLToken> m_observations;
};
