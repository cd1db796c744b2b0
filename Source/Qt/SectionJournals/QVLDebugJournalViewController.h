#pragma once

#include "QVLDebugTableViewController.h"

/// The section of the journals: events and flags, which edits really change. Main thread.
class QVLDebugJournalViewController final : public QVLDebugTableViewController {
public:
    [[nodiscard]] static std::shared_ptr<QVLDebugJournalViewController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel);
    ~QVLDebugJournalViewController() override;

    [[nodiscard]] std::string title() const override;
    [[nodiscard]] QIcon toolbarIcon() const override;

    void search(QLineEdit* sender) override;
    void resetJournals(QPushButton* sender);
    /// Hides empty records, and those whose key lacks the search field's text.
    void updateFilterPredicate();

    [[nodiscard]] QPushButton* resetButton() const { return m_resetButton; }

private:
    explicit QVLDebugJournalViewController(std::shared_ptr<QVLQuorvel> quorvel);
    void loadView();

    QPushButton* m_resetButton = nullptr;
};
