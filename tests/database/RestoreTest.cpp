#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::FakeRow;
using testing::TextFields;

using Texts = std::vector<std::string>;

class RestoreTest : public AppFixture {
 protected:
  RestoreTest() {
    AnswerMedia({{"C:\\b.bak"}});
    AnswerFiles({{"C:\\sales.mdf", "D", "sales_dat "}, {"C:\\sales.ldf", "L", " sales_log"}});
  }
  void AnswerMedia(std::vector<FakeRow> rows) {
    connection.Answer("physical_device_name",
                      {TextFields({"physical_device_name"}), std::move(rows)});
  }
  void AnswerFiles(std::vector<FakeRow> rows) {
    connection.Answer(
        "from backupfile",
        {TextFields({"physical_name", "file_type", "logical_name"}), std::move(rows)});
  }
  void Press(Answer answer = Answer::kOk) {
    fake.dialogs.answers = {answer};
    app.Guard().Run([this] { form.SBtn_Update.UserClick(); });
  }
  void Rename(const std::string& name) {
    form.CheckBox_ChangeName.UserCheck(true);
    form.Edit_DatabaseName.UserEnter();
    form.Edit_DatabaseName.UserType(name);
    form.Edit_DatabaseName.UserExit();
  }

  TFormRestore& form = app.FormRestore;
};

TEST_F(RestoreTest, HistoryFillsAndLocksTheFields) {
  form.SetUp("sales", 41);
  EXPECT_EQ(connection.statements,
            (Texts{"use msdb",
                   "select physical_device_name  from backupset           left join "
                   "backupmediafamily               on backupset.media_set_id = "
                   "backupmediafamily.media_set_id where backup_set_id = 41",
                   "select physical_name,file_type,logical_name  from backupfile where "
                   "backup_set_id = 41 order by file_number"}));
  EXPECT_EQ(app.Session.CurrentDatabase(), "msdb");
  EXPECT_EQ(form.Edit_DatabaseName.Text(), "sales");
  EXPECT_EQ(form.Edit_BackupFName.Text(), "C:\\b.bak");
  EXPECT_EQ(form.Edit_DatabaseFName.Text(), "C:\\sales.mdf");
  EXPECT_EQ(form.Edit_LogFName.Text(), "C:\\sales.ldf");
  EXPECT_EQ(form.Edit_DataName.Text(), "sales_dat");
  EXPECT_EQ(form.Edit_LogName.Text(), "sales_log");
  for (const Edit* edit : {&form.Edit_DatabaseName, &form.Edit_BackupFName,
                           &form.Edit_DatabaseFName, &form.Edit_LogFName}) {
    EXPECT_TRUE(edit->ReadOnly);
    EXPECT_EQ(edit->Color(), Color::kButtonFace);
  }
  for (const Button* button :
       {&form.Sbtn_BackupFName, &form.SBtn_DatabaseFName, &form.SBtn_LogFName}) {
    EXPECT_FALSE(button->Enabled);
  }
  EXPECT_TRUE(form.CheckBox_ChangeName.Enabled);
}

TEST_F(RestoreTest, TheLastFileOfATypeCountsAndOtherTypesAreSkipped) {
  AnswerFiles({{"C:\\1.mdf", "D", "one"},
               {"C:\\2.ndf", "D", "two"},
               {"C:\\1.ldf", "L", "log"},
               {"C:\\ft", "F", "ft"}});
  form.SetUp("sales", 41);
  EXPECT_EQ(form.Edit_DatabaseFName.Text(), "C:\\2.ndf");
  EXPECT_EQ(form.Edit_DataName.Text(), "two");
  EXPECT_EQ(form.Edit_LogName.Text(), "log");
}

TEST_F(RestoreTest, AFileNamedDirectlyIsADeadEndAfterAFreshStart) {
  form.SetUp("sales", 0);
  EXPECT_EQ(connection.statements, Texts{});
  EXPECT_FALSE(form.CheckBox_ChangeName.Enabled);
  EXPECT_TRUE(form.Sbtn_BackupFName.Enabled);
  EXPECT_FALSE(form.Edit_BackupFName.ReadOnly);
  EXPECT_EQ(form.Edit_BackupFName.Color(), Color::kWindow);
  EXPECT_TRUE(form.Edit_DatabaseFName.ReadOnly);
  EXPECT_FALSE(form.SBtn_DatabaseFName.Enabled);
  form.Edit_BackupFName.UserType("C:\\b.bak");
  Press();
  EXPECT_EQ(fake.dialogs.messages, Texts{"NG:"});
  EXPECT_EQ(connection.statements, Texts{});
}

TEST_F(RestoreTest, RenamingOfAnEarlierShowingLeavesTheFileFieldsOpenInDirectMode) {
  form.SetUp("sales", 41);
  form.CheckBox_ChangeName.UserCheck(true);
  form.SetUp("sales", 0);
  EXPECT_FALSE(form.Edit_DatabaseFName.ReadOnly);
  EXPECT_TRUE(form.SBtn_LogFName.Enabled);
  EXPECT_FALSE(form.CheckBox_ChangeName.Checked);
}

TEST_F(RestoreTest, RenamingCannotBeSwitchedOffAgain) {
  form.SetUp("sales", 41);
  form.CheckBox_ChangeName.UserCheck(true);
  for (const Edit* edit :
       {&form.Edit_DatabaseName, &form.Edit_DatabaseFName, &form.Edit_LogFName}) {
    EXPECT_FALSE(edit->ReadOnly);
    EXPECT_EQ(edit->Color(), Color::kWindow);
  }
  EXPECT_TRUE(form.SBtn_DatabaseFName.Enabled);
  EXPECT_TRUE(form.SBtn_LogFName.Enabled);
  EXPECT_FALSE(form.CheckBox_ChangeName.Enabled);
  form.CheckBox_ChangeName.UserCheck(false);
  EXPECT_TRUE(form.CheckBox_ChangeName.Checked);
}

TEST_F(RestoreTest, NewNamesReachThePathsInOnePass) {
  struct Case {
    const char *old_name, *new_name, *path, *renamed;
  };
  const Case cases[] = {
      {"db", "db2", "C:\\db\\db_dat.mdf", "C:\\db2\\db2_dat.mdf"},
      {"db", "a@b", "C:\\db.mdf", "C:\\a@b.mdf"},
      {"db", "@", "C:\\db@.mdf", "C:\\@@.mdf"},
      {"@", "@x", "C:\\@.mdf", "C:\\@x.mdf"},
      {"db", "DB", "C:\\Db\\db.mdf", "C:\\Db\\DB.mdf"},
      {"db", "n", "C:\\a@b.mdf", "C:\\anb.mdf"},
      {"a@", "n", "C:\\aa@@.mdf", "C:\\nn.mdf"},
      {"", "n", "C:\\x.mdf", "C:\\x.mdf"},
      {"db", "", "C:\\db.mdf", "C:\\db.mdf"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.old_name) + " -> " + c.new_name + " in " + c.path);
    AnswerFiles({{c.path, "D", "d"}, {c.path, "L", "l"}});
    form.SetUp(c.old_name, 41);
    Rename(c.new_name);
    EXPECT_EQ(form.Edit_DatabaseFName.Text(), c.renamed);
    EXPECT_EQ(form.Edit_LogFName.Text(), c.renamed);
  }
}

TEST_F(RestoreTest, ASecondNewNameFindsOnlyWhatStillHoldsTheFirstOne) {
  AnswerFiles({{"C:\\db.mdf", "D", "d"}, {"C:\\db.ldf", "L", "l"}});
  form.SetUp("db", 41);
  Rename("one");
  Rename("two");
  EXPECT_EQ(form.Edit_DatabaseFName.Text(), "C:\\one.mdf");
  EXPECT_EQ(form.Edit_DatabaseName.Text(), "two");
}

TEST_F(RestoreTest, LeavingALockedNameChangesNoPath) {
  form.SetUp("sales", 41);
  form.Edit_DatabaseName.Text = "other";
  form.Edit_DatabaseName.UserExit();
  EXPECT_EQ(form.Edit_DatabaseFName.Text(), "C:\\sales.mdf");
}

TEST_F(RestoreTest, StatementsOfBothKinds) {
  struct Case {
    bool rename, overwrite;
    const char* statement;
  };
  const Case cases[] = {
      {false, false, "restore database [sales]\r\n from disk = 'C:\\b.bak'"},
      {false, true, "restore database [sales]\r\n from disk = 'C:\\b.bak', replace"},
      {true, false,
       "restore database [new]\r\n   from disk = 'C:\\b.bak'\r\n"
       "   with move 'sales_dat' to '[C:\\new.mdf]',\r\n"
       "        move 'sales_log' to 'C:\\new.ldf'"},
      {true, true,
       "restore database [new]\r\n   from disk = 'C:\\b.bak'\r\n"
       ", replace   with move 'sales_dat' to '[C:\\new.mdf]',\r\n"
       "        move 'sales_log' to 'C:\\new.ldf'"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.statement);
    form.SetUp("sales", 41);
    EXPECT_FALSE(form.CheckBox_Ow.Checked);
    form.CheckBox_Ow.Checked = c.overwrite;
    if (c.rename) Rename("new");
    connection.statements.clear();
    Press();
    EXPECT_EQ(connection.statements,
              (Texts{"use master", std::string("use master\r\n") + c.statement}));
    EXPECT_EQ(Status(), std::string(" >") + c.statement);
    EXPECT_TRUE(form.SBtn_Update.Enabled);
    EXPECT_EQ(app.Session.CurrentDatabase(), "master");
    EXPECT_TRUE(fake.dialogs.messages.empty());
  }
}

TEST_F(RestoreTest, AsksBeforeAndAnythingButOkStops) {
  form.SetUp("sales", 41);
  connection.statements.clear();
  Press(Answer::kCancel);
  EXPECT_EQ(connection.statements, Texts{});
  const Question& question = fake.dialogs.questions.at(0);
  EXPECT_EQ(question.text,
            "データベース「sales」を復元してもよろしいですか?\r"
            "バックアップ時点に戻りますので、\r"
            "現在のデータやデータベース構造は失われてしまいます。");
  EXPECT_EQ(question.caption, "注意");
  EXPECT_EQ(question.default_answer, Answer::kCancel);
}

TEST_F(RestoreTest, ASetWithoutMediaIsIncomplete) {
  AnswerMedia({});
  form.SetUp("sales", 41);
  EXPECT_EQ(form.Edit_BackupFName.Text(), "");
  Press();
  EXPECT_EQ(fake.dialogs.messages, Texts{"NG:"});
}

TEST_F(RestoreTest, AFailureLeavesTheButtonDisabledForGood) {
  form.SetUp("sales", 41);
  connection.Fail("restore database", "in use");
  Press();
  EXPECT_EQ(fake.dialogs.errors, Texts{"in use"});
  EXPECT_EQ(Status(), " >restore database [sales]\r\n from disk = 'C:\\b.bak'");
  EXPECT_EQ(fake.windows.busy, 0);
  form.SetUp("sales", 41);
  EXPECT_FALSE(form.SBtn_Update.Enabled);
}

TEST_F(RestoreTest, TheStatusIsPaintedBeforeEachStatement) {
  form.SetUp("sales", 41);
  Texts painted;
  fake.windows.painted = [&] { painted.push_back(Status()); };
  Press();
  EXPECT_EQ(painted, (Texts{" *", " >restore database [sales]\r\n from disk = 'C:\\b.bak'"}));
}

TEST_F(RestoreTest, VerifyRunsInMasterAndSaysNothing) {
  form.SetUp("sales", 41);
  connection.statements.clear();
  form.SpeedButton1.UserClick();
  EXPECT_EQ(connection.statements,
            (Texts{"use master", "restore verifyonly  from disk = 'C:\\b.bak'"}));
  EXPECT_EQ(Status(), " >restore verifyonly  from disk = 'C:\\b.bak'");
  EXPECT_TRUE(fake.dialogs.messages.empty());
}

TEST_F(RestoreTest, ChoosersOfferTheirFiltersAndACancelEmptiesTheField) {
  form.SetUp("sales", 41);
  form.CheckBox_ChangeName.UserCheck(true);
  form.Sbtn_BackupFName.Enabled = true;
  struct Case {
    Button& button;
    Edit& edit;
    const char *filter, *initial;
  };
  const Case cases[] = {
      {form.Sbtn_BackupFName, form.Edit_BackupFName, "Backupﾌｧｲﾙ(*.bak)|*.bak|全てのﾌｧｲﾙ(*.*)|*.*",
       ""},
      {form.SBtn_DatabaseFName, form.Edit_DatabaseFName,
       "ﾃﾞｰﾀﾍﾞｰｽ･ﾌｧｲﾙ(*.mdf)|*.mdf|全てのﾌｧｲﾙ(*.*)|*.*", "C:\\sales.mdf"},
      {form.SBtn_LogFName, form.Edit_LogFName, "ﾛｸﾞ･ﾌｧｲﾙ(*.ldf)|*.ldf|全てのﾌｧｲﾙ(*.*)|*.*",
       "C:\\sales.ldf"},
  };
  for (const Case& c : cases) {
    fake.dialogs.paths = {"C:\\chosen"};
    c.button.UserClick();
    EXPECT_EQ(fake.dialogs.choices.back().filter, c.filter);
    EXPECT_EQ(fake.dialogs.choices.back().initial_name, c.initial);
    EXPECT_EQ(c.edit.Text(), "C:\\chosen");
    c.button.UserClick();
    EXPECT_EQ(c.edit.Text(), "");
  }
}

}  // namespace
}  // namespace dbkeeper
