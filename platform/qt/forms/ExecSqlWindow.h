// The query window's layout: tool bar, strips, editor with the builder beside it, result grid,
// message pane.
#pragma once

#include <memory>

#include "controls/ActionGuard.h"
#include "query/Unit_Exec_SQL.h"

class QWidget;

namespace dbkeeper::qt {

std::unique_ptr<QWidget> MakeExecSqlWindow(TFormExecSQL& form, const ActionGuard& guard);

// Asks for a table of a database.
std::unique_ptr<QWidget> MakeChooseTableWindow(TFormChooseTable& form, const ActionGuard& guard,
                                               QWidget* owner);

}  // namespace dbkeeper::qt
