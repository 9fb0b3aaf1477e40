#include "controls/Menu.h"

#include <utility>

namespace dbkeeper {

namespace {

MenuItem* FindIn(const std::vector<std::unique_ptr<MenuItem>>& items, std::string_view name) {
  for (const auto& item : items) {
    if (item->Name == name) return item.get();
    if (MenuItem* found = FindIn(item->Items(), name)) return found;
  }
  return nullptr;
}

}  // namespace

MenuItem::MenuItem(std::string name, std::string caption) : Name(std::move(name)) {
  Caption = std::move(caption);
}

MenuItem& MenuItem::Add(std::unique_ptr<MenuItem> item) {
  return *items_.emplace_back(std::move(item));
}

void MenuItem::UserChoose() {
  if (Enabled && Visible) Raise(OnClick);
}

MenuItem& PopupMenu::Add(std::unique_ptr<MenuItem> item) {
  return *items_.emplace_back(std::move(item));
}

MenuItem* PopupMenu::Find(std::string_view name) const { return FindIn(items_, name); }

}  // namespace dbkeeper
