#include "QVLScriptTableCellView.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugBadge.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugScriptsContent.h"
#include "QVLDebugText.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace {

constexpr int kSide = 20;
constexpr int kDistance = 8;
constexpr int kVPad = 5;
constexpr int kLeastGap = 20;

} // namespace

QVLScriptTableCellView::QVLScriptTableCellView(std::shared_ptr<QVLScript> script, std::optional<std::string> label,
                                               bool isCurrentScript, QWidget* parent)
    : QWidget(parent), m_script(std::move(script)), m_label(std::move(label)), m_isCurrentScript(isCurrentScript) {
    setupViews();
    setupLayout();
    m_stateObservation = m_script->observeState([this](QVLScript&) { reloadData(); });
    reloadData();
}

void QVLScriptTableCellView::setupViews() {
    m_versionLabel = qvl_selectableLabel(this);
    m_labelView = new QVLDebugBadge(this);
    constexpr double kLabelGray = 0.6;
    m_labelView->setBackgroundGray(kLabelGray);
    m_dateLabel = qvl_selectableLabel(this);
    m_dateLabel->setText(qvl_text(qvl_localizedString("date")));
    m_useButton = new QPushButton(this);
    connect(m_useButton, &QPushButton::clicked, this, [this] { useScript(m_useButton); });
}

void QVLScriptTableCellView::setupLayout() {
    auto* const versionRow = new QHBoxLayout;
    versionRow->setSpacing(0);
    m_labelRoom = new QSpacerItem(0, 0);
    versionRow->addWidget(m_versionLabel);
    versionRow->addSpacerItem(m_labelRoom);
    versionRow->addStretch(1);
    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(kSide, kVPad, kSide, kVPad);
    layout->setHorizontalSpacing(kLeastGap);
    layout->setVerticalSpacing(0);
    layout->addLayout(versionRow, 0, 0);
    layout->addWidget(m_dateLabel, 1, 0, Qt::AlignLeft);
    layout->addWidget(m_useButton, 0, 1, 2, 1, Qt::AlignVCenter);
    layout->setColumnStretch(0, 1);
}

void QVLScriptTableCellView::placeLabelView() {
    m_labelView->adjustSize();
    m_labelRoom->changeSize(m_labelView->isHidden() ? 0 : kDistance + m_labelView->width(), 0);
    layout()->invalidate();
    layout()->activate();
    const QRect version = m_versionLabel->geometry();
    m_labelView->move(version.x() + version.width() + kDistance, version.center().y() - m_labelView->height() / 2);
}

void QVLScriptTableCellView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeLabelView();
}

const QVLDebugScriptDateFormatter& QVLScriptTableCellView::dateFormatter() {
    static const QVLDebugScriptDateFormatter formatter;
    return formatter;
}

void QVLScriptTableCellView::setIsCurrentScript(bool isCurrentScript) {
    m_isCurrentScript = isCurrentScript;
    reloadData();
}

void QVLScriptTableCellView::reloadData() {
    m_versionLabel->setText(qvl_text(m_script->version().value_or(qvl_localizedString("Unknown"))));
    m_labelView->setText(qvl_text(m_label.value_or("")));
    m_labelView->setVisible(!m_label.value_or("").empty());
    if (m_script->dateCreated()) {
        m_dateLabel->setText(qvl_text(dateFormatter().stringFromDate(*m_script->dateCreated())));
    }
    // A version that is too long for the row is cut short, rather than drawn over the rest.
    m_versionLabel->setMinimumWidth(1);
    qvl_setPlainToolTip(*m_versionLabel, m_versionLabel->text());
    const QVLDebugScriptButton button = qvl_scriptButton(m_script->state(), m_isCurrentScript);
    m_useButton->setText(qvl_text(button.title));
    m_useButton->setEnabled(button.isEnabled);
    m_useButton->setVisible(!button.isHidden);
    placeLabelView();
}

void QVLScriptTableCellView::useScript(QPushButton* /*sender*/) {
    if (m_delegate) {
        m_delegate->scriptTableCellDidClickUseScript(*this);
    }
}
