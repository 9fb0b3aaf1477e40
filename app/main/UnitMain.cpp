// Start-up of the main window, its system menu, and the program-wide error log.

#include "app/main/UnitMain.h"

#include <array>
#include <exception>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/main/MainMenus.h"
#include "app/support/DateText.h"
#include "app/support/Errors.h"
#include "app/support/Files.h"

namespace dbkeeper {

namespace fs = std::filesystem;

namespace {

constexpr const char* kErrorLog = "error.log";
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

// The name that the log lists an error under.
std::string ClassNameOf(const std::exception& error) {
  if (const auto* own = dynamic_cast<const Error*>(&error)) return own->ClassName();
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "bad_alloc";
  if (dynamic_cast<const std::system_error*>(&error) != nullptr) return "system_error";
  if (dynamic_cast<const std::logic_error*>(&error) != nullptr) return "logic_error";
  if (dynamic_cast<const std::runtime_error*>(&error) != nullptr) return "runtime_error";
  return "exception";
}

// More than one run can write with boxes that a person must close.
constexpr std::size_t kLongestLog = 64 << 20;

}  // namespace

TFormMain::TFormMain(ServerSession& session, const dbkeeper::Host& host, SettingsFile& settings,
                     MainForms forms)
    : Form("FormMain"),
      PopupMenu_SQLServer(BuildMainMenu("PopupMenu_SQLServer", *this)),
      PopupMenuServerCfg(BuildMainMenu("PopupMenuServerCfg", *this)),
      PopupMenu_Databases(BuildMainMenu("PopupMenu_Databases", *this)),
      PopupMenu_Table(BuildMainMenu("PopupMenu_Table", *this)),
      PopupMenu_View(BuildMainMenu("PopupMenu_View", *this)),
      PopupMenu_Procedure(BuildMainMenu("PopupMenu_Procedure", *this)),
      PopupMenu_Login(BuildMainMenu("PopupMenu_Login", *this)),
      PopupMenu_Users(BuildMainMenu("PopupMenu_Users", *this)),
      PopupMenu_Roles(BuildMainMenu("PopupMenu_Roles", *this)),
      PopupMenu_SvRole(BuildMainMenu("PopupMenu_SvRole", *this)),
      PopupMenu_Job(BuildMainMenu("PopupMenu_Job", *this)),
      PopupMenu_BackUp(BuildMainMenu("PopupMenu_BackUp", *this)),
      PopupMenu_Process_Lock(BuildMainMenu("PopupMenu_Process_Lock", *this)),
      PopupMenu_DB_BackUp(BuildMainMenu("PopupMenu_DB_BackUp", *this)),
      PopupMenu_Management(BuildMainMenu("PopupMenu_Management", *this)),
      PopupMenu_Minimum(BuildMainMenu("PopupMenu_Minimum", *this)),
      PopupMenu1(BuildMainMenu("PopupMenu1", *this)),
      session_(session),
      host_(host),
      settings_(settings),
      forms_(forms),
      workbench_{session,    host_,    TreeView,  ListViewMain,
                 StatusBar1, options_, settings_, host.shell.Executable().parent_path()} {
  Caption = "DB Keeper";
  OnHide = [this] { FormHide(); };
  TreeView.OnClick = [this] { TreeViewClick(); };
  TreeView.OnKeyUp = [this] { TreeViewKeyUp(); };
  TreeView.OnRightMouseDown = [this] { TreeViewMouseDown(); };
  ListViewMain.OnColumnClick = [this](std::size_t column) { ListViewMainColumnClick(column); };
  ListViewMain.OnDblClick = [this] { ListViewMainDblClick(); };
  ListViewMain.Popup = PopupMenu1.get();
  PrepareTableBrowser();
  BuildRoots();
  ShowConnectionState(false);
}

void TFormMain::BuildRoots() {
  TreeNode& server = TreeView.AddRoot("SQL Server");
  TreeView.AddRoot("Config");
  TreeView.Select(&server);
}

void TFormMain::FormCreate() {
  const fs::path& folder = workbench_.ProgramFolder;
  std::error_code ignored;  // a folder that cannot be made shows itself when something is written
  fs::remove(folder / kErrorLog, ignored);
  for (const char* name : kFolders) fs::create_directories(folder / name, ignored);
  AppendSystemMenu();
  ShowApplicationInformation();
  HideTableBrowser();
  PopupMenu_Table->Find("PM_DspSysTbl")->Checked = options_.ShowSystemTables;
  // Last, because a settings file that cannot be read ends the start-up here: everything else
  // stands, and the switches keep their defaults.
  options_.Advanced = settings_.Read("SYSTEM", "Advanced", "False") == "True";
  options_.ShowSystemTables = settings_.Read("SYSTEM", "DspSysTbl", "True") != "False";
  PopupMenu_Table->Find("PM_DspSysTbl")->Checked = options_.ShowSystemTables;
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

void TFormMain::EST1Click() {
  host_.dialogs.ShowMessage("OK:" +
                            FormatDateTime(host_.clock.Now(), host_.locale.ShortDateFormat()));
}

void TFormMain::WriteErrorLog(const std::exception& error) {
  const fs::path log = workbench_.ProgramFolder / kErrorLog;
  const DateTimeValue now = host_.clock.Now();
  std::error_code problem;
  std::string bytes = fs::exists(log, problem) ? ReadFile(log, kLongestLog) : std::string();
  const std::array<std::string, 3> lines = {
      "Error Time Stamp: " + FormatDateTime(now, "hh:nn am/pm") + " on " +
          FormatDateTime(now, "mm/dd/yy"),
      "Error Class: " + ClassNameOf(error), "Error Message: " + std::string(error.what())};
  for (const std::string& line : lines) {
    bytes += ToAnsiWithNumbers(host_.code_page, line) + "\r\n";
  }
  ReplaceFile(log, bytes);
}

void TFormMain::ApplicationException(const std::exception& error) {
  try {
    WriteErrorLog(error);
  } catch (const std::exception& log_error) {
    // The error itself must be shown even where it cannot be logged.
    host_.dialogs.ShowError(log_error.what());
  }
  const std::string message = error.what();
  if (message.find("の操作") != std::string::npos && session_.ADOQuery_User.Active()) {
    host_.dialogs.ShowMessage(
        "異常が発生したので、TableをCloseします。\r\n対処方法：\r\n"
        "　新規挿入時には、全フィールドを埋めてください。\r\n\r\n" +
        message);
    session_.ADOQuery_User.Rows.Cancel();
    session_.ADOQuery_User.Close();
    SettleTableBrowser();
    return;
  }
  SettleTableBrowser();
  host_.dialogs.ShowError(message);
}

}  // namespace dbkeeper
