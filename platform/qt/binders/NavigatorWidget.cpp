#include "platform/qt/binders/NavigatorWidget.h"

#include <QHBoxLayout>
#include <algorithm>
#include <array>

#include "platform/qt/Icons.h"
#include "platform/qt/Keep.h"
#include "platform/qt/Look.h"
#include "platform/qt/binders/CellEditor.h"

namespace dbkeeper::qt {

namespace {

constexpr int kIconSize = 12;
constexpr int kHeight = 24;

struct Look {
  NavigatorButton button;
  const char* name;
  const char* hint;
  const char* icon;
};

constexpr std::array<Look, 10> kLooks = {{
    {NavigatorButton::kFirst, "First", "先頭", "first"},
    {NavigatorButton::kPrior, "Prior", "前", "prior"},
    {NavigatorButton::kNext, "Next", "次", "next"},
    {NavigatorButton::kLast, "Last", "最終", "last"},
    {NavigatorButton::kInsert, "Insert", "挿入", "insert"},
    {NavigatorButton::kDelete, "Delete", "削除", "delete"},
    {NavigatorButton::kEdit, "Edit", "編集", "edit"},
    {NavigatorButton::kPost, "Post", "データ更新", "post"},
    {NavigatorButton::kCancel, "Cancel", "取消", "cancel"},
    {NavigatorButton::kRefresh, "Refresh", "最新の情報に更新", "refresh"},
}};

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
    button->setIcon(NamedIcon(look.icon));
    button->setIconSize(QSize(Scaled(*this, kIconSize), Scaled(*this, kIconSize)));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    button->setFixedHeight(Scaled(*this, kHeight));
    connect(button, &QToolButton::clicked, this, [this, sign = look.button] {
      if (FinishTyping()) guard_.Run([&] { navigator_.UserPress(sign); });
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
