// Fonts, colours, words and measures of every window.
#pragma once

#include "controls/Inputs.h"

class QApplication;
class QPalette;
class QFont;
class QWidget;

namespace dbkeeper::qt {

// The style, a font with Japanese letters and half-width kana, colours that follow the desktop's
// light or dark choice as long as the application lives, a selection that is grey in a list without
// the focus, the program's icon, and the toolkit's own words in Japanese where it has them.
void ApplyLook(QApplication& application);

enum class Scheme { kLight, kDark };

// The colours of all windows.
void ApplyScheme(Scheme scheme);

// Whether letters are lighter than what they stand on.
bool IsDark(const QPalette& palette);

// A field of the window's colour or, locked, of the buttons'.
void ShowFieldColor(QWidget& field, Color color);
// Letters of one width, Japanese ones of two, somewhat larger than those of `widget`.
QFont CodeFont(const QWidget& widget);

// Pixels at 96 dpi as pixels of the widget's screen.
int Scaled(const QWidget& widget, int pixels);

// A list column's width, which is given for digits of 6 pixels and without the cells' margins, in
// pixels of the widget's font.
int ColumnPixels(const QWidget& widget, int pixels);

}  // namespace dbkeeper::qt
