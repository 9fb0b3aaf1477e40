// The designer's page of indexes and the primary key.

#include "app/support/TextHelpers.h"
#include "app/workbench/StatementRun.h"
#include "table_designer/Unit_Table.h"

namespace dbkeeper {

namespace {

constexpr std::string_view kDescending = "(-)";
constexpr std::string_view kPrimaryKeyWords = "primary key";
constexpr std::size_t kKeysCell = 0;         // of the list of indexes
constexpr std::size_t kDescriptionCell = 1;  // of the list of indexes
constexpr std::size_t kDescCell = 0;         // of the list of an index's keys

bool Holds(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace

void TForm_Table::BindIndexPage() {
  ListView_Index.AddColumn("Field", 100);
  ListView_Index.AddColumn("desc", 42);
  Sbtn_Index_New.OnClick = [this] { Sbtn_Index_NewClick(); };
  Sbtn_Index_Add_Field.OnClick = [this] { Sbtn_Index_Add_FieldClick(); };
  Sbtn_Index_Remove_Field.OnClick = [this] { Sbtn_Index_Remove_FieldClick(); };
  Sbtn_Index_Update.OnClick = [this] { Sbtn_Index_UpdateClick(); };
  Sbtn_Index_Drop.OnClick = [this] { Sbtn_Index_DropClick(); };
}

void TForm_Table::ShowIndexes() {
  ListIndexes();
  ComboBox_Fields.Items.Clear();
  if (table_.Exists()) {
    Query& query = Shared();
    query.UseDatabase(Edit_DataBase.Text());
    ComboBox_Fields.Items.Assign(
        query.Texts("select syscolumns.name\r\n"
                    "  from sysobjects\r\n"
                    " inner join syscolumns\r\n"
                    "         on sysobjects.id = syscolumns.id\r\n"
                    "      inner join systypes\r\n"
                    "              on systypes.xtype = syscolumns.xtype\r\n"
                    " where sysobjects.name = '" +
                        Edit_TableName.Text() +
                        "'\r\n"
                        " order by colid",
                    "name"));
  }
  Sbtn_Index_NewClick();
}

// The server has an error for the indexes of a table that has none: it is asked first.
void TForm_Table::ListIndexes() {
  const ListUpdate update(ListView);
  ListView.ClearItems();
  ListView.ClearColumns();
  ListView.AddColumn("Name", 160);
  ListView.AddColumn("Field", 200);
  ListView.AddColumn("Option", 280);
  if (!table_.Exists()) return;
  const std::string& table = Edit_TableName.Text();
  Query& query = Shared();
  query.UseDatabase(Edit_DataBase.Text());
  query.Open(
      "select sum(sysindexes.keycnt) as Idx_Sum  from sysobjects       inner join sysindexes"
      "               on sysobjects.id = sysindexes.id where sysobjects.name = '" +
      table + "'");
  const bool any = !query.Eof() && query.FieldByName("Idx_Sum").AsInteger() > 0;
  query.Close();
  if (!any) return;
  for (query.Open("sp_helpindex '" + table + "'"); !query.Eof(); query.Next()) {
    ListView.AddItem({query.FieldByName("index_name").AsString(),
                      query.FieldByName("index_keys").AsString(),
                      query.FieldByName("index_description").AsString()});
  }
  query.Close();
}

// The keys come as "a, b(-)".
void TForm_Table::SelectIndex() {
  const ListItem& row = *ListView.Selected();
  Edit_IndexName.Text = std::string(row.Caption());
  {
    const ListUpdate update(ListView_Index);
    ListView_Index.ClearItems();
    for (const std::string& part : Split(row.SubItem(kKeysCell), ',')) {
      std::string key = Trim(part);
      const bool descending = key.ends_with(kDescending);
      if (descending) key.resize(key.size() - kDescending.size());
      ListView_Index.AddItem({key, descending ? kDescending : std::string_view()});
    }
  }
  const std::string_view description = row.SubItem(kDescriptionCell);
  primary_key_chosen_ = Holds(description, kPrimaryKeyWords);
  CheckBox_Index_PrimaryKey.Checked = primary_key_chosen_;
  CheckBox_Index_Unique.Checked = Holds(description, "unique");
  CheckBox_Index_Clustered.Checked =
      Holds(description, "clustered") && !Holds(description, "nonclustered");
  index_.Show(Record::kExisting);
}

void TForm_Table::Sbtn_Index_NewClick() {
  ListView_Index.ClearItems();
  for (CheckBox* box : {&CheckBox_Index_Unique, &CheckBox_Index_Clustered,
                        &CheckBox_Index_PrimaryKey, &CheckBox_Index_Desc}) {
    box->Checked = false;
  }
  primary_key_chosen_ = false;
  index_.New();
}

void TForm_Table::Sbtn_Index_Add_FieldClick() {
  if (ComboBox_Fields.ItemIndex() < 0) return;
  ListView_Index.AddItem(
      {ComboBox_Fields.Text(), CheckBox_Index_Desc.Checked() ? kDescending : std::string_view()});
}

void TForm_Table::Sbtn_Index_Remove_FieldClick() {
  if (ListView_Index.SelCount() > 0) ListView_Index.DeleteItem(ListView_Index.Selection().front());
}

std::string TForm_Table::DropIndexText(const std::string& table) const {
  const std::string& name = Edit_IndexName.Text();
  return primary_key_chosen_ ? "alter table " + BracketedTable() + " drop constraint " + name
                             : "drop index " + table + "." + name;
}

// Deliberately the primary key's table stands without brackets, as operators know the statement.
std::string TForm_Table::CreateIndexText() const {
  std::string keys;
  for (const ListItem& key : ListView_Index.Items()) {
    keys += (keys.empty() ? "" : " , ") + std::string(key.Caption()) + " ";
    if (key.SubItem(kDescCell) == kDescending) keys += " desc ";
  }
  const std::string& name = Edit_IndexName.Text();
  if (CheckBox_Index_PrimaryKey.Checked()) {
    return "alter table " + Edit_TableName.Text() + "  add constraint " + name +
           "      primary key(" + keys + ")";
  }
  const bool unique = CheckBox_Index_Unique.Checked();
  const bool clustered = CheckBox_Index_Clustered.Checked();
  const std::string kind = unique && clustered ? "clustered unique index "
                           : unique            ? "unique index "
                           : clustered         ? "clustered  index "
                                               : "index ";
  return "create " + kind + name + "    on " + BracketedTable() + "(" + keys + ")";
}

void TForm_Table::Sbtn_Index_UpdateClick() {
  if (ListView_Index.Items().empty()) return;
  StatementRun run = {.use = UseText()};
  if (index_.Exists()) run.statements.push_back(DropIndexText(BracketedTable()));
  run.statements.push_back(CreateIndexText());
  Replace(run, index_, Edit_IndexName.Text(), &TForm_Table::ListIndexes);
  Sbtn_Index_NewClick();
}

// Deliberately without brackets here.
void TForm_Table::Sbtn_Index_DropClick() {
  if (!index_.Exists()) return;
  if (!Drop("index:" + Edit_IndexName.Text(), DropIndexText(Edit_TableName.Text()))) return;
  ListIndexes();
  Sbtn_Index_NewClick();
}

}  // namespace dbkeeper
