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
  // Declared in the order in which they are created.
  TFormMain FormMain;
  TForm_Database_Property Form_Database_Property;
  TFormExecSQL FormExecSQL;
  TFormLogin FormLogin;
  TForm_BackupMedia Form_BackupMedia;
  TFormRestore FormRestore;

 private:
  ActionGuard guard_;
};

}  // namespace dbkeeper
