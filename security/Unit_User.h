// The dialog that gives a login access to a database, as a user of the same name.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"

namespace dbkeeper {

class TForm_User : public Form {
 public:
  // `workbench` outlives the form.
  explicit TForm_User(const Workbench& workbench);

  Edit Edit_Database{"Edit_Database", "Database :"};
  ComboBox CmbBox_Login{"CmbBox_Login", ComboStyle::kDropDownList, "Login :"};
  Label Lbl_Note{"Lbl_Note"};
  Button SBtn_Update{"SBtn_Update", "OK"};
  Button Sbtn_Cancel{"Sbtn_Cancel", "Cancel"};

  // Gets the dialog ready for a new user of the database. Reads the server's logins.
  void SetUp(const std::string& database);

  // Throws ServerError, with fields and dialog as they stand.
  void SBtn_UpdateClick();
  void Sbtn_CancelClick();

 private:
  const Workbench& workbench_;
};

}  // namespace dbkeeper
