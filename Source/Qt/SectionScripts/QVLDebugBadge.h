#pragma once

#include <QColor>
#include <QWidget>

class QLabel;

/// A short text on a rounded background. Main thread.
class QVLDebugBadge final : public QWidget {
    Q_OBJECT

public:
    explicit QVLDebugBadge(QWidget* parent = nullptr);

    void setText(const QString& text);
    [[nodiscard]] QString text() const;
    /// A grey of the light palette, as `qvl_gray` takes it.
    void setBackgroundGray(double white);
    [[nodiscard]] double backgroundGray() const { return m_backgroundGray; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void updateTextColor();

    double m_backgroundGray;
    QLabel* m_label = nullptr;
};
