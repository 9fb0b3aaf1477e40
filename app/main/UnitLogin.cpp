#include "app/main/UnitLogin.h"

#include <string>

#include "app/main/UnitMain.h"
#include "app/support/Messages.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

TFormLogin::TFormLogin(TFormMain& main)
    : Form("FormLogin"), main_(main), workbench_(main.Workbench()) {
  Caption = "SQL Serverへの接続";
  OnShow = [this] { FormShow(); };
  CheckBox_Windows.OnClick = [this] { CheckBox_WindowsClick(); };
  SBtn_Update.OnClick = [this] { SBtn_UpdateClick(); };
  Sbtn_Cancel.OnClick = [this] { Sbtn_CancelClick(); };
}

void TFormLogin::FormCreate() {
  ComboBox_SQL_Server.Items.Clear();
  ComboBox_SQL_Server.Items.Add(kLocalServer);
  ComboBox_SQL_Server.Text = kLocalServer;
  for (std::string& name : workbench_.Settings.Keys("SQLServer")) {
    ComboBox_SQL_Server.Items.Add(std::move(name));
  }
}

void TFormLogin::ShowPassword(bool shown) {
  Edit_passwd.Visible = shown;
  Edit_passwd.EditLabel.Visible = shown;
}

void TFormLogin::FormShow() {
  Edit_loginame.Text = "";
  Edit_passwd.Text = "";
  Edit_loginame.Lock(false);
  ShowPassword(true);
  CheckBox_Windows.Checked = false;
}

void TFormLogin::CheckBox_WindowsClick() {
  const bool windows = CheckBox_Windows.Checked;
  Edit_loginame.Text = windows ? workbench_.Host.shell.UserName() : std::string();
  Edit_loginame.Lock(windows);
  Edit_passwd.Text = "";
  ShowPassword(!windows);
}

void TFormLogin::SBtn_UpdateClick() {
  const std::string server = Trim(ComboBox_SQL_Server.Text());
  if (server.empty()) {
    return workbench_.Host.dialogs.ShowMessage(std::string(messages::kServerNameNeeded));
  }
  ServerSession& session = workbench_.Session;
  session.ServerName = server;
  session.LoginName = Edit_loginame.Text;
  session.Password = Edit_passwd.Text;
  session.LoginMode =
      CheckBox_Windows.Checked ? Authentication::kWindows : Authentication::kSqlServer;
  {
    const BusyScope busy(workbench_.Host.windows);
    session.Open();
  }
  main_.ShowServer(server);
  Edit_loginame.Text = "";
  Edit_passwd.Text = "";
  Close();
  // Behind the close: a settings file that cannot be written is told, and the connection stands.
  if (server != kLocalServer) Remember(server);
}

void TFormLogin::Remember(const std::string& server) {
  for (const std::string& known : workbench_.Settings.Keys("SQLServer")) {
    if (EqualsIgnoringCase(known, server)) return;
  }
  workbench_.Settings.Write("SQLServer", server, "Connected");
}

void TFormLogin::Sbtn_CancelClick() {
  workbench_.Session.LoginName.clear();
  workbench_.Session.Password.clear();
  Close();
}

}  // namespace dbkeeper
