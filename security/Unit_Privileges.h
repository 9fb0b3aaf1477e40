// The dialog that shows what every user of a database may do with one object, and changes it for
// one user at a time.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"
#include "controls/ListView.h"

namespace dbkeeper {

class TForm_Privileges : public Form {
 public:
  // `workbench` outlives the form.
  explicit TForm_Privileges(const Workbench& workbench);

  Edit Edit_Database{"Edit_Database", "Database :"};
  Edit Edit_ObjectName{"Edit_ObjectName", "Object :"};
  dbkeeper::ListView ListView{"ListView"};
  Edit Edit_User{"Edit_User", "User :"};
  RadioGroup RadioGroup_Select{"RadioGroup_Select"};
  RadioGroup RadioGroup_Insert{"RadioGroup_Insert"};
  RadioGroup RadioGroup_Update{"RadioGroup_Update"};
  RadioGroup RadioGroup_Exec{"RadioGroup_Exec"};
  RadioGroup RadioGroup_Delete{"RadioGroup_Delete"};
  Label Lbl_Notice{"Lbl_Notice"};
  Button SpeedButton2{"SpeedButton2", "適用"};
  Button SpeedButton1{"SpeedButton1", "閉じる"};

  // Gets the dialog ready for an object and reads its rights. `kind` is the text of the tree node
  // that it is listed under: "Table", "View" or "Procedure".
  void SetUp(const std::string& database, const std::string& object, const std::string& kind);

  void ListViewSelectItem();
  // Sends what the radio groups say of the selected user as one batch. Throws ServerError, with the
  // list as it stands.
  void SpeedButton2Click();
  void SpeedButton1Click();

 private:
  void FillList();

  const Workbench& workbench_;
  bool has_rows_ = true;  // the object is a table or a view
};

}  // namespace dbkeeper
