#include "QVLTemplateIconEngine.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

QImage QVLTemplateIconEngine::image(const QSize& size, QIcon::Mode mode) const {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(m_path);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&image);
    renderer.render(&painter);
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::ButtonText;
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), QGuiApplication::palette().color(group, role));
    return image;
}

void QVLTemplateIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) {
    const QSize size = (QSizeF(rect.size()) * painter->device()->devicePixelRatioF()).toSize();
    painter->drawImage(rect, image(size, mode));
}

QPixmap QVLTemplateIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) {
    return QPixmap::fromImage(image(size, mode));
}
