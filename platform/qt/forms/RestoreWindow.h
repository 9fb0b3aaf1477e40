// The restore dialog's layout.
#pragma once

#include <memory>

#include "controls/ActionGuard.h"
#include "database/Unit_Restore.h"

class QWidget;

namespace dbkeeper::qt {

std::unique_ptr<QWidget> MakeRestoreWindow(TFormRestore& form, const ActionGuard& guard,
                                           QWidget* owner);

}  // namespace dbkeeper::qt
