#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "security/Unit_Login_Property.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::TextFields;
using Texts = std::vector<std::string>;

constexpr const char* kLogins = "select * from master.dbo.syslogins";

class LoginPropertyTest : public ::testing::Test, protected testing::WorkbenchFixture {
 protected:
  LoginPropertyTest() {
    connection.Answer("syslogins",
                      {TextFields({"name", "createdate", "updatedate", "language", "dbname",
                                   "hasaccess", "isntname", "sysadmin", "serveradmin"}),
                       {{"kato", "", "", "", "master", "1", "0", "0", "0"}}});
  }
  void OpenNew() {
    form.SetUpNew();
    form.Open();
  }
  void OpenExisting() {
    form.SetUpExisting("kato");
    form.Open();
  }
  void Type(const std::string& name, const std::string& password, const std::string& again) {
    form.Edit_loginame.UserType(name);
    form.Edit_passwd1.UserType(password);
    form.Edit_passwd2.UserType(again);
  }

  TForm_Login_Property form{workbench};
};

TEST_F(LoginPropertyTest, SaysWhatItIs) {
  EXPECT_EQ(form.Caption(), "ログインの設定");
  EXPECT_EQ(form.Edit_loginame.EditLabel.Caption(), "loginame :");
  EXPECT_EQ(form.Edit_passwd1.EditLabel.Caption(), "passwd :");
  EXPECT_EQ(form.Edit_passwd2.EditLabel.Caption(), "passwd :");
  EXPECT_EQ(form.CheckBox_Windows.Caption(), "Windows認証 :");
  EXPECT_EQ(form.Lbl_Description.Caption(), " ");
  EXPECT_EQ(form.SBtn_Update.Caption(), "適用");
  EXPECT_EQ(form.Sbtn_Cancel.Caption(), "Cancel");
}

TEST_F(LoginPropertyTest, TheFirstRuleThatFitsMakesTheStatement) {
  const std::string invalid;
  const struct {
    bool existing;
    const char* name;
    const char* password;
    const char* again;
    bool windows;
    std::string statement;  // empty: it is told that the input is invalid
  } cases[] = {
      {false, "suzuki", "pw", "pw", false, "EXEC sp_addlogin [suzuki], 'pw'"},
      {false, "a]b'c", "it's", "it's", false, "EXEC sp_addlogin [a]b'c], 'it's'"},
      {true, "", "pw", "pw", false, "EXEC sp_password NULL,'pw', [kato]"},
      {false, "PC01\\suzuki", "", "", true, "EXEC sp_grantlogin @loginame = [PC01\\suzuki]"},
      {false, "", "", "", true, "EXEC sp_grantlogin @loginame = []"},
      {true, "", "", "", true, "EXEC sp_grantlogin @loginame = [kato]"},
      {false, "", "pw", "pw", false, invalid},
      {false, "suzuki", "pw", "Pw", false, invalid},
      {false, "suzuki", "pw", "", false, invalid},
      {false, "suzuki", "", "", false, invalid},
      {true, "", "", "", false, invalid},
      {true, "", "", "pw", false, invalid},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.statement + "|" + each.name + "|" + each.password);
    each.existing ? OpenExisting() : OpenNew();
    connection.statements.clear();
    fake.dialogs.messages.clear();
    Type(each.name, each.password, each.again);
    form.CheckBox_Windows.UserCheck(each.windows);
    form.SBtn_Update.UserClick();
    if (each.statement.empty()) {
      EXPECT_EQ(fake.dialogs.messages, Texts{"入力内容が不正"});
      EXPECT_EQ(connection.statements, Texts{});
      EXPECT_TRUE(form.Visible);
      form.Close();
      continue;
    }
    EXPECT_EQ(connection.statements, (Texts{each.statement, kLogins}));
    EXPECT_EQ(fake.dialogs.messages, Texts{});
    EXPECT_EQ(status.SimpleText(), " >" + each.statement);
    EXPECT_EQ(list.Items().at(0).SubItem(0), "kato");
    EXPECT_EQ(form.Edit_loginame.Text(), "");
    EXPECT_FALSE(form.Visible);
  }
}

TEST_F(LoginPropertyTest, AWindowsAccountNeedsNoPasswordAndShowsHowItIsWritten) {
  OpenNew();
  Type("suzuki", "pw", "pw");
  form.CheckBox_Windows.UserCheck(true);
  for (const Edit* edit : {&form.Edit_passwd1, &form.Edit_passwd2}) {
    EXPECT_EQ(edit->Text(), "");
    EXPECT_FALSE(edit->Visible);
    EXPECT_FALSE(edit->EditLabel.Visible);
  }
  EXPECT_EQ(form.Lbl_Description.Caption(),
            "記述例:\r  Domainname\\username\r  Domainname\\Groupname\r  PCName\\Username\r  "
            "PCName\\Groupname\r  Username");
  form.CheckBox_Windows.UserCheck(false);
  for (const Edit* edit : {&form.Edit_passwd1, &form.Edit_passwd2}) {
    EXPECT_TRUE(edit->Visible);
    EXPECT_TRUE(edit->EditLabel.Visible);
  }
  EXPECT_EQ(form.Lbl_Description.Caption(), " ");
  EXPECT_EQ(form.Edit_loginame.Text(), "suzuki");
}

TEST_F(LoginPropertyTest, OpensForANewLoginOrLockedForOneThatExists) {
  OpenNew();
  form.CheckBox_Windows.UserCheck(true);
  form.Close();
  OpenExisting();
  EXPECT_EQ(form.Edit_loginame.Text(), "kato");
  EXPECT_TRUE(form.Edit_loginame.ReadOnly);
  EXPECT_EQ(form.Edit_loginame.Color(), Color::kButtonFace);
  EXPECT_FALSE(form.CheckBox_Windows.Checked);
  EXPECT_TRUE(form.Edit_passwd1.Visible);
  form.Sbtn_Cancel.UserClick();
  EXPECT_FALSE(form.Visible);
  OpenNew();
  EXPECT_EQ(form.Edit_loginame.Text(), "");
  EXPECT_FALSE(form.Edit_loginame.ReadOnly);
  EXPECT_EQ(form.Edit_loginame.Color(), Color::kWindow);
  // What a new login is stays chosen from one to the next.
  form.CheckBox_Windows.UserCheck(true);
  form.Close();
  OpenNew();
  EXPECT_TRUE(form.CheckBox_Windows.Checked);
  EXPECT_FALSE(form.Edit_passwd1.Visible);
}

TEST_F(LoginPropertyTest, NoPasswordOutlivesTheWindow) {
  const auto wiped = [this] {
    return form.Edit_passwd1.Text().empty() && form.Edit_passwd2.Text().empty();
  };
  OpenNew();
  Type("suzuki", "pw", "pw");
  form.Sbtn_Cancel.UserClick();
  EXPECT_TRUE(wiped());
  Type("suzuki", "pw", "pw");  // while it is closed
  form.Open();
  EXPECT_TRUE(wiped());
  Type("suzuki", "pw", "pw");
  form.SBtn_Update.UserClick();
  EXPECT_TRUE(wiped());
}

TEST_F(LoginPropertyTest, AFailureKeepsTheDialogAndItsFieldsAndTheLogHoldsNothingOfThePassword) {
  connection.Fail("sp_addlogin", "Line 1: Incorrect syntax near 's secret'.");
  OpenNew();
  Type("suzuki", "it's secret", "it's secret");
  try {
    form.SBtn_Update.UserClick();
    ADD_FAILURE() << "no error";
  } catch (const ServerError& error) {
    EXPECT_STREQ(error.what(), "Line 1: Incorrect syntax near 's secret'.");
    EXPECT_EQ(error.Number(), 50000);
    EXPECT_EQ(error.LogText(), "Line 1: Incorrect syntax near '***'.");
  }
  EXPECT_EQ(connection.statements, Texts{"EXEC sp_addlogin [suzuki], 'it's secret'"});
  EXPECT_TRUE(form.Visible);
  EXPECT_EQ(form.Edit_loginame.Text(), "suzuki");
  EXPECT_EQ(form.Edit_passwd1.Text(), "it's secret");
  EXPECT_EQ(status.SimpleText(), " *");
}

}  // namespace
}  // namespace dbkeeper
