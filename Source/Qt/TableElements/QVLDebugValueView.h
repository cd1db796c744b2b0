#pragma once

#include "QVLDebugValueCoding.h"

#include <QFont>
#include <QKeySequence>
#include <QTimer>
#include <QWidget>

#include <optional>
#include <string>

class QAbstractButton;
class QCheckBox;
class QGraphicsOpacityEffect;
class QLineEdit;
class QToolButton;
class QVLDebugValueButton;
class QVLDebugValueView;

/// Told of what is done in a value view.
class QVLDebugValueViewDelegate {
public:
    virtual ~QVLDebugValueViewDelegate() = default;

    /// The view's override was set or removed by its user. The view may be gone when this returns.
    virtual void debugValueViewOverrideValueDidChange(QVLDebugValueView& /*view*/) {}
    /// The text to show for a value; no value for the default.
    [[nodiscard]] virtual std::optional<std::string> debugValueView(const QVLDebugValueView& /*view*/,
                                                                    const QVLDebugValue& /*localizedStringForValue*/,
                                                                    QVLDebugValueType /*ofType*/) {
        return std::nullopt;
    }
};

/// A value with its look.
struct QVLDebugAttributedValue {
    QString text;
    QFont font;
    QColor color;
};

/// Shows a value, tells by its colour whether it is overridden, and edits the override in place.
///
/// Main thread. The delegate outlives the view or is taken away before.
class QVLDebugValueView final : public QWidget {
    Q_OBJECT

public:
    explicit QVLDebugValueView(QWidget* parent = nullptr);

    [[nodiscard]] const QVLDebugValue& value() const { return m_value; }
    [[nodiscard]] QVLDebugValueType valueType() const { return m_valueType; }
    void setValue(const QVLDebugValue& value, QVLDebugValueType type);
    /// Nothing without an override.
    [[nodiscard]] const QVLDebugValue& overrideValue() const { return m_overrideValue; }
    void setOverrideValue(const QVLDebugValue& overrideValue);
    void setDelegate(QVLDebugValueViewDelegate* delegate) { m_delegate = delegate; }

    /// Reloads on the next turn of the event loop, once.
    void setNeedsReload();
    void reload();
    /// Sets the override, or removes it with nothing, and tells the delegate.
    void updateOverride(const QVLDebugValue& overrideValue);

    [[nodiscard]] QVLDebugAttributedValue attributedValue() const;
    [[nodiscard]] std::optional<std::string> localizedString() const;
    [[nodiscard]] std::optional<std::string> stringValue() const;
    [[nodiscard]] QVLDebugValue valueFromString(std::string_view text) const;

    void showEditTextField();
    void commitEditing(QLineEdit* sender);
    void hideEditTextField();
    [[nodiscard]] bool isEditing() const;
    void valueButtonPressed(QAbstractButton* sender);
    void clearButtonPressed(QAbstractButton* sender);
    /// True when the command was handled: cancelling is.
    bool control(QLineEdit* control, QKeySequence::StandardKey doCommand);
    void controlTextDidEndEditing(QLineEdit* sender);

    /// A checkbox for booleans, a plain button for every other type.
    [[nodiscard]] QAbstractButton* valueButton() const;
    [[nodiscard]] QToolButton* clearButton() const { return m_clearButton; }
    [[nodiscard]] QLineEdit* editValueTextField() const { return m_editValueTextField; }
    /// How opaque the value button is.
    [[nodiscard]] double valueButtonAlpha() const;
    [[nodiscard]] const QVLDebugNumberFormatter& numberFormatter() const { return m_coding.numberFormatter; }
    [[nodiscard]] const QVLDebugDateFormatter& dateFormatter() const { return m_coding.dateFormatter; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setupSubviews();
    void setupEditTextField();
    void updateEditColors();
    /// What the text in the editor means.
    [[nodiscard]] QVLDebugValue typedValue() const;
    /// True when the key, pressed in the editor, is not for it.
    [[nodiscard]] bool filterKey(const QKeyEvent& event);
    /// The override, else the value.
    [[nodiscard]] const QVLDebugValue& shownValue() const;

    QVLDebugValueCoding m_coding;
    QVLDebugValue m_value;
    QVLDebugValueType m_valueType = QVLDebugValueTypeJSON;
    QVLDebugValue m_overrideValue;
    QVLDebugValueViewDelegate* m_delegate = nullptr;
    bool m_isEditing = false;

    QVLDebugValueButton* m_plainButton = nullptr;
    QCheckBox* m_checkBox = nullptr;
    QGraphicsOpacityEffect* m_checkBoxAlpha = nullptr;
    QToolButton* m_clearButton = nullptr;
    QLineEdit* m_editValueTextField = nullptr;
    QTimer m_pendingReload;
};
