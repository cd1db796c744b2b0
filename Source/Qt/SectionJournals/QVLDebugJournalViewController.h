#pragma once

#include "QVLDebugJournalDataSource.h"
#include "QVLDebugSection.h"
#include "QVLDebugTableSectionLayout.h"

/// The section of the journals: events and flags, which edits really change. Main thread.
class QVLDebugJournalViewController final : public QVLDebugSection {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugJournalViewController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel);
    ~QVLDebugJournalViewController() override;

    [[nodiscard]] std::string title() const override;
    [[nodiscard]] QIcon toolbarIcon() const override;
    [[nodiscard]] QWidget* view() const override { return m_section.view.get(); }

    void search(QLineEdit* sender);
    void logData(QPushButton* sender);
    void resetJournals(QPushButton* sender);
    /// Hides empty records, and those whose key lacks the search field's text.
    void updateFilterPredicate();

    [[nodiscard]] QVLDebugJournalDataSource& dataSource() const { return *m_dataSource; }
    [[nodiscard]] const QVLDebugTableSectionView& parts() const { return m_section; }
    [[nodiscard]] QPushButton* resetButton() const { return m_resetButton; }

private:
    explicit QVLDebugJournalViewController(std::shared_ptr<QVLQuorvel> quorvel);
    void loadView();

    const std::shared_ptr<QVLQuorvel> m_quorvel;
    // Outlives the table.
    std::unique_ptr<QVLDebugJournalDataSource> m_dataSource;
    QVLDebugTableSectionView m_section;
    QPushButton* m_resetButton = nullptr;
};
