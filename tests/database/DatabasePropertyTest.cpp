#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;

using Texts = std::vector<std::string>;

class DatabasePropertyTest : public AppFixture {
 protected:
  DatabasePropertyTest() {
    app.Start();
    Connect();
    ClickPath({"Database"});
    connection.statements.clear();
  }

  // Opens the dialog by its menu item and lets the operator work in it.
  void Use(const char* item, std::function<void()> work) {
    fake.windows.modal.emplace_back([this, work = std::move(work)](Form&) {
      app.Guard().Run(work);
      closed = !form.Visible;
    });
    Choose(app.FormMain.Menu("PopupMenu_Databases"), item);
  }
  void Create(std::function<void()> work) {
    Use("PopupMenu_Databases_Create", [this, work = std::move(work)] {
      form.Edit_DatabaseName.UserType("sales");
      form.Edit_DataFileName.UserType("C:\\d.mdf");
      form.Edit_LogFileName.UserType("C:\\l.ldf");
      work();
      form.SBtn_Update.UserClick();
    });
  }

  TForm_Database_Property& form = app.Form_Database_Property;
  bool closed = false;
};

// What one file's size and growth controls hold.
struct Sizing {
  const char* init_size;
  bool auto_growth;
  int growth_type;
  const char* file_growth;
  const char* max_size;
};

TEST_F(DatabasePropertyTest, CreateStatementFollowsEveryGrowthSetting) {
  struct Case {
    const char* title;
    Sizing sizing;
    std::string data;  // from the data file's size on
    std::string log;
  };
  const Case cases[] = {
      {"as the dialog opens",
       {"10", true, 0, "10", "0"},
       "10,\r\n       filegrowth = 10%)\r\n",
       "10,\r\n       filegrowth = 10%)\r\n"},
      {"megabytes end the log without a line end",
       {"3", true, 1, "5", "0"},
       "3,\r\n       filegrowth = 5)\r\n",
       "3,\r\n       filegrowth = 5)"},
      {"a maximum",
       {"3", true, 0, "5", "1"},
       "3,\r\n       maxsize    = 1,\r\n       filegrowth = 5%)\r\n",
       "3,\r\n       maxsize    = 1,\r\n       filegrowth = 5%)\r\n"},
      {"a negative maximum is none",
       {"3", true, 1, "5", "-1"},
       "3,\r\n       filegrowth = 5)\r\n",
       "3,\r\n       filegrowth = 5)"},
      {"no growth type: no clause and no parenthesis",
       {"3", true, -1, "5", "9"},
       "3,\r\n       maxsize    = 9,\r\n",
       "3,\r\n       maxsize    = 9,\r\n"},
      {"no growth", {"3", false, 1, "5", "9"}, "3)\r\n", "3)\r\n"},
      {"ties go to the even number",
       {"2.5", true, 0, "3.5", "0.5"},
       "2,\r\n       filegrowth = 4%)\r\n",
       "2,\r\n       filegrowth = 4%)\r\n"},
      {"large numbers have no exponent",
       {"12345678901234", false, 0, "10", "0"},
       "12345678901234)\r\n",
       "12345678901234)\r\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.title);
    connection.statements.clear();
    Create([&] {
      form.Fne_Mdf_Init_Size.Text = form.Fne_Ldf_Init_Size.Text = std::string(c.sizing.init_size);
      form.CheckBox_Mdf_AutoGrowth.Checked = c.sizing.auto_growth;
      form.CheckBox_Ldf_AutoGrowth.Checked = c.sizing.auto_growth;
      form.RadioGroup_Mdf_GrowthType.ItemIndex = c.sizing.growth_type;
      form.RadioGroup_Ldf_GrowthType.ItemIndex = c.sizing.growth_type;
      form.Fne_Mdf_FileGrowth.Text = std::string(c.sizing.file_growth);
      form.Fne_Ldf_FileGrowth.Text = std::string(c.sizing.file_growth);
      form.Fne_Mdf_Max_Size.Text = std::string(c.sizing.max_size);
      form.Fne_Ldf_Max_Size.Text = std::string(c.sizing.max_size);
    });
    EXPECT_EQ(connection.statements, Texts{"create database [sales]\r\n"
                                           "    on(name       = [sales_dat],\r\n"
                                           "       filename   = 'C:\\d.mdf',\r\n"
                                           "       size       = " +
                                           c.data +
                                           "log on(name       = [sales_log],\r\n"
                                           "       filename   = 'C:\\l.ldf',\r\n"
                                           "       size       = " +
                                           c.log});
    EXPECT_TRUE(closed);
  }
}

TEST_F(DatabasePropertyTest, CreateTakesTheNodesAwayAndKeepsTheList) {
  const std::size_t rows = app.FormMain.ListViewMain.Items().size();
  Create([] {});
  EXPECT_FALSE(Node({"Database"}).HasChildren());
  EXPECT_EQ(app.FormMain.ListViewMain.Items().size(), rows);
}

TEST_F(DatabasePropertyTest, ReopeningKeepsTheSizesButEmptiesNameAndFiles) {
  Create([this] { form.Fne_Mdf_Init_Size.SetValue(77); });
  Use("PopupMenu_Databases_Create", [this] {
    EXPECT_EQ(form.Fne_Mdf_Init_Size.Text(), "77");
    for (const Edit* edit :
         {&form.Edit_DatabaseName, &form.Edit_DataFileName, &form.Edit_LogFileName}) {
      EXPECT_EQ(edit->Text(), "");
    }
  });
}

TEST_F(DatabasePropertyTest, SizeThatIsNoNumberKeepsTheDialogOpen) {
  Create([this] { form.Fne_Ldf_Max_Size.Text = std::string(); });
  EXPECT_FALSE(closed);
  EXPECT_EQ(fake.dialogs.errors.size(), 1U);
  EXPECT_EQ(connection.statements, Texts{});
}

TEST_F(DatabasePropertyTest, AttachRunsInMasterAndListsAnew) {
  Use("PopupMenu_Databases_Attach", [this] {
    EXPECT_FALSE(form.Pnl_MDF.Visible);
    EXPECT_FALSE(form.Pnl_LDF.Visible);
    EXPECT_EQ(form.SBtn_Update.Caption(), "アタッチ");
    form.Edit_DatabaseName.UserType("sales");
    form.Edit_DataFileName.UserType("C:\\d.mdf");
    form.Edit_LogFileName.UserType("C:\\l.ldf");
    form.SBtn_Update.UserClick();
  });
  EXPECT_EQ(connection.statements,
            (Texts{"use master",
                   "exec sp_attach_db @dbname    = [sales], @filename1 = N'C:\\d.mdf', "
                   "@filename2 = N'C:\\l.ldf'",
                   "select * from master.dbo.sysdatabases"}));
  EXPECT_TRUE(closed);
  EXPECT_EQ(Node({"Database"}).Children().size(), 2U);
}

TEST_F(DatabasePropertyTest, FailureKeepsDialogTreeAndTexts) {
  struct Case {
    const char *item, *statement;
  };
  for (const Case& c : {Case{"PopupMenu_Databases_Create", "create database"},
                        Case{"PopupMenu_Databases_Attach", "sp_attach_db"}}) {
    connection.Fail(c.statement, "no");
    Use(c.item, [this] {
      form.Edit_DatabaseName.UserType("sales");
      form.SBtn_Update.UserClick();
    });
    EXPECT_FALSE(closed) << c.item;
    EXPECT_EQ(fake.dialogs.errors.back(), "no");
    EXPECT_EQ(form.Edit_DatabaseName.Text(), "sales");
    EXPECT_EQ(Node({"Database"}).Children().size(), 2U);
    EXPECT_EQ(fake.windows.busy, 0);
  }
}

TEST_F(DatabasePropertyTest, FilesAreNamedAfterTheDatabaseInAFolderOrPicked) {
  Use("PopupMenu_Databases_Create", [this] {
    form.Edit_DatabaseName.UserType("sales");
    fake.dialogs.paths = {"C:\\data", "C:\\log\\", std::nullopt};
    form.Button3.UserClick();
    form.Button4.UserClick();
    EXPECT_EQ(form.Edit_DataFileName.Text(), "C:\\data\\sales_dat.mdf");
    EXPECT_EQ(form.Edit_LogFileName.Text(), "C:\\log\\sales_log.ldf");
    form.Button3.UserClick();
    EXPECT_EQ(form.Edit_DataFileName.Text(), "C:\\data\\sales_dat.mdf");
    EXPECT_EQ(fake.dialogs.choices.back().filter, "");
  });
  Use("PopupMenu_Databases_Attach", [this] {
    fake.dialogs.paths = {"C:\\a.mdf", "C:\\a.ldf", std::nullopt};
    form.Button3.UserClick();
    EXPECT_EQ(fake.dialogs.choices.back().filter, "ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ(*.mdf)|*.mdf|全てのﾌｧｲﾙ(*.*)|*.*");
    form.Button4.UserClick();
    EXPECT_EQ(fake.dialogs.choices.back().filter,
              "ﾃﾞｰﾀﾍﾞｰｽ･ﾛｸﾞﾌｧｲﾙ(*.ldf)|*.ldf|全てのﾌｧｲﾙ(*.*)|*.*");
    form.Button4.UserClick();
    EXPECT_EQ(form.Edit_DataFileName.Text(), "C:\\a.mdf");
    EXPECT_EQ(form.Edit_LogFileName.Text(), "C:\\a.ldf");
  });
}

}  // namespace
}  // namespace dbkeeper
