#pragma once

#include "QVLDebugDataSource.h"

class QVLDebugInputsDataSource;
class QVLInputsManager;

/// Told when the inputs were loaded again.
class QVLDebugInputsDataSourceDelegate {
public:
    virtual ~QVLDebugInputsDataSourceDelegate() = default;
    virtual void debugInputsDataSourceDidReload(QVLDebugInputsDataSource& dataSource) = 0;
};

/// The inputs of an engine as rows, kept up to date.
class QVLDebugInputsDataSource final : public QVLDebugDataSource {
    Q_OBJECT

public:
    /// The delegate, which may be null, outlives this.
    QVLDebugInputsDataSource(QVLDebugTableView* tableView, const std::shared_ptr<QVLQuorvel>& quorvel,
                             std::shared_ptr<QVLInputsManager> inputsManager,
                             QVLDebugInputsDataSourceDelegate* delegate);

    [[nodiscard]] QVLDebugTableCellViewClass tableCellViewClass() const override;
    void reloadData() override;
    [[nodiscard]] QMenu* contextMenu() override;
    void copyDefaultsKey();

protected:
    void startObservingChanges() override;

private:
    const std::shared_ptr<QVLInputsManager> m_inputsManager;
    QVLDebugInputsDataSourceDelegate* const m_delegate;
    QPointer<QMenu> m_contextMenu;
};
