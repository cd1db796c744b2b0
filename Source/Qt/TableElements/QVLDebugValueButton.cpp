#include "QVLDebugValueButton.h"

#include "QVLDebugAppearance.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kMargin = 2;
/// An empty text must still offer something to press.
constexpr int kLeastWidth = 40;
/// Nothing longer is ever seen whole, and measuring megabytes of text takes its time.
constexpr qsizetype kLongestShown = 1000;

QString singleLine(const QString& text) {
    QString line = text.left(kLongestShown);
    std::replace_if(
        line.begin(), line.end(), [](QChar letter) { return letter.isSpace() || letter.isNull(); }, QChar(' '));
    return line;
}

} // namespace

QVLDebugValueButton::QVLDebugValueButton(QWidget* parent) : QAbstractButton(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
}

void QVLDebugValueButton::setAttributedText(const QString& text, const QFont& font, const QColor& color) {
    setFont(font);
    m_textColor = color;
    setText(text);
    // An ampersand in it is no mnemonic.
    setShortcut({});
    setAccessibleName(text);
    qvl_setPlainToolTip(*this, text.left(kLongestShown));
    updateGeometry();
    update();
}

QSize QVLDebugValueButton::sizeHint() const {
    const int width = fontMetrics().horizontalAdvance(singleLine(text())) + 2 * kMargin + 1;
    return {text().isEmpty() ? kLeastWidth : width, fontMetrics().height()};
}

QSize QVLDebugValueButton::minimumSizeHint() const {
    return {std::min(kLeastWidth, sizeHint().width()), fontMetrics().height()};
}

void QVLDebugValueButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // A key that is held down would close the editor and open it again.
        if (!event->isAutoRepeat()) {
            click();
        }
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void QVLDebugValueButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRect area = rect().adjusted(kMargin, 0, -kMargin, 0);
    painter.setPen(m_textColor);
    // As a label places its line, so that a value stands on one line with its key.
    const QFontMetricsF metrics(font());
    const double baseline = std::floor((height() - metrics.height()) / 2) + metrics.ascent();
    painter.drawText(QPointF(area.left(), baseline),
                     fontMetrics().elidedText(singleLine(text()), Qt::ElideRight, area.width()));
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}
