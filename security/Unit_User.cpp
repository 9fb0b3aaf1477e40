#include "security/Unit_User.h"

#include "app/workbench/StatementRun.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

TForm_User::TForm_User(const Workbench& workbench) : Form("Form_User"), workbench_(workbench) {
  Caption = "Userの設定";
  Lbl_Note.Caption =
      "データベースに参加させるユーザーとして\r指定できるのは、あらかじめ\r"
      "[Security]->[Login]に追加してある\r「Login」だけです。";
  SBtn_Update.OnClick = [this] { SBtn_UpdateClick(); };
  Sbtn_Cancel.OnClick = [this] { Sbtn_CancelClick(); };
}

void TForm_User::SetUp(const std::string& database) {
  Edit_Database.Text = database;
  CmbBox_Login.Items.Clear();
  CmbBox_Login.SetItemIndex(-1);
  Query& query = workbench_.Session.ADOQuerySystem;
  for (query.Open("select name from master.dbo.syslogins"); !query.Eof(); query.Next()) {
    CmbBox_Login.Items.Add(query.FieldByName("name").AsString());
  }
  query.Close();
}

void TForm_User::SBtn_UpdateClick() {
  const std::string& database = Edit_Database.Text();
  const std::string& login = CmbBox_Login.Text();
  if (database.empty() || login.empty()) {
    workbench_.Host.dialogs.ShowMessage("入力内容が不正");
    return;
  }
  const std::string statement = "EXEC sp_grantdbaccess [" + login + "], [" + login + "]";
  RunStatements(workbench_, {.use = "use [" + database + "]",
                             .statements = {statement},
                             .status = statement + "    (Use " + database + ")",
                             .refresh = ListUsers,
                             .database = database});
  Edit_Database.Text = "";
  Close();
}

void TForm_User::Sbtn_CancelClick() { Close(); }

}  // namespace dbkeeper
