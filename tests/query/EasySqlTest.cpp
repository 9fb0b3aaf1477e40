#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/query/QueryFixture.h"

namespace dbkeeper {
namespace {

using testing::QueryFixture;
using testing::TextFields;
using Texts = std::vector<std::string>;

class EasySqlTest : public QueryFixture {
 protected:
  EasySqlTest() {
    connection.Answer(
        "sysobjects.name = 'orders'",
        {TextFields({"colid", "name"}),
         {{"1", "id"}, {"2", "customer_name"}, {"3", "備考"}, {"4", "a_name_that_is_long"}}});
    fake.windows.modal.emplace_back([this](Form&) {
      window.FormChooseTable.ComboBox_Table.UserSelect(1);
      window.FormChooseTable.SBtn_Ok.UserClick();
    });
    connection.Answer("select name from sysobjects",
                      {TextFields({"name"}), {{"customers"}, {"orders"}}});
    Press(window.Sbtn_EasySQL_Get_Columns);
  }

  void Tick(const std::vector<std::size_t>& items) {
    Press(window.Sbtn_EasySQL_Clear);
    for (const std::size_t item : items) window.CheckListBox_EasySQL.UserCheck(item, true);
  }
};

enum Action { kSelect, kInsert, kDelete, kUpdate };

TEST_F(EasySqlTest, TakesTheLayoutOfTheTableAskedFor) {
  EXPECT_EQ(window.CheckListBox_EasySQL.Items.All(),
            (Texts{"*", "id", "customer_name", "備考", "a_name_that_is_long"}));
  EXPECT_EQ(window.CheckListBox_EasySQL.Checks().size(), 5U);
  EXPECT_EQ(connection.statements.back(),
            "select syscolumns.colid, syscolumns.name\r\n"
            "  from sysobjects\r\n"
            " inner join syscolumns\r\n"
            "         on sysobjects.id = syscolumns.id\r\n"
            " where sysobjects.name = 'orders'\r\n"
            " order by colid");
  EXPECT_EQ(*(connection.statements.end() - 2), "use [sales]");
}

TEST_F(EasySqlTest, ACancelledQuestionLeavesTheLayout) {
  connection.statements.clear();
  Press(window.Sbtn_EasySQL_Get_Columns);
  EXPECT_EQ(connection.statements.size(), 2U);  // the database and its tables, no columns
  EXPECT_EQ(window.CheckListBox_EasySQL.Items.Count(), 5U);
}

TEST_F(EasySqlTest, BuildsTheStatementOfEachAction) {
  struct Case {
    Action action;
    double top;
    std::vector<std::size_t> ticked;
    const char* text;
  };
  const Case cases[] = {
      {kSelect, 0, {0}, "select *\r\n  from [orders]"},
      {kSelect, 0, {1, 2}, "select id,\r\n       customer_name\r\n  from [orders]"},
      {kSelect,
       10,
       {1, 2},
       "select Top 10\r\n       id,\r\n       customer_name\r\n  from [orders]"},
      {kInsert,
       10,
       {1, 2},
       "insert into orders\r\n           (id,customer_name)\r\n     values('入力値 1(id)',\r\n"
       "            '入力値 2(customer_name)')"},
      {kInsert, 0, {3}, "insert into orders\r\n           (備考)\r\n     values('入力値 1(備考)')"},
      {kUpdate,
       0,
       {1, 3, 4},
       "update orders\r\n   set id                = '更新値 1',\r\n"
       "       備考                = '更新値 2',\r\n"
       "       a_name_that_is_long  = '更新値 3'"},
      {kDelete, 0, {1}, "before"},
      {kSelect, 0, {}, "before"},
  };
  for (const Case& c : cases) {
    window.MemoSQL.Text = std::string("before");
    window.ComboBox_EasySQL_Mode.UserSelect(c.action);
    window.Fne_EasySQL_Top.SetValue(c.top);
    Tick(c.ticked);
    Press(window.Sbtn_EasySQL_Select);
    EXPECT_EQ(window.MemoSQL.Text(), c.text);
  }
}

TEST_F(EasySqlTest, ColumnsGoWithTheirDatabase) {
  window.OpenForTables("master");
  EXPECT_EQ(window.CheckListBox_EasySQL.Items.Count(), 0U);
  window.MemoSQL.Text = "kept";
  window.ComboBox_EasySQL_Mode.UserSelect(2);
  window.Sbtn_EasySQL_WhereClick();
  EXPECT_EQ(window.MemoSQL.Text(), "kept");
}

TEST_F(EasySqlTest, AppendsConditionAndOrderOnLinesOfTheirOwn) {
  struct Case {
    Action action;
    const char* before;
    Button TFormExecSQL::*button;
    std::vector<std::size_t> ticked;
    const char* text;
  };
  Button TFormExecSQL::*const where = &TFormExecSQL::Sbtn_EasySQL_Where;
  Button TFormExecSQL::*const order = &TFormExecSQL::Sbtn_EasySQL_OrderBy;
  const Case cases[] = {
      {kSelect, "select 1", where, {1}, "select 1\r\n where (id                = '1')"},
      {kUpdate,
       "update",
       where,
       {1, 3},
       "update\r\n where (id                = '1')and \r\n       (備考                = '1')"},
      {kDelete, "select 1", where, {1}, "delete from orders\r\n where (id                = '1')"},
      {kDelete, "select 1", where, {}, "delete from orders"},
      {kInsert, "insert", where, {1}, "insert"},
      {kSelect, "select 1\r\n", order, {1, 2}, "select 1\r\n order by id,customer_name"},
      {kSelect, "", order, {1}, " order by id"},
      {kUpdate, "update", order, {1}, "update"},
      {kSelect, "select 1", order, {}, "select 1"},
  };
  for (const Case& c : cases) {
    window.MemoSQL.Text = std::string(c.before);
    window.ComboBox_EasySQL_Mode.UserSelect(c.action);
    Tick(c.ticked);
    Press(window.*c.button);
    EXPECT_EQ(window.MemoSQL.Text(), c.text);
  }
}

TEST_F(EasySqlTest, TheTableMenuOpensTheWindowWithTheSelectedTablesLayout) {
  connection.Answer("xtype", {});
  app.FormMain.TreeView.Select(&Node({"Database", "sales", "Table"}));
  ListView& list = app.FormMain.ListViewMain;
  list.ClearItems();
  list.AddItem({"1", "orders"});
  list.UserSelect({0});
  window.MemoSQL.Text = std::string("old");
  connection.statements.clear();
  Choose(app.FormMain.Menu("PopupMenu_Table"), "PopupMenu_Table_SQL");
  EXPECT_TRUE(window.Sbtn_EasySQL.Down);
  EXPECT_TRUE(window.Panel_EasySQL.Visible);
  EXPECT_EQ(window.MemoSQL.Text(), "");
  EXPECT_EQ(connection.statements.size(), 2U);
  EXPECT_EQ(window.CheckListBox_EasySQL.Items.Count(), 5U);
  Press(window.Sbtn_EasySQL);
  EXPECT_FALSE(window.Panel_EasySQL.Visible);
}

}  // namespace
}  // namespace dbkeeper
