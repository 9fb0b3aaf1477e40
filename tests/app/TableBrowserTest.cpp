#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper::testing {
namespace {

using Statements = std::vector<std::string>;

class TableBrowserTest : public AppFixture {
 protected:
  TableBrowserTest() {
    FakeResult items{.fields = {{.name = "id", .kind = FieldKind::kInteger, .type_name = "int"},
                                {.name = "name", .type_name = "varchar", .size = 20}},
                     .rows = {},
                     .error = {}};
    for (int i = 0; i < 300; ++i)
      items.rows.push_back({std::to_string(i), "n" + std::to_string(i)});
    connection.Answer("select * from [items]", items);
    connection.Answer("db_name()", {TextFields({"name"}), {{"sales"}}, {}});
    connection.Answer(
        "syscolumns c on c.id = o.id",
        {TextFields({"id", "xtype", "name", "type", "c", "s"}),
         {{"77", "U ", "id", "int", "0", "0"}, {"77", "U ", "name", "varchar", "0", "0"}},
         {}});
  }

  // The list of the tables of database sales, its first row selected.
  void ShowTables() {
    Connect();
    ClickPath({"Database"});
    form.TreeView.Select(&Node({"Database", "sales", "Table"}));
    form.ListViewMain.ClearItems();
    form.ListViewMain.AddItem({"1", "items", "dbo"});
    form.ListViewMain.Select({0});
    connection.statements.clear();
  }
  void OpenItems() {
    ShowTables();
    Choose(form.Menu("PopupMenu_Table"), "PopupMenu_Table_Open");
  }
  void Press(Button& button) {
    app.Guard().Run([&] { button.UserClick(); });
  }
  void ChooseFilter(const std::string& field) {
    app.Guard().Run([&] {
      browser.ComboBox_Table_Where.UserSelect(browser.ComboBox_Table_Where.Items.IndexOf(field));
    });
  }
  std::string Cell(std::int64_t row, std::size_t column) {
    return std::string(rows.Cell(row, column).Text);
  }

  TFormMain& form = app.FormMain;
  TableBrowser& browser = form.Browser;
  RowView& rows = app.Session.ADOQuery_User.Rows;
};

TEST_F(TableBrowserTest, OpensTheSelectedTableWithItsFieldsAsFilters) {
  OpenItems();
  EXPECT_EQ(connection.statements, (Statements{"use [sales]", "select * from [items]"}));
  EXPECT_EQ(browser.Edit_Open_TableName.Text(), "items");
  EXPECT_EQ(browser.Sbtn_TableOpen.Caption(), "Close");
  EXPECT_TRUE(browser.Sbtn_TableOpen.Down());
  EXPECT_EQ(browser.ComboBox_Table_Where.Items.All(), (Statements{"*", "id", "name"}));
  EXPECT_EQ(browser.ComboBox_Table_Where.Text(), "*");
  EXPECT_EQ(browser.Pnl_SQL_Tool.Height(), 31);
  EXPECT_TRUE(browser.Pnl_SQL.Visible());
  EXPECT_TRUE(browser.Splitter_SQL.Visible());
  EXPECT_EQ(Status(), " >select * from items");
  rows.FetchMore();
  rows.FetchMore();
  EXPECT_EQ(Cell(299, 1), "n299");
}

TEST_F(TableBrowserTest, BuildsAFilterThatTheNextOpenSendsAsItStands) {
  OpenItems();
  ChooseFilter("id");
  ChooseFilter("name");
  EXPECT_EQ(browser.Edit_Table_Where.Text(), "(id = '')and(name = '')");
  EXPECT_EQ(browser.Pnl_SQL_Tool.Height(), 53);
  EXPECT_TRUE(browser.Edit_Table_Where.Visible());
  browser.Edit_Table_Where.UserType("id = '1' -- x");
  connection.statements.clear();
  Press(browser.Sbtn_TableOpen);
  EXPECT_TRUE(connection.statements.empty());
  EXPECT_EQ(browser.Sbtn_TableOpen.Caption(), "Open");
  EXPECT_EQ(rows.State(), GridState::kClosed);
  Press(browser.Sbtn_TableOpen);
  EXPECT_EQ(connection.statements, Statements{"select * from [items]\r\n where id = '1' -- x"});
  ChooseFilter("*");
  EXPECT_EQ(browser.Edit_Table_Where.Text(), "");
  EXPECT_EQ(browser.Pnl_SQL_Tool.Height(), 31);
}

TEST_F(TableBrowserTest, AFailedOpenLeavesTheButtonReleased) {
  connection.Fail("select * from [items]", "Invalid object name 'items'.");
  OpenItems();
  EXPECT_EQ(fake.dialogs.errors, Statements{"Invalid object name 'items'."});
  EXPECT_EQ(browser.Sbtn_TableOpen.Caption(), "Open");
  EXPECT_FALSE(browser.Sbtn_TableOpen.Down());
  EXPECT_EQ(Status(), " *");
}

TEST_F(TableBrowserTest, ADoubleClickOpensOnlyWhileATableIsOpen) {
  ShowTables();
  form.ListViewMain.UserDblClick();
  EXPECT_TRUE(connection.statements.empty());
  Choose(form.Menu("PopupMenu_Table"), "PopupMenu_Table_Open");
  connection.statements.clear();
  form.ListViewMain.UserDblClick();
  EXPECT_EQ(connection.statements, (Statements{"use [sales]", "select * from [items]"}));
}

TEST_F(TableBrowserTest, ClosesByItsButtonAndByATreeClick) {
  for (const bool by_button : {true, false}) {
    OpenItems();
    if (by_button) {
      Press(browser.Sbtn_TableClose);
      EXPECT_FALSE(browser.Sbtn_TableOpen.Down());
      EXPECT_EQ(browser.Sbtn_TableOpen.Caption(), "Close") << "deliberately left";
    } else {
      ClickPath({"Security"});
    }
    EXPECT_FALSE(browser.Pnl_SQL.Visible());
    EXPECT_FALSE(browser.Splitter_SQL.Visible());
    EXPECT_EQ(rows.State(), GridState::kClosed);
    app.Session.Close();
  }
}

TEST_F(TableBrowserTest, EditModeOpensTheRowsAgainAndSurvivesTheNextTable) {
  OpenItems();
  EXPECT_FALSE(rows.CanEdit());
  Press(browser.Sbtn_RE);
  EXPECT_TRUE(rows.CanEdit());
  EXPECT_TRUE(browser.DBGrid1.Editable(1));
  EXPECT_EQ(browser.Sbtn_RE.Caption(), "Ronly");
  EXPECT_EQ(browser.DBNavigator1.VisibleButtons().size(), 10U);
  EXPECT_EQ(browser.DBNavigator1.Width(), 250);
  EXPECT_EQ(browser.Pnl_Navigator.Width(), 254);
  EXPECT_EQ(Status(),
            " >Tab="
            "Cancelと処理します。Inser時に全ﾌｨｰﾙﾄﾞを埋ない場合は、空白ﾌｨｰﾙﾄﾞにﾌｫｰｶｽを移動させてNull"
            "扱いを明示して"
            "、「データ更新」を押します。");
  Choose(form.Menu("PopupMenu_Table"), "PopupMenu_Table_Open");
  EXPECT_TRUE(rows.CanEdit());
  Press(browser.Sbtn_RE);
  EXPECT_FALSE(rows.CanEdit());
  EXPECT_FALSE(browser.DBGrid1.Editable(1));
  EXPECT_EQ(browser.Sbtn_RE.Caption(), "Edit");
  EXPECT_EQ(browser.DBNavigator1.VisibleButtons(), MovingButtons());
  EXPECT_EQ(browser.DBNavigator1.Width(), 100);
  EXPECT_EQ(browser.Pnl_Navigator.Width(), 104);
  EXPECT_EQ(Status(), " >");
}

TEST_F(TableBrowserTest, TheEditSwitchWritesNoRowThatNobodyTypedInto) {
  OpenItems();
  Press(browser.Sbtn_RE);
  app.Guard().Run([&] { rows.Insert(); });
  connection.statements.clear();
  Press(browser.Sbtn_RE);
  EXPECT_EQ(connection.statements, Statements{"select * from [items]"});
  EXPECT_FALSE(rows.CanEdit());
}

TEST_F(TableBrowserTest, TheQuestionBeforeADeletionShowsTheRow) {
  OpenItems();
  Press(browser.Sbtn_RE);
  connection.statements.clear();
  fake.dialogs.answers = {Answer::kCancel};
  app.Guard().Run([&] { browser.DBNavigator1.UserPress(NavigatorButton::kDelete); });
  ASSERT_EQ(fake.dialogs.questions.size(), 1U);
  EXPECT_EQ(fake.dialogs.questions[0].text,
            "この行を削除してよろしいですか?\r\n\r\nid : 0\r\nname : n0");
  EXPECT_TRUE(connection.statements.empty());
}

TEST_F(TableBrowserTest, AFailedOperationClosesTheTableWithTheRemedy) {
  OpenItems();
  Press(browser.Sbtn_RE);
  connection.Fail("with (updlock)", "複数の手順の操作でエラーが発生しました。");
  app.Guard().Run([&] { browser.DBGrid1.UserSetCell(1, "x"); });
  app.Guard().Run([&] { browser.DBGrid1.UserMoveTo(1, 1); });
  ASSERT_EQ(fake.dialogs.messages.size(), 1U);
  EXPECT_EQ(fake.dialogs.messages[0],
            "異常が発生したので、TableをCloseします。\r\n対処方法：\r\n　新規挿入時には、全フィール"
            "ドを埋めてください。"
            "\r\n\r\n複数の手順の操作でエラーが発生しました。");
  EXPECT_TRUE(fake.dialogs.errors.empty());
  EXPECT_EQ(rows.State(), GridState::kClosed);
  EXPECT_EQ(browser.Sbtn_TableOpen.Caption(), "Open");
  EXPECT_FALSE(browser.Sbtn_TableOpen.Down());
  EXPECT_TRUE(browser.Pnl_SQL.Visible());
}

TEST_F(TableBrowserTest, ALostConnectionLeavesTheFetchedRowsAndTheWindow) {
  OpenItems();
  rows.Last();
  rows.First();
  connection.cursors.break_at = 150;
  EXPECT_EQ(Cell(250, 0), "");
  EXPECT_TRUE(rows.HasFailure());
  app.Guard().Run([&] { rows.Check(); });
  EXPECT_EQ(fake.dialogs.errors, Statements{"Write to the server failed"});
  EXPECT_FALSE(rows.Active());
  EXPECT_EQ(Cell(99, 0), "99");
  EXPECT_FALSE(browser.Sbtn_TableOpen.Down());
  EXPECT_EQ(browser.Sbtn_TableOpen.Caption(), "Open");
  app.Guard().Run([&] { browser.DBNavigator1.UserPress(NavigatorButton::kNext); });
  EXPECT_EQ(rows.CurrentRow(), 1);
}

}  // namespace
}  // namespace dbkeeper::testing
