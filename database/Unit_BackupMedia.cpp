#include "database/Unit_BackupMedia.h"

#include "app/workbench/StatementRun.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

TForm_BackupMedia::TForm_BackupMedia(const Workbench& workbench)
    : Form("Form_BackupMedia"), workbench_(workbench) {
  Caption = "BackupMediaの設定";
  Button3.OnClick = [this] { Button3Click(); };
  SBtn_Update.OnClick = [this] { SBtn_UpdateClick(); };
  Sbtn_Cancel.OnClick = [this] { Sbtn_CancelClick(); };
}

void TForm_BackupMedia::Button3Click() {
  const auto file = workbench_.Host.dialogs.OpenFile({"ﾊﾞｯｸｱｯﾌﾟﾌｧｲﾙ(*.bak)|*.bak", "", ".bak"});
  if (file) Edit_FileName.Text = *file;
}

void TForm_BackupMedia::SBtn_UpdateClick() {
  if (Edit_Name.Text == "" || Edit_FileName.Text == "") return;
  RunStatements(workbench_, {.statements = {"USE master\r\nexec sp_addumpdevice 'disk', [" +
                                            Edit_Name.Text() + "], '" + Edit_FileName.Text() + "'"},
                             .rule = StatusRule::kNone,
                             .refresh = ListBackupDevices});
  Edit_Name.Text = "";
  Edit_FileName.Text = "";
  Close();
}

void TForm_BackupMedia::Sbtn_CancelClick() { Close(); }

}  // namespace dbkeeper
