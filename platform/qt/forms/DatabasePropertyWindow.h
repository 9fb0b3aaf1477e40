// The layout of the dialog that creates or attaches a database.
#pragma once

#include <memory>

#include "controls/ActionGuard.h"
#include "database/Unit_Database_Property.h"

class QWidget;

namespace dbkeeper::qt {

std::unique_ptr<QWidget> MakeDatabasePropertyWindow(TForm_Database_Property& form,
                                                    const ActionGuard& guard, QWidget* owner);

}  // namespace dbkeeper::qt
