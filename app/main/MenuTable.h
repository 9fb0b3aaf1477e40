// Popup menus as data: one row an item, with its caption, its command and its enabling rule.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <type_traits>

#include "controls/Menu.h"

namespace dbkeeper {

class TFormMain;

// A command gets the item that was chosen: some commands serve several items.
using MenuCommand = void (*)(TFormMain& form, const MenuItem& sender);
// Whether an item may be chosen now; asked each time the menu pops up.
using MenuRule = bool (*)(const TFormMain& form);

// The member of the main form that a row names, with or without the chosen item as its argument.
template <auto Member>
void Run(TFormMain& form, const MenuItem& sender) {
  if constexpr (std::is_invocable_v<decltype(Member), TFormMain&, const MenuItem&>) {
    (form.*Member)(sender);
  } else {
    (form.*Member)();
  }
}

enum class MenuLook { kPlain, kDefault, kInvisible };

struct MenuRow {
  int depth;  // 0 for an item of the menu itself, 1 for one of the sub-menu opened by the row above
  std::string_view name;
  std::string_view caption;
  MenuCommand command;      // null: the item stays disabled, unless it opens a sub-menu
  MenuRule rule = nullptr;  // null: always enabled, or enabled and disabled by state
  MenuLook look = MenuLook::kPlain;
  std::string_view hint = {};
};

// Builds a menu from its rows. Items without a command are disabled for good.
std::unique_ptr<PopupMenu> BuildMenu(std::string_view name, std::span<const MenuRow> rows,
                                     TFormMain& form);

}  // namespace dbkeeper
