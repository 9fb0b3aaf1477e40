#include "security/Unit_Login_Property.h"

#include "app/workbench/StatementRun.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

constexpr const char* kAccountForms =
    "記述例:\r  Domainname\\username\r  Domainname\\Groupname\r  PCName\\Username\r"
    "  PCName\\Groupname\r  Username";

}  // namespace

TForm_Login_Property::TForm_Login_Property(const Workbench& workbench)
    : Form("Form_Login_Property"), workbench_(workbench) {
  Caption = "ログインの設定";
  OnShow = [this] { WipePasswords(); };
  OnClose = [this] { WipePasswords(); };
  CheckBox_Windows.OnClick = [this] { CheckBox_WindowsClick(); };
  SBtn_Update.OnClick = [this] { SBtn_UpdateClick(); };
  Sbtn_Cancel.OnClick = [this] { Sbtn_CancelClick(); };
}

void TForm_Login_Property::SetUpNew() { SetUp(Record::kNew, ""); }

void TForm_Login_Property::SetUpExisting(const std::string& name) {
  SetUp(Record::kExisting, name);
  CheckBox_Windows.Checked = false;
  CheckBox_WindowsClick();
}

void TForm_Login_Property::SetUp(Record record, const std::string& name) {
  mode_.Show(record);
  Edit_loginame.Text = name;
  WipePasswords();
}

void TForm_Login_Property::WipePasswords() {
  Edit_passwd1.Text = "";
  Edit_passwd2.Text = "";
}

void TForm_Login_Property::CheckBox_WindowsClick() {
  const bool windows = CheckBox_Windows.Checked();
  if (windows) WipePasswords();
  for (Edit* edit : {&Edit_passwd1, &Edit_passwd2}) {
    edit->Visible = !windows;
    edit->EditLabel.Visible = !windows;
  }
  Lbl_Description.Caption = windows ? kAccountForms : " ";
}

// The password stands between quotes as it was typed; the old one is always left out, which is an
// administrator's way.
std::string TForm_Login_Property::Statement() const {
  const std::string& name = Edit_loginame.Text();
  const std::string& password = Edit_passwd1.Text();
  if (!name.empty() && !password.empty() && password == Edit_passwd2.Text()) {
    return mode_.Exists() ? "EXEC sp_password NULL,'" + password + "', [" + name + "]"
                          : "EXEC sp_addlogin [" + name + "], '" + password + "'";
  }
  if (CheckBox_Windows.Checked()) return "EXEC sp_grantlogin @loginame = [" + name + "]";
  return "";
}

void TForm_Login_Property::SBtn_UpdateClick() {
  const std::string statement = Statement();
  if (statement.empty()) {
    workbench_.Host.dialogs.ShowMessage("入力内容が不正");
    return;
  }
  try {
    RunStatements(workbench_, {.statements = {statement}, .refresh = ListLogins});
  } catch (const ServerError& error) {
    // What the server quotes may be a part of the password.
    throw ConfidentialError(error);
  }
  Edit_loginame.Text = "";
  WipePasswords();
  Close();
}

void TForm_Login_Property::Sbtn_CancelClick() { Close(); }

}  // namespace dbkeeper
