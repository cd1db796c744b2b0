#pragma once

#include "QVLDebugScriptsContent.h"
#include "QVLDebugTableModel.h"
#include "QVLScriptTableCellView.h"

/// The scripts that a manager knows as rows, kept up to date.
///
/// Main thread.
class QVLDebugScriptDataSource final : public QVLDebugTableModel, public QVLScriptTableCellViewDelegate {
    Q_OBJECT

public:
    /// Their names are `kQVLDebugCellLabelKey`, `kQVLDebugCellScriptKey` and `kQVLDebugCellIsGroupKey`; the script is
    /// given by its version.
    enum Roles { LabelRole = Qt::UserRole, ScriptRole, IsGroupRole };

    /// Asks the manager to fetch now. Without a manager there are no rows.
    QVLDebugScriptDataSource(QVLDebugTableView* tableView, std::shared_ptr<QVLScriptManager> scriptManager);

    [[nodiscard]] const std::shared_ptr<QVLScriptManager>& scriptManager() const { return m_scriptManager; }
    [[nodiscard]] const std::vector<QVLDebugScriptCellInfo>& cachedCellInfo() const { return m_cachedCellInfo; }
    void startObservingChanges() override;
    void reloadData(const QVLNotification* notification);

    [[nodiscard]] int numberOfRowsInTableView() const override { return static_cast<int>(m_cachedCellInfo.size()); }
    [[nodiscard]] bool isGroupRow(int row) const;
    [[nodiscard]] QWidget* viewForTableColumn(int column, int row) override;
    void scriptTableCellDidClickUseScript(QVLScriptTableCellView& cell) override;

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// Differs from one load of the rows to the next, since a view of a script is not handed another one.
    [[nodiscard]] std::string identifierForRow(int row) const override;
    void updateViewForRow(QWidget& /*view*/, int /*row*/) override {}

private:
    [[nodiscard]] const QVLDebugScriptCellInfo& infoAtRow(int row) const {
        return m_cachedCellInfo[static_cast<std::size_t>(row)];
    }

    const std::shared_ptr<QVLScriptManager> m_scriptManager;
    std::vector<QVLDebugScriptCellInfo> m_cachedCellInfo;
    std::uint64_t m_loadCount = 0;
};
