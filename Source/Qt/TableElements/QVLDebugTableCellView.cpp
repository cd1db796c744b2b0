#include "QVLDebugTableCellView.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugText.h"

#include <QHBoxLayout>
#include <QLabel>

QVLDebugTableCellView::QVLDebugTableCellView(std::shared_ptr<QVLQuorvel> quorvel, QWidget* parent)
    : QWidget(parent), m_quorvel(std::move(quorvel)) {
    setupSubviews();
    setupLayout();
}

QVLDebugTableCellView::~QVLDebugTableCellView() {
    m_valueView->setDelegate(nullptr);
}

void QVLDebugTableCellView::setupSubviews() {
    m_keyLabel = qvl_selectableLabel(this);
    m_keyLabel->setFixedWidth(kKeyWidth);
    m_valueView = new QVLDebugValueView(this);
    m_valueView->setDelegate(this);
}

void QVLDebugTableCellView::setupLayout() {
    m_rowLayout = new QHBoxLayout(this);
    m_rowLayout->setContentsMargins(kHPad, kVPad, kHPad, kVPad);
    m_rowLayout->setSpacing(kHPad);
    m_rowLayout->addWidget(m_keyLabel);
    m_rowLayout->addWidget(m_valueView, 1);
}

void QVLDebugTableCellView::setObjectValue(const std::shared_ptr<QVLDebugDataSourceObject>& objectValue) {
    if (objectValue == m_objectValue) {
        return;
    }
    m_objectValue = objectValue;
    reloadData();
}

void QVLDebugTableCellView::reloadData() {
    const QString key = qvl_text(m_objectValue->key());
    m_keyLabel->setText(key);
    qvl_setPlainToolTip(*m_keyLabel, key);
    m_valueView->setValue(m_objectValue->value(), m_objectValue->valueType());
    m_valueView->setOverrideValue(m_objectValue->overrideValue());
}

void QVLDebugTableCellView::debugValueViewOverrideValueDidChange(QVLDebugValueView& view) {
    // The engine announces a changed value, and not an override that changes none: the row learns of it here.
    m_objectValue->setOverrideValue(view.overrideValue());
    setOverrides(overrides().withValueForKey(view.overrideValue().JSONValue(), m_objectValue->key()));
}
