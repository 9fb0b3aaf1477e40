// Every other node of the tree: its list stands, and the status bar shows its statement.
#include <algorithm>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr const char* kList = "ListViewMain";
const QString kServer = "SQL Server :(local)";
const QString kDatabase = "販売管理";

struct NodeRow {
  std::string picture;
  std::vector<QString> path;
  QString status;
  std::vector<QString> headers;  // the first ones; none: a node without a list
};

// The nodes of the sample instance, with one of its databases for all.
std::vector<NodeRow> Nodes() {
  return {
      {"server", {kServer}, " >select SERVERPROPERTY(xxx)", {"No.", "項目", "内容"}},
      {"database",
       {kServer, "Database", kDatabase},
       " >select * from master.dbo.sysdatabases / exec sp_spaceused",
       {"No.", "項目", "内容"}},
      {"views",
       {kServer, "Database", kDatabase, "View"},
       " >select * from sysobjects  where xtype='V'",
       {"No.", "Name", "xtype", "作成日"}},
      {"procedures",
       {kServer, "Database", kDatabase, "Procedure"},
       " >select * from sysobjects  where(xtype='X')or(xtype='P')",
       {"No.", "Name", "xtype", "作成日"}},
      {"users",
       {kServer, "Database", kDatabase, "User"},
       " >select * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)",
       {"uid", "name"}},
      {"roles",
       {kServer, "Database", kDatabase, "Role"},
       " >exec sp_helprole",
       {"RoleId", "RoleName"}},
      {"backups",
       {kServer, "Database", kDatabase, "Backup"},
       " >select * from backupset   (msdb)",
       {"id", "Media", "Name", "説明", "作成日", "Size"}},
      {"management", {kServer, "Management"}, " >", {}},
      {"jobs",
       {kServer, "Management", "Job"},
       " >EXEC sp_help_job            (USE msdb)",
       {"job_id", "name", "有効", "稼動", "前回"}},
      {"devices",
       {kServer, "Management", "BackUpDevice"},
       " >select * from master.dbo.sysdevices where status=16",
       {"No.", "Name", "Path"}},
      {"processes",
       {kServer, "Management", "Process"},
       " >EXEC exec sp_who      (USE master)",
       {"spid", "ecid", "status"}},
      {"locks",
       {kServer, "Management", "Lock"},
       " >EXEC sp_lock          (USE master)",
       {"spid", "dbid", "ObjId"}},
      {"security", {kServer, "Security"}, " >", {}},
      {"logins",
       {kServer, "Security", "Login"},
       " >select * from master.dbo.syslogins",
       {"No.", "Name"}},
      {"server-roles",
       {kServer, "Security", "Server role"},
       " >exec sp_helpsrvrolemember",
       {"No.", "ServerRole", "Description"}},
      {"config", {"Config"}, " >", {"ID", "グループ", "設定"}},
      {"tables",
       {kServer, "Database", kDatabase, "Table"},
       " >select * from sysobjects  where(xtype='S')or(xtype='U')",
       {"No.", "Name", "Description", "Note", "xtype", "作成日"}},
  };
}

void ExpectHeaders(const std::vector<QString>& first) {
  const std::vector<QString> headers = Headers(kList);
  Require(headers.size() >= first.size(), "columns are missing");
  for (std::size_t i = 0; i < first.size(); ++i) RequireEqual(headers[i], first[i]);
}

void ExpectList(const NodeRow& node) {
  if (IsShown("MessageBox")) Require(false, "a box: " + BoxText().toStdString());
  RequireEqual(StatusText(), node.status);
  ExpectHeaders(node.headers);
  if (node.headers.empty()) {
    Require(Headers(kList).empty(), "the list of another node stands");
  } else {
    Require(!Column(kList, 0).empty(), "the list has no rows");
  }
}

// Stands on the "Table" node.
enum TableColumns { kName = 1, kDescription = 2 };
enum CapacityColumns { kRows = 4 };

void ExpectDescriptions() {
  const std::vector<QString> descriptions = Column(kList, kDescription);
  Require(std::any_of(descriptions.begin(), descriptions.end(),
                      [](const QString& text) { return !text.isEmpty(); }),
          "no table has a description");
}

void ExpectCapacity() {
  RequireEqual(StatusText(), " >EXEC sp_spaceused Tablexxx");
  ExpectHeaders(
      {"No.", "Name", "xtype", "作成日", "rows", "reserved", "data", "index_size", "unused"});
  for (const QString& rows : Column(kList, kRows)) Require(!rows.isEmpty(), "a table has no rows");
}

void ExpectRowsSortedAsNumbers() {
  const std::vector<QString> rows = Column(kList, kRows);
  Require(std::is_sorted(rows.begin(), rows.end(),
                         [](const QString& left, const QString& right) {
                           return left.toInt() < right.toInt();
                         }),
          "the numbers are not sorted as numbers");
  Require(!std::is_sorted(rows.begin(), rows.end()), "the numbers are sorted as texts");
}

Steps CapacitySteps() {
  return {
      {"tables-described", [] { PressKey(Qt::Key_F5); }, ExpectDescriptions},
      {"capacity",
       [] {
         ClickRow(kList, kName, "受注", Press::kRight);
         ChooseItem("Table 管理");
         ChooseItem("容量調査");
       },
       ExpectCapacity},
      {"capacity-by-rows", [] { ClickColumn(kList, kRows); }, ExpectRowsSortedAsNumbers},
  };
}

}  // namespace

Steps NodeSteps() {
  Steps steps;
  for (const NodeRow& node : Nodes()) {
    steps.push_back({"node-" + node.picture, [path = node.path] { ClickNode("TreeView", path); },
                     [node] { ExpectList(node); }});
  }
  for (Step& step : CapacitySteps()) steps.push_back(std::move(step));
  return steps;
}

}  // namespace dbkeeper::qt::tour
