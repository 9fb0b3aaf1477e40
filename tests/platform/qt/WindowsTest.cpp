#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

#include "platform/qt/tour/Chapters.h"
#include "platform/qt/tour/Hands.h"
#include "tests/platform/qt/RealWindows.h"

namespace dbkeeper::testing {
namespace {

using namespace qt::tour;

void ExpectLogin() { Require(IsShown("FormLogin"), "the dialog is not open"); }
void ExpectNoLogin() { Require(!IsShown("FormLogin"), "the dialog is still open"); }

Steps OpenLogin() {
  return {
      {"menu", [] { ClickNode("TreeView", {"SQL Server"}, Press::kRight); }, [] { OpenMenu(); }},
      {"dialog", [] { ChooseItem("接続 ..."); }, ExpectLogin},
  };
}

Steps operator+(Steps first, const Steps& then) {
  first.insert(first.end(), then.begin(), then.end());
  return first;
}

TEST_F(RealWindows, ConnectingListingAndDisconnectingByMouse) {
  Run(ConnectSteps() + DatabaseSteps() + DisconnectSteps());
  EXPECT_EQ(connection.opened.size(), 1U);
}

TEST_F(RealWindows, EscCancelsTheDialogAndEnterConnects) {
  Run(OpenLogin() + Steps{{"esc", [] { PressKey(Qt::Key_Escape); }, ExpectNoLogin}} + OpenLogin() +
      Steps{{"enter",
             [] {
               TypeInto("Edit_loginame", "sa");
               PressKey(Qt::Key_Return);
             },
             ExpectNoLogin}});
  ASSERT_EQ(connection.opened.size(), 1U);
  EXPECT_NE(connection.opened[0].find("User ID=sa;"), std::string::npos);
}

TEST_F(RealWindows, TabGoesThroughTheDialogInTheOrderOfItsControls) {
  const auto expect_focus = [](const char* name) {
    return [name] { Require(Find(name).hasFocus(), std::string(name) + " has not the focus"); };
  };
  const auto tab = [] { PressKey(Qt::Key_Tab); };
  Run(OpenLogin() + Steps{
                        {"first", [] {}, expect_focus("Edit_loginame")},
                        {"second", tab, expect_focus("Edit_passwd")},
                        {"third", tab, expect_focus("ComboBox_SQL_Server")},
                        {"fourth", tab, expect_focus("CheckBox_Windows")},
                        {"fifth", tab, expect_focus("SBtn_Update")},
                        {"sixth", tab, expect_focus("Sbtn_Cancel")},
                        {"closed", [] { PressKey(Qt::Key_Space); }, ExpectNoLogin},
                    });
}

TEST_F(RealWindows, AFailedLoginIsShownAndTheDialogStaysWithItsInputs) {
  connection.open_failure =
      ServerMessage{.number = 18456, .text = "Login failed for user 'sa'.\r\n(18456)"};
  Run(OpenLogin() + Steps{
                        {"refused",
                         [] {
                           TypeInto("Edit_loginame", "sa");
                           Click("SBtn_Update");
                         },
                         [] { RequireEqual(BoxText(), "Login failed for user 'sa'.\n(18456)"); }},
                        {"still open", [] { PressKey(Qt::Key_Return); },
                         [] {
                           ExpectLogin();
                           RequireEqual(qt::tour::FindA<QLineEdit>("Edit_loginame").text(), "sa");
                         }},
                        {"closed", [] { PressKey(Qt::Key_Escape); }, ExpectNoLogin},
                    });
}

// Counts the times that a widget is painted.
class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return QObject::eventFilter(watched, event);
  }
  int paints = 0;
};

TEST_F(RealWindows, ChoosersTakePathsOnTheServersMachineAsTheyAreTyped) {
  std::optional<std::string> chosen;
  using Open = std::function<std::optional<std::string>()>;
  const FileChoice choice = {"*.bak|*.bak", "", ".bak"};
  const Open open = [&] { return dialogs.OpenFile(choice); };
  const Open save = [&] { return dialogs.SaveFile(choice); };
  const Open folder_of = [&] { return dialogs.ChooseFolder(); };
  const std::string here = folder.Path().string();
  const struct {
    Open open;
    std::string typed, chosen;
  } cases[] = {
      {open, "D:\\data\\a", "D:\\data\\a"},
      {save, "\\\\SV02\\backup\\a.bak", "\\\\SV02\\backup\\a.bak"},
      {folder_of, "C:\\MSSQL\\Data", "C:\\MSSQL\\Data"},
      {open, here + "/new", here + "/new.bak"},
      {folder_of, here, here},
  };
  Steps steps;
  for (const auto& c : cases) {
    steps.push_back({"chooser",
                     [&chosen, open_it = c.open] {
                       chosen.reset();
                       chosen = open_it();
                     },
                     [] { Find("FileChooser"); }});
    steps.push_back(
        {"typed",
         [typed = c.typed] {
           TypeInto("fileNameEdit", QString::fromStdString(typed));
           PressKey(Qt::Key_Return);
         },
         [&chosen, wanted = c.chosen] { Require(chosen == wanted, chosen.value_or("nothing")); }});
  }
  Run(std::move(steps));
}

TEST_F(RealWindows, TheStatusBarIsPaintedBeforeAStatementGoesOut) {
  app.Start();
  windows.Show(app.FormMain);
  QApplication::processEvents();
  PaintCounter counter;
  FindA<QStatusBar>("StatusBar1").findChild<QLabel*>()->installEventFilter(&counter);
  app.FormMain.StatusBar1.SimpleText = " *";
  {
    // No turn of the event loop in here.
    const BusyScope busy(windows);
    EXPECT_GT(counter.paints, 0);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  }
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(RealWindows, WhatIsTypedAndClickedWhileAStatementRunsIsDropped) {
  app.Start();
  windows.Show(app.FormExecSQL);
  QWidget& window = windows.WindowOf(app.FormExecSQL);
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  auto& editor = FindA<QPlainTextEdit>("MemoSQL");
  QWidget& exec = Find("SpeedButton3");
  const auto press = [](QWidget& widget, Qt::Key key, const QString& text) {
    QApplication::postEvent(&widget, new QKeyEvent(QEvent::KeyPress, key, Qt::NoModifier, text));
    QApplication::postEvent(&widget, new QKeyEvent(QEvent::KeyRelease, key, Qt::NoModifier, text));
  };
  const auto click = [](QWidget& widget) {
    const QPointF place(5, 5);
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QApplication::postEvent(
          &widget, new QMouseEvent(type, place, widget.mapToGlobal(place), Qt::LeftButton,
                                   type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                                   Qt::NoModifier));
    }
  };
  const auto person = [&] {
    press(editor, Qt::Key_X, "x");
    click(exec);
  };
  {
    const BusyScope outer(windows);
    const BusyScope inner(windows);
    person();
  }
  QTest::qWait(50);
  EXPECT_EQ(app.FormExecSQL.MemoSQL.Text(), "");
  EXPECT_TRUE(connection.statements.empty());
  person();
  QTest::qWait(50);
  EXPECT_EQ(app.FormExecSQL.MemoSQL.Text(), "x");
  EXPECT_EQ(connection.statements.size(), 1U);
}

// A statement that asks must be answered; what was pressed before the question is no answer.
TEST_F(RealWindows, AQuestionWithinAStatementIsAnsweredByWhatComesAfterIt) {
  app.Start();
  windows.Show(app.FormMain);
  const BusyScope busy(windows);
  QTimer::singleShot(200, [] { PressKey(Qt::Key_Return); });
  EXPECT_EQ(dialogs.Ask({"?", "注意", Buttons::kOkCancel, Icon::kStop, Answer::kOk}), Answer::kOk);
}

TEST_F(RealWindows, AYesNoQuestionHasNoWayOut) {
  app.Start();
  windows.Show(app.FormMain);
  bool still_open = false;
  QTimer::singleShot(50, [&] {
    auto& box = FindA<QMessageBox>("MessageBox");
    EXPECT_FALSE(box.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    PressKey(Qt::Key_Escape);
    box.close();
    still_open = box.isVisible();
    ClickButton("はい");
  });
  EXPECT_EQ(dialogs.Ask({"?", "確認", Buttons::kYesNo, Icon::kNone, Answer::kNo}), Answer::kYes);
  EXPECT_TRUE(still_open);
}

TEST_F(RealWindows, EscIsCancelAndCtrlCCopiesTheText) {
  app.Start();
  windows.Show(app.FormMain);
  QTimer::singleShot(50, [] {
    PressKey(Qt::Key_C, Qt::ControlModifier);
    for (const QAbstractButton* button : FindA<QMessageBox>("MessageBox").buttons()) {
      EXPECT_TRUE(button->icon().isNull()) << button->text().toStdString();
    }
    PressKey(Qt::Key_Escape);
  });
  EXPECT_EQ(dialogs.Ask({"削除?", "注意", Buttons::kOkCancel, Icon::kStop, Answer::kOk}),
            Answer::kCancel);
  EXPECT_EQ(QApplication::clipboard()->text(), "削除?");
}

TEST_F(RealWindows, TheProgramIsMinimisedAsAWhole) {
  app.Start();
  windows.Show(app.FormMain);
  QWidget& main = windows.WindowOf(app.FormMain);
  QWidget& query = windows.WindowOf(app.FormExecSQL);
  main.showMinimized();
  EXPECT_FALSE(query.isVisible());
  main.showNormal();
  windows.Show(app.FormExecSQL);
  main.showMinimized();
  EXPECT_TRUE(query.isMinimized());
  main.showMaximized();
  EXPECT_FALSE(query.isMinimized());
}

}  // namespace
}  // namespace dbkeeper::testing
