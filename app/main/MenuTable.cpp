#include "app/main/MenuTable.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace dbkeeper {

namespace {

std::unique_ptr<MenuItem> BuildItem(const MenuRow& row, bool has_children, TFormMain& form) {
  auto item = std::make_unique<MenuItem>(std::string(row.name), std::string(row.caption));
  item->Hint = std::string(row.hint);
  item->Default = row.look == MenuLook::kDefault;
  item->Visible = row.look != MenuLook::kInvisible;
  item->Enabled = row.command != nullptr || has_children;
  if (row.command != nullptr) {
    // The menu owns the item and the form owns the menu: both outlive the call.
    item->OnClick = [&form, command = row.command, sender = item.get()] { command(form, *sender); };
  }
  return item;
}

struct RuledItem {
  MenuItem* item;
  MenuRule rule;
};

}  // namespace

std::unique_ptr<PopupMenu> BuildMenu(std::string_view name, std::span<const MenuRow> rows,
                                     TFormMain& form) {
  auto menu = std::make_unique<PopupMenu>(std::string(name));
  std::vector<RuledItem> ruled;
  std::vector<MenuItem*> open_at;  // the latest item of each depth
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const MenuRow& row = rows[i];
    const bool has_children = i + 1 < rows.size() && rows[i + 1].depth > row.depth;
    auto item = BuildItem(row, has_children, form);
    const auto depth = static_cast<std::size_t>(row.depth);
    MenuItem& added =
        depth == 0 ? menu->Add(std::move(item)) : open_at.at(depth - 1)->Add(std::move(item));
    open_at.resize(depth);
    open_at.push_back(&added);
    if (row.rule != nullptr && added.Enabled) ruled.push_back({&added, row.rule});
  }
  menu->OnPopup = [&form, ruled = std::move(ruled)] {
    for (const RuledItem& entry : ruled) entry.item->Enabled = entry.rule(form);
  };
  return menu;
}

}  // namespace dbkeeper
