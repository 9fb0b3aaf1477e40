// The dialogs of logins, users, roles and rights under real keys.
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTest>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "controls/ActionGuard.h"
#include "platform/qt/forms/Windows.h"
#include "security/Unit_Login_Property.h"
#include "security/Unit_Privileges.h"
#include "security/Unit_Role.h"
#include "security/Unit_User.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper::testing {
namespace {

using Texts = std::vector<std::string>;

class SecurityWindows : public ::testing::Test, protected WorkbenchFixture {
 protected:
  SecurityWindows() {
    connection.Answer("select name from master.dbo.syslogins",
                      {TextFields({"name"}), {{"sa"}, {"kato"}}});
    connection.Answer("sysusers",
                      {TextFields({"uid", "name", "createdate", "updatedate", "hasdbaccess"}),
                       {{"5", "kato", "", "", "1"}, {"6", "mori", "", "", "1"}}});
    connection.Answer("sp_helprolemember", {TextFields({"DbRole", "MemberName"}), {{"r", "mori"}}});
    connection.Answer("sysprotects", {TextFields({"id", "name", "uid", "action", "protecttype"}),
                                      {{"77", "items", "5", "193", "205"}}});
  }

  template <class TheForm>
  std::unique_ptr<QWidget> Show(TheForm& form) {
    auto window = qt::MakeWindow(form, guard, nullptr);
    form.Open();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    return window;
  }
  template <class Widget = QWidget>
  static Widget& Child(const QWidget& window, const char* name) {
    auto* child = window.findChild<Widget*>(name);
    if (child == nullptr) throw std::out_of_range(name);
    return *child;
  }
  // Where the keyboard is: a widget's name, or that of the group that it is in.
  static std::string Focused() {
    const QWidget* at = QApplication::focusWidget();
    while (at != nullptr && at->objectName().isEmpty()) at = at->parentWidget();
    return at == nullptr ? "" : at->objectName().toStdString();
  }
  // The stops of the Tab key from the first one until it is there again.
  static Texts Stops() {
    Texts stops = {Focused()};
    for (int i = 0; i < 30; ++i) {
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      if (Focused() == stops.front()) return stops;
      if (Focused() != stops.back()) stops.push_back(Focused());
    }
    return stops;
  }
  static void TabTo(const std::string& name) {
    for (int i = 0; i < 30 && Focused() != name; ++i) {
      QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    ASSERT_EQ(Focused(), name);
  }
  static void Press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
  static void Type(const char* text) { QTest::keyClicks(QApplication::focusWidget(), text); }

  ActionGuard guard{[](const std::exception& error) { ADD_FAILURE() << error.what(); }};
};

TEST_F(SecurityWindows, PasswordsAreMaskedAndGoneWithTheWindow) {
  TForm_Login_Property form(workbench);
  form.SetUpNew();
  const auto window = Show(form);
  EXPECT_EQ(Stops(), (Texts{"Edit_loginame", "Edit_passwd1", "Edit_passwd2", "CheckBox_Windows",
                            "SBtn_Update", "Sbtn_Cancel"}));
  TabTo("Edit_passwd1");
  Type("secret");
  auto& field = Child<QLineEdit>(*window, "Edit_passwd1");
  EXPECT_EQ(field.displayText(), "******");
  EXPECT_NE(field.echoMode(), QLineEdit::Normal);
  field.selectAll();
  field.copy();
  QTest::keyClick(&field, Qt::Key_Escape);
  EXPECT_FALSE(window->isVisible());
  EXPECT_EQ(field.text(), "");
  EXPECT_FALSE(field.isUndoAvailable());
}

TEST_F(SecurityWindows, AUserIsChosenByKeys) {
  TForm_User form(workbench);
  form.SetUp("sales");
  const auto window = Show(form);
  EXPECT_EQ(Stops(), (Texts{"Edit_Database", "CmbBox_Login", "SBtn_Update", "Sbtn_Cancel"}));
  EXPECT_EQ(window->minimumSize(), window->maximumSize());
  TabTo("CmbBox_Login");
  EXPECT_EQ(Child<QComboBox>(*window, "CmbBox_Login").currentIndex(), -1);
  Press(Qt::Key_K);
  EXPECT_EQ(form.CmbBox_Login.Text(), "kato");
  Press(Qt::Key_Return);
  EXPECT_EQ(connection.statements.at(2), "EXEC sp_grantdbaccess [kato], [kato]");
  EXPECT_FALSE(window->isVisible());
}

}  // namespace
}  // namespace dbkeeper::testing
