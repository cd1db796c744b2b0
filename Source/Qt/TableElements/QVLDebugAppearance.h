#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPalette>

#include <string>

class QLabel;
class QPushButton;
class QWidget;

/// True when the palette's texts are lighter than what they stand on.
[[nodiscard]] bool qvl_isDark(const QPalette& palette);

/// How well one colour reads on the other, from 1 to 21.
[[nodiscard]] double qvl_contrast(const QColor& a, const QColor& b);

/// A grey given for a light palette, from 0 (black) to 1 (white). Other palettes get its counterpart: black becomes
/// their text, white their base, and what is between them moves so far towards the text that it stays readable.
[[nodiscard]] QColor qvl_gray(double white, const QPalette& palette);

/// Black or white, whichever reads better on the background.
[[nodiscard]] QColor qvl_textColorOn(const QColor& background);

/// Colours a widget's own text, and leaves what it contains alone.
void qvl_setTextColor(QWidget& widget, const QColor& color);

/// A tool tip that shows the text as it is, even if it looks like HTML.
void qvl_setPlainToolTip(QWidget& widget, const QString& text);

/// The system font in the small size.
[[nodiscard]] QFont qvl_smallFont();

/// A template image of the library's resources, drawn in the colour of the text around it. Null when there is none.
[[nodiscard]] QIcon qvl_templateIcon(const std::string& name);

/// A label whose text can be selected with the mouse. A context menu asked for on it is its parent's.
[[nodiscard]] QLabel* qvl_selectableLabel(QWidget* parent);

/// Deletes the object once nothing of it is running any more. Unlike `deleteLater` it does so in a host too whose event
/// loop is not Qt's.
void qvl_deleteLater(QObject& object);

/// A button for a bottom row: as low as its text allows, but not lower than the rows' 16 points.
[[nodiscard]] QPushButton* qvl_lowButton(const std::string& title, QWidget* parent);
