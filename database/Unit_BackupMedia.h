// The dialog that creates a backup device.
#pragma once

#include "app/workbench/Workbench.h"
#include "controls/Form.h"
#include "controls/Inputs.h"

namespace dbkeeper {

class TForm_BackupMedia : public Form {
 public:
  // `workbench` outlives the form.
  explicit TForm_BackupMedia(const Workbench& workbench);

  Edit Edit_Name{"Edit_Name", "名前 :"};
  Edit Edit_FileName{"Edit_FileName", "ﾊﾞｯｸｱｯﾌﾟﾌｧｲﾙ :"};
  Button Button3{"Button3", "..."};
  Button SBtn_Update{"SBtn_Update", "OK"};
  Button Sbtn_Cancel{"Sbtn_Cancel", "Cancel"};

  void Button3Click();
  // Does nothing while a field is empty. Throws ServerError, with fields and dialog as they stand.
  void SBtn_UpdateClick();
  void Sbtn_CancelClick();

 private:
  const Workbench& workbench_;
};

}  // namespace dbkeeper
