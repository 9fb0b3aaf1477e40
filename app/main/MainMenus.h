// The main window's popup menus.
#pragma once

#include <memory>
#include <string_view>

#include "controls/Menu.h"

namespace dbkeeper {

class TFormMain;

// The menu of that name, built from its table. Throws std::out_of_range when there is none.
std::unique_ptr<PopupMenu> BuildMainMenu(std::string_view name, TFormMain& form);

}  // namespace dbkeeper
