#pragma once

#include "QVLDebugOverridesDataSource.h"

class QVLDebugInputsDataSource;
class QVLInputsManager;

/// Told when the inputs were loaded again.
class QVLDebugInputsDataSourceDelegate {
public:
    virtual ~QVLDebugInputsDataSourceDelegate() = default;
    virtual void debugInputsDataSourceDidReload(QVLDebugInputsDataSource& dataSource) = 0;
};

/// The inputs of an engine as rows, kept up to date.
class QVLDebugInputsDataSource final : public QVLDebugOverridesDataSource {
    Q_OBJECT

public:
    /// The delegate, which may be null, outlives this.
    QVLDebugInputsDataSource(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel,
                             std::shared_ptr<QVLInputsManager> inputsManager,
                             QVLDebugInputsDataSourceDelegate* delegate);

    [[nodiscard]] QVLDebugTableCellViewClass tableCellViewClass() const override;
    void startObservingChanges() override;
    void inputsDidChange(const QVLNotification& notification);
    void reloadData() override;

protected:
    [[nodiscard]] std::optional<std::string> defaultsKeyForRow(int clickedRow) const override;

private:
    const std::shared_ptr<QVLInputsManager> m_inputsManager;
    QVLDebugInputsDataSourceDelegate* const m_delegate;
};
