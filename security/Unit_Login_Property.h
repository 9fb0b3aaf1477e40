// The dialog that adds a login of the server, lets a Windows account in, or changes a login's
// password.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/RecordMode.h"

namespace dbkeeper {

// No password outlives the window: the fields are empty whenever it opens or closes.
class TForm_Login_Property : public Form {
 public:
  // `workbench` outlives the form.
  explicit TForm_Login_Property(const Workbench& workbench);

  Edit Edit_loginame{"Edit_loginame", "loginame :"};
  Edit Edit_passwd1{"Edit_passwd1", "passwd :"};
  Edit Edit_passwd2{"Edit_passwd2", "passwd :"};
  CheckBox CheckBox_Windows{"CheckBox_Windows", "Windows認証 :"};
  Label Lbl_Description{"Lbl_Description", " "};
  Button SBtn_Update{"SBtn_Update", "適用"};
  Button Sbtn_Cancel{"Sbtn_Cancel", "Cancel"};

  // Get the dialog ready for a new login, or for the password of one that exists.
  void SetUpNew();
  void SetUpExisting(const std::string& name);

  void CheckBox_WindowsClick();
  // Throws ServerError, with fields and dialog as they stand.
  void SBtn_UpdateClick();
  void Sbtn_CancelClick();

 private:
  void SetUp(Record record, const std::string& name);
  // The statement that the fields make, or an empty text when they make none.
  std::string Statement() const;
  void WipePasswords();

  const Workbench& workbench_;
  RecordMode mode_{{.keys = {&Edit_loginame}}};
};

}  // namespace dbkeeper
