#include "QVLDebugJournalTableCellView.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugDataView.h"
#include "QVLDebugJournalDataSourceObject.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"

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

std::shared_ptr<QVLDebugJournalDataSourceObject> QVLDebugJournalTableCellView::journalRow() const {
    return std::dynamic_pointer_cast<QVLDebugJournalDataSourceObject>(m_objectValue);
}

void QVLDebugJournalTableCellView::reloadData() {
    const auto row = journalRow();
    if (!row) {
        return;
    }
    m_keyLabel->setText(qvl_text(row->title()));
    m_keyLabel->setToolTip(qvl_text(row->title()).toHtmlEscaped());
    const std::vector<QVLDebugJournalField> fields = row->fields();
    // The views of the fields stay, and with them what is being typed: a record may change at any time.
    setFieldCount(fields.size());
    for (std::size_t index = 0; index < fields.size(); ++index) {
        QVLDebugDataView& fieldView = *m_fieldViews[index];
        fieldView.setDataName(fields[index].name);
        fieldView.setDataValue(fields[index].value, fields[index].type);
        fieldView.setOverrideHandler([self = QPointer(this), write = fields[index].write](const QVLDebugValue& value) {
            write(value);
            // A record that stayed as it was announces nothing, and would leave the typed value standing as an override.
            if (self) {
                self->reloadData();
            }
        });
    }
}

void QVLDebugJournalTableCellView::setFieldCount(std::size_t count) {
    while (m_fieldViews.size() > count) {
        m_fieldViews.back()->hide();
        m_fieldViews.back()->deleteLater();
        m_fieldViews.pop_back();
    }
    while (m_fieldViews.size() < count) {
        m_fieldViews.push_back(new QVLDebugDataView(m_fieldLayoutView));
        m_fieldLayout->addWidget(m_fieldViews.back());
    }
}

void QVLDebugJournalTableCellView::resetJournal(QPushButton* /*sender*/) {
    const auto row = journalRow();
    const QPointer<QVLDebugJournalTableCellView> self(this);
    row->journalObject()->reset();
    if (self) {
        reloadData();
    }
}
