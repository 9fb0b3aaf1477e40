#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::FakeResult;
using testing::FileBytes;
using testing::PutFile;
using testing::TextFields;

using Texts = std::vector<std::string>;

constexpr const char* kFilter = "Backupﾌｧｲﾙ(*.bak)|*.bak|全てのﾌｧｲﾙ(*.*)|*.*";

class DatabaseCommandsTest : public AppFixture {
 protected:
  DatabaseCommandsTest() {
    app.Start();
    Connect();
    ClickPath({"Database"});
    connection.statements.clear();
    connection.Answer("headeronly",
                      {TextFields({"DatabaseName", "ServerName", "BackupDescription"}),
                       {{" sales ", "PC01 ", " nightly"}, {"other", "other", "other"}}});
  }

  // The files of a backup, as the server lists them.
  void AnswerFiles(std::vector<testing::FakeRow> rows) {
    connection.Answer("filelistonly",
                      {TextFields({"LogicalName", "PhysicalName", "Type"}), std::move(rows)});
  }
  void ChooseRestoreFromFile() {
    fake.dialogs.paths = {"C:\\b.bak"};
    fake.windows.modal.emplace_back([this](Form& form) { shown = &form; });
    Choose(main.Menu("PopupMenu_Databases"), "PopupMenu_Databases_Backup_Restore");
  }

  TFormMain& main = app.FormMain;
  TFormRestore& restore = app.FormRestore;
  Form* shown = nullptr;
};

TEST_F(DatabaseCommandsTest, ManualBackupIsOneStatementOfFourLines) {
  struct Server {
    const char *name, *described_as;
  };
  for (const Server& server : {Server{"(local)", "PC01"}, Server{"SV02\\inst", "SV02\\inst"}}) {
    app.Session.ServerName = server.name;
    main.ListViewMain.UserSelect({1});
    connection.statements.clear();
    fake.dialogs.paths = {"D:\\sales.bak"};
    fake.dialogs.answers = {Answer::kOk};
    Choose(main.Menu("PopupMenu_Databases"), "PopupMenu_Databases_Backup_Backup");
    EXPECT_EQ(fake.dialogs.choices.back().filter, kFilter);
    EXPECT_EQ(fake.dialogs.questions.back().text,
              "ﾃﾞｰﾀﾍﾞｰｽ:sales のバックアップを実行してよろしいですか?");
    EXPECT_EQ(connection.statements, Texts{std::string("backup database [sales]\r\n"
                                                       "    to DISK = 'D:\\sales.bak'\r\n"
                                                       "  with description      = '") +
                                           server.described_as +
                                           ":salesの手動Backup',\r\n"
                                           "       format"});
    EXPECT_EQ(Status(), " >backup database sales to DISK=xxx.bak with description=yyy, format");
  }
}

TEST_F(DatabaseCommandsTest, ManualBackupStopsWithoutFileOrConsent) {
  main.ListViewMain.UserSelect({1});
  Choose(main.Menu("PopupMenu_Databases"), "PopupMenu_Databases_Backup_Backup");
  EXPECT_TRUE(fake.dialogs.questions.empty());
  fake.dialogs.paths = {"D:\\sales.bak"};
  Choose(main.Menu("PopupMenu_Databases"), "PopupMenu_Databases_Backup_Backup");
  EXPECT_EQ(fake.dialogs.questions.size(), 1U);
  EXPECT_EQ(connection.statements, Texts{});
}

TEST_F(DatabaseCommandsTest, RestoreFromAFileShowsTheMediaAndPreparesTheDialog) {
  AnswerFiles({{"old", "C:\\old.mdf", "D"},
               {"sales_log", "C:\\sales_log.ldf", "L "},
               {"sales_dat", "C:\\sales.mdf", " D"},
               {"ft", "C:\\ft", "F"}});
  // An earlier showing with renaming must leave no trace.
  restore.CheckBox_ChangeName.UserCheck(true);
  ChooseRestoreFromFile();
  EXPECT_EQ(connection.statements, (Texts{"restore headeronly from DISK = 'C:\\b.bak'",
                                          "restore filelistonly from DISK = 'C:\\b.bak'"}));
  EXPECT_EQ(fake.dialogs.messages, Texts{"メディアの詳細\r"
                                         "　・ServerName  ：PC01\r"
                                         "　・DatabaseName：sales\r"
                                         "　・Description ：nightly"});
  EXPECT_EQ(shown, &restore);
  EXPECT_EQ(restore.Edit_DatabaseName.Text(), "sales");
  EXPECT_EQ(restore.Edit_BackupFName.Text(), "C:\\b.bak");
  EXPECT_EQ(restore.Edit_DatabaseFName.Text(), "C:\\sales.mdf");
  EXPECT_EQ(restore.Edit_LogFName.Text(), "C:\\sales_log.ldf");
  EXPECT_EQ(restore.Edit_DataName.Text(), "sales_dat");
  EXPECT_EQ(restore.Edit_LogName.Text(), "sales_log");
  for (const Edit* edit :
       {&restore.Edit_DatabaseName, &restore.Edit_BackupFName, &restore.Edit_DatabaseFName,
        &restore.Edit_LogFName, &restore.Edit_DataName, &restore.Edit_LogName}) {
    EXPECT_TRUE(edit->ReadOnly);
    EXPECT_EQ(edit->Color(), Color::kButtonFace);
  }
  EXPECT_FALSE(restore.Sbtn_BackupFName.Enabled);
  EXPECT_FALSE(restore.SBtn_DatabaseFName.Enabled);
  EXPECT_TRUE(restore.CheckBox_ChangeName.Enabled);
  EXPECT_FALSE(restore.CheckBox_ChangeName.Checked);
  EXPECT_FALSE(app.Session.ADOQuerySystem.Active());
}

TEST_F(DatabaseCommandsTest, RestoreFromAFileNeedsADataFileAndALogFile) {
  for (const char* type : {"D", "L"}) {
    AnswerFiles({{"x", "C:\\x", type}});
    ChooseRestoreFromFile();
    EXPECT_EQ(shown, nullptr) << type;
    EXPECT_FALSE(app.Session.ADOQuerySystem.Active());
  }
}

TEST_F(DatabaseCommandsTest, FileWithoutAHeaderShowsNoMedia) {
  connection.Answer("headeronly",
                    {TextFields({"DatabaseName", "ServerName", "BackupDescription"}), {}});
  AnswerFiles({{"d", "C:\\d", "D"}, {"l", "C:\\l", "L"}});
  ChooseRestoreFromFile();
  EXPECT_TRUE(fake.dialogs.messages.empty());
  EXPECT_EQ(shown, &restore);
  EXPECT_EQ(restore.Edit_DatabaseName.Text(), "");
}

TEST_F(DatabaseCommandsTest, HistoryOlderThanSevenDaysIsDeletedUnasked) {
  fake.clock.now = {2005, 3, 8, 14, 5, 9};
  Choose(main.Menu("PopupMenu_DB_BackUp"), "PopupMenu_DB_BackUp_Drop_Log");
  EXPECT_TRUE(fake.dialogs.questions.empty());
  EXPECT_EQ(connection.statements,
            Texts{"exec sp_delete_backuphistory @oldest_date = '2005/03/01'"});
  EXPECT_EQ(Status(), "");
}

TEST_F(DatabaseCommandsTest, RestoreFromTheHistoryTakesDatabaseAndSetNumber) {
  connection.Answer("from backupset where",
                    {TextFields({"backup_set_id", "media_set_id", "name", "description",
                                 "backup_start_date", "backup_size"}),
                     {{"41", "3", "n", "d", "2005-03-08 00:00:00", "1024"}}});
  connection.Answer("left join", {TextFields({"physical_device_name"}), {{"C:\\b.bak"}}});
  connection.Answer("backupfile where",
                    {TextFields({"physical_name", "file_type", "logical_name"}), {}});
  ClickPath({"Database", "sales", "Backup"});
  ASSERT_EQ(main.ListViewMain.Items().size(), 1U);
  main.ListViewMain.UserSelect({0});
  Choose(main.Menu("PopupMenu_DB_BackUp"), "PopupMenu_DB_BackUp_Restore");
  EXPECT_EQ(restore.Edit_DatabaseName.Text(), "sales");
  EXPECT_EQ(restore.Edit_BackupFName.Text(), "C:\\b.bak");
  EXPECT_TRUE(connection.statements.back().ends_with("backup_set_id = 41 order by file_number"));

  // The item is not shown.
  main.Menu("PopupMenu_DB_BackUp").Find("PopupMenu_DB_BackUp_Direct_Restore")->OnClick();
  EXPECT_EQ(restore.Edit_DatabaseName.Text(), "sales");
  EXPECT_TRUE(restore.Sbtn_BackupFName.Enabled);
}

TEST_F(DatabaseCommandsTest, BulkBoxesAppearWithTheirCommandsAndGoWithTheNextClick) {
  const MenuItem& item = *main.Menu("PopupMenu_Table").Find("PopupMenu_Table_Select_ChkBox");
  for (const bool on : {true, false, true}) {
    Choose(main.Menu("PopupMenu_Table"), "PopupMenu_Table_Select_ChkBox");
    EXPECT_EQ(item.Checked(), on);
    EXPECT_EQ(main.ListViewMain.CheckBoxes(), on);
    for (const char* name : {"PopupMenu_Table_Select_Truncate", "PopupMenu_Table_Select_Drop"}) {
      EXPECT_EQ(main.Menu("PopupMenu_Table").Find(name)->Visible(), on) << name;
    }
  }
  ClickPath({"Database"});
  EXPECT_FALSE(main.ListViewMain.CheckBoxes());
}

TEST_F(DatabaseCommandsTest, CsvHoldsTheListAsItStands) {
  ListView& list = main.ListViewMain;
  list.ClearItems();
  list.ClearColumns();
  for (const char* caption : {"No", "日本", "c"}) list.AddColumn(caption, 10);
  list.AddItem({"1", "a\"b", "x,y"});
  list.AddItem({"2", "あ"});
  list.AddItem({""});
  const std::string file = (folder / "out.csv").string();
  PutFile(file, "what stood there before");
  fake.dialogs.paths = {file};
  Choose(main.Menu("PopupMenu_Minimum"), "PopupMenu_Minimum_CSV_Out");
  EXPECT_EQ(fake.dialogs.choices.back().filter,
            "CSVﾌｧｲﾙ(*.csv)|*.csv|ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*");
  EXPECT_EQ(FileBytes(file),
            "\"No\",\"\x93\xfa\x96\x7b\",\"c\"\r\n"
            "\"1\",\"a\"b\",\"x,y\"\r\n"
            "\"2\",\"\x82\xa0\"\r\n"
            "\"\"\r\n");
}

TEST_F(DatabaseCommandsTest, CsvThatTheCodePageCannotHoldLeavesTheFileAndNamesThePlace) {
  ListView& list = main.ListViewMain;
  list.ClearItems();
  list.ClearColumns();
  for (const char* caption : {"No", "Name"}) list.AddColumn(caption, 10);
  list.AddItem({"1", "ok"});
  list.AddItem({"2", "caf\u00e9"});
  const std::string file = (folder / "out.csv").string();
  PutFile(file, "old");
  fake.dialogs.paths = {file};
  Choose(main.Menu("PopupMenu_Minimum"), "PopupMenu_Minimum_CSV_Out");
  EXPECT_EQ(FileBytes(file), "old");
  EXPECT_EQ(fake.dialogs.errors,
            Texts{"シフトJISで表せない文字があります: \u00e9 (2行目、2列目「Name」)"});
}

}  // namespace
}  // namespace dbkeeper
