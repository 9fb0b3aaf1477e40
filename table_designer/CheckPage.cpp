// The designer's page of check constraints.

#include "app/workbench/StatementRun.h"
#include "catalog/TableCatalog.h"
#include "table_designer/Unit_Table.h"

namespace dbkeeper {

void TForm_Table::BindCheckPage() {
  SBtn_Check_New.OnClick = [this] { SBtn_Check_NewClick(); };
  SBtn_Check_Update.OnClick = [this] { SBtn_Check_UpdateClick(); };
  SBtn_Check_Drop.OnClick = [this] { SBtn_Check_DropClick(); };
}

void TForm_Table::ShowChecks() {
  SBtn_Check_NewClick();
  ListChecks();
}

void TForm_Table::ListChecks() {
  const ListUpdate update(ListView);
  ListView.ClearItems();
  ListView.ClearColumns();
  ListView.AddColumn("Name", 200);
  ListView.AddColumn("Text", 440);
  if (!table_.Exists()) return;
  const auto table = ReadTable(Shared(), Edit_DataBase.Text(), Edit_TableName.Text());
  if (!table) return;
  for (const TableCheck& check : table->checks) {
    ListView.AddItem({check.name, check.text});
  }
}

void TForm_Table::SelectCheck() {
  const ListItem& row = *ListView.Selected();
  Edit_CheckName.Text = std::string(row.Caption());
  Memo_Checks.Text = std::string(row.SubItem(0));
  check_.Show(Record::kExisting);
}

void TForm_Table::SBtn_Check_NewClick() {
  Memo_Checks.Clear();
  check_.New();
}

std::string TForm_Table::DropCheckText() const {
  return "alter table " + BracketedTable() + " drop constraint " + Edit_CheckName.Text();
}

void TForm_Table::SBtn_Check_UpdateClick() {
  const std::string& name = Edit_CheckName.Text();
  StatementRun run = {.use = UseText()};
  if (check_.Exists()) run.statements.push_back(DropCheckText());
  run.statements.push_back("alter table " + BracketedTable() + "\r\n  add constraint " + name +
                           "\r\n check(\r\n" + Memo_Checks.Text() + "\r\n )");
  Replace(run, check_, name, &TForm_Table::ListChecks);
  SBtn_Check_NewClick();
}

void TForm_Table::SBtn_Check_DropClick() {
  if (!check_.Exists()) return;
  if (!Drop("Check:" + Edit_CheckName.Text(), DropCheckText())) return;
  ListChecks();
  SBtn_Check_NewClick();
}

}  // namespace dbkeeper
