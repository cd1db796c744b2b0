#include "QVLDebugCheckBox.h"

#include "QVLDebugAppearance.h"

#include <QPainter>
#include <QStyleOptionButton>

void QVLDebugCheckBox::paintEvent(QPaintEvent* event) {
    QCheckBox::paintEvent(event);
    if (!qvl_isDark(palette())) {
        return;
    }
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRect box = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    QPainter painter(this);
    constexpr double kBoxGray = 0.5;
    constexpr double kCornerRadius = 1;
    painter.setPen(qvl_gray(kBoxGray, palette()));
    painter.drawRoundedRect(box.adjusted(0, 0, -1, -1), kCornerRadius, kCornerRadius);
}
