// The main window's layout: tree left, list right, the table browser's pane below the list, status
// bar at the bottom.
#pragma once

#include <memory>

#include "app/main/UnitMain.h"
#include "controls/ActionGuard.h"
#include "platform/qt/QtWindows.h"

namespace dbkeeper::qt {

// `windows` tells what the system menu holds. All three must outlive the window.
std::unique_ptr<QWidget> MakeMainWindow(TFormMain& form, const ActionGuard& guard,
                                        const QtWindows& windows);

}  // namespace dbkeeper::qt
