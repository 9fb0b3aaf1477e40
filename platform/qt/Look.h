// Fonts, colours, words and measures of every window.
#pragma once

class QApplication;
class QWidget;

namespace dbkeeper::qt {

// The style, a font with Japanese letters and half-width kana, a selection that keeps its colour in
// a window or list without the focus, and the toolkit's own words in Japanese where it has them.
void ApplyLook(QApplication& application);

// Pixels at 96 dpi as pixels of the widget's screen.
int Scaled(const QWidget& widget, int pixels);

// A list column's width, which is given for digits of 6 pixels and without the cells' margins, in
// pixels of the widget's font.
int ColumnPixels(const QWidget& widget, int pixels);

}  // namespace dbkeeper::qt
