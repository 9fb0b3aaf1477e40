// The list of databases, its menu, its sort and its keys.
#include <QApplication>
#include <QClipboard>
#include <QTreeView>
#include <algorithm>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr const char* kList = "ListViewMain";
constexpr const char* kStatus = " >select * from master.dbo.sysdatabases";
enum Columns { kName = 1, kState = 2 };

const std::vector<QString> kDatabaseNode = {"SQL Server :(local)", "Database"};

bool Holds(const std::vector<QString>& texts, const QString& part) {
  return std::any_of(texts.begin(), texts.end(),
                     [&part](const QString& text) { return text.contains(part); });
}

void ExpectDatabases() {
  RequireEqual(Headers(kList).at(kState), "状態");
  Require(Holds(Column(kList, kName), "master"), "no database master");
  Require(Holds(Column(kList, kState), "offline,"), "no offline database");
  Require(Holds(Column(kList, kState), "読取専用,"), "no read-only database");
  RequireEqual(StatusText(), kStatus);
}

void ExpectDatabaseNodes() {
  const std::vector<QString> nodes = ChildrenOf("TreeView", kDatabaseNode);
  Require(Holds(nodes, "master"), "no node for master");
  Require(nodes.size() < Column(kList, kName).size(), "a node for the offline database");
}

void ExpectSorted() {
  const std::vector<QString> names = Column(kList, kName);
  Require(std::is_sorted(names.begin(), names.end(),
                         [](const QString& left, const QString& right) {
                           return left.compare(right, Qt::CaseInsensitive) < 0;
                         }),
          "the names are not sorted");
}

void ExpectCopied() {
  const QStringList lines = QApplication::clipboard()->text().split('\n');
  Require(lines.size() == static_cast<qsizetype>(Column(kList, kName).size()),
          "not every row is in the clipboard");
  RequireEqual(lines.first().split('\t').at(kName), Column(kList, kName).front());
}

}  // namespace

Steps DatabaseSteps() {
  return {
      {"databases", [] { ClickNode("TreeView", kDatabaseNode); }, ExpectDatabases},
      {"database-nodes", [] { PressKey(Qt::Key_Right); }, ExpectDatabaseNodes},
      {"database-menu", [] { ClickRow(kList, kName, "master", Press::kRight); },
       [] { RequireEqual(OpenMenu().objectName(), "PopupMenu_Databases"); }},
      {"sorted-by-name",
       [] {
         PressKey(Qt::Key_Escape);
         ClickColumn(kList, kName);
       },
       ExpectSorted},
      {"copied",
       [] {
         ClickRow(kList, kName, "master");
         PressKey(Qt::Key_A, Qt::ControlModifier);
         PressKey(Qt::Key_C, Qt::ControlModifier);
       },
       ExpectCopied},
      {"refreshed", [] { PressKey(Qt::Key_F5); },
       [] {
         ExpectDatabases();
         Require(FindA<QTreeView>(kList).selectionModel()->selectedRows().isEmpty(),
                 "the rows are still selected");
       }},
  };
}

}  // namespace dbkeeper::qt::tour
