#pragma once

#include <QCheckBox>

/// A checkbox whose box stays visible on dark palettes, where some styles draw it in the colour of what is behind it.
class QVLDebugCheckBox final : public QCheckBox {
    Q_OBJECT

public:
    using QCheckBox::QCheckBox;

protected:
    void paintEvent(QPaintEvent* event) override;
};
