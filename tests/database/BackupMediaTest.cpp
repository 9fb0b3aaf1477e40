#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::TextFields;

using Texts = std::vector<std::string>;

class BackupMediaTest : public AppFixture {
 protected:
  BackupMediaTest() {
    connection.Answer("sysdevices", {TextFields({"name", "phyname"}), {{"dev", "C:\\dev.bak"}}});
    form.Open();
  }
  void Press() {
    app.Guard().Run([this] { form.SBtn_Update.UserClick(); });
  }

  TForm_BackupMedia& form = app.Form_BackupMedia;
};

TEST_F(BackupMediaTest, AnEmptyFieldDoesNothingAtAll) {
  for (const auto& [name, file] : {std::pair{"", "C:\\a.bak"}, std::pair{"dev", ""}}) {
    form.Edit_Name.Text = std::string(name);
    form.Edit_FileName.Text = std::string(file);
    Press();
    EXPECT_EQ(connection.statements, Texts{});
    EXPECT_TRUE(form.Visible);
  }
}

TEST_F(BackupMediaTest, AFilledFormCreatesTheDeviceRefreshesAndCloses) {
  form.Edit_Name.UserType("  ");
  fake.dialogs.paths = {"C:\\a.bak"};
  form.Button3.UserClick();
  EXPECT_EQ(fake.dialogs.choices.back().filter, "ﾊﾞｯｸｱｯﾌﾟﾌｧｲﾙ(*.bak)|*.bak");
  EXPECT_EQ(fake.dialogs.choices.back().default_extension, ".bak");
  form.Button3.UserClick();  // cancelled: the text stays
  Press();
  EXPECT_EQ(connection.statements,
            (Texts{"USE master\r\nexec sp_addumpdevice 'disk', [  ], 'C:\\a.bak'",
                   "select * from master.dbo.sysdevices where status=16"}));
  EXPECT_EQ(app.Session.CurrentDatabase(), "master");
  EXPECT_EQ(app.FormMain.ListViewMain.Items().at(0).SubItem(0), "dev");
  EXPECT_FALSE(form.Visible);
  EXPECT_EQ(form.Edit_Name.Text(), "");
  EXPECT_EQ(form.Edit_FileName.Text(), "");
}

TEST_F(BackupMediaTest, AFailureKeepsTheDialogAndItsTexts) {
  connection.Fail("sp_addumpdevice", "Device exists.");
  form.Edit_Name.UserType("dev");
  form.Edit_FileName.UserType("C:\\a.bak");
  Press();
  EXPECT_EQ(fake.dialogs.errors, Texts{"Device exists."});
  EXPECT_TRUE(form.Visible);
  EXPECT_EQ(form.Edit_Name.Text(), "dev");
  EXPECT_EQ(form.Edit_FileName.Text(), "C:\\a.bak");
}

}  // namespace
}  // namespace dbkeeper
