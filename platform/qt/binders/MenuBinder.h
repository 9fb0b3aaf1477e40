// Popup menus, made from their models each time they are shown.
#pragma once

#include <memory>
#include <vector>

#include "controls/ActionGuard.h"
#include "controls/Menu.h"

class QMenu;
class QPoint;
class QWidget;

namespace dbkeeper::qt {

// Adds an action for each item, in order; a caption "-" is a separator. The actions carry the
// items' names. A choice is handled once the menu has gone; items and guard must outlive `owner`,
// which must outlive the menu.
void FillMenu(QMenu& menu, const std::vector<std::unique_ptr<MenuItem>>& items,
              const ActionGuard& guard, QWidget& owner);

// Tells the menu that it pops up, then shows it at a place of the screen; returns at once. Nothing
// is shown when the menu has no visible item.
void ShowPopup(PopupMenu& menu, const ActionGuard& guard, QWidget& owner, const QPoint& place);

}  // namespace dbkeeper::qt
