#include "app/main/UnitLogin.h"

#include <string>

#include "app/main/UnitMain.h"
#include "app/session/ServerSession.h"

namespace dbkeeper {

TFormLogin::TFormLogin(ServerSession& session, const Host& host, SettingsFile& settings,
                       TFormMain& main)
    : Form("FormLogin"), session_(session), host_(host), settings_(settings), main_(main) {
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
  for (std::string& name : settings_.Keys("SQLServer")) {
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
  Edit_loginame.Text = windows ? host_.shell.UserName() : std::string();
  Edit_loginame.Lock(windows);
  Edit_passwd.Text = "";
  ShowPassword(!windows);
}

void TFormLogin::SBtn_UpdateClick() {
  const std::string server = ComboBox_SQL_Server.Text;
  session_.ServerName = server;
  session_.LoginName = Edit_loginame.Text;
  session_.Password = Edit_passwd.Text;
  session_.LoginMode =
      CheckBox_Windows.Checked ? Authentication::kWindows : Authentication::kSqlServer;
  {
    const BusyScope busy(host_.windows);
    session_.Open();
  }
  main_.TreeView.Roots().front()->SetText("SQL Server :" + server);
  const std::string title = server + "  へ接続中";
  host_.windows.SetApplicationTitle(title);
  main_.Caption = "DBKEEPER.exe  " + title;
  Edit_loginame.Text = "";
  Edit_passwd.Text = "";
  Close();
  // Behind the close: a settings file that cannot be written is told, and the connection stands.
  if (server != kLocalServer) settings_.Write("SQLServer", server, "Connected");
}

void TFormLogin::Sbtn_CancelClick() {
  session_.LoginName.clear();
  session_.Password.clear();
  Close();
}

}  // namespace dbkeeper
