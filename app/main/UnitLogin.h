// The dialog that connects to a server.
#pragma once

#include "app/support/Host.h"
#include "app/support/SettingsFile.h"
#include "controls/Form.h"
#include "controls/Inputs.h"

namespace dbkeeper {

class ServerSession;
class TFormMain;

class TFormLogin : public Form {
 public:
  // The main window takes the name of the server that was connected to.
  TFormLogin(ServerSession& session, const Host& host, SettingsFile& settings, TFormMain& main);

  Edit Edit_loginame{"Edit_loginame", "login name :"};
  Edit Edit_passwd{"Edit_passwd", "passwd :"};
  ComboBox ComboBox_SQL_Server{"ComboBox_SQL_Server", ComboStyle::kEditable, "SQL Server :"};
  CheckBox CheckBox_Windows{"CheckBox_Windows", "Windows統合認証 :"};
  Button SBtn_Update{"SBtn_Update", "OK"};
  Button Sbtn_Cancel{"Sbtn_Cancel", "Cancel"};

  // Fills the server box. Throws FileError when the settings cannot be read.
  void FormCreate();
  void FormShow();
  void CheckBox_WindowsClick();
  void SBtn_UpdateClick();
  void Sbtn_CancelClick();

 private:
  void ShowPassword(bool shown);

  ServerSession& session_;
  const Host& host_;
  SettingsFile& settings_;
  TFormMain& main_;
};

}  // namespace dbkeeper
