// Popup menus as data: one row an item, with its caption, its command and its enabling rule.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <variant>

#include "app/main/RowCommand.h"
#include "app/workbench/Workbench.h"
#include "controls/Menu.h"

namespace dbkeeper {

class Application;
class TFormMain;

// What a menu command may see.
struct CommandContext {
  const Workbench& workbench;
  Application& program;  // the other windows
  MenuItem& sender;      // the item that was chosen: some commands serve several items
};

// What an item does: a function, a command on the selected row, or what the main window does
// itself. With none of them the item stays disabled, unless it opens a sub-menu.
using MenuCommand = std::variant<std::monostate, void (*)(const CommandContext& context),
                                 const RowCommand*, void (TFormMain::*)()>;
inline constexpr MenuCommand kNoCommand = {};

// Whether an item may be chosen now; asked each time the menu pops up.
using MenuRule = bool (*)(const Workbench& workbench);

enum class MenuLook { kPlain, kDefault, kInvisible };

struct MenuRow {
  int depth;  // 0 for an item of the menu itself, 1 for one of the sub-menu opened by the row above
  std::string_view name;
  std::string_view caption;
  MenuCommand command;
  MenuRule rule = nullptr;  // null: always enabled
  MenuLook look = MenuLook::kPlain;
  std::string_view hint = {};
};

struct MenuTable {
  std::string_view name;
  std::span<const MenuRow> rows;
};

// Builds a menu from its table. What the arguments refer to outlives the menu.
std::unique_ptr<PopupMenu> BuildMenu(const MenuTable& table, const Workbench& workbench,
                                     Application& program);

}  // namespace dbkeeper
