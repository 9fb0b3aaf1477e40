#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::TextFields;

class NodeDispatchTest : public AppFixture {
 protected:
  NodeDispatchTest() {
    app.Start();
    Connect();
    ClickPath({"Database"});
    connection.statements.clear();
  }
  std::string Columns() const {
    std::string text;
    for (const ListColumn& column : main.ListViewMain.Columns()) {
      text += (text.empty() ? "" : ", ") + column.Caption + " " + std::to_string(column.Width) +
              (column.Align == Alignment::kRight ? "R" : "");
    }
    return text;
  }

  TFormMain& main = app.FormMain;
};

TEST_F(NodeDispatchTest, ServerRootShowsPropertiesOnlyWhileConnected) {
  connection.Answer(
      "SERVERPROPERTY",
      {TextFields({"MachineName", "ServerName", "Edition", "ProductLevel", "ProductVersion",
                   "SecurityMode", "IsSingleUser", "LicenseType", "NumLicenses"}),
       {{"PC01", "PC01", "MSDE", "SP4", "8.00.2039", "0", "0", "DISABLED", {}}}});
  Click(Node({}));
  ASSERT_EQ(main.ListViewMain.Items().size(), 9U);
  EXPECT_EQ(main.ListViewMain.Items()[4], (ListItem{"5", "ProductVersion", "8.00.2039"}));
  EXPECT_EQ(main.ListViewMain.Popup(), &main.Menu("PopupMenuServerCfg"));
  Choose(main.Menu("PopupMenu_SQLServer"), "PopupMenu_SQLServer_DisConnect");
  Click(Node({}));
  EXPECT_TRUE(main.ListViewMain.Columns().empty());
  EXPECT_EQ(main.ListViewMain.Popup(), nullptr);
}

TEST_F(NodeDispatchTest, ConfigListsTheWizardsAndTheSwitch) {
  main.Workbench().Switches.Advanced = true;
  Click(*main.TreeView.Roots()[1]);
  const ListView& list = main.ListViewMain;
  ASSERT_EQ(list.Items().size(), 5U);
  EXPECT_EQ(list.Columns()[2], (ListColumn{"設定", 340, Alignment::kLeft}));
  EXPECT_EQ(list.Items()[0].Caption(), "WIZ_BK01");
  EXPECT_EQ(list.Items()[4], (ListItem{"ADVANCED", "拡張オプション", "On"}));
  EXPECT_EQ(list.Popup(), &main.Menu("PopupMenu_Management"));
  EXPECT_EQ(Status(), " >");
}

TEST_F(NodeDispatchTest, DatabaseNamedLikeANodeIsStillADatabase) {
  Node({"Database"}).AddChild("Job");
  connection.Answer("sp_spaceused", {TextFields({"database_size", "unallocated space"}), {}});
  connection.Answer("sp_helpdb", {TextFields({"status"}), {}});
  ClickPath({"Database", "Job"});
  EXPECT_EQ(connection.statements.back(), "sp_helpdb [Job]");
}

TEST_F(NodeDispatchTest, TablesGetDescriptionColumnsOnlyInAdvancedMode) {
  main.Workbench().Switches.Advanced = true;
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}), {}});
  connection.Answer("fn_listextendedproperty", {TextFields({"objname", "name", "value"}), {}});
  ClickPath({"Database", "sales", "Table"});
  EXPECT_EQ(Columns(), "No. 32R, Name 100, Description 120, Note 180, xtype 48, 作成日 118");
  ClickPath({"Database", "sales", "View"});
  EXPECT_EQ(main.ListViewMain.Columns().size(), 4U);
}

TEST_F(NodeDispatchTest, ServerMenuIsOfferedOnBothRootsAndNowhereElse) {
  const auto offered = [this](TreeNode& node) {
    main.TreeView.Select(&node);
    main.TreeView.UserRightMouseDown();
    return main.TreeView.Popup() == &main.Menu("PopupMenu_SQLServer");
  };
  EXPECT_TRUE(offered(Node({})));
  EXPECT_TRUE(offered(*main.TreeView.Roots()[1]));
  EXPECT_FALSE(offered(Node({"Database"})));
}

TEST_F(NodeDispatchTest, StatusShowsTheStarBeforeTheStatementGoesOut) {
  std::vector<std::string> painted;
  fake.windows.painted = [&] {
    painted.push_back(Status());
    EXPECT_TRUE(connection.statements.empty());
  };
  ClickPath({"Database"});
  EXPECT_EQ(painted, (std::vector<std::string>{" *"}));
}

TEST_F(NodeDispatchTest, ErrorInTheMiddleKeepsTheRowsAndShowsTheServersWords) {
  connection.Answer("sysdevices", {.fields = TextFields({"name", "phyname"}),
                                   .rows = {{"dev1", "C:\\1.bak"}},
                                   .error = ServerMessage{.number = 1, .text = "broken pipe"}});
  ClickPath({"Management", "BackUpDevice"});
  EXPECT_EQ(main.ListViewMain.Items().size(), 1U);
  EXPECT_EQ(fake.dialogs.errors, (std::vector<std::string>{"broken pipe"}));
  EXPECT_EQ(fake.windows.busy, 0);
  std::size_t told = 0;
  const Subscription subscription =
      main.ListViewMain.Changed.Connect([&](ListView::Change, std::size_t) { ++told; });
  main.ListViewMain.AddItem({"the bulk update has ended"});
  EXPECT_EQ(told, 1U);
}

TEST_F(NodeDispatchTest, CapacityTakesThePlaceOfTheTables) {
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}), {}});
  ClickPath({"Database", "sales", "Table"});
  connection.statements.clear();
  Choose(main.Menu("PopupMenu_Table"), "PopupMenu_Table_Capacity");
  EXPECT_EQ(connection.statements,
            (std::vector<std::string>{
                "select * from [sales].dbo.sysobjects where (xtype='S')or       (xtype='U')"}));
  EXPECT_EQ(Columns(),
            "No. 32R, Name 128, xtype 48, 作成日 118, rows 64R, reserved 82R, data 82R, "
            "index_size 82R, unused 82R");
  EXPECT_EQ(Status(), " >EXEC sp_spaceused Tablexxx");
}

TEST_F(NodeDispatchTest, SystemTablesSwitchIsRememberedAndWaitsForTheNextClick) {
  connection.Answer("sysobjects", {TextFields({"name", "xtype", "crdate"}), {}});
  ClickPath({"Database", "sales", "Table"});
  connection.statements.clear();
  Choose(main.Menu("PopupMenu_Table"), "PM_DspSysTbl");
  EXPECT_TRUE(connection.statements.empty());
  EXPECT_EQ(testing::FileBytes(folder / "DBKEEPER.ini"), "[SYSTEM]\r\nDspSysTbl=False\r\n");
  ClickPath({"Database", "sales", "Table"});
  EXPECT_EQ(connection.statements.back(),
            "select * from [sales].dbo.sysobjects where (xtype='U') order by name");
}

class SortTest : public NodeDispatchTest {
 protected:
  // The captions after the clicks on columns, rows being "caption,text,number".
  std::string SortedBy(const std::vector<std::size_t>& clicks) {
    ListView& list = main.ListViewMain;
    list.ClearItems();
    list.ClearColumns();
    list.AddColumn("No", 10);
    list.AddColumn("text", 10);
    list.AddColumn("number", 10, Alignment::kRight);
    const std::vector<std::vector<std::string>> rows = {{"10", "100", "100"},
                                                        {"9", "9", "9          "},
                                                        {"2", "10", "10         "},
                                                        {"30", "B", "-1"},
                                                        {"31", "a", ""}};
    for (const auto& row : rows) list.AddItem({row[0], row[1], row[2]});
    for (const std::size_t column : clicks) list.UserColumnClick(column);
    std::string captions;
    for (const ListItem& item : list.Items()) captions += std::string(item.Caption()) + " ";
    return captions;
  }
};

TEST_F(SortTest, NumbersSortAsNumbersTextsWithoutCaseAndClicksTurnTheDirection) {
  EXPECT_EQ(SortedBy({0}), "2 9 10 30 31 ");
  EXPECT_EQ(SortedBy({}), "10 9 2 30 31 ");
  EXPECT_EQ(SortedBy({0}), "31 30 10 9 2 ");
  ClickPath({"Management"});
  EXPECT_EQ(SortedBy({1}), "2 10 9 31 30 ");
  ClickPath({"Management"});
  // A negative number is padded as text: "00000000-1" stands before every digit string.
  EXPECT_EQ(SortedBy({2}), "30 31 9 2 10 ");
}

}  // namespace
}  // namespace dbkeeper
