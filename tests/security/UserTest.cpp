#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "security/Unit_User.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::TextFields;
using Texts = std::vector<std::string>;

class UserTest : public ::testing::Test, protected testing::WorkbenchFixture {
 protected:
  UserTest() {
    connection.Answer("select name from master.dbo.syslogins",
                      {TextFields({"name"}), {{"sa"}, {"kato"}, {"a]b"}}});
    connection.Answer("sysusers",
                      {TextFields({"uid", "name", "createdate", "updatedate", "hasdbaccess"}),
                       {{"5", "kato", "", "", "1"}}});
    form.SetUp("sales");
    form.Open();
  }
  void Press(int login) {
    connection.statements.clear();
    form.CmbBox_Login.UserSelect(login);
    form.SBtn_Update.UserClick();
  }

  TForm_User form{workbench};
};

TEST_F(UserTest, OpensWithTheServersLoginsAndNoneOfThemChosen) {
  EXPECT_EQ(connection.statements, Texts{"select name from master.dbo.syslogins"});
  EXPECT_EQ(form.Caption(), "Userの設定");
  EXPECT_EQ(form.Edit_Database.EditLabel.Caption(), "Database :");
  EXPECT_EQ(form.Edit_Database.Text(), "sales");
  EXPECT_EQ(form.CmbBox_Login.EditLabel.Caption(), "Login :");
  EXPECT_EQ(form.CmbBox_Login.Items.All(), (Texts{"sa", "kato", "a]b"}));
  EXPECT_EQ(form.CmbBox_Login.Text(), "");
  EXPECT_EQ(form.Lbl_Note.Caption(),
            "データベースに参加させるユーザーとして\r指定できるのは、あらかじめ\r"
            "[Security]->[Login]に追加してある\r「Login」だけです。");
  EXPECT_EQ(form.SBtn_Update.Caption(), "OK");
  EXPECT_EQ(form.Sbtn_Cancel.Caption(), "Cancel");
  Press(1);
  form.SetUp("stock");
  EXPECT_EQ(form.CmbBox_Login.Items.Count(), 3u);
  EXPECT_EQ(form.CmbBox_Login.ItemIndex(), -1);
}

TEST_F(UserTest, AnEmptyFieldIsInvalid) {
  form.SBtn_Update.UserClick();
  form.CmbBox_Login.UserSelect(1);
  form.Edit_Database.UserType("");
  form.SBtn_Update.UserClick();
  EXPECT_EQ(fake.dialogs.messages, (Texts{"入力内容が不正", "入力内容が不正"}));
  EXPECT_TRUE(form.Visible);
}

TEST_F(UserTest, TheLoginBecomesAUserOfItsName) {
  Press(1);
  EXPECT_EQ(connection.statements,
            (Texts{"use [sales]", "EXEC sp_grantdbaccess [kato], [kato]",
                   "use [sales]\r\nselect * from sysusers where(issqlrole <> 1)and(hasdbaccess = "
                   "1)"}));
  EXPECT_EQ(status.SimpleText(), " >EXEC sp_grantdbaccess [kato], [kato]    (Use sales)");
  EXPECT_EQ(list.Items().at(0).SubItem(0), "kato");
  EXPECT_EQ(form.Edit_Database.Text(), "");
  EXPECT_FALSE(form.Visible);
}

TEST_F(UserTest, AFailureAtAnyStatementKeepsTheDialog) {
  for (const char* failing : {"use [sales]", "sp_grantdbaccess", "issqlrole"}) {
    form.SetUp("sales");
    connection.Fail(failing, "no");
    EXPECT_THROW(Press(2), ServerError) << failing;
    EXPECT_TRUE(form.Visible);
    EXPECT_EQ(form.Edit_Database.Text(), "sales");
    EXPECT_EQ(form.CmbBox_Login.Text(), "a]b");
    connection.Answer(failing, {});
  }
  form.Sbtn_Cancel.UserClick();
  EXPECT_FALSE(form.Visible);
}

}  // namespace
}  // namespace dbkeeper
