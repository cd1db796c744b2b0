#include "QVLDebugAppearance.h"

#include "QVLDebugText.h"
#include "QVLTemplateIconEngine.h"
#include "QVLUtilities.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTextDocument>
#include <QThread>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kBottomRowHeight = 16;

/// How light a colour looks, from 0 to 1.
double luminance(const QColor& color) {
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor mixed(const QColor& a, const QColor& b, double shareOfB) {
    const auto channel = [shareOfB](double x, double y) { return static_cast<float>(x + (y - x) * shareOfB); };
    return QColor::fromRgbF(channel(a.redF(), b.redF()), channel(a.greenF(), b.greenF()),
                            channel(a.blueF(), b.blueF()));
}

} // namespace

bool qvl_isDark(const QPalette& palette) {
    return palette.color(QPalette::Text).lightness() > palette.color(QPalette::Base).lightness();
}

double qvl_contrast(const QColor& a, const QColor& b) {
    constexpr double kGlare = 0.05;
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + kGlare) / (darker + kGlare);
}

QColor qvl_gray(double white, const QPalette& palette) {
    const QColor text = palette.color(QPalette::Text);
    const QColor base = palette.color(QPalette::Base);
    const QColor given = mixed(Qt::black, Qt::white, white);
    const double onWhite = qvl_contrast(given, Qt::white);
    constexpr double kNearly = 0.97;
    if (!qvl_isDark(palette) && qvl_contrast(given, base) >= kNearly * onWhite) {
        return given;
    }
    constexpr double kLeastOfTexts = 3;
    constexpr double kReadable = 4.5;
    const double least = onWhite < kLeastOfTexts ? onWhite : std::max(onWhite, kReadable);
    QColor color = mixed(text, base, white);
    constexpr double kStep = 0.05;
    for (double share = white; share > 0 && qvl_contrast(color, base) < least; share -= kStep) {
        color = mixed(text, base, std::max(share - kStep, 0.0));
    }
    return color;
}

QColor qvl_textColorOn(const QColor& background) {
    return qvl_contrast(background, Qt::black) > qvl_contrast(background, Qt::white) ? Qt::black : Qt::white;
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

void qvl_setPlainToolTip(QWidget& widget, const QString& text) {
    widget.setToolTip(Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text);
}

QFont qvl_smallFont() {
    constexpr double kSmall = 11.0 / 13.0;
    QFont font = QApplication::font();
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(font.pointSizeF() * kSmall);
    } else {
        font.setPixelSize(qRound(font.pixelSize() * kSmall));
    }
    return font;
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

void qvl_deleteLater(QObject& object) {
    object.deleteLater();
    if (QThread::currentThread()->loopLevel() > 0) {
        return;
    }
    // A deletion that is asked for outside of every event and event loop of Qt's waits for such a loop to begin, which in
    // a host of another toolkit never happens: it has to be sent by hand.
    const auto send = [pointer = QPointer(&object)] {
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
