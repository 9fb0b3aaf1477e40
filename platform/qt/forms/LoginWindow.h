// The connect dialog's layout.
#pragma once

#include <memory>

#include "app/main/UnitLogin.h"
#include "controls/ActionGuard.h"

class QWidget;

namespace dbkeeper::qt {

std::unique_ptr<QWidget> MakeLoginWindow(TFormLogin& form, const ActionGuard& guard,
                                         QWidget* owner);

}  // namespace dbkeeper::qt
