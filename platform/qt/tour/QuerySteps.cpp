// The query window: a result, the server's messages, the history, the builder of statements.
#include <QComboBox>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr const char* kFirst =
    "print '日本語の表示' select name, dbid, crdate from master.dbo.sysdatabases order by name";
constexpr const char* kSecond = "select @@version as version";

QString EditorText() { return FindA<QPlainTextEdit>("MemoSQL").toPlainText(); }

void Run(const QString& sql) {
  TypeInto("MemoSQL", sql);
  PressKey(Qt::Key_F5);
}

void ExpectOpen(int least_rows) {
  RequireEqual(FindA<QPushButton>("Sbtn_Select").text(), "Close");
  Require(FindA<QTableView>("DBGrid1").model()->rowCount() >= least_rows, "the rows are missing");
}

void TickFirstColumn() {
  auto& columns = FindA<QListWidget>("CheckListBox_EasySQL");
  Click("CheckListBox_EasySQL");
  columns.setCurrentRow(0);
  PressKey(Qt::Key_Space);
  Click("Sbtn_EasySQL_Select");
}

}  // namespace

Steps QuerySteps() {
  return {
      {"query-menu",
       [] {
         ClickNode("TreeView", {"SQL Server :(local)", "Database"});
         ClickRow("ListViewMain", 1, "master", Press::kRight);
       },
       [] { RequireEqual(OpenMenu().objectName(), "PopupMenu_Databases"); }},
      {"query-window", [] { ChooseItem("SQL 発行..."); },
       [] {
         Require(Find("FormExecSQL").windowTitle().startsWith("SQL発行:"), "another caption");
         RequireEqual(FindA<QComboBox>("ComboBox_DatabaseName").currentText(), "master");
       }},
      {"query-result", [] { Run(kFirst); }, [] { ExpectOpen(4); }},
      {"query-messages", [] { Click("Sbtn_ServerMessage"); },
       [] {
         const QString said = FindA<QPlainTextEdit>("MemoServerMessage").toPlainText();
         Require(said.contains("\n  日本語の表示"), "the printed message is missing");
       }},
      {"query-second-result", [] { Run(kSecond); }, [] { ExpectOpen(1); }},
      {"query-history", [] { Click("Sbtn_SQL_Log_Back"); },
       [] {
         RequireEqual(EditorText(), kFirst);
         Require(FindA<QPushButton>("Sbtn_SQL_Log_Forward").isEnabled(), "no newer entry");
       }},
      {"query-builder",
       [] {
         Click("Sbtn_EasySQL");
         Click("Sbtn_EasySQL_Get_Columns");
       },
       [] { Require(IsShown("FormChooseTable"), "no table is asked for"); }},
      {"query-layout", [] { PressKey(Qt::Key_Return); },
       [] {
         Require(FindA<QListWidget>("CheckListBox_EasySQL").count() > 1, "there are no columns");
       }},
      {"query-built", [] { TickFirstColumn(); },
       [] { Require(EditorText().startsWith("select *\n  from ["), "no statement was built"); }},
      {"query-closed", [] { CloseWindow("FormExecSQL"); },
       [] { Require(!IsShown("FormExecSQL"), "the window is there"); }},
  };
}

}  // namespace dbkeeper::qt::tour
