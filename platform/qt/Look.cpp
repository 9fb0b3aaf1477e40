#include "platform/qt/Look.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QLibraryInfo>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>
#include <QTranslator>
#include <QWidget>

#include "platform/qt/DesktopColors.h"
#include "platform/qt/Icons.h"

namespace dbkeeper::qt {

namespace {

// The first of them that the machine has; fontconfig finds another one where it has none.
const QStringList kFontFamilies = {"VL PGothic", "IPAPGothic", "Noto Sans CJK JP", "sans-serif"};
const QStringList kCodeFamilies = {"VL Gothic", "IPAGothic", "Noto Sans Mono CJK JP", "monospace"};
constexpr double kCodePoints = 0.75;  // larger than the widget's own
constexpr double kFontPoints = 9.75;  // 13 pixels at 96 dpi
constexpr int kDesignDpi = 96;
constexpr int kRowAir = 5;
constexpr int kCellMargin = 4;
constexpr int kDesignDigit = 6;  // pixels
const char* const kFaceProperty = "buttonFace";

// The selection of a list that does not have the focus, so that one sees which pane the keys go to.
void Fade(QStyleOptionViewItem& option) {
  const QPalette palette = option.palette;
  QColor faded = palette.color(QPalette::Text);
  constexpr double kFaint = 0.22;
  const QColor base = palette.color(QPalette::Base);
  const auto mix = [](int over, int under) {
    return static_cast<int>(over * kFaint + under * (1 - kFaint));
  };
  faded.setRgb(mix(faded.red(), base.red()), mix(faded.green(), base.green()),
               mix(faded.blue(), base.blue()));
  option.palette.setColor(QPalette::Highlight, faded);
  option.palette.setColor(QPalette::HighlightedText, palette.color(QPalette::Text));
}

// Rows of lists and trees with some air around the letters.
class AiryStyle : public QProxyStyle {
 public:
  AiryStyle() : QProxyStyle("Fusion") {}

  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override {
    const auto* const item = qstyleoption_cast<const QStyleOptionViewItem*>(option);
    if (element != CE_ItemViewItem || item == nullptr || !Faded(*item, widget)) {
      return QProxyStyle::drawControl(element, option, painter, widget);
    }
    QStyleOptionViewItem faded = *item;
    Fade(faded);
    QProxyStyle::drawControl(element, &faded, painter, widget);
  }

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    const auto* const item = qstyleoption_cast<const QStyleOptionViewItem*>(option);
    const bool selection = element == PE_PanelItemViewRow || element == PE_PanelItemViewItem;
    if (selection && item != nullptr && Faded(*item, widget)) {
      QStyleOptionViewItem faded = *item;
      Fade(faded);
      return QProxyStyle::drawPrimitive(element, &faded, painter, widget);
    }
    const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    if (element == PE_PanelLineEdit && frame != nullptr && widget != nullptr &&
        widget->property(kFaceProperty).toBool()) {
      QStyleOptionFrame locked = *frame;
      locked.palette.setBrush(QPalette::Base, frame->palette.button());
      return QProxyStyle::drawPrimitive(element, &locked, painter, widget);
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
  }

  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override {
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_ItemViewItem) result.rheight() += kRowAir;
    return result;
  }

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    // The toolkit's own boxes have plain buttons, as the forms.
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
  }

  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override {
    if (metric == PM_FocusFrameHMargin || metric == PM_HeaderMargin) return kCellMargin;
    return QProxyStyle::pixelMetric(metric, option, widget);
  }

 private:
  // The list below a combo box has the focus of the box.
  static bool Faded(const QStyleOptionViewItem& item, const QWidget* widget) {
    return item.state.testFlag(State_Selected) && widget != nullptr && !widget->hasFocus() &&
           widget->window()->windowType() != Qt::Popup;
  }
};

struct SchemeColors {
  QColor face;
  QColor base;
  QColor alternate;
  QColor letters;
  QColor faint;  // disabled letters
  QColor link;
};

SchemeColors ColorsOf(Scheme scheme) {
  if (scheme == Scheme::kLight) {
    return {QColor(0xf0, 0xf0, 0xf0), Qt::white,
            QColor(0xf7, 0xf7, 0xf7), Qt::black,
            QColor(0x80, 0x80, 0x80), QColor(0x2f, 0x6f, 0xb7)};
  }
  return {QColor(0x2d, 0x31, 0x37), QColor(0x1f, 0x22, 0x27), QColor(0x25, 0x29, 0x2e),
          QColor(0xe4, 0xe7, 0xeb), QColor(0x85, 0x8c, 0x95), QColor(0x6f, 0xab, 0xea)};
}

QPalette MakePalette(Scheme scheme) {
  const SchemeColors colors = ColorsOf(scheme);
  QPalette palette(colors.face);
  constexpr QPalette::ColorRole kLetters[] = {QPalette::WindowText, QPalette::Text,
                                              QPalette::ButtonText, QPalette::ToolTipText};
  for (const QPalette::ColorRole role : kLetters) {
    palette.setColor(role, colors.letters);
    palette.setColor(QPalette::Disabled, role, colors.faint);
  }
  palette.setColor(QPalette::Base, colors.base);
  palette.setColor(QPalette::AlternateBase, colors.alternate);
  palette.setColor(QPalette::ToolTipBase, colors.base);
  palette.setColor(QPalette::PlaceholderText, colors.faint);
  palette.setColor(QPalette::Link, colors.link);
  const QColor highlight(0x2f, 0x6f, 0xb7);
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    palette.setColor(group, QPalette::Highlight, highlight);
    palette.setColor(group, QPalette::HighlightedText, Qt::white);
  }
  return palette;
}

}  // namespace

void ApplyLook(QApplication& application) {
  // What the desktop's own colours are is known only before others are set.
  const Scheme scheme = IsDark(QGuiApplication::palette()) ? Scheme::kDark : Scheme::kLight;
  QApplication::setStyle(new AiryStyle);  // the application owns it
  ApplyScheme(scheme);
  new DesktopColors(application);  // the application owns it
  QApplication::setWindowIcon(ApplicationIcon());
  QFont font;
  font.setFamilies(kFontFamilies);
  font.setPointSizeF(kFontPoints);
  application.setFont(font);
  auto* const words = new QTranslator(&application);
  if (words->load("qtbase_ja", QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(words);
  }
}

void ApplyScheme(Scheme scheme) { QApplication::setPalette(MakePalette(scheme)); }

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Text).lightness() > palette.color(QPalette::Base).lightness();
}

void ShowFieldColor(QWidget& field, Color color) {
  field.setProperty(kFaceProperty, color == Color::kButtonFace);
  field.update();
}

QFont CodeFont(const QWidget& widget) {
  QFont letters;
  letters.setFamilies(kCodeFamilies);
  letters.setStyleHint(QFont::TypeWriter);
  letters.setPointSizeF(widget.font().pointSizeF() + kCodePoints);
  return letters;
}

int Scaled(const QWidget& widget, int pixels) {
  return (pixels * widget.logicalDpiX() + kDesignDpi / 2) / kDesignDpi;
}

int ColumnPixels(const QWidget& widget, int pixels) {
  const int digit = widget.fontMetrics().horizontalAdvance('0');
  return pixels * digit / kDesignDigit + 2 * kCellMargin;
}

}  // namespace dbkeeper::qt
