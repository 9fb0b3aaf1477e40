// Start-up of the main window, its system menu, the handler of errors, and how the window shows the
// connection.

#include "app/main/UnitMain.h"

#include <array>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/support/Files.h"

namespace dbkeeper {

namespace fs = std::filesystem;

namespace {

constexpr const char* kProgramTitle = "DBKEEPER.exe";
constexpr const char* kHelpFile = "dbkeeper_help.chm";
constexpr const char* kReadmeFile = "DBKEEPER_README.txt";
constexpr std::array<const char*, 4> kFolders = {"work", "cfg", "template", "pattern"};

constexpr const char* kSupportPage = "https://dbkeeper.example/support/";
constexpr const char* kMsdePage = "https://learn.microsoft.com/previous-versions/sql/";
constexpr const char* kBooksOnlinePage =
    "https://learn.microsoft.com/previous-versions/sql/sql-server-2000/";

struct SystemMenuRow {
  int id;  // 0: a separator
  std::string_view caption;
};

constexpr std::array<SystemMenuRow, 7> kSystemMenu = {{
    {0, ""},
    {10, "ｵﾝﾗｲﾝﾍﾙﾌﾟ表示 ..."},
    {11, "Readme表示 ..."},
    {0, ""},
    {12, "サポート Pageへ ..."},
    {13, "MS MSDE2000 Pageへ ..."},
    {14, "MS SQL2000 Books Online Download Pageへ ..."},
}};

}  // namespace

TFormMain::TFormMain(ServerSession& session, const dbkeeper::Host& host, SettingsFile& settings,
                     Application& program)
    : Form("FormMain"),
      session_(session),
      host_(host),
      settings_(settings),
      workbench_{session,    host_,    TreeView,  ListViewMain,
                 StatusBar1, options_, settings_, host.shell.Executable().parent_path()},
      error_log_(workbench_.ProgramFolder, host),
      Browser(workbench_),
      program_(program) {
  Caption = "DB Keeper";
  OnHide = [this] { FormHide(); };
  TreeView.OnClick = [this] { TreeViewClick(); };
  TreeView.OnKeyUp = [this] { TreeViewKeyUp(); };
  TreeView.OnRightMouseDown = [this] { TreeViewMouseDown(); };
  ListViewMain.OnColumnClick = [this](std::size_t column) { ListViewMainColumnClick(column); };
  ListViewMain.OnDblClick = [this] { ListViewMainDblClick(); };
  for (const MenuTable* table : MainMenus()) {
    menus_.push_back(BuildMenu(*table, workbench_, program));
  }
  ListViewMain.Popup = &Menu(kFirstMenu.name);
  BuildRoots();
  ShowConnectionState();
}

PopupMenu& TFormMain::Menu(std::string_view name) const {
  for (const auto& menu : menus_) {
    if (menu->Name == name) return *menu;
  }
  throw std::out_of_range("no menu of that name");
}

void TFormMain::FormCreate() {
  const fs::path& folder = workbench_.ProgramFolder;
  std::error_code ignored;  // a folder that cannot be made shows itself when something is written
  error_log_.Discard();
  for (const char* name : kFolders) fs::create_directories(folder / name, ignored);
  AppendSystemMenu();
  ShowApplicationInformation();
  Browser.Hide();
  Menu(kTableNode.menu->name).Find("PM_DspSysTbl")->Checked = options_.ShowSystemTables;
  // Last, because a settings file that cannot be read ends the start-up here: everything else
  // stands, and the switches keep their defaults.
  options_.Advanced = settings_.Read("SYSTEM", "Advanced", "False") == "True";
  options_.ShowSystemTables = settings_.Read("SYSTEM", "DspSysTbl", "True") != "False";
  Menu(kTableNode.menu->name).Find("PM_DspSysTbl")->Checked = options_.ShowSystemTables;
}

void TFormMain::AppendSystemMenu() {
  for (const SystemMenuRow& row : kSystemMenu) {
    if (!host_.windows.AppendSystemMenu(std::string(row.caption), row.id)) {
      host_.dialogs.ShowMessage("Error");
    }
  }
}

void TFormMain::ShowApplicationInformation() {
  const ListUpdate update(ListViewMain);
  ListViewMain.ClearItems();
  ListViewMain.ClearColumns();
  ListViewMain.AddColumn("No", 32);
  ListViewMain.AddColumn("項目", 132);
  ListViewMain.AddColumn("内容", 360);
  ListViewMain.AddItem({"1", "アプリケーション", "DBKEEPER"});
  ListViewMain.AddItem({"2", "build",
                        host_.shell.FileVersion(host_.shell.Executable())
                            .value_or("Err_バージョン情報が取得できません")});
  ListViewMain.AddItem({"3", "用途", "「Microsoft SQL Server 2000 Desktop Engine」用 管理ツール"});
  ListViewMain.AddItem({"4", "著作", "DB Keeper 開発者一同"});
}

// Deliberate: operators know this message as the sign that the program has ended.
void TFormMain::FormHide() { host_.dialogs.ShowMessage("OK"); }

void TFormMain::SystemCommand(int id) {
  switch (id) {
    case 10:
      return PM_OnlineHelpClick();
    case 11:
      return PM_ReadmeClick();
    case 12:
      return PM_GotoHomePageClick();
    case 13:
      return host_.shell.Open(kMsdePage);
    case 14:
      return host_.shell.Open(kBooksOnlinePage);
    default:
      return;
  }
}

void TFormMain::OpenProgramFile(const std::string& name) {
  const fs::path file = workbench_.ProgramFolder / name;
  std::error_code problem;
  if (!fs::exists(file, problem)) {
    host_.dialogs.ShowMessage("ファイルが存在しません");
    return;
  }
  host_.shell.Open(PathText(file));
}

void TFormMain::PM_OnlineHelpClick() { OpenProgramFile(kHelpFile); }
void TFormMain::PM_ReadmeClick() { OpenProgramFile(kReadmeFile); }
void TFormMain::PM_GotoHomePageClick() { host_.shell.Open(kSupportPage); }

void TFormMain::ApplicationException(const std::exception& error) {
  try {
    error_log_.Append(error);
  } catch (const std::exception& log_error) {
    // Told once: the error itself is shown each time, also where it cannot be logged.
    if (!std::exchange(log_failure_told_, true)) host_.dialogs.ShowError(log_error.what(), "");
  }
  const std::string message = error.what();
  if (message.find("の操作") != std::string::npos && session_.ADOQuery_User.Active()) {
    host_.dialogs.ShowMessage(
        "異常が発生したので、TableをCloseします。\r\n対処方法：\r\n"
        "　新規挿入時には、全フィールドを埋めてください。\r\n\r\n" +
        message);
    Browser.Abandon();
    return SettleConnection();
  }
  SettleConnection();
  const auto* const of_server = dynamic_cast<const ServerError*>(&error);
  host_.dialogs.ShowError(message, of_server == nullptr ? "" : of_server->Places());
}

void TFormMain::NameServer(const std::string& node, const std::string& title) {
  TreeView.Roots().front()->SetText("SQL Server :" + node);
  host_.windows.SetApplicationTitle(title);
  Caption = kProgramTitle + ("  " + title);
}

void TFormMain::ShowServer(const std::string& server) {
  if (link_ == Link::kLost) {
    Browser.Hide();
    ClearList();
  }
  link_ = Link::kConnected;
  NameServer(server, server + "  へ接続中");
  program_.FormExecSQL.ShowServer(server);
}

void TFormMain::SettleConnection() {
  Browser.Settle();
  if (link_ != Link::kConnected || session_.Connected()) return;
  link_ = Link::kLost;
  const std::string& server = session_.ServerName;
  NameServer(server + " (切断されました)", server + "  との接続が切れました");
  program_.FormExecSQL.ShowServer("");
  ShowConnectionState();
}

void TFormMain::ShowConnected() {
  BuildServerNodes();
  ShowConnectionState();
}

void TFormMain::Disconnect() {
  link_ = Link::kNone;
  program_.FormExecSQL.ShowServer("");
  host_.windows.SetApplicationTitle(kProgramTitle);
  Caption = kProgramTitle;
  Browser.Hide();
  session_.Close();
  TreeView.Roots().front()->DeleteChildren();
  ShowConnectionState();
  ClearList();
}

void TFormMain::ShowConnectionState() { Menu(kServerTreeMenu.name).UserPopup(); }

}  // namespace dbkeeper
