#include "table_designer/Unit_Table.h"

#include <algorithm>

#include "app/support/Errors.h"
#include "app/workbench/StatementRun.h"
#include "catalog/ColumnList.h"
#include "catalog/ExtendedProperty.h"
#include "catalog/ObjectLists.h"
#include "table_designer/ColumnText.h"

namespace dbkeeper {

constexpr TForm_Table::PageKind TForm_Table::kPages[] = {
    {"Table 構造", &TForm_Table::Pnl_Columns, &TForm_Table::ShowColumns, &TForm_Table::SelectColumn,
     &TForm_Table::SBtn_Columns_NewClick},
    {"index/key", &TForm_Table::Pnl_Index, &TForm_Table::ShowIndexes, &TForm_Table::SelectIndex,
     &TForm_Table::Sbtn_Index_NewClick},
    {"制約", &TForm_Table::Pnl_Check, &TForm_Table::ShowChecks, &TForm_Table::SelectCheck,
     &TForm_Table::SBtn_Check_NewClick},
    {"triger", &TForm_Table::Pnl_Triger, &TForm_Table::ShowTriggers, &TForm_Table::SelectTrigger,
     nullptr},
};

TForm_Table::TForm_Table(const Workbench& workbench)
    : Form("Form_Table"),
      Fne_Column_Size("Fne_Column_Size", workbench.Host.locale.DecimalSeparator(), 0, "桁 :"),
      Fne_Column_MinSize("Fne_Column_MinSize", workbench.Host.locale.DecimalSeparator(), 0,
                         "少数以下"),
      Fne_Column_Ide_Start("Fne_Column_Ide_Start", workbench.Host.locale.DecimalSeparator(), 0,
                           "(start)"),
      Fne_Column_Ide_Step("Fne_Column_Ide_Step", workbench.Host.locale.DecimalSeparator(), 0,
                          "(step)"),
      workbench_(workbench),
      pages_(TabControl1, PagesOf(*this)),
      table_({.keys = {&Edit_TableName},
              .only_new = {&SBtn_Create},
              .only_existing = {&Edit_Description, &Edit_Note, &SbtnTblInfoUpdate}}),
      column_({.keys = {&Edit_Column_Name},
               .write = &SBtn_Columns_Update,
               .write_existing = "登録",
               .only_existing = {&SBtn_Columns_Drop}}),
      index_({.keys = {&Edit_IndexName},
              .write = &Sbtn_Index_Update,
              .only_existing = {&Sbtn_Index_Drop}}),
      check_({.keys = {&Edit_CheckName},
              .write = &SBtn_Check_Update,
              .only_existing = {&SBtn_Check_Drop}}),
      trigger_({.write = &SBtn_Triger_Update, .only_existing = {&SBtn_Triger_Drop}}) {
  Caption = "Tableの設定";
  Edit_DataBase.Lock(true);
  OnShow = [this] { FormShow(); };
  OnClose = [this] { FormClose(); };
  TabControl1.OnChange = [this] { TabControl1Change(); };
  SBtn_Create.OnClick = [this] { SBtn_CreateClick(); };
  SbtnTblInfoUpdate.OnClick = [this] { SbtnTblInfoUpdateClick(); };
  Btn_Close.OnClick = [this] { Btn_CloseClick(); };
  ListView.OnSelectItem = [this] {
    ListViewSelectItem();
    ListViewClick();
  };
  BindColumnPage();
  BindIndexPage();
  BindCheckPage();
  BindTriggerPage();
}

std::vector<Page> TForm_Table::PagesOf(TForm_Table& form) {
  std::vector<Page> pages;
  for (const PageKind& kind : kPages)
    pages.push_back({std::string(kind.caption), &(form.*kind.panel)});
  return pages;
}

void TForm_Table::SetUp(const std::string& database) {
  BeginSetUp(database, "", Record::kNew);
  Edit_Description.Text = std::string();
  Edit_Note.Clear();
}

void TForm_Table::SetUp(const std::string& database, const std::string& note,
                        const std::string& description, const std::string& table) {
  BeginSetUp(database, table, Record::kExisting);
  Edit_Description.Text = description;
  Edit_Note.Text = note;
}

void TForm_Table::BeginSetUp(const std::string& database, const std::string& table, Record record) {
  Edit_DataBase.Text = database;
  Edit_TableName.Text = table;
  table_.Show(record);
  designed_.clear();
  columns_shown_ = false;
  TabControl1.TabIndex = 0;
  Sbtn_Index_NewClick();
  SBtn_Check_NewClick();
  SBtn_Triger_NewClick();
  SBtn_Columns_NewClick();
}

void TForm_Table::FormShow() {
  const bool advanced = workbench_.Switches.Advanced;
  Edit_Column_Note.Visible = advanced;
  Edit_Column_Note.EditLabel.Visible = advanced;
  ShowColumns();
}

void TForm_Table::FormClose() { TabControl1.TabIndex = 0; }

// A new table's columns stand nowhere but in the list: they are kept while another page uses it.
void TForm_Table::TabControl1Change() {
  if (columns_shown_ && !table_.Exists()) designed_ = ListView.Items();
  columns_shown_ = false;
  (this->*CurrentPage().show)();
}

void TForm_Table::ListViewSelectItem() {
  if (ListView.Selected() != nullptr) (this->*CurrentPage().select)();
}

void TForm_Table::ListViewClick() {
  if (ListView.SelCount() == 0 && CurrentPage().renew != nullptr) (this->*CurrentPage().renew)();
}

std::string TForm_Table::UseText() const { return "use [" + Edit_DataBase.Text() + "]"; }

void TForm_Table::SBtn_CreateClick() {
  const std::string table = Edit_TableName.Text();
  const std::vector<ListItem>& rows = columns_shown_ ? ListView.Items() : designed_;
  StatementRun run = {.use = UseText(),
                      .statements = {CreateTableText(table, rows)},
                      .status = "create table [" + table + "](",
                      .refresh = ListTablesAlone,
                      .database = Edit_DataBase.Text()};
  for (const ListItem& row : rows) {
    const std::string comment(row.SubItem(kCommentCell));
    if (comment.empty()) continue;
    run.statements.push_back(
        AddPropertyStatement(kDescriptionProperty, {table, std::string(row.Caption())}, comment));
  }
  RunStatements(workbench_, run);
  Close();
}

void TForm_Table::SbtnTblInfoUpdateClick() {
  RunningStatus status(workbench_);
  Shared().Command(UseText());
  UpdateTableProperty(kDescriptionProperty, Edit_Description.Text());
  UpdateTableProperty(kNoteProperty, Edit_Note.Text());
  status.Done(UseText());
}

void TForm_Table::UpdateTableProperty(std::string_view property, const std::string& text) {
  const std::string& table = Edit_TableName.Text();
  Shared().Open("SELECT *  FROM ::fn_listextendedproperty (NULL, 'user', 'dbo', 'table', '" +
                table + "', default, default) where name = '" + std::string(property) + "'");
  const bool exists = !Shared().Eof();
  Shared().Close();
  const std::string statement = PropertyStatement(property, {table}, exists, text);
  if (!statement.empty()) Shared().Command(statement);
}

// Where the old one is gone and the new one was refused, the list shows what stands at once, and
// the fields stay for another try.
void TForm_Table::Replace(const StatementRun& run, RecordMode& mode, const std::string& name,
                          void (TForm_Table::*list)()) {
  try {
    RunStatements(workbench_, run);
  } catch (const Error&) {
    ListWhatStands(list);
    const std::vector<ListItem>& rows = ListView.Items();
    const bool stands = std::any_of(rows.begin(), rows.end(),
                                    [&name](const ListItem& row) { return row.Caption() == name; });
    if (!stands) mode.Show(Record::kNew);
    throw;
  }
  (this->*list)();
}

// What fails here fails for the reason that is told already.
void TForm_Table::ListWhatStands(void (TForm_Table::*list)()) {
  try {
    (this->*list)();
  } catch (const Error&) {
    ListView.ClearItems();
  }
}

bool TForm_Table::Drop(const std::string& question, const std::string& statement) {
  return RunStatements(workbench_, {.question = question + " を削除してよろしいですか?",
                                    .use = UseText(),
                                    .statements = {statement}});
}

}  // namespace dbkeeper
