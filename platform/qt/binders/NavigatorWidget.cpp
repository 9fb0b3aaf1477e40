#include "platform/qt/binders/NavigatorWidget.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <array>
#include <initializer_list>

#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"

namespace dbkeeper::qt {

namespace {

constexpr int kIconSize = 12;
constexpr int kHeight = 24;

// Signs are drawn in a square of 12 units.
QPainterPath Polygon(std::initializer_list<QPointF> points) {
  QPainterPath path;
  path.addPolygon(QPolygonF(QList<QPointF>(points)));
  path.closeSubpath();
  return path;
}

QPainterPath Bar(double x) {
  QPainterPath path;
  path.addRect(x, 1, 2, 10);
  return path;
}

QPainterPath First() { return Bar(1) + Polygon({{10, 1}, {10, 11}, {4, 6}}); }
QPainterPath Prior() { return Polygon({{9, 1}, {9, 11}, {3, 6}}); }
QPainterPath Next() { return Polygon({{3, 1}, {3, 11}, {9, 6}}); }
QPainterPath Last() { return Bar(9) + Polygon({{2, 1}, {2, 11}, {8, 6}}); }
QPainterPath Minus() { return Polygon({{1, 5}, {11, 5}, {11, 7}, {1, 7}}); }
QPainterPath Plus() { return Minus() + Polygon({{5, 1}, {7, 1}, {7, 11}, {5, 11}}); }
QPainterPath Triangle() { return Polygon({{1, 10}, {6, 2}, {11, 10}}); }
QPainterPath Check() {
  return Polygon({{1, 6}, {2.5, 4.5}, {5, 7.5}, {9.5, 2}, {11, 3.5}, {5, 10.5}});
}
QPainterPath Cross() {
  return Polygon({{2.5, 1}, {11, 9.5}, {9.5, 11}, {1, 2.5}}) +
         Polygon({{9.5, 1}, {11, 2.5}, {2.5, 11}, {1, 9.5}});
}
QPainterPath Refresh() {
  QPainterPath ring;
  ring.moveTo(10, 6);
  ring.arcTo(2, 2, 8, 8, 0, -270);
  QPainterPathStroker stroker;
  stroker.setWidth(1.8);
  return stroker.createStroke(ring) + Polygon({{6, -0.5}, {6, 4.5}, {10, 2}});
}

struct Look {
  NavigatorButton button;
  const char* name;
  const char* hint;
  QPainterPath (*sign)();
};

constexpr std::array<Look, 10> kLooks = {{
    {NavigatorButton::kFirst, "First", "先頭", &First},
    {NavigatorButton::kPrior, "Prior", "前", &Prior},
    {NavigatorButton::kNext, "Next", "次", &Next},
    {NavigatorButton::kLast, "Last", "最終", &Last},
    {NavigatorButton::kInsert, "Insert", "挿入", &Plus},
    {NavigatorButton::kDelete, "Delete", "削除", &Minus},
    {NavigatorButton::kEdit, "Edit", "編集", &Triangle},
    {NavigatorButton::kPost, "Post", "データ更新", &Check},
    {NavigatorButton::kCancel, "Cancel", "取消", &Cross},
    {NavigatorButton::kRefresh, "Refresh", "最新の情報に更新", &Refresh},
}};

QPixmap Draw(const QPainterPath& sign, const QColor& color, double scale) {
  const int side = static_cast<int>(kIconSize * scale);
  QPixmap pixmap(side, side);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(scale, scale);
  painter.fillPath(sign, color);
  return pixmap;
}

QIcon IconOf(const QPainterPath& sign, const QWidget& widget) {
  const double scale = Scaled(widget, 100) / 100.0 * widget.devicePixelRatioF();
  QIcon icon;
  const QPalette& palette = widget.palette();
  icon.addPixmap(Draw(sign, palette.color(QPalette::Active, QPalette::ButtonText), scale));
  icon.addPixmap(Draw(sign, palette.color(QPalette::Disabled, QPalette::Mid), scale),
                 QIcon::Disabled);
  return icon;
}

}  // namespace

NavigatorWidget::NavigatorWidget(Navigator& navigator, const ActionGuard& guard, QWidget* parent)
    : QWidget(parent), navigator_(navigator), guard_(guard) {
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  for (const Look& look : kLooks) {
    auto* button = new QToolButton(this);
    button->setObjectName(look.name);
    button->setToolTip(look.hint);
    button->setIcon(IconOf(look.sign(), *this));
    button->setIconSize(QSize(Scaled(*this, kIconSize), Scaled(*this, kIconSize)));
    button->setAutoRaise(true);
    // A press takes the focus, so that a cell being edited gives its text first.
    button->setFocusPolicy(Qt::StrongFocus);
    button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    button->setFixedHeight(Scaled(*this, kHeight));
    connect(button, &QToolButton::clicked, this, [this, sign = look.button] {
      guard_.Run([&] { navigator_.UserPress(sign); });
      ShowEnabled();
    });
    layout->addWidget(button);
    buttons_.push_back({look.button, button});
  }
  Keep(*this, navigator_.Width.Observe([this](int width) { setFixedWidth(Scaled(*this, width)); }));
  Keep(*this, navigator_.VisibleButtons.Observe([this](const NavigatorButtons& visible) {
    for (const Entry& entry : buttons_) {
      entry.widget->setVisible(std::find(visible.begin(), visible.end(), entry.button) !=
                               visible.end());
    }
    ShowEnabled();
  }));
  Keep(*this, navigator_.Source.Observe([this](GridSource* source) { Follow(source); }));
}

void NavigatorWidget::Follow(GridSource* source) {
  source_changes_ = Subscription();
  if (source != nullptr) {
    source_changes_ =
        source->Changed.Connect([this](GridSource::Change, std::int64_t) { ShowEnabled(); });
  }
  ShowEnabled();
}

void NavigatorWidget::ShowEnabled() {
  for (const Entry& entry : buttons_) {
    entry.widget->setEnabled(navigator_.ButtonEnabled(entry.button));
  }
}

}  // namespace dbkeeper::qt
