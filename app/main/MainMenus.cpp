#include "app/main/MainMenus.h"

#include <algorithm>
#include <array>
#include <span>
#include <stdexcept>

#include "app/main/MenuTable.h"
#include "app/main/UnitMain.h"

namespace dbkeeper {

namespace {

bool Selected(const TFormMain& form) { return form.ListViewMain.SelCount() > 0; }

// The state text of a database row is its sub-item 1.
bool SelectedOnline(const TFormMain& form) {
  const ListItem* row = form.ListViewMain.Selected();
  return row != nullptr && row->SubItem(1).find("offline") == std::string::npos;
}

constexpr MenuRow kOnlineHelp = {0, "PM_OnlineHelp", "ｵﾝﾗｲﾝﾍﾙﾌﾟ表示 ...",
                                 &Run<&TFormMain::PM_OnlineHelpClick>};
constexpr MenuRow kReadme = {0, "PM_Readme", "Readme表示 ...", &Run<&TFormMain::PM_ReadmeClick>};
constexpr MenuRow kHomePage = {0, "PM_GotoHomePage", "サポート HomePageへ ...",
                               &Run<&TFormMain::PM_GotoHomePageClick>};
constexpr MenuRow kRefresh = {0, "PM_Refresh", "最新の情報に更新", &Run<&TFormMain::TreeViewClick>};
constexpr MenuRow kCsv = {0, "PopupMenu_Minimum_CSV_Out", "表示内容のCSV出力...",
                          &Run<&TFormMain::PopupMenu_Minimum_CSV_OutClick>};

constexpr MenuRow kSqlServer[] = {
    {0, "PopupMenu_SQLServer_Connect", "接続 ...",
     &Run<&TFormMain::PopupMenu_SQLServer_ConnectClick>},
    {0, "PopupMenu_SQLServer_DisConnect", "接続解除",
     &Run<&TFormMain::PopupMenu_SQLServer_DisConnectClick>},
    {0, "PopupMenu_SQLServer_Stop", "停止", &Run<&TFormMain::PopupMenu_SQLServer_StopClick>,
     nullptr, MenuLook::kPlain, "shutdown を実行します。"},
    {0, "PopupMenu_SQLServer_OneStop", "一時停止",
     &Run<&TFormMain::PopupMenu_SQLServer_OneStopClick>, nullptr, MenuLook::kPlain,
     "net pause mssqlserver を実行します。"},
    {0, "EST1", "TEST", &Run<&TFormMain::EST1Click>, nullptr, MenuLook::kInvisible},
    kOnlineHelp,
    kReadme,
    kHomePage,
};

constexpr MenuRow kServerCfg[] = {
    {0, "PopupMenuServerCfg_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Minimum_SQLClick>},
    kCsv,
    {0, "PopupMenuServerCfg_SvrNetCn", "SQL Serverﾈｯﾄﾜｰｸﾕｰﾃｨﾘﾃｨの起動",
     &Run<&TFormMain::PopupMenuServerCfg_SvrNetCnClick>},
    {0, "PopupMenuServerCfg_OdbcAd", "ODBCﾃﾞｰﾀｿｰｽ ｱﾄﾞﾐﾆｽﾄﾚｰﾀの起動",
     &Run<&TFormMain::PopupMenuServerCfg_OdbcAdClick>},
    kOnlineHelp,
    kReadme,
    kHomePage,
};

constexpr MenuRow kDatabases[] = {
    {0, "PopupMenu_Databases_Create", "新規ﾃﾞｰﾀﾍﾞｰｽ ...",
     &Run<&TFormMain::PopupMenu_Databases_CreateClick>},
    {0, "PopupMenu_Databases_Property", "ﾌﾟﾛﾊﾟﾃｨ...",
     &Run<&TFormMain::PopupMenu_Databases_PropertyClick>, nullptr, MenuLook::kInvisible},
    {0, "PopupMenu_Databases_Backup", "バックアップ", nullptr},
    {1, "PopupMenu_Databases_Backup_Backup", "指定データベースの手動バックアップ ...",
     &Run<&TFormMain::PopupMenu_Databases_Backup_BackupClick>, &Selected},
    {1, "PopupMenu_Databases_Backup_Restore", "バックアップファイルを指定してのレストア ...",
     &Run<&TFormMain::PopupMenu_Databases_Backup_RestoreClick>},
    {0, "PopupMenu_Databases_Shrink", "DBの圧縮",
     &Run<&TFormMain::PopupMenu_Databases_ShrinkClick>},
    kRefresh,
    {0, "PopupMenu_Databases_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Databases_SQLClick>},
    {0, "PopupMenu_Databases_OnLine", "OnLine", nullptr, &Selected},
    {1, "PopupMenu_Databases_OnLine_MULTI_RW", "通常",
     &Run<&TFormMain::PopupMenu_Databases_OnLine_MULTI_RWClick>},
    {1, "PopupMenu_Databases_OnLine_SINGLE", "ｼﾝｸﾞﾙ･ﾕｰｻﾞｰ",
     &Run<&TFormMain::PopupMenu_Databases_OnLine_MULTI_RWClick>},
    {1, "PopupMenu_Databases_OnLine_RESTRICTED", "管理者専用",
     &Run<&TFormMain::PopupMenu_Databases_OnLine_MULTI_RWClick>},
    {1, "PopupMenu_Databases_OnLine_READ_ONLY", "読取専用",
     &Run<&TFormMain::PopupMenu_Databases_OnLine_MULTI_RWClick>},
    {0, "PopupMenu_Databases_OffLine", "OffLine",
     &Run<&TFormMain::PopupMenu_Databases_OffLineClick>, &SelectedOnline},
    {0, "PopupMenu_Databases_Detach", "Detach Database",
     &Run<&TFormMain::PopupMenu_Databases_DetachClick>, &Selected},
    {0, "PopupMenu_Databases_Attach", "Attach Database ...",
     &Run<&TFormMain::PopupMenu_Databases_AttachClick>},
    {0, "PopupMenu_Databases_Drop", "削除", &Run<&TFormMain::PopupMenu_Databases_DropClick>,
     &Selected},
};

constexpr MenuRow kTable[] = {
    {0, "PopupMenu_Table_Open", "開く", &Run<&TFormMain::PopupMenu_Table_OpenClick>, &Selected,
     MenuLook::kDefault},
    {0, "PopupMenu_Table_Create", "新規ﾃｰﾌﾞﾙ...", nullptr},
    {0, "PopupMenu_Table_Property", "ﾌﾟﾛﾊﾟﾃｨ", nullptr, &Selected},
    {0, "PopupMenu_Table_Privileges", "権限の表示...", nullptr, &Selected},
    {0, "PM_DspSysTbl", "System Tableも表示", &Run<&TFormMain::PM_DspSysTblClick>},
    kRefresh,
    {0, "PopupMenu_Table_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
    {0, "PopupMenu_Table_Script", "生成Script...", nullptr, &Selected},
    {0, "PopupMenu_Table_BCP", "BCP", nullptr, &Selected},
    {1, "PopupMenu_Table_BCP_Exp", "BCPによるｴｸｽﾎﾟｰﾄ ...", nullptr},
    {1, "PopupMenu_Table_BCP_Imp", "BCPによるｲﾝﾎﾟｰﾄ ...", nullptr},
    {1, "PopupMenu_Table_BCP_TestData", "試験用Dumyデータの生成&& BCPによるｲﾝﾎﾟｰﾄ ...", nullptr},
    {0, "PopupMenu_Table_Management", "Table 管理", nullptr},
    {1, "PopupMenu_Table_Capacity", "容量調査", &Run<&TFormMain::PopupMenu_Table_CapacityClick>},
    {1, "PopupMenu_Table_Specification", "テーブル定義書の作成 (Excel形式)", nullptr},
    {0, "PopupMenu_Table_Bulk", "一括処理", nullptr, nullptr, MenuLook::kInvisible},
    {1, "PopupMenu_Table_Select_ChkBox", "対象選択用のChkBox On/Off",
     &Run<&TFormMain::PopupMenu_Table_Select_ChkBoxClick>},
    {1, "PopupMenu_Table_Select_Truncate", "選択TableのTrncate(ﾚｺｰﾄﾞ全削除)", nullptr, nullptr,
     MenuLook::kInvisible},
    {1, "PopupMenu_Table_Select_Drop", "選択TableのDrop(削除)", nullptr, nullptr,
     MenuLook::kInvisible},
    {0, "PopupMenu_Table_Drop", "削除", &Run<&TFormMain::PopupMenu_Table_DropClick>, &Selected},
};

constexpr MenuRow kView[] = {
    {0, "PopupMenu_View_Open", "開く...", &Run<&TFormMain::PopupMenu_Table_OpenClick>, &Selected},
    {0, "PopupMenu_View_Privileges", "権限の表示...", nullptr, &Selected},
    {0, "PopupMenu_View_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
    {0, "PopupMenu_View_Script", "生成Script...", nullptr, &Selected},
    {0, "PopupMenu_View_Drop", "削除", &Run<&TFormMain::PopupMenu_View_DropClick>, &Selected},
};

constexpr MenuRow kProcedure[] = {
    {0, "PopupMenu_Procedure_Privileges", "権限の表示...", nullptr, &Selected},
    kRefresh,
    {0, "PopupMenu_Procedure_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
    {0, "PopupMenu_Procedure_Script", "生成Script...", nullptr, &Selected},
    {0, "PopupMenu_Procedure_Drop", "削除", &Run<&TFormMain::PopupMenu_Procedure_DropClick>,
     &Selected},
};

constexpr MenuRow kLogin[] = {
    {0, "PopupMenu_Login_Create", "新規ﾛｸﾞｲﾝ...", nullptr},
    {0, "PopupMenu_Login_Password", "ﾊﾟｽﾜｰﾄﾞ変更", nullptr, &Selected},
    kRefresh,
    {0, "PopupMenu_Login_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Databases_SQLClick>},
    kCsv,
    {0, "PopupMenu_Login_drop", "削除", &Run<&TFormMain::PopupMenu_Login_dropClick>, &Selected},
};

constexpr MenuRow kUsers[] = {
    {0, "PopupMenu_Users_Create", "新規ﾕｰｻﾞｰ...", nullptr},
    kRefresh,
    {0, "PopupMenu_Users_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
    {0, "PopupMenu_Users_Drop", "削除", &Run<&TFormMain::PopupMenu_Users_DropClick>, &Selected},
};

constexpr MenuRow kRoles[] = {
    {0, "PopupMenu_Roles_Create", "新規ﾛｰﾙ...", nullptr},
    {0, "PopupMenu_Roles_Property", "ﾌﾟﾛﾊﾟﾃｨ", nullptr, &Selected},
    kRefresh,
    {0, "PopupMenu_Roles_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
    {0, "PopupMenu_Roles_Drop", "削除", &Run<&TFormMain::PopupMenu_Roles_DropClick>, &Selected},
};

constexpr MenuRow kSvRole[] = {
    {0, "PopupMenu_SvRole_Property", "ﾌﾟﾛﾊﾟﾃｨ", nullptr, &Selected},
    {0, "PopupMenu_SvRole_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
};

constexpr MenuRow kJob[] = {
    {0, "PopupMenu_Job_Create", "新規ｼﾞｮﾌﾞ...", nullptr},
    {0, "PopupMenu_Job_Property", "ﾌﾟﾛﾊﾟﾃｨ", nullptr, &Selected},
    {0, "PopupMenu_Job_AddJob", "ｼﾞｮﾌﾞの投入", &Run<&TFormMain::PopupMenu_Job_AddJobClick>,
     &Selected},
    {0, "PopupMenu_Job_DeleteJob", "ｼﾞｮﾌﾞの投入解除",
     &Run<&TFormMain::PopupMenu_Job_DeleteJobClick>, &Selected},
    kRefresh,
    {0, "PopupMenu_Job_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Databases_SQLClick>},
    kCsv,
    {0, "PopupMenu_Job_Drop", "削除", &Run<&TFormMain::PopupMenu_Job_DropClick>, &Selected},
};

constexpr MenuRow kBackUp[] = {
    {0, "PopupMenu_BackUp_Create", "新規ﾊﾞｯｸｱｯﾌﾟﾃﾞﾊﾞｲｽ...",
     &Run<&TFormMain::PopupMenu_BackUp_CreateClick>},
    {0, "PopupMenu_BackUp_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Databases_SQLClick>},
    kCsv,
    {0, "PopupMenu_BackUp_Drop", "削除", &Run<&TFormMain::PopupMenu_BackUp_DropClick>, &Selected},
};

constexpr MenuRow kProcessLock[] = {
    kRefresh,
    {0, "PopupMenu_Process_Lock_SQL", "SQL 発行...",
     &Run<&TFormMain::PopupMenu_Databases_SQLClick>},
    kCsv,
    {0, "PopupMenu_Process_Lock_Kill", "Kill", &Run<&TFormMain::PopupMenu_Process_Lock_KillClick>,
     &Selected},
};

constexpr MenuRow kDbBackUp[] = {
    {0, "PopupMenu_DB_BackUp_Restore", "レストア実行 ...",
     &Run<&TFormMain::PopupMenu_DB_BackUp_RestoreClick>, &Selected},
    {0, "PopupMenu_DB_BackUp_Direct_Restore", "ファイルを直接指定してレストア実行 ...",
     &Run<&TFormMain::PopupMenu_DB_BackUp_Direct_RestoreClick>, nullptr, MenuLook::kInvisible},
    {0, "PopupMenu_DB_BackUp_Drop_Log", "ﾊﾞｯｸｱｯﾌﾟ履歴の削除 (Getdate-7)",
     &Run<&TFormMain::PopupMenu_DB_BackUp_Drop_LogClick>},
    {0, "PopupMenu_DB_BackUp_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
};

constexpr MenuRow kManagement[] = {
    {0, "PopupMenu_Management_Run", "設定支援ウィザード実行", nullptr, &Selected},
    {0, "PopupMenu_Management_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Table_SQLClick>},
    kCsv,
};

constexpr MenuRow kMinimum[] = {
    {0, "PopupMenu_Minimum_SQL", "SQL 発行...", &Run<&TFormMain::PopupMenu_Minimum_SQLClick>},
    kCsv,
};

constexpr MenuRow kMenu1[] = {kOnlineHelp, kReadme, kHomePage};

struct MenuEntry {
  std::string_view name;
  std::span<const MenuRow> rows;
};

constexpr MenuEntry kMenus[] = {
    {"PopupMenu_SQLServer", kSqlServer},
    {"PopupMenuServerCfg", kServerCfg},
    {"PopupMenu_Databases", kDatabases},
    {"PopupMenu_Table", kTable},
    {"PopupMenu_View", kView},
    {"PopupMenu_Procedure", kProcedure},
    {"PopupMenu_Login", kLogin},
    {"PopupMenu_Users", kUsers},
    {"PopupMenu_Roles", kRoles},
    {"PopupMenu_SvRole", kSvRole},
    {"PopupMenu_Job", kJob},
    {"PopupMenu_BackUp", kBackUp},
    {"PopupMenu_Process_Lock", kProcessLock},
    {"PopupMenu_DB_BackUp", kDbBackUp},
    {"PopupMenu_Management", kManagement},
    {"PopupMenu_Minimum", kMinimum},
    {"PopupMenu1", kMenu1},
};

}  // namespace

std::unique_ptr<PopupMenu> BuildMainMenu(std::string_view name, TFormMain& form) {
  const auto* const found =
      std::find_if(std::begin(kMenus), std::end(kMenus),
                   [name](const MenuEntry& entry) { return entry.name == name; });
  if (found == std::end(kMenus)) throw std::out_of_range("no menu of that name");
  return BuildMenu(name, found->rows, form);
}

}  // namespace dbkeeper
