#include "platform/qt/QtFace.h"

#include <QWidget>

#include "platform/qt/forms/BackupMediaWindow.h"
#include "platform/qt/forms/DatabasePropertyWindow.h"
#include "platform/qt/forms/ExecSqlWindow.h"
#include "platform/qt/forms/LoginWindow.h"
#include "platform/qt/forms/MainWindow.h"
#include "platform/qt/forms/RestoreWindow.h"

namespace dbkeeper::qt {

QtFace::QtFace(Application& program, QtWindows& windows) : windows_(windows) {
  const ActionGuard& guard = program.Guard();
  windows.Register(program.FormMain, [&program, &guard, &windows](QWidget*) {
    return MakeMainWindow(program.FormMain, guard, windows);
  });
  windows.Register(program.FormExecSQL, [&program, &guard](QWidget*) {
    return MakeExecSqlWindow(program.FormExecSQL, guard);
  });
  windows.Register(program.FormExecSQL.FormChooseTable, [&program, &guard](QWidget* owner) {
    return MakeChooseTableWindow(program.FormExecSQL.FormChooseTable, guard, owner);
  });
  windows.Register(program.FormLogin, [&program, &guard](QWidget* owner) {
    return MakeLoginWindow(program.FormLogin, guard, owner);
  });
  windows.Register(program.Form_Database_Property, [&program, &guard](QWidget* owner) {
    return MakeDatabasePropertyWindow(program.Form_Database_Property, guard, owner);
  });
  windows.Register(program.Form_BackupMedia, [&program, &guard](QWidget* owner) {
    return MakeBackupMediaWindow(program.Form_BackupMedia, guard, owner);
  });
  windows.Register(program.FormRestore, [&program, &guard](QWidget* owner) {
    return MakeRestoreWindow(program.FormRestore, guard, owner);
  });
}

QtFace::~QtFace() { windows_.Clear(); }

}  // namespace dbkeeper::qt
