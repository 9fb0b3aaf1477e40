// The table browser's pane in the main window: a tool area of one or two rows, and the grid.
#pragma once

#include "app/main/TableBrowser.h"
#include "platform/qt/binders/Binder.h"

class QFrame;

namespace dbkeeper::qt {

void LayOutBrowserPane(TableBrowser& form, const Binder& binder, QFrame& pane);

}  // namespace dbkeeper::qt
