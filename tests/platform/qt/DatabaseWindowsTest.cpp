#include <gtest/gtest.h>

#include <QApplication>
#include <QFocusEvent>
#include <QLineEdit>
#include <QRadioButton>
#include <QTest>
#include <QWidget>
#include <memory>
#include <string>

#include "app/main/Application.h"
#include "platform/qt/forms/Windows.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper::testing {
namespace {

class DatabaseWindows : public ::testing::Test {
 protected:
  static void Show(Form& form, QWidget& window) {
    form.Open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  }
  static QWidget& Child(const QWidget& window, const char* name) {
    auto* child = window.findChild<QWidget*>(name);
    if (child == nullptr) throw std::out_of_range(name);
    return *child;
  }
  // Replaces the text of a field as a person does.
  static void Type(const QWidget& window, const char* name, const char* text) {
    auto& field = dynamic_cast<QLineEdit&>(Child(window, name));
    QTest::mouseClick(&field, Qt::LeftButton);
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&field, text);
  }

  FakeHost fake;
  FakeConnection connection;
  Application app{connection, fake.host};
};

TEST_F(DatabaseWindows, EnterInTheNameFieldRenamesTheFilesBeforeTheRestore) {
  TFormRestore& form = app.FormRestore;
  const auto window = qt::MakeWindow(form, app.Guard(), nullptr);
  form.SetUp({.database = "db",
              .file = "C:\\b.bak",
              .log_logical = "l",
              .data_logical = "d",
              .log_physical = "C:\\db.ldf",
              .data_physical = "C:\\db.mdf"});
  Show(form, *window);
  QTest::keyClick(&Child(*window, "CheckBox_ChangeName"), Qt::Key_Space);
  Type(*window, "Edit_DatabaseName", "db2");
  fake.dialogs.answers = {Answer::kOk};
  QTest::keyClick(&Child(*window, "Edit_DatabaseName"), Qt::Key_Return);
  ASSERT_FALSE(connection.statements.empty());
  EXPECT_EQ(connection.statements.back(),
            "use master\r\nrestore database [db2]\r\n   from disk = 'C:\\b.bak'\r\n"
            "   with move 'd' to '[C:\\db2.mdf]',\r\n"
            "        move 'l' to 'C:\\db2.ldf'");
  EXPECT_TRUE(form.Visible);
  QTest::keyClick(window.get(), Qt::Key_Escape);
  EXPECT_FALSE(form.Visible);
}

// The name is left when another control gets the keyboard; a menu or another window only borrows
// it.
TEST_F(DatabaseWindows, FilesAreRenamedOnceForEachNameThatWasTyped) {
  TFormRestore& form = app.FormRestore;
  const auto window = qt::MakeWindow(form, app.Guard(), nullptr);
  form.SetUp({.database = "db",
              .file = "C:\\b.bak",
              .log_logical = "l",
              .data_logical = "d",
              .log_physical = "C:\\db.ldf",
              .data_physical = "C:\\db.mdf"});
  Show(form, *window);
  QTest::keyClick(&Child(*window, "CheckBox_ChangeName"), Qt::Key_Space);
  QWidget& name = Child(*window, "Edit_DatabaseName");
  QWidget& file = Child(*window, "Edit_DatabaseFName");
  Type(*window, "Edit_DatabaseName", "db2");
  for (const Qt::FocusReason reason :
       {Qt::PopupFocusReason, Qt::ActiveWindowFocusReason, Qt::MenuBarFocusReason}) {
    QFocusEvent out(QEvent::FocusOut, reason);
    QFocusEvent in(QEvent::FocusIn, reason);
    QApplication::sendEvent(&name, &out);
    EXPECT_EQ(form.Edit_DatabaseFName.Text(), "C:\\db.mdf") << reason;
    QApplication::sendEvent(&name, &in);
  }
  for (int i = 0; i < 2; ++i) {
    file.setFocus();
    EXPECT_EQ(form.Edit_DatabaseFName.Text(), "C:\\db2.mdf");
    EXPECT_EQ(form.Edit_LogFName.Text(), "C:\\db2.ldf");
    name.setFocus();
  }
}

TEST_F(DatabaseWindows, SizesAreTypedAndGrowthIsChosenByMouse) {
  TForm_Database_Property& form = app.Form_Database_Property;
  const auto window = qt::MakeWindow(form, app.Guard(), nullptr);
  form.SetUp(DatabaseFiles::kCreate);
  Show(form, *window);
  Type(*window, "Edit_DatabaseName", "sales");
  Type(*window, "Fne_Mdf_Init_Size", "25");
  Type(*window, "Fne_Ldf_Max_Size", "300");
  const auto choices = Child(*window, "RadioGroup_Ldf_GrowthType").findChildren<QRadioButton*>();
  ASSERT_EQ(choices.size(), 2);
  QTest::mouseClick(choices[1], Qt::LeftButton, {}, QPoint(8, choices[1]->height() / 2));
  QTest::keyClick(&Child(*window, "Edit_DatabaseName"), Qt::Key_Return);
  EXPECT_EQ(connection.statements, std::vector<std::string>{"create database [sales]\r\n"
                                                            "    on(name       = [sales_dat],\r\n"
                                                            "       filename   = '',\r\n"
                                                            "       size       = 25,\r\n"
                                                            "       filegrowth = 10%)\r\n"
                                                            "log on(name       = [sales_log],\r\n"
                                                            "       filename   = '',\r\n"
                                                            "       size       = 10,\r\n"
                                                            "       maxsize    = 300,\r\n"
                                                            "       filegrowth = 10)"});
  EXPECT_FALSE(form.Visible);
}

TEST_F(DatabaseWindows, AttachingShowsNoSizes) {
  TForm_Database_Property& form = app.Form_Database_Property;
  const auto window = qt::MakeWindow(form, app.Guard(), nullptr);
  form.SetUp(DatabaseFiles::kAttach);
  Show(form, *window);
  const int height = window->height();
  EXPECT_FALSE(Child(*window, "Fne_Mdf_Init_Size").isVisible());
  QTest::keyClick(window.get(), Qt::Key_Escape);
  form.SetUp(DatabaseFiles::kCreate);
  Show(form, *window);
  EXPECT_TRUE(Child(*window, "Fne_Ldf_Max_Size").isVisible());
  EXPECT_GT(window->height(), height);
}

TEST_F(DatabaseWindows, AHalfFilledDeviceStaysOnEnter) {
  TForm_BackupMedia& form = app.Form_BackupMedia;
  const auto window = qt::MakeWindow(form, app.Guard(), nullptr);
  Show(form, *window);
  Type(*window, "Edit_Name", "dev");
  QTest::keyClick(&Child(*window, "Edit_Name"), Qt::Key_Return);
  EXPECT_TRUE(form.Visible);
  EXPECT_TRUE(connection.statements.empty());
  EXPECT_EQ(form.Edit_Name.Text(), "dev");
  EXPECT_EQ(window->focusWidget(), &Child(*window, "Edit_Name"));
}

}  // namespace
}  // namespace dbkeeper::testing
