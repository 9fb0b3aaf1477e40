// Every other node of the tree: its list stands, and the status bar shows its statement.
#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

enum class Rows { kSome, kPerhapsNone };

struct NodeRow {
  std::string picture;
  std::vector<QString> path;  // below the server node
  QString status;
  Rows rows;
};

// The nodes of the sample instance, with one of its databases for all.
std::vector<NodeRow> Nodes() {
  const QString database = "販売管理";
  return {
      {"server", {}, " >select SERVERPROPERTY(xxx)", Rows::kSome},
      {"database",
       {"Database", database},
       " >select * from master.dbo.sysdatabases / exec sp_spaceused",
       Rows::kSome},
      {"tables",
       {"Database", database, "Table"},
       " >select * from sysobjects  where(xtype='S')or(xtype='U')",
       Rows::kSome},
      {"views",
       {"Database", database, "View"},
       " >select * from sysobjects  where xtype='V'",
       Rows::kSome},
      {"procedures",
       {"Database", database, "Procedure"},
       " >select * from sysobjects  where(xtype='X')or(xtype='P')",
       Rows::kPerhapsNone},
      {"users",
       {"Database", database, "User"},
       " >select * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)",
       Rows::kSome},
      {"roles", {"Database", database, "Role"}, " >exec sp_helprole", Rows::kSome},
      {"backups",
       {"Database", database, "Backup"},
       " >select * from backupset   (msdb)",
       Rows::kPerhapsNone},
      {"jobs",
       {"Management", "Job"},
       " >EXEC sp_help_job            (USE msdb)",
       Rows::kPerhapsNone},
      {"devices",
       {"Management", "BackUpDevice"},
       " >select * from master.dbo.sysdevices where status=16",
       Rows::kPerhapsNone},
      {"processes", {"Management", "Process"}, " >EXEC exec sp_who      (USE master)", Rows::kSome},
      {"locks", {"Management", "Lock"}, " >EXEC sp_lock          (USE master)", Rows::kSome},
      {"logins", {"Security", "Login"}, " >select * from master.dbo.syslogins", Rows::kSome},
      {"server-roles", {"Security", "Server role"}, " >exec sp_helpsrvrolemember", Rows::kSome},
  };
}

void ExpectList(const NodeRow& node) {
  if (IsShown("MessageBox")) Require(false, "a box: " + BoxText().toStdString());
  RequireEqual(StatusText(), node.status);
  Require(!Headers("ListViewMain").empty(), "the list has no columns");
  Require(node.rows == Rows::kPerhapsNone || !Column("ListViewMain", 0).empty(),
          "the list has no rows");
}

}  // namespace

Steps NodeSteps() {
  Steps steps;
  for (const NodeRow& node : Nodes()) {
    std::vector<QString> path = {"SQL Server :(local)"};
    path.insert(path.end(), node.path.begin(), node.path.end());
    steps.push_back({"node-" + node.picture, [path] { ClickNode("TreeView", path); },
                     [node] { ExpectList(node); }});
  }
  return steps;
}

}  // namespace dbkeeper::qt::tour
