// The dialog that connects to a server.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"

namespace dbkeeper {

class TFormMain;

class TFormLogin : public Form {
 public:
  // The main window takes the name of the server that was connected to.
  explicit TFormLogin(TFormMain& main);

  Edit Edit_loginame{"Edit_loginame", "login name :"};
  Edit Edit_passwd{"Edit_passwd", "passwd :"};
  ComboBox ComboBox_SQL_Server{"ComboBox_SQL_Server", ComboStyle::kEditable, "SQL Server :"};
  CheckBox CheckBox_Windows{"CheckBox_Windows", "Windows統合認証 :"};
  Button SBtn_Update{"SBtn_Update", "OK"};
  Button Sbtn_Cancel{"Sbtn_Cancel", "Cancel"};

  // Fills the server box. Throws FileError when the settings cannot be read.
  void FormCreate() override;
  void FormShow();
  void CheckBox_WindowsClick();
  void SBtn_UpdateClick();
  void Sbtn_CancelClick();

 private:
  void ShowPassword(bool shown);
  // Offers the server next time; one key for each server whatever its case.
  void Remember(const std::string& server);

  TFormMain& main_;
  const Workbench& workbench_;
};

}  // namespace dbkeeper
