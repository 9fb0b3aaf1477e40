// The table browser below the main list: moving, a filter, a row written.
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"

namespace dbkeeper::qt::tour {

namespace {

constexpr const char* kGrid = "DBGrid1";

}  // namespace

Steps BrowserSteps() {
  return {
      {"browser-menu",
       [] {
         ClickNode("TreeView", {"SQL Server :(local)", "Database", "販売管理", "Table"});
         ClickRow("ListViewMain", 1, "商品", Press::kRight);
       },
       [] { RequireEqual(OpenMenu().objectName(), "PopupMenu_Table"); }},
      {"browser", [] { ChooseItem("開く"); },
       [] {
         RequireEqual(StatusText(), " >select * from 商品");
         RequireEqual(FindA<QPushButton>("Sbtn_TableOpen").text(), "Close");
         RequireCell(kGrid, 0, 0, "P10001", "▶");
       }},
      {"browser-last", [] { Click("Last"); }, [] { RequireCell(kGrid, 119, 0, "P10120", "▶"); }},
      {"browser-filter",
       [] {
         Click("ComboBox_Table_Where");
         PressKey(Qt::Key_Down);
         PressKey(Qt::Key_Return);
       },
       [] { RequireEqual(FindA<QLineEdit>("Edit_Table_Where").text(), "(商品コード = '')"); }},
      {"browser-filtered",
       [] {
         TypeInto("Edit_Table_Where", "(商品コード = 'P10007')");
         Click("Sbtn_TableOpen");
         Click("Sbtn_TableOpen");
       },
       [] {
         Require(FindA<QTableView>(kGrid).model()->rowCount() == 1, "another number of rows");
       }},
      {"browser-edit", [] { Click("Sbtn_RE"); },
       [] {
         Require(StatusText().startsWith(" >Tab=Cancelと処理します。"), "another status");
         Require(Find("Insert").isEnabled(), "nothing can be inserted");
       }},
      {"browser-cell", [] { TypeIntoCell(kGrid, 0, 1, "万年筆（黒）"); },
       [] { RequireEqual(FindA<QLineEdit>("CellEdit").text(), "万年筆（黒）"); }},
      {"browser-posted", [] { Click("Post"); },
       [] { RequireCell(kGrid, 0, 1, "万年筆（黒）", "▶"); }},
      {"browser-closed",
       [] {
         Click("Sbtn_RE");
         Click("Sbtn_TableClose");
       },
       [] { Require(!IsShown("Pnl_SQL"), "the pane is there"); }},
  };
}

}  // namespace dbkeeper::qt::tour
