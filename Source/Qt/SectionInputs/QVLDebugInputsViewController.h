#pragma once

#include "QVLDebugInputsDataSource.h"
#include "QVLDebugTableViewController.h"

class QLabel;

/// The section of the inputs: their values, overrides, and how long the host took to produce them. Main thread.
class QVLDebugInputsViewController final : public QVLDebugTableViewController, public QVLDebugInputsDataSourceDelegate {
public:
    /// The manager may be null.
    [[nodiscard]] static std::shared_ptr<QVLDebugInputsViewController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel, const std::shared_ptr<QVLInputsManager>& inputsManager);
    ~QVLDebugInputsViewController() override;

    [[nodiscard]] std::string title() const override;
    [[nodiscard]] QIcon toolbarIcon() const override;
    [[nodiscard]] const std::shared_ptr<QVLInputsManager>& inputsManager() const { return m_inputsManager; }

    /// Asks the host to compute the inputs again.
    void reloadInputs(QPushButton* sender);
    void updateGenerationTime();
    void debugInputsDataSourceDidReload(QVLDebugInputsDataSource& dataSource) override;

    [[nodiscard]] QLabel* generationTimeLabel() const { return m_generationTimeLabel; }
    [[nodiscard]] QPushButton* reloadButton() const { return m_reloadButton; }

private:
    QVLDebugInputsViewController(std::shared_ptr<QVLQuorvel> quorvel, std::shared_ptr<QVLInputsManager> inputsManager);
    void loadView();

    const std::shared_ptr<QVLInputsManager> m_inputsManager;
    QLabel* m_generationTimeLabel = nullptr;
    QPushButton* m_reloadButton = nullptr;
};
