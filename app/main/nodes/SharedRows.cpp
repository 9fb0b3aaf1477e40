#include "app/main/nodes/SharedRows.h"

#include "app/main/Application.h"
#include "app/main/CsvExport.h"
#include "app/main/nodes/NodeKinds.h"
#include "app/support/Files.h"
#include "catalog/ObjectScript.h"

namespace dbkeeper {

namespace {

constexpr const char* kMaster = "master";

// The text of the selected node's parent where that is a database.
std::string DatabaseOfSelection(const TreeView& tree) {
  const TreeNode* node = tree.Selected();
  const TreeNode* parent = node == nullptr ? nullptr : node->Parent();
  const bool is_database =
      parent != nullptr && parent->Level() == 2 && parent->Parent()->Text() == "Database";
  return is_database ? parent->Text() : kMaster;
}

constexpr MenuRow kFirstRows[] = {kOnlineHelpRow, kReadmeRow, kHomePageRow};

constexpr MenuRow kMinimumRows[] = {
    SqlRow("PopupMenu_Minimum_SQL", &PopupMenu_Minimum_SQLClick),
    kCsvRow,
};

}  // namespace

constinit const MenuTable kFirstMenu = {"PopupMenu1", kFirstRows};
constinit const MenuTable kMinimumMenu = {"PopupMenu_Minimum", kMinimumRows};

bool RowSelected(const Workbench& workbench) { return workbench.List.SelCount() > 0; }
bool Connected(const Workbench& workbench) { return workbench.Session.Connected(); }
bool Disconnected(const Workbench& workbench) { return !workbench.Session.Connected(); }

std::string NodeDatabase(const Workbench& workbench) {
  const TreeNode* const node = workbench.Tree.Selected();
  return node != nullptr && node->Parent() != nullptr ? node->Parent()->Text() : std::string();
}

void PopupMenu_Minimum_CSV_OutClick(const CommandContext& context) {
  const Host& host = context.workbench.Host;
  const auto file = host.dialogs.SaveFile(
      {"CSVﾌｧｲﾙ(*.csv)|*.csv|ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*", "", ""});
  if (!file) return;
  const BusyScope busy(host.windows);
  AnsiTextFile csv(host, PathOf(*file), Writing::kWhole);
  WriteCsv(context.workbench.List, csv);
  csv.Finish();
}

void PopupMenu_Databases_SQLClick(const CommandContext& context) {
  context.workbench.Status.SimpleText = " *";
  PopupMenu_Minimum_SQLClick(context);
}

void PopupMenu_Minimum_SQLClick(const CommandContext& context) {
  TFormExecSQL& window = context.program.FormExecSQL;
  window.OpenForDatabase(kMaster);
  context.workbench.Host.windows.Show(window);
}

void PopupMenu_Table_SQLClick(const CommandContext& context) {
  TFormExecSQL& window = context.program.FormExecSQL;
  const TreeNode* const node = context.workbench.Tree.Selected();
  const std::string database = DatabaseOfSelection(context.workbench.Tree);
  if (node != nullptr && node->Text() == kTableNode.text) {
    window.OpenForTables(database);
  } else {
    window.OpenForDatabase(database);
  }
  context.workbench.Host.windows.Show(window);
}

void PopupMenu_Table_PrivilegesClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  const ListItem* const row = workbench.List.Selected();
  if (row == nullptr) return;
  const RowNames names = NamesOf(*row, workbench.Tree);
  TForm_Privileges& form = context.program.Form_Privileges;
  {
    RunningStatus status(workbench);
    form.SetUp(names.database, names.name, workbench.Tree.Selected()->Text());
    status.Done("select * from sysprotects");
  }
  workbench.Host.windows.ShowModal(form);
}

void PopupMenu_Table_ScriptClick(const CommandContext& context) {
  const Workbench& workbench = context.workbench;
  const ListItem* const row = workbench.List.Selected();
  if (row == nullptr) return;
  const RowNames names = NamesOf(*row, workbench.Tree);
  TFormExecSQL& window = context.program.FormExecSQL;
  {
    const BusyScope busy(workbench.Host.windows);
    window.ShowText(WriteObjectScript(workbench, names.database, names.name,
                                      workbench.Tree.Selected()->Text()));
  }
  workbench.Host.windows.Show(window);
}

void PopupMenu_Table_OpenClick(const CommandContext& context) {
  context.program.FormMain.Browser.OpenSelected();
}

}  // namespace dbkeeper
