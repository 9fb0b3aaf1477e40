#include "platform/qt/Look.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <QWidget>

namespace dbkeeper::qt {

namespace {

// The first of them that the machine has; fontconfig finds another one where it has none.
const QStringList kFontFamilies = {"VL PGothic", "IPAPGothic", "Noto Sans CJK JP", "sans-serif"};
constexpr double kFontPoints = 9.75;  // 13 pixels at 96 dpi
constexpr int kDesignDpi = 96;

QPalette MakePalette() {
  const QColor face(0xf0, 0xf0, 0xf0);
  QPalette palette(face);
  const QColor highlight(0x2f, 0x6f, 0xb7);
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    palette.setColor(group, QPalette::Highlight, highlight);
    palette.setColor(group, QPalette::HighlightedText, Qt::white);
  }
  palette.setColor(QPalette::Base, Qt::white);
  return palette;
}

}  // namespace

void ApplyLook(QApplication& application) {
  QApplication::setStyle("Fusion");
  QApplication::setPalette(MakePalette());
  QFont font;
  font.setFamilies(kFontFamilies);
  font.setPointSizeF(kFontPoints);
  application.setFont(font);
}

int Scaled(const QWidget& widget, int pixels) {
  return (pixels * widget.logicalDpiX() + kDesignDpi / 2) / kDesignDpi;
}

}  // namespace dbkeeper::qt
