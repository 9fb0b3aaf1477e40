// "Table": the tables of a database.

#include "app/main/Application.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "app/support/DateText.h"
#include "catalog/BulkCopy.h"
#include "catalog/ObjectLists.h"

namespace dbkeeper {

namespace {

void PM_DspSysTblClick(const CommandContext& context) {
  bool& shown = context.workbench.Switches.ShowSystemTables;
  shown = !shown;
  context.sender.Checked = shown;
  context.workbench.Settings.Write("SYSTEM", "DspSysTbl", shown ? "True" : "False");
}

void PopupMenu_Table_CapacityClick(const CommandContext& context) {
  const TreeNode* const node = context.workbench.Tree.Selected();
  if (node == nullptr || node->Parent() == nullptr) return;
  RunningStatus status(context.workbench);
  ListCapacity(context.workbench, node->Parent()->Text());
  status.Done("EXEC sp_spaceused Tablexxx");
}

// The selected row's text under a caption; empty where the list has no such column, as after a
// deletion.
std::string TextUnder(const ListView& list, std::string_view caption) {
  for (std::size_t column = 0; column < list.Columns().size(); ++column) {
    if (list.Columns()[column].Caption == caption)
      return std::string(list.Selected()->Cell(column));
  }
  return {};
}

void PopupMenu_Table_CreateClick(const CommandContext& context) {
  context.program.Form_Table.SetUp(NodeDatabase(context.workbench));
  context.workbench.Host.windows.ShowModal(context.program.Form_Table);
}

void PopupMenu_Table_PropertyClick(const CommandContext& context) {
  const ListView& list = context.workbench.List;
  if (list.Selected() == nullptr) return;
  const bool advanced = context.workbench.Switches.Advanced;
  context.program.Form_Table.SetUp(NodeDatabase(context.workbench),
                                   advanced ? TextUnder(list, "Note") : std::string(),
                                   advanced ? TextUnder(list, "Description") : std::string(),
                                   std::string(list.Selected()->SubItem(0)));
  context.workbench.Host.windows.ShowModal(context.program.Form_Table);
}

constexpr std::string_view kBulkCopyFilter =
    "CSVﾌｧｲﾙ(*.csv)|*.csv|ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*";

void PopupMenu_Table_BCP_ExpClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  if (workbench.List.Selected() == nullptr) return;
  const std::string table(workbench.List.Selected()->SubItem(0));
  const std::string database = NodeDatabase(workbench);
  const std::string today = FormatDateTime(workbench.Host.clock.Now(), "yyyymmdd");
  const auto file = workbench.Host.dialogs.SaveFile(
      {.filter = std::string(kBulkCopyFilter),
       .initial_name = database + ".." + table + "_" + today + ".csv"});
  if (file) ExportByBcp(workbench, workbench.Session.ServerName, database, *file, table);
}

void PopupMenu_Table_BCP_ImpClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  if (workbench.List.Selected() == nullptr) return;
  const std::string table(workbench.List.Selected()->SubItem(0));
  const auto file = workbench.Host.dialogs.OpenFile({.filter = std::string(kBulkCopyFilter)});
  if (!file) return;
  ImportByBcp(workbench, workbench.Session.ServerName, NodeDatabase(workbench), *file, table);
}

void PopupMenu_Table_TestDataClick(const CommandContext& context) {
  const ListView& list = context.workbench.List;
  if (list.Selected() == nullptr) return;
  context.program.Form_Table_TestData.SetUp(NodeDatabase(context.workbench),
                                            std::string(list.Selected()->SubItem(0)));
  context.workbench.Host.windows.ShowModal(context.program.Form_Table_TestData);
}

// The two items that work on the checked rows appear with the boxes.
void PopupMenu_Table_Select_ChkBoxClick(const CommandContext& context) {
  const bool shown = !context.sender.Checked();
  context.sender.Checked = shown;
  context.workbench.List.CheckBoxes = shown;
  const PopupMenu& menu = context.program.FormMain.Menu("PopupMenu_Table");
  for (const char* name : {"PopupMenu_Table_Select_Truncate", "PopupMenu_Table_Select_Drop"}) {
    menu.Find(name)->Visible = shown;
  }
}

constexpr RowCommand PopupMenu_Table_DropClick = {
    .question = "Table:%D.dbo.%N を削除してよろしいですか?",
    .use = "use [%D]",
    .statement = "drop Table [%D].dbo.[%N]",
    .refresh = ListTablesAlone,  // deliberately without descriptions, whatever the switch says
};

constexpr MenuRow kTableRows[] = {
    {0, "PopupMenu_Table_Open", "開く", &PopupMenu_Table_OpenClick, &RowSelected,
     MenuLook::kDefault},
    {0, "PopupMenu_Table_Create", "新規ﾃｰﾌﾞﾙ...", &PopupMenu_Table_CreateClick},
    {0, "PopupMenu_Table_Property", "ﾌﾟﾛﾊﾟﾃｨ", &PopupMenu_Table_PropertyClick, &RowSelected},
    {0, "PopupMenu_Table_Privileges", "権限の表示...", &PopupMenu_Table_PrivilegesClick,
     &RowSelected},
    {0, "PM_DspSysTbl", "System Tableも表示", &PM_DspSysTblClick},
    kRefreshRow,
    SqlRow("PopupMenu_Table_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Table_Script", "生成Script...", &PopupMenu_Table_ScriptClick, &RowSelected},
    {0, "PopupMenu_Table_BCP", "BCP", kNoCommand, &RowSelected},
    {1, "PopupMenu_Table_BCP_Exp", "BCPによるｴｸｽﾎﾟｰﾄ ...", &PopupMenu_Table_BCP_ExpClick},
    {1, "PopupMenu_Table_BCP_Imp", "BCPによるｲﾝﾎﾟｰﾄ ...", &PopupMenu_Table_BCP_ImpClick},
    {1, "PopupMenu_Table_TestData", "試験用Dumyデータの生成&& BCPによるｲﾝﾎﾟｰﾄ ...",
     &PopupMenu_Table_TestDataClick},
    {0, "PopupMenu_Table_Management", "Table 管理", kNoCommand},
    {1, "PopupMenu_Table_Capacity", "容量調査", &PopupMenu_Table_CapacityClick},
    {1, "PopupMenu_Table_Specification", "テーブル定義書の作成 (Excel形式)", kNoCommand},
    {0, "PopupMenu_Table_Bulk", "一括処理", kNoCommand, nullptr, MenuLook::kInvisible},
    {1, "PopupMenu_Table_Select_ChkBox", "対象選択用のChkBox On/Off",
     &PopupMenu_Table_Select_ChkBoxClick},
    {1, "PopupMenu_Table_Select_Truncate", "選択TableのTrncate(ﾚｺｰﾄﾞ全削除)", kNoCommand, nullptr,
     MenuLook::kInvisible},
    {1, "PopupMenu_Table_Select_Drop", "選択TableのDrop(削除)", kNoCommand, nullptr,
     MenuLook::kInvisible},
    {0, "PopupMenu_Table_Drop", "削除", &PopupMenu_Table_DropClick, &RowSelected},
};
constexpr MenuTable kTableMenu = {"PopupMenu_Table", kTableRows};

}  // namespace

constinit const NodeKind kTableNode = {
    3,          Match::kText, "Table",
    ListTables, &kTableMenu,  "select * from sysobjects  where(xtype='S')or(xtype='U')"};

}  // namespace dbkeeper
