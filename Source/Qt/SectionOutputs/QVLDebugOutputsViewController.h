#pragma once

#include "QVLDebugOutputsDataSource.h"
#include "QVLDebugSection.h"
#include "QVLDebugTableSectionLayout.h"

class QCheckBox;

/// The section of the outputs: their values, overrides, and a switch that disables them all. Main thread.
class QVLDebugOutputsViewController final : public QVLDebugSection {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugOutputsViewController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel);
    ~QVLDebugOutputsViewController() override;

    [[nodiscard]] std::string title() const override;
    [[nodiscard]] QIcon toolbarIcon() const override;
    [[nodiscard]] QWidget* view() const override { return m_section.view.get(); }
    /// Others may have disabled the outputs meanwhile.
    void sectionWillDisplay() override;

    /// Shows the rows whose key contains the field's text.
    void search(QLineEdit* sender);
    void logData(QPushButton* sender);
    void disableOutputs(QCheckBox* sender);

    [[nodiscard]] QVLDebugOutputsDataSource& dataSource() const { return *m_dataSource; }
    [[nodiscard]] const QVLDebugTableSectionView& parts() const { return m_section; }
    [[nodiscard]] QCheckBox* disableCheck() const { return m_disableCheck; }

private:
    explicit QVLDebugOutputsViewController(std::shared_ptr<QVLQuorvel> quorvel);
    void loadView();

    const std::shared_ptr<QVLQuorvel> m_quorvel;
    // Outlives the table.
    std::unique_ptr<QVLDebugOutputsDataSource> m_dataSource;
    QVLDebugTableSectionView m_section;
    QCheckBox* m_disableCheck = nullptr;
};
