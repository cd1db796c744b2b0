#include "QVLDebugAppearance.h"

#include "QVLDebugText.h"
#include "QVLTemplateIconEngine.h"
#include "QVLUtilities.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QThread>

#include <algorithm>

namespace {

constexpr int kBottomRowHeight = 16;

} // namespace

bool qvl_isDark(const QPalette& palette) {
    constexpr int kMiddle = 128;
    return palette.color(QPalette::Window).lightness() < kMiddle;
}

QColor qvl_gray(double white, const QPalette& palette) {
    constexpr double kLift = 0.8;
    const auto level = static_cast<float>(qvl_isDark(palette) ? 1 - kLift * white : white);
    return QColor::fromRgbF(level, level, level);
}

QColor qvl_textColorOn(const QColor& background) {
    constexpr int kMiddle = 128;
    return background.lightness() > kMiddle ? Qt::black : Qt::white;
}

void qvl_setTextColor(QWidget& widget, const QColor& color) {
    QPalette palette = widget.palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        // Inside a table texts are drawn in the second one.
        palette.setColor(group, QPalette::WindowText, color);
        palette.setColor(group, QPalette::Text, color);
    }
    widget.setPalette(palette);
}

QIcon qvl_templateIcon(const std::string& name) {
    const auto path = QVLUtilities::imageNamed(name);
    return path ? QIcon(new QVLTemplateIconEngine(qvl_text(*path))) : QIcon();
}

QLabel* qvl_selectableLabel(QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setContextMenuPolicy(Qt::NoContextMenu);
    return label;
}

void qvl_deleteLater(QWidget& widget) {
    widget.deleteLater();
    if (QThread::currentThread()->loopLevel() > 0) {
        return;
    }
    // A deletion that is asked for outside of every event and event loop of Qt's waits for such a loop to begin, which in
    // a host of another toolkit never happens: it has to be sent by hand.
    const auto send = [pointer = QPointer(&widget)] {
        if (pointer) {
            QCoreApplication::sendPostedEvents(pointer, QEvent::DeferredDelete);
        }
    };
    QMetaObject::invokeMethod(qApp, send, Qt::QueuedConnection);
}

QPushButton* qvl_lowButton(const std::string& title, QWidget* parent) {
    auto* const button = new QPushButton(qvl_text(title), parent);
    constexpr int kFrame = 4;
    button->setFixedHeight(std::max(kBottomRowHeight, button->fontMetrics().height() + kFrame));
    constexpr int kSideRoom = 12;
    button->setMinimumWidth(button->fontMetrics().horizontalAdvance(button->text()) + 2 * kSideRoom);
    return button;
}
