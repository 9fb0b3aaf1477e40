// The record navigator: a row of buttons that move in the rows of a grid and edit them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "controls/Control.h"
#include "controls/DataGrid.h"

namespace dbkeeper {

enum class NavigatorButton {
  kFirst,
  kPrior,
  kNext,
  kLast,
  kInsert,
  kDelete,
  kEdit,
  kPost,
  kCancel,
  kRefresh
};

using NavigatorButtons = std::vector<NavigatorButton>;

// The four that only move.
const NavigatorButtons& MovingButtons();
// All ten.
const NavigatorButtons& AllNavigatorButtons();

class Navigator : public Control {
 public:
  explicit Navigator(std::string name = "");

  Property<NavigatorButtons> VisibleButtons;  // the moving ones at first
  Property<int> Width{100};
  // Null: every button is disabled. The source must outlive its place here.
  Property<GridSource*> Source{nullptr};
  // Asked before a row is deleted; nothing here deletes without asking.
  std::function<bool()> ConfirmDelete;

  // Whether a press would do something now; it may change whenever the source tells a change.
  bool ButtonEnabled(NavigatorButton button) const;
  // Nothing happens where the button is hidden or disabled.
  void UserPress(NavigatorButton button);
};

}  // namespace dbkeeper
