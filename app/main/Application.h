// The whole program without its face: the session and every form, created once in a fixed order and
// alive until the end.
#pragma once

#include <exception>

#include "app/main/UnitLogin.h"
#include "app/main/UnitMain.h"
#include "app/session/ServerSession.h"
#include "app/support/Host.h"
#include "app/support/SettingsFile.h"
#include "controls/ActionGuard.h"
#include "database/Unit_BackupMedia.h"
#include "database/Unit_Database_Property.h"
#include "database/Unit_Restore.h"
#include "query/Unit_Exec_SQL.h"
#include "security/Unit_Login_Property.h"
#include "security/Unit_Privileges.h"
#include "security/Unit_Role.h"
#include "security/Unit_User.h"
#include "table_designer/Unit_Table.h"
#include "testdata/Unit_Table_TestData.h"

namespace dbkeeper {

class Application {
 public:
  // `connection` and what `host` refers to outlive the application.
  Application(Connection& connection, const Host& host);
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  // Everything a person does runs through this guard.
  const ActionGuard& Guard() const { return guard_; }
  // Runs the forms' creation handlers in the order of the forms; what one throws is shown, and the
  // next one goes on. Call it once, when the face can show message boxes.
  void Start();

 private:
  Host host_;
  SettingsFile settings_;

 public:
  ServerSession Session;
  // The windows in the order in which they are created. A new one has its line here and in the
  // list below.
  TFormMain FormMain{Session, host_, settings_, *this};
  TForm_Database_Property Form_Database_Property{FormMain.Workbench()};
  TFormExecSQL FormExecSQL{FormMain.Workbench()};
  TForm_Login_Property Form_Login_Property{FormMain.Workbench()};
  TFormLogin FormLogin{FormMain};
  TForm_BackupMedia Form_BackupMedia{FormMain.Workbench()};
  TForm_User Form_User{FormMain.Workbench()};
  TForm_Privileges Form_Privileges{FormMain.Workbench()};
  TForm_Table Form_Table{FormMain.Workbench()};
  TFormRole FormRole{FormMain.Workbench()};
  TFormRestore FormRestore{FormMain.Workbench()};
  TForm_Table_TestData Form_Table_TestData{FormMain.Workbench()};

  // Calls `visit` with each window, in the same order.
  template <class Visitor>
  void ForEachForm(Visitor visit) {
    visit(FormMain);
    visit(Form_Database_Property);
    visit(FormExecSQL);
    visit(Form_Login_Property);
    visit(FormLogin);
    visit(Form_BackupMedia);
    visit(Form_User);
    visit(Form_Privileges);
    visit(Form_Table);
    visit(FormRole);
    visit(FormRestore);
    visit(Form_Table_TestData);
  }

 private:
  ActionGuard guard_;
};

}  // namespace dbkeeper
