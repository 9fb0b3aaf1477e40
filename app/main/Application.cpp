#include "app/main/Application.h"

namespace dbkeeper {

Application::Application(Connection& connection, const Host& host)
    : host_(host),
      settings_(SettingsPath(host_.shell.Executable()), host_.code_page),
      Session(connection, host_.locale),
      FormMain(Session, host_, settings_,
               {Form_Database_Property, FormExecSQL, FormLogin, Form_BackupMedia, FormRestore}),
      Form_Database_Property(FormMain.Workbench()),
      FormExecSQL(FormMain.Workbench()),
      FormLogin(Session, host_, settings_, FormMain),
      Form_BackupMedia(FormMain.Workbench()),
      FormRestore(FormMain.Workbench()),
      guard_([this](const std::exception& error) { FormMain.ApplicationException(error); }) {}

void Application::Start() {
  guard_.Run([this] { FormMain.FormCreate(); });
  guard_.Run([this] { FormExecSQL.FormCreate(); });
  guard_.Run([this] { FormLogin.FormCreate(); });
}

}  // namespace dbkeeper
