// Popup menus: items with captions, states and commands.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "controls/Control.h"

namespace dbkeeper {

class MenuItem {
 public:
  MenuItem(std::string name, std::string caption);

  const std::string Name;
  Property<std::string> Caption;
  Property<bool> Enabled{true};
  Property<bool> Visible{true};
  Property<bool> Checked{false};
  std::string Hint;
  bool Default = false;  // shown bold; the choice of a double click
  Event OnClick;

  const std::vector<std::unique_ptr<MenuItem>>& Items() const { return items_; }
  MenuItem& Add(std::unique_ptr<MenuItem> item);
  // A person chose the item; nothing happens while it is disabled or hidden.
  void UserChoose();

 private:
  std::vector<std::unique_ptr<MenuItem>> items_;
};

class PopupMenu {
 public:
  explicit PopupMenu(std::string name) : Name(std::move(name)) {}
  PopupMenu(const PopupMenu&) = delete;
  PopupMenu& operator=(const PopupMenu&) = delete;

  const std::string Name;
  Event OnPopup;  // before the menu is shown: enables and disables its items

  const std::vector<std::unique_ptr<MenuItem>>& Items() const { return items_; }
  MenuItem& Add(std::unique_ptr<MenuItem> item);
  // The item of that name at any depth, or null.
  MenuItem* Find(std::string_view name) const;
  void UserPopup() { Raise(OnPopup); }

 private:
  std::vector<std::unique_ptr<MenuItem>> items_;
};

}  // namespace dbkeeper
