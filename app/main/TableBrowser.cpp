#include "app/main/TableBrowser.h"

namespace dbkeeper {

namespace {

// Heights of the tool area with one row, and with the filter row.
constexpr int kOneRow = 31;
constexpr int kTwoRows = 53;

// Widths of the navigator's panel.
constexpr int kPanelReading = 104;
constexpr int kPanelEditing = 254;

constexpr const char* kEditStatus =
    "Tab=Cancelと処理します。Inser時に全ﾌｨｰﾙﾄﾞを埋ない場合は、"
    "空白ﾌｨｰﾙﾄﾞにﾌｫｰｶｽを移動させてNull扱いを明示して、「データ更新」を押します。";

}  // namespace

TableBrowser::TableBrowser(const Workbench& workbench)
    : workbench_(workbench),
      query_(workbench.Session.ADOQuery_User),
      pane_({DBGrid1, DBNavigator1, Sbtn_RE, Pnl_Navigator, kPanelReading, kPanelEditing},
            query_.Rows, workbench) {
  Edit_Open_TableName.Text = ">";
  Edit_Open_TableName.Lock(true);
  ComboBox_Table_Where.Items.Assign({"*"});
  ComboBox_Table_Where.SetItemIndex(0);
  Sbtn_TableOpen.OnClick = [this] { Sbtn_TableOpenClick(); };
  Sbtn_TableClose.OnClick = [this] { Sbtn_TableCloseClick(); };
  Sbtn_RE.OnClick = [this] { Sbtn_REClick(); };
  ComboBox_Table_Where.OnChange = [this] { ComboBox_Table_WhereChange(); };
  ShowFilterRow(false);
}

void TableBrowser::OpenSelected() {
  const ListItem* const row = workbench_.List.Selected();
  const TreeNode* const node = workbench_.Tree.Selected();
  if (row == nullptr || node == nullptr || node->Parent() == nullptr) return;
  const std::string name(row->SubItem(0));
  RunningStatus status(workbench_);
  query_.UseDatabase(node->Parent()->Text());
  query_.Clear();
  query_.Add("select * from [" + name + "]");

  Edit_Open_TableName.Text = name;
  Sbtn_TableOpen.Down = true;
  Edit_Table_Where.Text = std::string();
  ComboBox_Table_Where.Items.Assign({"*"});
  OpenQuery();
  if (query_.Active()) {
    for (const Field& field : query_.Rows.Fields()) ComboBox_Table_Where.Items.Add(field.name);
  }
  ComboBox_Table_Where.SetItemIndex(0);
  ShowFilterRow(false);
  Pnl_SQL.Visible = true;
  Splitter_SQL.Visible = true;
  status.Done("select * from " + name);
}

void TableBrowser::Sbtn_TableOpenClick() {
  if (!Sbtn_TableOpen.Down) {
    query_.Close();
    ShowState();
    return;
  }
  const BusyScope busy(workbench_.Host.windows);
  query_.Clear();
  query_.Add("select * from [" + Edit_Open_TableName.Text() + "]");
  // As it was typed: the text is a condition of the server's language.
  if (!Edit_Table_Where.Text().empty()) query_.Add(" where " + Edit_Table_Where.Text());
  OpenQuery();
}

void TableBrowser::OpenQuery() {
  try {
    query_.Open();
  } catch (...) {
    ShowState();
    throw;
  }
  ShowState();
}

void TableBrowser::ShowState() {
  const bool active = query_.Active();
  Sbtn_TableOpen.Caption = active ? "Close" : "Open";
  Sbtn_TableOpen.Down = active;
}

void TableBrowser::Settle() {
  if (query_.Active() && !workbench_.Session.Connected()) query_.Rows.Detach();
  if (Sbtn_TableOpen.Down && !query_.Active()) ShowState();
}

void TableBrowser::Abandon() {
  query_.Rows.Cancel();
  query_.Close();
  Settle();
}

void TableBrowser::Sbtn_TableCloseClick() {
  Hide();
  // Deliberate: its caption stays as it was; the next open sets it.
  Sbtn_TableOpen.Down = false;
}

void TableBrowser::Hide() {
  Pnl_SQL.Visible = false;
  Splitter_SQL.Visible = false;
  query_.Close();
}

void TableBrowser::ShowFilterRow(bool shown) {
  Edit_Table_Where.Visible = shown;
  Edit_Table_Where.EditLabel.Visible = shown;
  Pnl_SQL_Tool.Height = shown ? kTwoRows : kOneRow;
}

void TableBrowser::ComboBox_Table_WhereChange() {
  const std::string& field = ComboBox_Table_Where.Text();
  if (field == "*") {
    Edit_Table_Where.Text = std::string();
    ShowFilterRow(false);
    return;
  }
  // Deliberate: no blanks around "and", and the name as it is; the operator goes on typing here.
  const std::string before = Edit_Table_Where.Text();
  Edit_Table_Where.Text = before + (before.empty() ? "" : "and") + "(" + field + " = '')";
  ShowFilterRow(true);
}

void TableBrowser::Sbtn_REClick() {
  pane_.FollowSwitch();
  workbench_.Status.SimpleText = std::string(" >") + (pane_.Editing() ? kEditStatus : "");
  query_.SetLock(pane_.Lock());
}

}  // namespace dbkeeper
