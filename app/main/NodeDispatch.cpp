// Which list a tree node shows: the checks run in the table's order and the first match wins.

#include <algorithm>
#include <array>
#include <string_view>

#include "app/main/UnitMain.h"
#include "catalog/DatabaseList.h"
#include "catalog/DatabaseProperties.h"
#include "catalog/ListRoutine.h"
#include "catalog/ObjectLists.h"
#include "catalog/ServerLists.h"

namespace dbkeeper {

namespace {

// What decides whether a node is of a row's kind, beyond its level.
enum class Match {
  kText,                   // the node's text
  kParentText,             // its parent's text
  kTextHoldsAndConnected,  // a part of the node's text, while the session is connected
};

struct NodeKind {
  int level;
  Match match;
  std::string_view text;
  ListRoutine list;
  std::unique_ptr<PopupMenu> const TFormMain::*popup;
  std::string_view status;  // empty: the status bar keeps " >"
};

struct ManagementRow {
  const char* id;
  const char* group;
  const char* setting;
};

constexpr std::array<ManagementRow, 4> kWizards = {{
    {"WIZ_BK01", "BackUp 設定のウィザード", "AM01:00～ 同一メディアの毎日書換え"},
    {"WIZ_BK02", "BackUp 設定のウィザード", "AM01:00～ 曜日毎のメディアを毎週書換え"},
    {"WIZ_BK30", "BackUp 設定のウィザード", "ユーザー・データベースの権限の移行スクリプト"},
    {"WIZ_BK99", "BackUp 設定のウィザード", "既存のバックアップメディアの全削除"},
}};

void ListManagement(const Workbench& workbench, const std::string& /*database*/) {
  constexpr std::array<CatalogColumn, 3> kColumns = {{
      {"ID", 64, Alignment::kLeft, FilledLater{}},
      {"グループ", 160, Alignment::kLeft, FilledLater{}},
      {"設定", 340, Alignment::kLeft, FilledLater{}},
  }};
  ListView& list = workbench.List;
  const ListUpdate update(list);
  ResetList(list, kColumns);
  for (const ManagementRow& row : kWizards) list.AddItem({row.id, row.group, row.setting});
  list.AddItem({"ADVANCED", "拡張オプション", workbench.Switches.Advanced ? "On" : "Off"});
}

// Some status texts deliberately name another statement than the one that runs: operators know
// them by these words.
constexpr std::array<NodeKind, 16> kNodeKinds = {{
    {0, Match::kTextHoldsAndConnected, "SQL Server", ListServerProperties,
     &TFormMain::PopupMenuServerCfg, "select SERVERPROPERTY(xxx)"},
    {1, Match::kText, "Database", ListDatabases, &TFormMain::PopupMenu_Databases,
     "select * from master.dbo.sysdatabases"},
    {2, Match::kParentText, "Database", ListDatabaseProperties, &TFormMain::PopupMenu_Minimum,
     "select * from master.dbo.sysdatabases / exec sp_spaceused"},
    {3, Match::kText, "User", ListUsers, &TFormMain::PopupMenu_Users,
     "select * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)"},
    {3, Match::kText, "Role", ListDatabaseRoles, &TFormMain::PopupMenu_Roles, "exec sp_helprole"},
    {2, Match::kText, "Job", ListJobs, &TFormMain::PopupMenu_Job,
     "EXEC sp_help_job            (USE msdb)"},
    {2, Match::kText, "BackUpDevice", ListBackupDevices, &TFormMain::PopupMenu_BackUp,
     "select * from master.dbo.sysdevices where status=16"},
    {2, Match::kText, "Process", ListProcesses, &TFormMain::PopupMenu_Process_Lock,
     "EXEC exec sp_who      (USE master)"},
    {2, Match::kText, "Lock", ListLocks, &TFormMain::PopupMenu_Process_Lock,
     "EXEC sp_lock          (USE master)"},
    {3, Match::kText, "Table", ListTables, &TFormMain::PopupMenu_Table,
     "select * from sysobjects  where(xtype='S')or(xtype='U')"},
    {3, Match::kText, "View", ListViews, &TFormMain::PopupMenu_View,
     "select * from sysobjects  where xtype='V'"},
    {3, Match::kText, "Procedure", ListProcedures, &TFormMain::PopupMenu_Procedure,
     "select * from sysobjects  where(xtype='X')or(xtype='P')"},
    {3, Match::kText, "Backup", ListBackupHistory, &TFormMain::PopupMenu_DB_BackUp,
     "select * from backupset   (msdb)"},
    {2, Match::kText, "Login", ListLogins, &TFormMain::PopupMenu_Login,
     "select * from master.dbo.syslogins"},
    {2, Match::kText, "Server role", ListServerRoles, &TFormMain::PopupMenu_SvRole,
     "exec sp_helpsrvrolemember"},
    {0, Match::kText, "Config", ListManagement, &TFormMain::PopupMenu_Management, ""},
}};

bool IsOfKind(const NodeKind& kind, const TreeNode& node, const ServerSession& session) {
  if (node.Level() != kind.level) return false;
  switch (kind.match) {
    case Match::kText:
      return node.Text() == kind.text;
    case Match::kParentText:
      return node.Parent()->Text() == kind.text;
    case Match::kTextHoldsAndConnected:
      return node.Text().find(kind.text) != std::string::npos && session.Connected();
  }
  return false;
}

const NodeKind* KindOf(const TreeNode* node, const ServerSession& session) {
  if (node == nullptr) return nullptr;
  const auto* const found =
      std::find_if(kNodeKinds.begin(), kNodeKinds.end(),
                   [&](const NodeKind& kind) { return IsOfKind(kind, *node, session); });
  return found == kNodeKinds.end() ? nullptr : found;
}

// The database that the node is or stands in.
std::string DatabaseOf(const NodeKind& kind, const TreeNode& node) {
  if (kind.match == Match::kParentText) return node.Text();
  return node.Parent() == nullptr ? std::string() : node.Parent()->Text();
}

}  // namespace

void TFormMain::TreeViewClick() {
  sort_direction_ = -1;
  StatusBar1.SimpleText = " >";
  ListViewMain.Popup = PopupMenu_Minimum.get();
  HideTableBrowser();
  ListViewMain.CheckBoxes = false;

  const TreeNode* const node = TreeView.Selected();
  const NodeKind* const kind = KindOf(node, session_);
  if (kind == nullptr) {
    const ListUpdate update(ListViewMain);
    ListViewMain.ClearItems();
    ListViewMain.ClearColumns();
    ListViewMain.Popup = nullptr;
    return;
  }
  ListViewMain.Popup = (this->*kind->popup).get();
  const std::string database = DatabaseOf(*kind, *node);
  if (kind->status.empty()) return kind->list(workbench_, database);
  RunningStatus status(workbench_);
  kind->list(workbench_, database);
  status.Done(std::string(kind->status));
}

void TFormMain::TreeViewKeyUp() { TreeViewClick(); }

void TFormMain::TreeViewMouseDown() {
  // Deliberately the first root's text and not the selected node's: the server's menu is offered on
  // both roots.
  const TreeNode* const node = TreeView.Selected();
  const bool offered = node != nullptr && node->Level() == 0 &&
                       TreeView.Roots().front()->Text().find("SQL Server") != std::string::npos;
  TreeView.Popup = offered ? PopupMenu_SQLServer.get() : nullptr;
}

}  // namespace dbkeeper
