#pragma once

#include <QIconEngine>
#include <QString>

/// Draws a template image, of which only the shape counts, in the palette's text colour at any size and scale.
///
/// The colour is looked up whenever it draws, so that the icon follows a change between light and dark.
class QVLTemplateIconEngine final : public QIconEngine {
public:
    explicit QVLTemplateIconEngine(QString path) : m_path(std::move(path)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    [[nodiscard]] QIconEngine* clone() const override { return new QVLTemplateIconEngine(m_path); }

private:
    [[nodiscard]] QImage image(const QSize& size, QIcon::Mode mode) const;

    QString m_path;
};
