#pragma once

#include "QVLDebugDataView.h"
#include "QVLDebugJournalFields.h"
#include "QVLDebugTableCellViewProtocol.h"

#include <vector>

class QLabel;
class QPushButton;
class QVBoxLayout;
class QVLDebugJournalDataSourceObject;

/// A row of the journal table: the fields of an event or a flag, which edits change at once, and a button that empties
/// the record. Main thread.
class QVLDebugJournalTableCellView final : public QWidget, public QVLDebugTableCellViewProtocol {
    Q_OBJECT

public:
    explicit QVLDebugJournalTableCellView(const std::shared_ptr<QVLQuorvel>& quorvel, QWidget* parent = nullptr);

    [[nodiscard]] const std::shared_ptr<QVLDebugDataSourceObject>& objectValue() const override {
        return m_objectValue;
    }
    void setObjectValue(const std::shared_ptr<QVLDebugDataSourceObject>& objectValue) override;
    void reloadData();
    void resetJournal(QPushButton* sender);

    [[nodiscard]] QLabel* keyLabel() const { return m_keyLabel; }
    [[nodiscard]] const std::vector<QVLDebugDataView*>& fieldViews() const { return m_fieldViews; }
    [[nodiscard]] QPushButton* resetButton() const { return m_resetButton; }

private:
    void setupSubviews();
    void setupLayout();
    /// Fills the fields anew. Their views stay, and with them what is being typed: a record may change at any time.
    void setupValues();
    void addFieldWithDataName(const std::string& dataName, const QVLDebugValue& dataValue,
                              QVLDebugValueType dataValueType, QVLDebugDataView::OverrideHandler overrideHandler);
    void addFieldsForEvent(const std::shared_ptr<QVLJournalEvent>& event);
    void addFieldsForFlag(const std::shared_ptr<QVLJournalFlag>& flag);
    void addFields(std::vector<QVLDebugJournalField> fields);
    [[nodiscard]] const QVLDebugJournalDataSourceObject& journalRow() const;

    std::shared_ptr<QVLDebugDataSourceObject> m_objectValue;
    QLabel* m_keyLabel = nullptr;
    QWidget* m_fieldLayoutView = nullptr;
    QVBoxLayout* m_fieldLayout = nullptr;
    std::vector<QVLDebugDataView*> m_fieldViews;
    std::size_t m_fieldCount = 0;
    QPushButton* m_resetButton = nullptr;
};
