#include "QVLDebugDataView.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugText.h"

#include <QHBoxLayout>
#include <QLabel>

namespace {

constexpr int kLabelWidth = 100;
constexpr int kHPad = 10;

} // namespace

QVLDebugDataView::QVLDebugDataView(QWidget* parent) : QWidget(parent) {
    setupSubviews();
}

QVLDebugDataView::~QVLDebugDataView() {
    m_valueView->setDelegate(nullptr);
}

void QVLDebugDataView::setupSubviews() {
    m_labelView = qvl_selectableLabel(this);
    m_labelView->setFixedWidth(kLabelWidth);
    m_valueView = new QVLDebugValueView(this);
    m_valueView->setDelegate(this);

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kHPad);
    layout->addWidget(m_labelView);
    layout->addWidget(m_valueView, 1);
}

std::string QVLDebugDataView::dataName() const {
    return qvl_text(m_labelView->text());
}

void QVLDebugDataView::setDataName(const std::string& dataName) {
    m_labelView->setText(qvl_text(dataName));
}

void QVLDebugDataView::setDataValue(const QVLDebugValue& dataValue, QVLDebugValueType type) {
    m_valueView->setValue(dataValue, type);
    m_valueView->setOverrideValue({});
}

void QVLDebugDataView::debugValueViewOverrideValueDidChange(QVLDebugValueView& view) {
    // The handler may bring about that this view is replaced.
    const OverrideHandler handler = m_overrideHandler;
    const QVLDebugValue overrideValue = view.overrideValue(); // NOLINT(performance-unnecessary-copy-initialization)
    if (handler) {
        handler(overrideValue);
    }
}
