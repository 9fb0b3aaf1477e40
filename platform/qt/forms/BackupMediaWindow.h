// The layout of the dialog that creates a backup device.
#pragma once

#include <memory>

#include "controls/ActionGuard.h"
#include "database/Unit_BackupMedia.h"

class QWidget;

namespace dbkeeper::qt {

std::unique_ptr<QWidget> MakeBackupMediaWindow(TForm_BackupMedia& form, const ActionGuard& guard,
                                               QWidget* owner);

}  // namespace dbkeeper::qt
