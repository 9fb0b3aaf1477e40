// The dialog of test data: settings of a column, the run, and the files it keeps them in.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "testdata/Unit_Table_TestData.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::WorkbenchFixture;

using Texts = std::vector<std::string>;

class TestDataFormTest : public ::testing::Test, protected WorkbenchFixture {
 protected:
  TestDataFormTest() {
    fake.code_page.holds_everything = true;
    for (const char* name : {"work", "cfg"}) std::filesystem::create_directory(folder / name);
    form.Edit_DataBase.Text = std::string("sales");
    form.Edit_TableName.Text = std::string("orders");
    for (const char* name : {"id", "name", "day"}) {
      form.ListView.AddItem({name, "int", "0", "-", "", ""});
    }
  }
  void Choose(std::size_t column, int pattern) {
    form.ListView.UserSelect({column});
    form.CmbBox_Pattern.UserSelect(pattern);
  }
  void Set(std::size_t column, std::string_view pattern, std::string_view a) {
    form.ListView.SetSubItem(column, 5, pattern);
    form.ListView.SetSubItem(column, 7, a);
  }
  Texts Settings(std::size_t column) const {
    Texts texts;
    for (std::size_t cell = 5; cell <= 8; ++cell) {
      texts.emplace_back(form.ListView.Items()[column].SubItem(cell));
    }
    return texts;
  }
  std::string Contents(const std::string& file) const {
    std::stringstream text;
    text << std::ifstream(folder / file, std::ios::binary).rdbuf();
    return text.str();
  }

  TForm_Table_TestData form{workbench};
};

TEST_F(TestDataFormTest, EachPatternShowsItsEditorsAlone) {
  const std::vector<std::pair<const char*, Control*>> editors = {
      {"start", &form.Fne_Start},           {"end", &form.Fne_End},
      {"from", &form.DateTimePicker_Start}, {"to", &form.DateTimePicker_End},
      {"between", &form.Lbl_Param2},        {"text", &form.Edit_ParamStr},
      {"file", &form.Sbtn_FileName},        {"help", &form.Lbl_PHelp}};
  const Texts shown = {"start", "start end between", "from to between", "from to between",
                       "text",  "text file",         "text help"};
  const Texts captions = {"開始位置 : ", "開始位置 : ",     "開始 : ",          "開始 : ",
                          "固定値 : ",   "既定ファイル : ", "パターン文字列 : "};
  form.ListView.UserSelect({0});
  for (std::size_t pattern = 0; pattern < shown.size(); ++pattern) {
    form.CmbBox_Pattern.UserSelect(static_cast<int>(pattern));
    std::string visible;
    for (const auto& [name, control] : editors) {
      if (control->Visible()) visible += (visible.empty() ? "" : " ") + std::string(name);
    }
    EXPECT_EQ(visible, shown[pattern]) << pattern;
    EXPECT_EQ(form.Lbl_Param1.Caption(), captions[pattern]) << pattern;
  }
}

TEST_F(TestDataFormTest, StoresAColumnsSettingsAndShowsThemAgain) {
  Choose(0, 1);
  form.Fne_Null.SetValue(2.5);
  form.Fne_Start.SetValue(10);
  form.Fne_End.SetValue(20);
  form.Sbtn_ParamUp.UserClick();
  EXPECT_EQ(Settings(0), (Texts{"2:ランダム数値", "2.5", "10", "20"}));

  Choose(2, 2);
  form.DateTimePicker_Start.Value = DateTimeValue{2004, 5, 6};
  form.DateTimePicker_End.Value = DateTimeValue{2005, 12, 31};
  form.Sbtn_ParamUp.UserClick();
  EXPECT_EQ(Settings(2), (Texts{"3:ランダム日付", "0", "2004/05/06", "2005/12/31"}));

  form.ListView.UserSelect({1});
  EXPECT_EQ(form.CmbBox_Pattern.ItemIndex(), -1);
  EXPECT_EQ(form.Edit_FieldName.Text(), "name");
  EXPECT_EQ(form.Fne_Start.Value(), 0);

  form.ListView.UserSelect({0});
  EXPECT_EQ(form.CmbBox_Pattern.ItemIndex(), 1);
  EXPECT_EQ(form.Fne_Null.Value(), 2.5);
  EXPECT_EQ(form.Fne_Start.Value(), 10);
  EXPECT_EQ(form.Fne_End.Value(), 20);
  form.ListView.UserSelect({2});
  EXPECT_EQ(form.DateTimePicker_End.Value(), (DateTimeValue{2005, 12, 31}));

  // Another pattern empties what it has no use for.
  Choose(0, 4);
  form.Edit_ParamStr.UserType("x");
  form.Sbtn_ParamUp.UserClick();
  EXPECT_EQ(Settings(0), (Texts{"5:固定値", "2.5", "x", ""}));
  form.Sbtn_ParamDel.UserClick();
  EXPECT_EQ(Settings(0), (Texts{"", "", "", ""}));
  EXPECT_EQ(form.CmbBox_Pattern.ItemIndex(), -1);
}

TEST_F(TestDataFormTest, NothingIsStoredWithoutAColumnOrAPattern) {
  form.Sbtn_ParamUp.UserClick();
  form.Sbtn_ParamDel.UserClick();
  form.ListView.UserSelect({1});
  form.Sbtn_ParamUp.UserClick();
  EXPECT_EQ(Settings(1), (Texts{"", "", "", ""}));
}

TEST_F(TestDataFormTest, ARunWritesItsRowsCountsDownAndOpensTheImport) {
  Set(0, "1:連続数値", "0");
  Set(1, "5:固定値", "日本");
  Texts shown;
  const Subscription counted =
      form.Fne_Max.Text.Observe([&shown](const std::string& text) { shown.push_back(text); });
  form.Fne_Max.SetValue(100);
  EXPECT_FALSE(form.Sbtn_Bulk_ins.Enabled());
  form.SBtn_Create.UserClick();

  const std::string text = Contents("work/DBKEEPER.tmp");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 100);
  EXPECT_EQ(text.substr(0, text.find('\n') + 1), "1\t日本\t\r\n");
  EXPECT_TRUE(form.Sbtn_Bulk_ins.Enabled());
  EXPECT_TRUE(form.SBtn_Create.Enabled());
  EXPECT_EQ(form.Fne_Max.Value(), 0);
  // One more than a twentieth between two displays.
  EXPECT_EQ(std::count(shown.begin(), shown.end(), "94"), 1);
  EXPECT_EQ(shown.size(), std::size_t{1 + 1 + 16 + 1});

  form.SBtn_Create.UserClick();  // the count is 0 now
  EXPECT_EQ(Contents("work/DBKEEPER.tmp"), "");
}

TEST_F(TestDataFormTest, WhatEndsARunLeavesTheRowsSoFar) {
  Set(0, "1:連続数値", "0");
  Set(1, "2:ランダム数値", "none");
  form.ListView.SetSubItem(1, 6, "50");
  fake.random.numbers = {0, 0, 999};  // two rows are null
  EXPECT_THROW(form.SBtn_Create.UserClick(), Error);
  EXPECT_EQ(Contents("work/DBKEEPER.tmp"), "1\t\t\r\n2\t\t\r\n");
  EXPECT_FALSE(form.SBtn_Create.Enabled());
  EXPECT_FALSE(form.Sbtn_Bulk_ins.Enabled());
}

TEST_F(TestDataFormTest, AStoppedRunKeepsItsRowsAndOffersNoImport) {
  Set(0, "1:連続数値", "0");
  form.Fne_Max.SetValue(100'000);
  fake.progress.stop_at = 2048;
  form.SBtn_Create.UserClick();
  const std::string text = Contents("work/DBKEEPER.tmp");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2048);
  EXPECT_TRUE(form.SBtn_Create.Enabled());
  EXPECT_FALSE(form.Sbtn_Bulk_ins.Enabled());
}

TEST_F(TestDataFormTest, ValueFilesThatExistAreCounted) {
  std::ofstream(folder / "v.txt") << "a\nb\n";
  Set(0, "6:既定ファイル指定", PathText(folder / "v.txt"));
  Set(1, "6:既定ファイル指定", PathText(folder / "none.txt"));
  form.Fne_Max.SetValue(1);
  form.SBtn_Create.UserClick();
  EXPECT_EQ(form.ListView.Items()[0].SubItem(9), "2");
  EXPECT_EQ(form.ListView.Items()[1].SubItem(9), "");
  EXPECT_EQ(Contents("work/DBKEEPER.tmp"), "a\t\t\r\n");
}

TEST_F(TestDataFormTest, SavedSettingsComeBack) {
  Choose(0, 1);
  form.Fne_Start.SetValue(1);
  form.Fne_End.SetValue(9);
  form.Sbtn_ParamUp.UserClick();
  form.Sbtn_SaveCfg.UserClick();
  const Texts saved = Settings(0);
  EXPECT_EQ(Contents("cfg/sales_orders.cfg"),
            "id\t2:ランダム数値\t0\t1\t9\r\nname\t\t\t\t\r\nday\t\t\t\t\r\n");
  form.Sbtn_ParamDel.UserClick();
  form.Sbtn_LoadCfg.UserClick();
  EXPECT_EQ(Settings(0), saved);
  form.Edit_TableName.Text = std::string("other");
  form.Sbtn_LoadCfg.UserClick();
  EXPECT_EQ(fake.dialogs.messages, Texts{"ファイルが存在しません"});
}

TEST_F(TestDataFormTest, AFileOfOddLinesChangesOnlyWhatItNames) {
  struct Case {
    std::string lines;
    std::vector<Texts> settings;  // of the three columns
  };
  const Texts none = {"", "", "", ""};
  const Case cases[] = {
      {"gone\ta\tb\tc\td\r\n", {none, none, none}},
      {"no tab at all\r\n\r\n", {none, none, none}},
      {"ID\ta\tb\tc\td\r\n", {none, none, none}},
      {"name\ta\tb\tc\td\te\r\n", {none, {"a", "b", "c", "d\te"}, none}},
      {"id\ta\r\n", {{"", "", "", "a"}, none, none}},
      {"day\t1\t2\t3\t4\nday\t5\t6\t7\t8\n", {none, none, {"5", "6", "7", "8"}}},
      // What a match leaves of the line is compared with the columns behind it.
      {"id\ta\tb\tc\tday\tx\ty\tz\tw\r\n",
       {{"a", "b", "c", "day\tx\ty\tz\tw"}, none, {"x", "y", "z", "w"}}},
  };
  for (const Case& each : cases) {
    for (std::size_t column = 0; column < 3; ++column) {
      for (std::size_t cell = 5; cell <= 8; ++cell) form.ListView.SetSubItem(column, cell, "");
    }
    std::ofstream(folder / "cfg/sales_orders.cfg", std::ios::binary) << each.lines;
    form.Sbtn_LoadCfg.UserClick();
    for (std::size_t column = 0; column < 3; ++column) {
      EXPECT_EQ(Settings(column), each.settings[column]) << each.lines << column;
    }
  }
}

TEST_F(TestDataFormTest, TheImportIsHandedToTheBulkCopyTool) {
  session.ServerName = "(local)";
  session.LoginName = "sa";
  form.Sbtn_Bulk_ins.Enabled = true;
  form.Sbtn_Bulk_ins.UserClick();
  const std::string file = PathText(folder / "work" / "DBKEEPER.tmp");
  const std::string batch = PathText(folder / "work" / "DBKEEPER_BCP.bat");
  EXPECT_EQ(Contents("work/DBKEEPER_BCP.bat"),
            "echo off\r\necho ┏━━━━━━━━━━━━━━━\r\necho ┃BCP インポート\r\n"
            "echo ┃DataBase：sales\r\necho ┃Table   ：orders\r\necho ┃ ↑\r\n"
            "echo ┃File    ：" +
                file +
                "\r\necho ┗━━━━━━━━━━━━━━━\r\n"
                "echo アカウント：saのパスワードを入力してください\r\n"
                "bcp.exe sales..orders in \"" +
                file + "\" -c -SPC01 -Usa\r\npause\r\nexit\r\n");
  EXPECT_EQ(fake.shell.opened, Texts{batch});
  EXPECT_EQ(status.SimpleText(),
            " >bcp.exe sales..orders out [FileName] -SServerName -UUserName -PPassword");
}

}  // namespace
}  // namespace dbkeeper
