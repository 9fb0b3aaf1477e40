#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/query/QueryFixture.h"

namespace dbkeeper {
namespace {

using testing::FakeResult;
using testing::FileBytes;
using testing::PutFile;
using testing::QueryFixture;
using testing::TextFields;
using Texts = std::vector<std::string>;

FakeResult TwoRows() { return {TextFields({"id", "name"}), {{"1", "a"}, {"2", std::nullopt}}}; }

class QueryWindowTest : public QueryFixture {};

// Open and Exec.

TEST_F(QueryWindowTest, OpensAResultAndClosesIt) {
  connection.Answer("select", TwoRows());
  Run("select id\r\n  from t", window.Sbtn_Select);
  EXPECT_EQ(connection.statements, Texts{"select id\r\n  from t"});
  EXPECT_EQ(window.Caption(), "SQL発行");
  EXPECT_EQ(window.Sbtn_Select.Caption(), "Close");
  EXPECT_TRUE(window.Sbtn_Select.Down);
  ASSERT_NE(window.DBGrid1.Source(), nullptr);
  EXPECT_EQ(window.DBGrid1.Source()->RowCount(), (GridRowCount{2, true}));

  Press(window.Sbtn_Count);
  EXPECT_EQ(window.Caption(), "RecordCount : 2");

  Press(window.Sbtn_Select);
  EXPECT_EQ(window.Sbtn_Select.Caption(), "Open");
  EXPECT_FALSE(window.Sbtn_Count.Enabled);
  EXPECT_EQ(window.DBGrid1.Source()->State(), GridState::kClosed);
}

TEST_F(QueryWindowTest, ATextWithoutAResultReleasesTheButtonAndLeavesNoHistory) {
  Run("update t set a = 1", window.Sbtn_Select);
  EXPECT_EQ(window.Sbtn_Select.Caption(), "Open");
  EXPECT_FALSE(window.Sbtn_Select.Down);
  EXPECT_FALSE(window.Sbtn_Count.Enabled);
  EXPECT_FALSE(window.Sbtn_SQL_Log_Back.Enabled);
}

TEST_F(QueryWindowTest, AFailingTextIsToldAndStaysInTheEditor) {
  struct Case {
    Button TFormExecSQL::*button;
    FakeResult answer;
    const char* caption;
  };
  const ServerMessage divide{.number = 8134, .severity = 16, .line = 3, .text = "Divide by zero"};
  const Case cases[] = {
      {&TFormExecSQL::Sbtn_Select, {.error = divide}, "SQL発行"},
      {&TFormExecSQL::Sbtn_Select, {TextFields({"a"}), {{"1"}}, divide}, "SQL発行"},
      {&TFormExecSQL::SpeedButton3, {.error = divide}, "RecordCount : 2"},
  };
  for (const Case& c : cases) {
    connection.Answer("bad", c.answer);
    window.Caption = "RecordCount : 2";
    fake.dialogs.errors.clear();
    Run("select bad", window.*c.button);
    EXPECT_EQ(fake.dialogs.errors, Texts{"Divide by zero"});
    EXPECT_EQ(window.Caption(), c.caption);
    EXPECT_EQ(window.MemoSQL.Text(), "select bad");
    EXPECT_EQ(window.Sbtn_Select.Caption(), "Open");
    EXPECT_FALSE(window.Sbtn_Select.Down);
    EXPECT_FALSE(window.Sbtn_SQL_Log_Back.Enabled);
    EXPECT_EQ(fake.windows.busy, 0);
  }
}

TEST_F(QueryWindowTest, ExecTellsTheRowsAffectedAndReleasesAnOpenResult) {
  connection.Answer("select", TwoRows());
  connection.Answer("delete", {.affected = 3});
  Run("select 1", window.Sbtn_Select);
  Run("delete from t", window.SpeedButton3);
  EXPECT_EQ(window.Caption(), "RowsAffected : 3");
  EXPECT_EQ(window.Sbtn_Select.Caption(), "Open");
  EXPECT_FALSE(window.Sbtn_Select.Down);
  EXPECT_FALSE(window.Sbtn_Count.Enabled);
  EXPECT_EQ(window.DBGrid1.Source()->State(), GridState::kClosed);
}

TEST_F(QueryWindowTest, TheOpenKeyRunsAnOpenResultAnew) {
  connection.Answer("select", TwoRows());
  Run("select 1", window.Sbtn_Select);
  window.RunOpen();
  EXPECT_EQ(connection.statements, (Texts{"select 1", "select 1"}));
  EXPECT_TRUE(window.Sbtn_Select.Down);
}

// History.

TEST_F(QueryWindowTest, StepsThroughTheTwelveNewestTextsOnly) {
  for (int i = 1; i <= 13; ++i) Run("exec " + std::to_string(i), window.SpeedButton3);
  Texts seen;
  while (window.Sbtn_SQL_Log_Back.Enabled) {
    Press(window.Sbtn_SQL_Log_Back);
    seen.push_back(window.MemoSQL.Text());
  }
  EXPECT_EQ(seen.size(), 11U);
  EXPECT_EQ(seen.front(), "exec 12");
  EXPECT_EQ(seen.back(), "exec 2");
  EXPECT_TRUE(window.Sbtn_SQL_Log_Forward.Enabled);
  Press(window.Sbtn_SQL_Log_Forward);
  EXPECT_EQ(window.MemoSQL.Text(), "exec 3");
  EXPECT_TRUE(window.Sbtn_SQL_Log_Back.Enabled);
}

TEST_F(QueryWindowTest, ATextKnownAlreadyMovesNothing) {
  for (const char* sql : {"a", "b", "a", ""}) Run(sql, window.SpeedButton3);
  Press(window.Sbtn_SQL_Log_Back);
  EXPECT_EQ(window.MemoSQL.Text(), "a");
  EXPECT_FALSE(window.Sbtn_SQL_Log_Back.Enabled);
  Run("b", window.SpeedButton3);
  EXPECT_FALSE(window.Sbtn_SQL_Log_Back.Enabled);
  EXPECT_TRUE(window.Sbtn_SQL_Log_Forward.Enabled);
}

TEST_F(QueryWindowTest, TextsThatDifferInCaseOrATrailingLineAreTwo) {
  for (const char* sql : {"a", "A", "a\r\n"}) Run(sql, window.SpeedButton3);
  Press(window.Sbtn_SQL_Log_Back);
  EXPECT_EQ(window.MemoSQL.Text(), "A");
  Press(window.Sbtn_SQL_Log_Back);
  EXPECT_EQ(window.MemoSQL.Text(), "a");
}

TEST_F(QueryWindowTest, WithOneEntryBackOnlyTogglesTheButtons) {
  Run("a", window.SpeedButton3);
  window.MemoSQL.UserType("typed since");
  Press(window.Sbtn_SQL_Log_Back);
  EXPECT_EQ(window.MemoSQL.Text(), "typed since");
  EXPECT_FALSE(window.Sbtn_SQL_Log_Back.Enabled);
  EXPECT_TRUE(window.Sbtn_SQL_Log_Forward.Enabled);
}

// The database.

TEST_F(QueryWindowTest, ListsTheTreesDatabasesAndSwitchesOnlyWhenItMust) {
  EXPECT_EQ(window.ComboBox_DatabaseName.Items.All(), (Texts{"master", "sales"}));
  EXPECT_EQ(window.ComboBox_DatabaseName.Text(), "sales");
  app.Guard().Run([&] { window.ComboBox_DatabaseName.UserSelect(1); });
  EXPECT_TRUE(connection.statements.empty());
  app.Guard().Run([&] { window.ComboBox_DatabaseName.UserSelect(0); });
  EXPECT_EQ(connection.statements, Texts{"use [master]"});
  EXPECT_EQ(app.Session.CurrentDatabase(), "master");
}

TEST_F(QueryWindowTest, RunningRecordsTheChosenDatabaseWithoutSwitching) {
  app.Session.ADOQuerySystem.UseDatabase("master");
  connection.statements.clear();
  Run("use other", window.SpeedButton3);
  EXPECT_EQ(connection.statements, Texts{"use other"});
  EXPECT_EQ(app.Session.CurrentDatabase(), "sales");
}

TEST_F(QueryWindowTest, TheMenusOfTheNodesOpenTheWindowForTheirDatabase) {
  struct Case {
    Texts node;
    const char* menu;
    const char* item;
    const char* database;
  };
  const Case cases[] = {
      {{"Database"}, "PopupMenu_Databases", "PopupMenu_Databases_SQL", "master"},
      {{"Database", "sales"}, "PopupMenu_Minimum", "PopupMenu_Minimum_SQL", "master"},
      {{"Database", "sales", "View"}, "PopupMenu_View", "PopupMenu_View_SQL", "sales"},
      {{"Database", "sales", "Backup"}, "PopupMenu_DB_BackUp", "PopupMenu_DB_BackUp_SQL", "sales"},
      {{"Security", "Server role"}, "PopupMenu_SvRole", "PopupMenu_SvRole_SQL", "master"},
      {{"Management", "Job"}, "PopupMenu_Job", "PopupMenu_Job_SQL", "master"},
  };
  for (const Case& c : cases) {
    app.FormMain.TreeView.Select(&Node(c.node));
    window.Close();
    Choose(app.FormMain.Menu(c.menu), c.item);
    EXPECT_TRUE(window.Visible) << c.item;
    EXPECT_EQ(window.ComboBox_DatabaseName.Text(), c.database) << c.item;
    EXPECT_EQ(app.Session.CurrentDatabase(), c.database) << c.item;
  }
  app.FormMain.TreeView.Select(app.FormMain.TreeView.Roots()[1].get());
  Choose(app.FormMain.Menu("PopupMenu_Management"), "PopupMenu_Management_SQL");
  EXPECT_EQ(window.ComboBox_DatabaseName.Text(), "master");
}

TEST_F(QueryWindowTest, ShowingAndClosingEndTheResultAndKeepTheText) {
  connection.Answer("select", TwoRows());
  Run("select 1", window.Sbtn_Select);
  app.Guard().Run([&] { window.Close(); });
  EXPECT_EQ(window.DBGrid1.Source()->State(), GridState::kClosed);
  EXPECT_EQ(window.Sbtn_Select.Caption(), "Open");
  EXPECT_EQ(window.MemoSQL.Text(), "select 1");
  EXPECT_TRUE(window.Sbtn_SQL_Log_Back.Enabled);
}

// Edit mode.

TEST_F(QueryWindowTest, TheEditButtonChangesTheNavigatorAndTheNextResult) {
  connection.Answer("select", TwoRows());
  Run("select * from t", window.Sbtn_Select);
  Press(window.SBtn_RE);
  EXPECT_EQ(window.SBtn_RE.Caption(), "Ronly");
  EXPECT_FALSE(window.DBGrid1.ReadOnly);
  EXPECT_EQ(window.DBNavigator1.VisibleButtons().size(), 10U);
  EXPECT_EQ(window.DBNavigator1.Width(), 250);
  EXPECT_EQ(window.Panel_ToolRight.Width(), 446);
  // The open result stays as it was opened, and says so.
  EXPECT_NE(window.DBGrid1.Source()->EditRefusal(), "");
  Press(window.SBtn_RE);
  EXPECT_EQ(window.SBtn_RE.Caption(), "Edit");
  EXPECT_TRUE(window.DBGrid1.ReadOnly);
  EXPECT_EQ(window.DBNavigator1.VisibleButtons().size(), 4U);
  EXPECT_EQ(window.DBNavigator1.Width(), 100);
  EXPECT_EQ(window.Panel_ToolRight.Width(), 294);
}

TEST_F(QueryWindowTest, ARefreshReadsTheOpenedTextAgain) {
  connection.Answer("select", TwoRows());
  Run("select 1", window.Sbtn_Select);
  window.MemoSQL.UserType("something else");
  connection.Answer("select", {TextFields({"id"}), {{"1"}}});
  app.Guard().Run([&] { window.DBGrid1.Source()->Refresh(); });
  EXPECT_EQ(connection.statements, (Texts{"select 1", "select 1"}));
  EXPECT_EQ(window.DBGrid1.Source()->RowCount(), (GridRowCount{1, true}));

  connection.Fail("select", "gone");
  app.Guard().Run([&] { window.DBGrid1.Source()->Refresh(); });
  EXPECT_EQ(fake.dialogs.errors, Texts{"gone"});
  EXPECT_FALSE(window.Sbtn_Select.Down);
}

// Messages.

TEST_F(QueryWindowTest, TheMessagePaneTellsWhatTheServerSaidInOrder) {
  FakeResult rows = TwoRows();
  rows.messages = {{.text = "printed"}, {.number = 50001, .severity = 5, .line = 7, .text = "low"}};
  rows.further_results = 2;
  connection.Answer("select", rows);
  connection.Answer("delete", {.affected = 3});
  connection.Answer("bad", {.error = ServerMessage{208, 1, 16, 2, "Invalid object"}});
  connection.messages = {{.text = "of an earlier statement"}};
  Run("select 1\r\nselect 2", window.Sbtn_Select);
  Run("delete from t", window.SpeedButton3);
  Run("bad", window.SpeedButton3);
  EXPECT_FALSE(window.MemoServerMessage.Visible);
  Press(window.Sbtn_ServerMessage);
  EXPECT_TRUE(window.MemoServerMessage.Visible);
  EXPECT_TRUE(window.Splitter_ServerMessage.Visible);
  EXPECT_EQ(window.MemoServerMessage.Text(),
            "[14:05:09] select 1 ...\r\n"
            "  printed\r\n"
            "  番号 50001, レベル 5, 行 7: low\r\n"
            "  (2 件の行があります)\r\n"
            "  ほかに 2 個の結果セットがあります (表示は最初の結果セットのみです)\r\n"
            "[14:05:09] delete from t\r\n"
            "  (3 件処理されました)\r\n"
            "[14:05:09] bad\r\n"
            "  番号 208, レベル 16, 行 2: Invalid object\r\n");
  Run("exec x", window.SpeedButton3);
  EXPECT_TRUE(window.MemoServerMessage.Text().ends_with("[14:05:09] exec x\r\n"));
  Press(window.Sbtn_ServerMessage);
  EXPECT_FALSE(window.MemoServerMessage.Visible);
}

TEST_F(QueryWindowTest, KeepsTheLastRunsAndABoundedNumberOfTheirMessages) {
  FakeResult chatty{.affected = -1};
  chatty.messages.assign(1003, {.text = "again"});
  connection.Answer("chatty", chatty);
  Press(window.Sbtn_ServerMessage);
  for (int i = 0; i < 12; ++i) Run("first " + std::to_string(i), window.SpeedButton3);
  Run("chatty", window.SpeedButton3);
  const std::string& text = window.MemoServerMessage.Text();
  EXPECT_EQ(text.find("first 0"), std::string::npos);
  EXPECT_NE(text.find("first 1"), std::string::npos);
  EXPECT_TRUE(text.ends_with("  again\r\n  (以下 3 件のメッセージは省略しました)\r\n"));
}

// Export.

class ExportTest : public QueryFixture {
 protected:
  void Export(const std::string& name) {
    fake.dialogs.paths.emplace_back((folder / name).string());
    Press(window.SpeedButton7);
  }
};

TEST_F(ExportTest, WritesTabsAndNothingQuoted) {
  connection.Answer("select",
                    {TextFields({"id", "日本"}), {{"1", "a\tb\"c"}, {std::nullopt, "あ\r\nあ"}}});
  Run("select 1", window.Sbtn_Select);
  window.DBGrid1.Source()->Last();
  Export("out.csv");
  EXPECT_EQ(fake.dialogs.choices.back().filter,
            "CSVﾌｧｲﾙ(*.csv)|*.csv|ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*");
  EXPECT_EQ(FileBytes(folder / "out.csv"),
            "id\t\x93\xfa\x96\x7b\r\n1\ta\tb\"c\r\n\t\x82\xa0\r\n\x82\xa0\r\n");
  EXPECT_EQ(window.DBGrid1.Source()->CurrentRow(), 0);
  EXPECT_TRUE(fake.dialogs.messages.empty());
}

TEST_F(ExportTest, AResultWithoutRowsGivesItsHeaderLine) {
  connection.Answer("select", {TextFields({"id"}), {}});
  Run("select 1", window.Sbtn_Select);
  PutFile(folder / "out.csv", "an older and longer file");
  Export("out.csv");
  EXPECT_EQ(FileBytes(folder / "out.csv"), "id\r\n");
}

TEST_F(ExportTest, WritesNoRowToTheServerAndNoneThatIsBeingChanged) {
  connection.Answer("db_name()", {TextFields({"name"}), {{"sales"}}});
  connection.Answer("sysobjects", {TextFields({"id", "xtype", "name", "type", "c", "s"}),
                                   {{"77", "U ", "id", "varchar", "0", "0"}}});
  connection.Answer("select * from", {TextFields({"id"}), {{"1"}, {"2"}}});
  window.SBtn_RE.UserClick();
  Run("select * from [items]", window.Sbtn_Select);
  connection.statements.clear();
  GridSource& rows = *window.DBGrid1.Source();
  rows.Next();
  rows.Insert();
  Export("new.csv");
  EXPECT_EQ(FileBytes(folder / "new.csv"), "id\r\n1\r\n2\r\n");
  EXPECT_EQ(rows.State(), GridState::kInsert);
  EXPECT_EQ(rows.CurrentRow(), 1);
  rows.Cancel();
  window.DBGrid1.UserSetCell(0, "3");
  Export("changed.csv");
  EXPECT_EQ(FileBytes(folder / "changed.csv"), "id\r\n1\r\n2\r\n");
  EXPECT_EQ(rows.State(), GridState::kEdit);
  EXPECT_TRUE(connection.statements.empty());
}

TEST_F(ExportTest, TextTheCodePageLacksMakesItUtf8AndIsNamed) {
  FakeResult result{TextFields({"id", "text"}), {}};
  // Far enough down that a part of the file has been written before it is met.
  for (int i = 0; i < 20000; ++i) result.rows.push_back({std::to_string(i), "あ"});
  result.rows[19998][1] = "naïve";
  connection.Answer("select", result);
  Run("select 1", window.Sbtn_Select);
  Export("out.csv");
  const std::string bytes = FileBytes(folder / "out.csv");
  EXPECT_TRUE(bytes.starts_with("\xEF\xBB\xBFid\ttext\r\n0\tあ\r\n")) << bytes.substr(0, 40);
  EXPECT_TRUE(bytes.ends_with("19998\tnaïve\r\n19999\tあ\r\n"));
  EXPECT_EQ(fake.dialogs.messages, Texts{"シフトJISで表せない文字があるため、UTF-8 (BOM付き) "
                                         "で出力しました。\r\n最初の箇所: 19999行目「text」列"});
}

TEST_F(ExportTest, AFailureLeavesTheOldFile) {
  connection.Answer("select", TwoRows());
  Press(window.SpeedButton7);  // cancelled
  EXPECT_TRUE(fake.dialogs.errors.empty());
  PutFile(folder / "kept.csv", "kept");
  Export("kept.csv");  // nothing is open
  EXPECT_EQ(fake.dialogs.errors.size(), 1U);
  EXPECT_EQ(FileBytes(folder / "kept.csv"), "kept");
  Run("select 1", window.Sbtn_Select);
  Export("no such folder/out.csv");
  EXPECT_EQ(fake.dialogs.errors.size(), 2U);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}),
            std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

// Values in files.

TEST_F(QueryWindowTest, SavesTheSelectedFieldToItsFixedFile) {
  FakeResult result{TextFields({"id", "picture"}), {{"1", "00FF42"}}};
  result.fields[1].kind = FieldKind::kBinary;
  connection.Answer("select", result);
  Choose(window.PopupMenu_Grid, "PopupMenu_Grid_Blob_Save");
  EXPECT_EQ(fake.dialogs.errors.size(), 1U);  // nothing is open
  Run("select 1", window.Sbtn_Select);
  window.DBGrid1.CurrentColumn = 1;
  Choose(window.PopupMenu_Grid, "PopupMenu_Grid_Blob_Save");
  EXPECT_EQ(FileBytes(folder / "D:\\TEST2.bmp"), std::string("\x00\xFF\x42", 3));
  // Opened read-only.
  PutFile(folder / "D:\\TEST.bmp", "xx");
  Choose(window.PopupMenu_Grid, "PopupMenu_Grid_Blob_Load");
  EXPECT_EQ(fake.dialogs.errors.size(), 2U);
}

}  // namespace
}  // namespace dbkeeper
