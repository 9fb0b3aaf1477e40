#include "platform/qt/Look.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QLibraryInfo>
#include <QPalette>
#include <QProxyStyle>
#include <QTranslator>
#include <QWidget>

namespace dbkeeper::qt {

namespace {

// The first of them that the machine has; fontconfig finds another one where it has none.
const QStringList kFontFamilies = {"VL PGothic", "IPAPGothic", "Noto Sans CJK JP", "sans-serif"};
constexpr double kFontPoints = 9.75;  // 13 pixels at 96 dpi
constexpr int kDesignDpi = 96;
constexpr int kRowAir = 5;
constexpr int kCellMargin = 4;
constexpr int kDesignDigit = 6;  // pixels

// Rows of lists and trees with some air around the letters.
class AiryStyle : public QProxyStyle {
 public:
  AiryStyle() : QProxyStyle("Fusion") {}

  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override {
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_ItemViewItem) result.rheight() += kRowAir;
    return result;
  }

  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override {
    if (metric == PM_FocusFrameHMargin || metric == PM_HeaderMargin) return kCellMargin;
    return QProxyStyle::pixelMetric(metric, option, widget);
  }
};

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
  QApplication::setStyle(new AiryStyle);  // the application owns it
  QApplication::setPalette(MakePalette());
  QFont font;
  font.setFamilies(kFontFamilies);
  font.setPointSizeF(kFontPoints);
  application.setFont(font);
  auto* const words = new QTranslator(&application);
  if (words->load("qtbase_ja", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(words);
  }
}

int Scaled(const QWidget& widget, int pixels) {
  return (pixels * widget.logicalDpiX() + kDesignDpi / 2) / kDesignDpi;
}

int ColumnPixels(const QWidget& widget, int pixels) {
  const int digit = widget.fontMetrics().horizontalAdvance('0');
  return pixels * digit / kDesignDigit + 2 * kCellMargin;
}

}  // namespace dbkeeper::qt
