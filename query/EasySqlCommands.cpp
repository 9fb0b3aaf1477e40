// The builder of skeleton statements from a table's columns.

#include "query/Unit_Exec_SQL.h"

namespace dbkeeper {

void TFormExecSQL::Sbtn_EasySQLClick() {
  Panel_EasySQL.Visible = Sbtn_EasySQL.Down();
  Splitter_EasySQL.Visible = Sbtn_EasySQL.Down();
}

void TFormExecSQL::OpenForTables(const std::string& database) {
  OpenForDatabase(database);
  MemoSQL.Clear();
  Sbtn_EasySQL.Down = true;
  Sbtn_EasySQLClick();
  // Nothing is asked before the window is there: without a selected table the builder is empty.
  const auto table = SelectedTable();
  easy_sql_database_.clear();
  SettleBuilder();
  if (!table) return;
  GetColumns(*table);
  Sbtn_EasySQL_SelectClick();
}

// The main list's, where it shows the tables of the chosen database.
std::optional<std::string> TFormExecSQL::SelectedTable() const {
  const TreeNode* node = workbench_.Tree.Selected();
  const ListItem* row = workbench_.List.Selected();
  const bool shows_tables = node != nullptr && node->Level() == 3 && node->Text() == "Table" &&
                            node->Parent()->Text() == ComboBox_DatabaseName.Text();
  if (!shows_tables || row == nullptr) return std::nullopt;
  return std::string(row->SubItem(0));
}

std::optional<std::string> TFormExecSQL::AskForTable() {
  const std::string& database = ComboBox_DatabaseName.Text();
  Query& query = session_.ADOQuerySystem;
  query.UseDatabase(database);
  std::vector<std::string> tables = query.Texts(
      "select name from sysobjects where(xtype='S')or(xtype='U') order by name", "name");
  return FormChooseTable.Choose(host_.windows, database, std::move(tables));
}

void TFormExecSQL::Sbtn_EasySQL_Get_ColumnsClick() {
  auto table = SelectedTable();
  if (!table) table = AskForTable();
  if (table) GetColumns(*table);
}

void TFormExecSQL::SettleBuilder() {
  if (easy_sql_table_.empty() || easy_sql_database_ == ComboBox_DatabaseName.Text()) return;
  easy_sql_table_.clear();
  easy_sql_database_.clear();
  CheckListBox_EasySQL.Clear();
}

void TFormExecSQL::GetColumns(const std::string& table) {
  const BusyScope busy(host_.windows);
  Query& query = session_.ADOQuerySystem;
  query.UseDatabase(ComboBox_DatabaseName.Text);
  std::vector<std::string> columns = query.Texts(
      "select syscolumns.colid, syscolumns.name\r\n"
      "  from sysobjects\r\n"
      " inner join syscolumns\r\n"
      "         on sysobjects.id = syscolumns.id\r\n"
      " where sysobjects.name = '" +
          table +
          "'\r\n"
          " order by colid",
      "name");
  columns.insert(columns.begin(), "*");
  easy_sql_table_ = table;
  easy_sql_database_ = ComboBox_DatabaseName.Text;
  CheckListBox_EasySQL.Clear();
  const std::size_t count = columns.size();
  CheckListBox_EasySQL.Items.Assign(std::move(columns));
  CheckListBox_EasySQL.Checks = std::vector<bool>(count, false);
}

easy_sql::Action TFormExecSQL::EasySqlAction() const {
  return static_cast<easy_sql::Action>(ComboBox_EasySQL_Mode.ItemIndex());
}

easy_sql::Columns TFormExecSQL::TickedColumns() const {
  easy_sql::Columns columns;
  for (std::size_t i = 0; i < CheckListBox_EasySQL.Items.Count(); ++i) {
    if (CheckListBox_EasySQL.Checked(i)) columns.push_back(CheckListBox_EasySQL.Items[i]);
  }
  return columns;
}

void TFormExecSQL::Sbtn_EasySQL_SelectClick() {
  const auto top = static_cast<std::int64_t>(Fne_EasySQL_Top.Value());
  std::string text = easy_sql::Statement(EasySqlAction(), easy_sql_table_, TickedColumns(), top);
  if (!text.empty()) MemoSQL.Text = std::move(text);
}

void TFormExecSQL::Sbtn_EasySQL_WhereClick() {
  if (easy_sql_table_.empty()) return;
  const easy_sql::Action action = EasySqlAction();
  if (action == easy_sql::Action::kDelete) MemoSQL.Text = "delete from " + easy_sql_table_;
  MemoSQL.Text = easy_sql::Append(MemoSQL.Text, easy_sql::Condition(action, TickedColumns()));
}

void TFormExecSQL::Sbtn_EasySQL_OrderByClick() {
  MemoSQL.Text = easy_sql::Append(MemoSQL.Text, easy_sql::Order(EasySqlAction(), TickedColumns()));
}

void TFormExecSQL::Sbtn_EasySQL_ClearClick() {
  CheckListBox_EasySQL.Checks = std::vector<bool>(CheckListBox_EasySQL.Items.Count(), false);
}

}  // namespace dbkeeper
