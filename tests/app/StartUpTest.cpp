#include <gtest/gtest.h>

#include <filesystem>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

namespace fs = std::filesystem;
using testing::AppFixture;
using testing::FileBytes;
using testing::PutFile;

class StartUpTest : public AppFixture {};

TEST_F(StartUpTest, MakesTheFoldersDropsTheOldLogAndShowsTheInformationRows) {
  PutFile(folder / "error.log", "old");
  app.Start();
  for (const char* name : {"work", "cfg", "template", "pattern"}) {
    EXPECT_TRUE(fs::is_directory(folder / name)) << name;
  }
  EXPECT_FALSE(fs::exists(folder / "error.log"));
  const ListView& list = app.FormMain.ListViewMain;
  ASSERT_EQ(list.Columns().size(), 3U);
  EXPECT_EQ(list.Columns()[1], (ListColumn{"項目", 132, Alignment::kLeft}));
  ASSERT_EQ(list.Items().size(), 4U);
  EXPECT_EQ(list.Items()[0].SubItem(1), "DBKEEPER");
  EXPECT_EQ(list.Items()[1].SubItem(1), "Err_バージョン情報が取得できません");
  EXPECT_EQ(list.Popup(), &app.FormMain.Menu("PopupMenu1"));
  EXPECT_FALSE(app.FormMain.Browser.Pnl_SQL.Visible);
}

TEST_F(StartUpTest, SettingsDecideTheSwitchesByTheirExactText) {
  struct Case {
    const char* file;
    bool advanced;
    bool system_tables;
  };
  const Case cases[] = {
      {nullptr, false, true},
      {"[SYSTEM]\r\nAdvanced=True\r\nDspSysTbl=False\r\n", true, false},
      {"[SYSTEM]\r\nAdvanced=true\r\nDspSysTbl=false\r\n", false, true},
      {"[SYSTEM]\r\nDspSysTbl=\r\n", false, true},
  };
  for (const Case& c : cases) {
    fs::remove(folder / "DBKEEPER.ini");
    if (c.file != nullptr) PutFile(folder / "DBKEEPER.ini", c.file);
    app.Start();
    EXPECT_EQ(app.FormMain.Workbench().Switches.Advanced, c.advanced);
    EXPECT_EQ(app.FormMain.Workbench().Switches.ShowSystemTables, c.system_tables);
    EXPECT_EQ(app.FormMain.Menu("PopupMenu_Table").Find("PM_DspSysTbl")->Checked(),
              c.system_tables);
  }
}

TEST_F(StartUpTest, UnreadableSettingsAreToldAndEverythingElseStands) {
  fs::create_directory(folder / "DBKEEPER.ini");
  app.Start();
  ASSERT_FALSE(fake.dialogs.errors.empty());
  EXPECT_NE(fake.dialogs.errors[0].find("DBKEEPER.ini"), std::string::npos);
  EXPECT_EQ(app.FormMain.ListViewMain.Items().size(), 4U);
  EXPECT_EQ(fake.windows.system_menu.size(), 7U);
  EXPECT_EQ(app.FormLogin.ComboBox_SQL_Server.Text(), "(local)");
}

TEST_F(StartUpTest, FailingSystemMenuIsToldItemByItemAndStartGoesOn) {
  fake.windows.system_menu_fails = true;
  app.Start();
  EXPECT_EQ(fake.dialogs.messages, std::vector<std::string>(7, "Error"));
  EXPECT_EQ(app.FormMain.ListViewMain.Items().size(), 4U);
}

TEST_F(StartUpTest, SystemMenuOpensFilesThatExistAndPages) {
  app.Start();
  app.FormMain.SystemCommand(10);
  EXPECT_EQ(fake.dialogs.messages, (std::vector<std::string>{"ファイルが存在しません"}));
  PutFile(folder / "DBKEEPER_README.txt", "x");
  for (const int id : {11, 12, 13, 14, 99}) app.FormMain.SystemCommand(id);
  ASSERT_EQ(fake.shell.opened.size(), 4U);
  EXPECT_EQ(fake.shell.opened[0], (folder / "DBKEEPER_README.txt").string());
}

TEST_F(StartUpTest, HidingTheMainWindowSaysOk) {
  app.FormMain.Open();
  app.FormMain.Close();
  EXPECT_EQ(fake.dialogs.messages, (std::vector<std::string>{"OK"}));
}

TEST_F(StartUpTest, DeveloperCheckIsInvisibleAndShowsTheDate) {
  EXPECT_FALSE(app.FormMain.Menu("PopupMenu_SQLServer").Find("EST1")->Visible());
  app.FormMain.Menu("PopupMenu_SQLServer").Find("EST1")->OnClick();
  EXPECT_EQ(fake.dialogs.messages, (std::vector<std::string>{"OK:2005/03/08"}));
}

TEST_F(StartUpTest, ErrorLogGrowsByThreeLinesForEveryUncaughtError) {
  app.Start();
  const ActionGuard& guard = app.Guard();
  guard.Run([] { throw ServerError({{.number = 18456, .text = "日 failed"}}); });
  guard.Run([] { throw FileError("cannot 😀"); });
  guard.Run([] { throw std::bad_alloc(); });
  EXPECT_EQ(FileBytes(folder / "error.log"),
            "Error Time Stamp: 02:05 pm on 03/08/05\r\n"
            "Error Class: ServerError\r\n"
            "Error Message: \x93\xfa failed\r\n"
            "Error Time Stamp: 02:05 pm on 03/08/05\r\n"
            "Error Class: FileError\r\n"
            "Error Message: cannot <U+1F600>\r\n"
            "Error Time Stamp: 02:05 pm on 03/08/05\r\n"
            "Error Class: bad_alloc\r\n"
            "Error Message: std::bad_alloc\r\n");
  EXPECT_EQ(fake.dialogs.errors.size(), 3U);
  EXPECT_EQ(fake.dialogs.errors[0], "日 failed");
}

TEST_F(StartUpTest, AServersErrorShowsItsNumbersBelowItsWords) {
  app.Start();
  app.Guard().Run([] {
    throw ServerError({{.number = 3201, .state = 2, .severity = 16, .line = 1, .text = "no file"},
                       {.text = "a remark of the driver"},
                       {.number = 3013, .line = 4, .text = "terminating"}});
  });
  app.Guard().Run([] { throw FileError("of the machine"); });
  EXPECT_EQ(
      fake.dialogs.error_details,
      (std::vector<std::string>{"番号 3201, レベル 16, 状態 2, 行 1\r\n番号 3013, 行 4", ""}));
}

TEST_F(StartUpTest, ErrorIsShownAlsoWhereTheLogCannotBeWritten) {
  app.Start();
  fs::create_directory(folder / "error.log");
  app.Guard().Run([] { throw Error("lost"); });
  ASSERT_EQ(fake.dialogs.errors.size(), 2U);
  EXPECT_EQ(fake.dialogs.errors[1], "lost");
  app.Guard().Run([] { throw Error("lost again"); });
  ASSERT_EQ(fake.dialogs.errors.size(), 3U);
  EXPECT_EQ(fake.dialogs.errors[2], "lost again");
}

}  // namespace
}  // namespace dbkeeper
