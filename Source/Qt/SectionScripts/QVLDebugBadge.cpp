#include "QVLDebugBadge.h"

#include "QVLDebugAppearance.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace {

constexpr double kInitialGray = 0.5;
constexpr double kCornerRadius = 3;
constexpr int kHPad = 5;
constexpr int kVPad = 2;

} // namespace

QVLDebugBadge::QVLDebugBadge(QWidget* parent)
    : QWidget(parent), m_backgroundGray(kInitialGray), m_label(qvl_selectableLabel(this)) {
    m_label->setFont(qvl_smallFont());
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(kHPad, kVPad, kHPad, kVPad);
    layout->addWidget(m_label);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateTextColor();
}

void QVLDebugBadge::setText(const QString& text) {
    m_label->setText(text);
}

QString QVLDebugBadge::text() const {
    return m_label->text();
}

void QVLDebugBadge::setBackgroundGray(double white) {
    m_backgroundGray = white;
    updateTextColor();
    update();
}

void QVLDebugBadge::updateTextColor() {
    qvl_setTextColor(*m_label, qvl_textColorOn(qvl_gray(m_backgroundGray, QApplication::palette())));
}

void QVLDebugBadge::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(qvl_gray(m_backgroundGray, QApplication::palette()));
    painter.drawRoundedRect(rect(), kCornerRadius, kCornerRadius);
}

void QVLDebugBadge::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        updateTextColor();
    }
}
