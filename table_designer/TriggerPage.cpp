// The designer's page of triggers.

#include "app/support/DateText.h"
#include "app/workbench/StatementRun.h"
#include "catalog/TableCatalog.h"
#include "table_designer/Unit_Table.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kNameCell = 0;

std::string FirstLine(const std::string& text) { return text.substr(0, text.find("\r\n")); }

}  // namespace

void TForm_Table::BindTriggerPage() {
  SBtn_Triger_New.OnClick = [this] { SBtn_Triger_NewClick(); };
  SBtn_Triger_Update.OnClick = [this] { SBtn_Triger_UpdateClick(); };
  SBtn_Triger_Drop.OnClick = [this] { SBtn_Triger_DropClick(); };
}

void TForm_Table::ShowTriggers() {
  ListTriggers();
  SBtn_Triger_NewClick();
}

void TForm_Table::ListTriggers() {
  const ListUpdate update(ListView);
  ListView.ClearItems();
  ListView.ClearColumns();
  ListView.AddColumn("ID", 80);
  ListView.AddColumn("Name", 240);
  ListView.AddColumn("Date", 140);
  triggers_.clear();
  if (!table_.Exists()) return;
  auto table = ReadTable(Shared(), Edit_DataBase.Text(), Edit_TableName.Text());
  if (!table) return;
  triggers_ = std::move(table->triggers);
  const std::string form = workbench_.Host.locale.ShortDateFormat();
  for (const TableTrigger& trigger : triggers_) {
    ListView.AddItem(
        {std::to_string(trigger.id), trigger.name, ServerDateToHostText(trigger.created, form)});
  }
}

void TForm_Table::SelectTrigger() {
  Memo_Trigger.Text = triggers_[ListView.Selection().front()].module.text;
  trigger_.Show(Record::kExisting);
}

void TForm_Table::SBtn_Triger_NewClick() {
  Memo_Trigger.Text = "create trigger [Name] on " + Edit_TableName.Text() +
                      "\r\nfor insert, update, delete\r\nas\r\n";
  trigger_.New();
}

// The text goes as it was typed: what changes a trigger is the operator's own "alter trigger".
void TForm_Table::SBtn_Triger_UpdateClick() {
  Shared().Close();
  RunStatements(workbench_, {.use = UseText(),
                             .statements = {Memo_Trigger.Text()},
                             .status = FirstLine(Memo_Trigger.Text())});
  ListTriggers();
  SBtn_Triger_NewClick();
}

void TForm_Table::SBtn_Triger_DropClick() {
  const std::string name = SelectedCell(kNameCell);
  if (!trigger_.Exists() || name.empty()) return;
  if (!Drop("Triger:" + name, "drop trigger " + name)) return;
  ListTriggers();
  SBtn_Triger_NewClick();
}

}  // namespace dbkeeper
