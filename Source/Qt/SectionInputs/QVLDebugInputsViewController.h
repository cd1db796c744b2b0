#pragma once

#include "QVLDebugInputsDataSource.h"
#include "QVLDebugSection.h"
#include "QVLDebugTableSectionLayout.h"

class QLabel;

/// The section of the inputs: their values, overrides, and how long the host took to produce them. Main thread.
class QVLDebugInputsViewController final : public QVLDebugSection, public QVLDebugInputsDataSourceDelegate {
public:
    /// The manager may be null.
    [[nodiscard]] static std::shared_ptr<QVLDebugInputsViewController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel, const std::shared_ptr<QVLInputsManager>& inputsManager);
    ~QVLDebugInputsViewController() override;

    [[nodiscard]] std::string title() const override;
    [[nodiscard]] QIcon toolbarIcon() const override;
    [[nodiscard]] QWidget* view() const override { return m_section.view.get(); }

    /// Shows the rows whose key contains the field's text.
    void search(QLineEdit* sender);
    void logData(QPushButton* sender);
    /// Asks the host to compute the inputs again.
    void reloadInputs(QPushButton* sender);
    void updateGenerationTime();
    void debugInputsDataSourceDidReload(QVLDebugInputsDataSource& dataSource) override;

    [[nodiscard]] QVLDebugInputsDataSource& dataSource() const { return *m_dataSource; }
    [[nodiscard]] const QVLDebugTableSectionView& parts() const { return m_section; }
    [[nodiscard]] QLabel* generationTimeLabel() const { return m_generationTimeLabel; }
    [[nodiscard]] QPushButton* reloadButton() const { return m_reloadButton; }

private:
    QVLDebugInputsViewController(std::shared_ptr<QVLQuorvel> quorvel, std::shared_ptr<QVLInputsManager> inputsManager);
    void loadView();

    const std::shared_ptr<QVLQuorvel> m_quorvel;
    const std::shared_ptr<QVLInputsManager> m_inputsManager;
    // Outlives the table.
    std::unique_ptr<QVLDebugInputsDataSource> m_dataSource;
    QVLDebugTableSectionView m_section;
    QLabel* m_generationTimeLabel = nullptr;
    QPushButton* m_reloadButton = nullptr;
};
