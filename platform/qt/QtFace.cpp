#include "platform/qt/QtFace.h"

#include <QWidget>

#include "platform/qt/forms/Windows.h"

namespace dbkeeper::qt {

QtFace::QtFace(Application& program, QtWindows& windows) : windows_(windows) {
  const ActionGuard& guard = program.Guard();
  windows.Register(program.FormMain, [&program, &guard, &windows](QWidget*) {
    return MakeMainWindow(program.FormMain, guard, windows);
  });
  const auto add = [&guard, &windows](auto& form) {
    windows.Register(form,
                     [&form, &guard](QWidget* owner) { return MakeWindow(form, guard, owner); });
  };
  add(program.FormExecSQL);
  add(program.FormExecSQL.FormChooseTable);
  add(program.FormLogin);
  add(program.Form_Database_Property);
  add(program.Form_BackupMedia);
  add(program.FormRestore);
}

QtFace::~QtFace() { windows_.Clear(); }

}  // namespace dbkeeper::qt
