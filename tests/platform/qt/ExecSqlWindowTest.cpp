// The query window itself, driven by keys, drops and an input method.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>
#include <QUrl>
#include <QWheelEvent>
#include <memory>
#include <string>

#include "platform/qt/editor/SqlEditor.h"
#include "platform/qt/forms/Windows.h"
#include "tests/query/QueryFixture.h"

namespace dbkeeper {
namespace {

using testing::PutFile;
using testing::QueryFixture;
using testing::TextFields;

class ExecSqlWindowTest : public QueryFixture {
 protected:
  ExecSqlWindowTest() : shown(qt::MakeWindow(app.FormExecSQL, app.Guard(), nullptr)) {
    connection.Answer("select", {TextFields({"id"}), {{"1"}, {"2"}}});
    shown->show();
    QApplication::processEvents();
  }

  template <class Widget>
  Widget& Get(const char* name) {
    return *shown->findChild<Widget*>(name);
  }
  void Type(const std::string& text) { QTest::keyClicks(&Editor(), QString::fromStdString(text)); }
  qt::SqlEditor& Editor() { return dynamic_cast<qt::SqlEditor&>(Get<QPlainTextEdit>("MemoSQL")); }

  std::unique_ptr<QWidget> shown;
};

TEST_F(ExecSqlWindowTest, KeysRunTheText) {
  Type("select 1");
  QTest::keyClick(shown.get(), Qt::Key_F5);
  EXPECT_EQ(connection.statements.back(), "select 1");
  EXPECT_EQ(Get<QPushButton>("Sbtn_Select").text(), "Close");
  EXPECT_TRUE(Get<QPushButton>("Sbtn_Select").isChecked());
  EXPECT_EQ(Get<QTableView>("DBGrid1").model()->rowCount(), 2);
  QTest::keyClick(shown.get(), Qt::Key_E, Qt::ControlModifier);
  EXPECT_EQ(connection.statements.size(), 2U);
  EXPECT_EQ(shown->windowTitle(), "RowsAffected : -1");
}

// A blank after a click on "Exec" goes into the text, and runs nothing again.
TEST_F(ExecSqlWindowTest, NoButtonOfTheToolBarTakesTheKeyboard) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(shown.get()));
  Type("select 1");
  for (const QAbstractButton* button : shown->findChildren<QAbstractButton*>()) {
    if (button->objectName().isEmpty() || button->window() != shown.get()) continue;
    EXPECT_EQ(button->focusPolicy(), Qt::NoFocus) << button->objectName().toStdString();
  }
  QTest::mouseClick(&Get<QPushButton>("SpeedButton3"), Qt::LeftButton);
  QTest::keyClick(shown->focusWidget(), Qt::Key_Space);
  EXPECT_EQ(connection.statements.size(), 1U);
  EXPECT_EQ(window.MemoSQL.Text(), "select 1 ");
}

TEST_F(ExecSqlWindowTest, TheWheelTurnsNoClosedBox) {
  window.ComboBox_DatabaseName.Items.Assign({"master", "sales"});
  window.ComboBox_DatabaseName.SetItemIndex(0);
  auto& box = Get<QComboBox>("ComboBox_DatabaseName");
  QWheelEvent wheel(QPointF(5, 5), box.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(&box, &wheel);
  EXPECT_EQ(window.ComboBox_DatabaseName.Text(), "master");
  EXPECT_TRUE(connection.statements.empty());
}

// Whatever loses the keyboard by being disabled or hidden, no box gets it that a key would change.
TEST_F(ExecSqlWindowTest, TheKeyboardNeverFallsOnABox) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(shown.get()));
  window.Panel_Template.Visible = true;
  window.Panel_EasySQL.Visible = true;
  struct Case {
    const char* focused;
    Control& control;
    bool hides;
  };
  const Case cases[] = {{"CmbBox_Template", window.Panel_Template, true},
                        {"Fne_EasySQL_Top", window.Panel_EasySQL, true},
                        {"DBGrid1", window.DBGrid1, false},
                        {"MemoSQL", window.MemoSQL, false}};
  for (const Case& c : cases) {
    Get<QWidget>(c.focused).setFocus();
    (c.hides ? c.control.Visible : c.control.Enabled) = false;
    const QWidget* const focused = shown->focusWidget();
    EXPECT_EQ(qobject_cast<const QComboBox*>(focused), nullptr) << c.focused;
    EXPECT_NE(focused, &Get<QWidget>(c.focused)) << c.focused;
    (c.hides ? c.control.Visible : c.control.Enabled) = true;
  }
}

TEST_F(ExecSqlWindowTest, AnInputMethodComposesUndisturbed) {
  Type("a");
  const auto send = [this](const QString& composing, const QString& done) {
    QInputMethodEvent event(composing, {});
    event.setCommitString(done);
    QApplication::sendEvent(&Editor(), &event);
  };
  send("にほ", "");
  EXPECT_EQ(window.MemoSQL.Text(), "a");
  QTest::keyClick(&Editor(), Qt::Key_Backtab);  // belongs to the composition
  EXPECT_EQ(Editor().textCursor().block().layout()->preeditAreaText(), "にほ");
  send("", "日本");
  EXPECT_EQ(window.MemoSQL.Text(), "a日本");
}

TEST_F(ExecSqlWindowTest, TabIndentsTheSelectedLinesAsOneStep) {
  window.MemoSQL.Text = std::string("a\r\nb\r\nc");
  QTest::keyClick(&Editor(), Qt::Key_Down, Qt::ShiftModifier);
  QTest::keyClick(&Editor(), Qt::Key_Down, Qt::ShiftModifier);
  QTest::keyClick(&Editor(), Qt::Key_Tab);
  EXPECT_EQ(window.MemoSQL.Text(), "\ta\r\n\tb\r\nc");
  QTest::keyClick(&Editor(), Qt::Key_Backtab);
  EXPECT_EQ(window.MemoSQL.Text(), "a\r\nb\r\nc");
  QTest::keySequence(&Editor(), QKeySequence::Undo);
  EXPECT_EQ(window.MemoSQL.Text(), "\ta\r\n\tb\r\nc");
}

TEST_F(ExecSqlWindowTest, WhatTheProgramPutInCanBeUndone) {
  Type("typed");
  window.MemoSQL.Text = std::string("built");
  QTest::keySequence(&Editor(), QKeySequence::Undo);
  EXPECT_EQ(window.MemoSQL.Text(), "typed");
}

TEST_F(ExecSqlWindowTest, EveryCharacterOfTheEditorReachesTheServer) {
  const std::string text = "select '\u00A0\u3000髙①～😀', 'ﾃｽﾄ'\r\n\tgo";
  window.MemoSQL.Text = text;
  Type(" ");
  EXPECT_EQ(window.MemoSQL.Text(), " " + text);
}

TEST_F(ExecSqlWindowTest, FindGoesRoundAndEscapeReturnsToTheEditor) {
  window.MemoSQL.Text = std::string("select x\r\nfrom X");
  QTest::keyClick(shown.get(), Qt::Key_F, Qt::ControlModifier);
  auto& text = Get<QLineEdit>("FindBar_Text");
  ASSERT_TRUE(text.isVisible());
  QTest::keyClicks(&text, "x");
  QTest::keyClick(&text, Qt::Key_Return);
  EXPECT_EQ(Editor().textCursor().selectionStart(), 7);
  QTest::keyClick(&text, Qt::Key_Return);
  EXPECT_EQ(Editor().textCursor().selectionStart(), 14);
  QTest::keyClick(&text, Qt::Key_Return);
  EXPECT_EQ(Editor().textCursor().selectionStart(), 7);
  QTest::keyClick(&text, Qt::Key_Escape);
  EXPECT_FALSE(text.isVisible());
}

TEST_F(ExecSqlWindowTest, FilesDroppedAnywhereAreOpened) {
  PutFile(folder / "s.sql", "/* COM01:one */\r\na");
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QString::fromStdString((folder / "s.sql").string()))});
  for (QWidget* target : {shown.get(), Editor().viewport()}) {
    window.MemoSQL.Text = std::string("old");
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    EXPECT_EQ(window.MemoSQL.Text(), "a");
  }
  EXPECT_TRUE(Get<QFrame>("Panel_SQL_CmdSet").isVisible());
}

TEST_F(ExecSqlWindowTest, PanesFollowTheirButtons) {
  const struct {
    const char* button;
    const char* pane;
  } cases[] = {{"Sbtn_EasySQL", "Panel_EasySQL"},
               {"Sbtn_Template", "Panel_Template"},
               {"Sbtn_ServerMessage", "MemoServerMessage"}};
  for (const auto& c : cases) {
    EXPECT_FALSE(Get<QWidget>(c.pane).isVisible()) << c.pane;
    QTest::mouseClick(&Get<QPushButton>(c.button), Qt::LeftButton);
    EXPECT_TRUE(Get<QWidget>(c.pane).isVisible()) << c.pane;
  }
}

TEST_F(ExecSqlWindowTest, TheNewestMessageIsInSight) {
  QTest::mouseClick(&Get<QPushButton>("Sbtn_ServerMessage"), Qt::LeftButton);
  auto& said = Get<QPlainTextEdit>("MemoServerMessage");
  for (int run = 0; run < 10; ++run) QTest::keyClick(shown.get(), Qt::Key_E, Qt::ControlModifier);
  EXPECT_GT(said.verticalScrollBar()->maximum(), 0);
  EXPECT_EQ(said.verticalScrollBar()->value(), said.verticalScrollBar()->maximum());
}

TEST_F(ExecSqlWindowTest, ClosingTheWindowClosesTheForm) {
  shown->close();
  EXPECT_FALSE(window.Visible);
  EXPECT_FALSE(shown->isVisible());
}

}  // namespace
}  // namespace dbkeeper
