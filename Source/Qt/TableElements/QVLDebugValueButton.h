#pragma once

#include <QAbstractButton>

/// Shows a value as plain text that is pressed to edit it. Text that does not fit is cut short with an ellipsis and
/// shown whole in the tool tip.
class QVLDebugValueButton final : public QAbstractButton {
    Q_OBJECT

public:
    explicit QVLDebugValueButton(QWidget* parent = nullptr);

    void setAttributedText(const QString& text, const QFont& font, const QColor& color);
    [[nodiscard]] const QColor& textColor() const { return m_textColor; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    /// Return presses it as the space bar does.
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_textColor;
};
