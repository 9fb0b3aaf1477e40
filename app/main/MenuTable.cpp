#include "app/main/MenuTable.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "app/main/Application.h"

namespace dbkeeper {

namespace {

struct Runner {
  const CommandContext& context;

  void operator()(std::monostate) const {}
  void operator()(void (*function)(const CommandContext&)) const { function(context); }
  void operator()(const RowCommand* command) const { RunRowCommand(context.workbench, *command); }
  void operator()(void (TFormMain::*member)()) const { (context.program.FormMain.*member)(); }
};

struct RuledItem {
  MenuItem* item;
  MenuRule rule;
};

}  // namespace

std::unique_ptr<PopupMenu> BuildMenu(const MenuTable& table, const Workbench& workbench,
                                     Application& program) {
  auto menu = std::make_unique<PopupMenu>(std::string(table.name));
  std::vector<RuledItem> ruled;
  std::vector<MenuItem*> open_at;  // the latest item of each depth
  for (std::size_t i = 0; i < table.rows.size(); ++i) {
    const MenuRow& row = table.rows[i];
    const bool has_children = i + 1 < table.rows.size() && table.rows[i + 1].depth > row.depth;
    const bool has_command = !std::holds_alternative<std::monostate>(row.command);
    auto item = std::make_unique<MenuItem>(std::string(row.name), std::string(row.caption));
    item->Hint = std::string(row.hint);
    item->Default = row.look == MenuLook::kDefault;
    item->Visible = row.look != MenuLook::kInvisible;
    item->Enabled = has_command || has_children;
    if (has_command) {
      // The menu owns the item: it outlives the call.
      item->OnClick = [&row, &workbench, &program, sender = item.get()] {
        std::visit(Runner{{workbench, program, *sender}}, row.command);
      };
    }
    const auto depth = static_cast<std::size_t>(row.depth);
    MenuItem& added =
        depth == 0 ? menu->Add(std::move(item)) : open_at.at(depth - 1)->Add(std::move(item));
    open_at.resize(depth);
    open_at.push_back(&added);
    if (row.rule != nullptr && added.Enabled) ruled.push_back({&added, row.rule});
  }
  menu->OnPopup = [&workbench, ruled = std::move(ruled)] {
    for (const RuledItem& entry : ruled) entry.item->Enabled = entry.rule(workbench);
  };
  return menu;
}

}  // namespace dbkeeper
