#include "QVLDebugJournalTableCellView.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugJournalDataSourceObject.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLJournalEvent.h"
#include "QVLJournalFlag.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

namespace {

constexpr int kKeyWidth = 300;
constexpr int kHPad = 10;
constexpr int kVPad = 5;

} // namespace

QVLDebugJournalTableCellView::QVLDebugJournalTableCellView(const std::shared_ptr<QVLQuorvel>& /*quorvel*/,
                                                           QWidget* parent)
    : QWidget(parent) {
    setupSubviews();
    setupLayout();
}

void QVLDebugJournalTableCellView::setupSubviews() {
    m_keyLabel = qvl_selectableLabel(this);
    m_keyLabel->setFixedWidth(kKeyWidth);
    m_fieldLayoutView = new QWidget(this);
    m_resetButton = new QPushButton(qvl_text(qvl_localizedString("Reset")), this);
    connect(m_resetButton, &QPushButton::clicked, this, [this] { resetJournal(m_resetButton); });
}

void QVLDebugJournalTableCellView::setupLayout() {
    m_fieldLayout = new QVBoxLayout(m_fieldLayoutView);
    m_fieldLayout->setContentsMargins(0, 0, 0, 0);
    m_fieldLayout->setSpacing(kVPad);
    m_fieldLayout->setAlignment(Qt::AlignTop);

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(kHPad, kVPad, kHPad, kVPad);
    layout->setSpacing(kHPad);
    layout->addWidget(m_keyLabel, 0, Qt::AlignTop);
    layout->addWidget(m_fieldLayoutView, 1);
    layout->addWidget(m_resetButton, 0, Qt::AlignTop);
}

void QVLDebugJournalTableCellView::setObjectValue(const std::shared_ptr<QVLDebugDataSourceObject>& objectValue) {
    if (objectValue == m_objectValue) {
        return;
    }
    m_objectValue = objectValue;
    reloadData();
}

const QVLDebugJournalDataSourceObject& QVLDebugJournalTableCellView::journalRow() const {
    return dynamic_cast<const QVLDebugJournalDataSourceObject&>(*m_objectValue);
}

void QVLDebugJournalTableCellView::reloadData() {
    const QString title = qvl_text(journalRow().title());
    m_keyLabel->setText(title);
    qvl_setPlainToolTip(*m_keyLabel, title);
    setupValues();
}

void QVLDebugJournalTableCellView::setupValues() {
    m_fieldCount = 0;
    const std::shared_ptr<QVLJournalObject>& record = journalRow().journalObject();
    if (const auto event = std::dynamic_pointer_cast<QVLJournalEvent>(record)) {
        addFieldsForEvent(event);
    } else if (const auto flag = std::dynamic_pointer_cast<QVLJournalFlag>(record)) {
        addFieldsForFlag(flag);
    }
}

void QVLDebugJournalTableCellView::addFieldsForEvent(const std::shared_ptr<QVLJournalEvent>& event) {
    addFields(qvl_fieldsForEvent(event));
}

void QVLDebugJournalTableCellView::addFieldsForFlag(const std::shared_ptr<QVLJournalFlag>& flag) {
    addFields(qvl_fieldsForFlag(flag));
}

void QVLDebugJournalTableCellView::addFields(std::vector<QVLDebugJournalField> fields) {
    for (QVLDebugJournalField& field : fields) {
        addFieldWithDataName(field.name, field.value, field.type,
                             [self = QPointer(this), write = std::move(field.write)](const QVLDebugValue& value) {
                                 write(value);
                                 // A record that stayed as it was announces nothing, and would leave the typed value
                                 // standing as an override.
                                 if (self) {
                                     self->reloadData();
                                 }
                             });
    }
}

void QVLDebugJournalTableCellView::addFieldWithDataName(const std::string& dataName, const QVLDebugValue& dataValue,
                                                        QVLDebugValueType dataValueType,
                                                        QVLDebugDataView::OverrideHandler overrideHandler) {
    if (m_fieldCount == m_fieldViews.size()) {
        m_fieldViews.push_back(new QVLDebugDataView(m_fieldLayoutView));
        m_fieldLayout->addWidget(m_fieldViews.back());
        // The key stands on one line with the first field.
        m_keyLabel->setMinimumHeight(m_fieldViews.front()->sizeHint().height());
    }
    QVLDebugDataView& fieldView = *m_fieldViews[m_fieldCount++];
    fieldView.setDataName(dataName);
    fieldView.setDataValue(dataValue, dataValueType);
    fieldView.setOverrideHandler(std::move(overrideHandler));
}

void QVLDebugJournalTableCellView::resetJournal(QPushButton* /*sender*/) {
    const QPointer<QVLDebugJournalTableCellView> self(this);
    // The row may be given up while its record tells of the change.
    const std::shared_ptr<QVLJournalObject> record = journalRow().journalObject();
    record->reset();
    if (self) {
        reloadData();
    }
}
