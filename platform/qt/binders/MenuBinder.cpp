#include "platform/qt/binders/MenuBinder.h"

#include <QMenu>
#include <algorithm>

#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

namespace {

void FillAction(QAction& action, MenuItem& item, const ActionGuard& guard, QWidget& owner) {
  action.setObjectName(ToQt(item.Name));
  action.setText(ToQtCaption(item.Caption()));
  action.setEnabled(item.Enabled());
  action.setVisible(item.Visible());
  action.setStatusTip(ToQt(item.Hint));
  action.setSeparator(item.Caption() == "-");
  if (item.Checked()) {
    action.setCheckable(true);
    action.setChecked(true);
  }
  QObject::connect(&action, &QAction::triggered, &owner, [&item, &guard, &owner] {
    // After the menu has gone: a command may open dialogs, and the menu does not live that long.
    QMetaObject::invokeMethod(
        &owner, [&item, &guard] { guard.Run([&item] { item.UserChoose(); }); },
        Qt::QueuedConnection);
  });
}

}  // namespace

void FillMenu(QMenu& menu, const std::vector<std::unique_ptr<MenuItem>>& items,
              const ActionGuard& guard, QWidget& owner) {
  for (const auto& item : items) {
    QAction* action = nullptr;
    if (item->Items().empty()) {
      action = menu.addAction(QString());
    } else {
      QMenu* sub_menu = menu.addMenu(QString());
      FillMenu(*sub_menu, item->Items(), guard, owner);
      action = sub_menu->menuAction();
    }
    FillAction(*action, *item, guard, owner);
    if (item->Default) menu.setDefaultAction(action);
  }
}

void ShowPopup(PopupMenu& menu, const ActionGuard& guard, QWidget& owner, const QPoint& place) {
  guard.Run([&menu] { menu.UserPopup(); });
  const auto visible = [](const auto& item) { return item->Visible(); };
  if (std::none_of(menu.Items().begin(), menu.Items().end(), visible)) return;
  auto* shown = new QMenu(&owner);
  shown->setObjectName(ToQt(menu.Name));
  FillMenu(*shown, menu.Items(), guard, owner);
  QObject::connect(shown, &QMenu::aboutToHide, shown, &QObject::deleteLater);
  shown->popup(place);
}

}  // namespace dbkeeper::qt
