#include "QVLDebugValueView.h"

#include "QVLDebugAppearance.h"
#include "QVLDebugCheckBox.h"
#include "QVLDebugLocalization.h"
#include "QVLDebugText.h"
#include "QVLDebugValueButton.h"

#include <QApplication>
#include <QCheckBox>
#include <QFocusEvent>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPointer>
#include <QToolButton>

#include <limits>

namespace {

constexpr int kClearButtonWidth = 16;
constexpr int kClearButtonDistance = 5;
constexpr int kEditFrame = 5;
constexpr double kPlainAlpha = 0.5;
constexpr double kPlainGray = 0.5;
constexpr const char* kNullText = "null value";

} // namespace

QVLDebugValueView::QVLDebugValueView(QWidget* parent) : QWidget(parent) {
    m_pendingReload.setSingleShot(true);
    connect(&m_pendingReload, &QTimer::timeout, this, &QVLDebugValueView::reload);
    setupSubviews();
    setupEditTextField();
    reload();
}

void QVLDebugValueView::setupSubviews() {
    m_plainButton = new QVLDebugValueButton(this);
    m_checkBox = new QVLDebugCheckBox(this);
    m_checkBoxAlpha = new QGraphicsOpacityEffect(m_checkBox);
    m_checkBox->setGraphicsEffect(m_checkBoxAlpha);
    m_clearButton = new QToolButton(this);
    m_clearButton->setIcon(qvl_templateIcon("quorvelClearTemplate"));
    m_clearButton->setAutoRaise(true);
    m_clearButton->setFixedSize(kClearButtonWidth, kClearButtonWidth);
    m_clearButton->setFocusPolicy(Qt::StrongFocus);
    m_clearButton->setToolTip(qvl_text(qvl_localizedString("Remove Override")));
    m_clearButton->setAccessibleName(m_clearButton->toolTip());

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kClearButtonDistance);
    layout->addWidget(m_plainButton);
    layout->addWidget(m_checkBox);
    layout->addWidget(m_clearButton);
    layout->addStretch(1);
    // The editor has a frame around its text.
    setMinimumHeight(fontMetrics().height() + kEditFrame);

    connect(m_plainButton, &QAbstractButton::clicked, this, [this] { valueButtonPressed(m_plainButton); });
    connect(m_checkBox, &QAbstractButton::clicked, this, [this] { valueButtonPressed(m_checkBox); });
    connect(m_clearButton, &QAbstractButton::clicked, this, [this] { clearButtonPressed(m_clearButton); });
}

void QVLDebugValueView::setupEditTextField() {
    m_editValueTextField = new QLineEdit(this);
    m_editValueTextField->setPlaceholderText(qvl_text(qvl_localizedString(kNullText)));
    m_editValueTextField->setAccessibleName(qvl_text(qvl_localizedString("Override")));
    // A value is edited whole, however long it is.
    m_editValueTextField->setMaxLength(std::numeric_limits<int>::max());
    m_editValueTextField->installEventFilter(this);
    m_editValueTextField->hide();
    connect(m_editValueTextField, &QLineEdit::returnPressed, this, [this] { commitEditing(m_editValueTextField); });
    updateEditColors();
}

void QVLDebugValueView::updateEditColors() {
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Base, qvl_gray(1, palette));
    palette.setColor(QPalette::Text, qvl_gray(0, palette));
    m_editValueTextField->setPalette(palette);
}

void QVLDebugValueView::setValue(const QVLDebugValue& value, QVLDebugValueType type) {
    if (value == m_value && type == m_valueType) {
        return;
    }
    m_value = value;
    m_valueType = type;
    reload();
}

void QVLDebugValueView::setOverrideValue(const QVLDebugValue& overrideValue) {
    if (overrideValue == m_overrideValue) {
        return;
    }
    m_overrideValue = overrideValue;
    reload();
}

void QVLDebugValueView::setNeedsReload() {
    m_pendingReload.start(0);
}

void QVLDebugValueView::reload() {
    const bool isBool = m_valueType == QVLDebugValueTypeBool;
    const bool isOverridden = !m_overrideValue.isNothing();
    m_plainButton->setVisible(!isBool);
    m_checkBox->setVisible(isBool);
    if (isBool) {
        m_checkBox->setChecked(shownValue().JSONValue().qvl_castToBoolValue());
        m_checkBoxAlpha->setOpacity(isOverridden ? 1.0 : kPlainAlpha);
        // Drawing through an effect costs a picture each time.
        m_checkBoxAlpha->setEnabled(!isOverridden);
    } else {
        const QVLDebugAttributedValue shown = attributedValue();
        m_plainButton->setAttributedText(shown.text, shown.font, shown.color);
    }
    m_clearButton->setVisible(isOverridden);
}

const QVLDebugValue& QVLDebugValueView::shownValue() const {
    return m_overrideValue.isNothing() ? m_value : m_overrideValue;
}

void QVLDebugValueView::updateOverride(const QVLDebugValue& overrideValue) {
    setOverrideValue(overrideValue);
    if (m_delegate) {
        m_delegate->debugValueViewOverrideValueDidChange(*this);
    }
}

QVLDebugAttributedValue QVLDebugValueView::attributedValue() const {
    const std::optional<std::string> text = localizedString();
    QFont font = QApplication::font();
    font.setItalic(m_valueType == QVLDebugValueTypeNull);
    return {qvl_text(text ? *text : qvl_localizedString(kNullText)), font,
            qvl_gray(m_overrideValue.isNothing() ? kPlainGray : 0, QApplication::palette())};
}

std::optional<std::string> QVLDebugValueView::localizedString() const {
    std::optional<std::string> text;
    if (m_delegate) {
        text = m_delegate->debugValueView(*this, shownValue(), m_valueType);
    }
    return text ? text : stringValue();
}

std::optional<std::string> QVLDebugValueView::stringValue() const {
    return m_coding.stringFromValue(shownValue(), m_valueType);
}

QVLDebugValue QVLDebugValueView::valueFromString(std::string_view text) const {
    return m_coding.valueFromString(text, m_valueType);
}

void QVLDebugValueView::showEditTextField() {
    if (isEditing()) {
        return;
    }
    m_isEditing = true;
    m_editValueTextField->setText(qvl_text(stringValue().value_or("")));
    m_editValueTextField->setGeometry(rect());
    m_editValueTextField->show();
    m_editValueTextField->raise();
    m_editValueTextField->setFocus(Qt::OtherFocusReason);
    m_editValueTextField->selectAll();
}

QVLDebugValue QVLDebugValueView::typedValue() const {
    const std::string text = qvl_text(m_editValueTextField->text());
    // The text of a date lacks its fractions of a second, and does not tell the hours apart that summer time repeats.
    const bool isSameDate = m_valueType == QVLDebugValueTypeDate && !text.empty() && text == stringValue();
    return isSameDate ? shownValue() : valueFromString(text);
}

void QVLDebugValueView::commitEditing(QLineEdit* /*sender*/) {
    const QPointer<QVLDebugValueView> self(this);
    updateOverride(typedValue());
    if (self) {
        hideEditTextField();
        valueButton()->setFocus(Qt::OtherFocusReason);
    }
}

void QVLDebugValueView::hideEditTextField() {
    // Hiding takes the focus away, which would end the editing once more.
    m_isEditing = false;
    m_editValueTextField->hide();
}

bool QVLDebugValueView::isEditing() const {
    return m_isEditing;
}

void QVLDebugValueView::valueButtonPressed(QAbstractButton* /*sender*/) {
    if (m_valueType == QVLDebugValueTypeBool) {
        updateOverride(QVLJSONValue(m_checkBox->isChecked()));
    } else {
        showEditTextField();
    }
}

void QVLDebugValueView::clearButtonPressed(QAbstractButton* sender) {
    if (sender->hasFocus()) {
        // It is about to be hidden, which would hand the focus to the next row.
        valueButton()->setFocus(Qt::OtherFocusReason);
    }
    updateOverride({});
}

bool QVLDebugValueView::control(QLineEdit* /*control*/, QKeySequence::StandardKey doCommand) {
    if (doCommand != QKeySequence::Cancel) {
        return false;
    }
    hideEditTextField();
    valueButton()->setFocus(Qt::OtherFocusReason);
    return true;
}

void QVLDebugValueView::controlTextDidEndEditing(QLineEdit* /*sender*/) {
    hideEditTextField();
}

QAbstractButton* QVLDebugValueView::valueButton() const {
    return m_valueType == QVLDebugValueTypeBool ? static_cast<QAbstractButton*>(m_checkBox) : m_plainButton;
}

double QVLDebugValueView::valueButtonAlpha() const {
    return m_valueType == QVLDebugValueTypeBool ? m_checkBoxAlpha->opacity() : 1.0;
}

bool QVLDebugValueView::filterKey(const QKeyEvent& event) {
    if (event.matches(QKeySequence::Cancel)) {
        return control(m_editValueTextField, QKeySequence::Cancel);
    }
    // A key that is held down since it opened the editor commits nothing.
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    if (isReturn && event.isAutoRepeat()) {
        return true;
    }
    // The field has no use for these, and would pass them on to the table, which scrolls.
    return event.key() == Qt::Key_Up || event.key() == Qt::Key_Down || event.key() == Qt::Key_PageUp ||
           event.key() == Qt::Key_PageDown;
}

bool QVLDebugValueView::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_editValueTextField || !isEditing()) {
        return QWidget::eventFilter(watched, event);
    }
    if (event->type() == QEvent::KeyPress && filterKey(static_cast<const QKeyEvent&>(*event))) {
        return true;
    }
    if (event->type() == QEvent::FocusOut) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        // The field's own menu, and another window in front, only borrow the focus.
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason) {
            controlTextDidEndEditing(m_editValueTextField);
        }
    }
    return QWidget::eventFilter(watched, event);
}

void QVLDebugValueView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationFontChange) {
        updateEditColors();
        setNeedsReload();
    }
}

void QVLDebugValueView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_editValueTextField->setGeometry(rect());
}
