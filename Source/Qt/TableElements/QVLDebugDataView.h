#pragma once

#include "QVLDebugValueView.h"

#include <functional>

class QLabel;

/// A value with its name before it. Main thread.
class QVLDebugDataView final : public QWidget, private QVLDebugValueViewDelegate {
    Q_OBJECT

public:
    using OverrideHandler = std::function<void(const QVLDebugValue&)>;

    explicit QVLDebugDataView(QWidget* parent = nullptr);
    ~QVLDebugDataView() override;

    [[nodiscard]] std::string dataName() const;
    void setDataName(const std::string& dataName);
    [[nodiscard]] const QVLDebugValue& dataValue() const { return m_valueView->value(); }
    /// Shows the value; what was typed over the one before is forgotten.
    void setDataValue(const QVLDebugValue& dataValue, QVLDebugValueType type);
    /// Called with the value that was typed, or nothing when it was cleared. The view may be gone when this returns.
    [[nodiscard]] const OverrideHandler& overrideHandler() const { return m_overrideHandler; }
    void setOverrideHandler(OverrideHandler handler) { m_overrideHandler = std::move(handler); }

    [[nodiscard]] QLabel* labelView() const { return m_labelView; }
    [[nodiscard]] QVLDebugValueView* valueView() const { return m_valueView; }

    void debugValueViewOverrideValueDidChange(QVLDebugValueView& view) override;

private:
    void setupSubviews();

    QLabel* m_labelView = nullptr;
    QVLDebugValueView* m_valueView = nullptr;
    OverrideHandler m_overrideHandler;
};
