// The numeric edit's widget, driven by keys, clipboard and an input method.
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QTest>
#include <stdexcept>
#include <string>

#include "platform/qt/binders/NumericWidget.h"

namespace dbkeeper {
namespace {

class NumericWidgetTest : public ::testing::Test {
 protected:
  NumericWidgetTest() {
    other.show();
    widget.show();
  }

  std::string Shown() const { return widget.text().toStdString(); }

  ActionGuard guard{[this](const std::exception& error) { failure = error.what(); }};
  std::string failure;
  TFnpNumericEdit edit{"", '.'};
  QLineEdit other;
  qt::NumericWidget widget{edit, guard, nullptr};
};

TEST_F(NumericWidgetTest, KeysReachTheControlAndItsTextIsShown) {
  QTest::keyClicks(&widget, "12.7x5");
  EXPECT_EQ(Shown(), "12.75");
  QTest::keyClick(&widget, Qt::Key_Left);
  QTest::keyClick(&widget, Qt::Key_Backspace);
  EXPECT_EQ(Shown(), "12.50");
  QTest::keyClick(&widget, Qt::Key_Home);
  QTest::keyClick(&widget, Qt::Key_Delete);
  EXPECT_EQ(Shown(), "2.50");
  EXPECT_EQ(widget.cursorPosition(), 0);
  QTest::keyClicks(&widget, "-");
  EXPECT_EQ(Shown(), "-2.50");
  EXPECT_EQ(edit.Value(), -2.5);
}

TEST_F(NumericWidgetTest, NoKeyOfTheToolkitsEditBreaksTheFormat) {
  edit.SetValue(1234.5);
  struct {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
  } const keys[] = {
      {Qt::Key_K, Qt::ControlModifier},
      {Qt::Key_U, Qt::ControlModifier},
      {Qt::Key_Backspace, Qt::ControlModifier},
      {Qt::Key_Delete, Qt::ControlModifier},
      {Qt::Key_Delete, Qt::ControlModifier | Qt::ShiftModifier},
      {Qt::Key_Z, Qt::ControlModifier},
      {Qt::Key_X, Qt::ControlModifier},
  };
  for (const auto& press : keys) {
    QTest::keyClick(&widget, Qt::Key_Right);
    QTest::keyClick(&widget, press.key, press.modifiers);
    EXPECT_EQ(Shown(), edit.Text());
    EXPECT_EQ(Shown().find('.'), Shown().size() - 3) << Shown();
  }
}

TEST_F(NumericWidgetTest, SelectionCutPasteAndUndoGoThroughTheControl) {
  edit.SetValue(5);
  QTest::keyClick(&widget, Qt::Key_End);
  QTest::keyClick(&widget, Qt::Key_Left, Qt::ShiftModifier);
  QTest::keyClick(&widget, Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_EQ(edit.Selection(), (TextSelection{2, 2}));
  QTest::keySequence(&widget, QKeySequence::SelectAll);
  EXPECT_EQ(edit.Selection(), (TextSelection{0, 4}));
  QTest::keySequence(&widget, QKeySequence::Cut);
  EXPECT_EQ(QApplication::clipboard()->text(), "5.00");
  EXPECT_EQ(Shown(), "0.00");
  QApplication::clipboard()->setText("1,234.56 円\n");
  QTest::keySequence(&widget, QKeySequence::Paste);
  EXPECT_EQ(Shown(), "1234.56");
  QTest::keySequence(&widget, QKeySequence::Undo);
  EXPECT_EQ(Shown(), "0.00");
}

TEST_F(NumericWidgetTest, AnInputMethodsTextPassesTheSameFilter) {
  QInputMethodEvent composing("１２", {});
  QApplication::sendEvent(&widget, &composing);
  EXPECT_EQ(Shown(), "0.00");
  QInputMethodEvent done;
  done.setCommitString("１２34");
  QApplication::sendEvent(&widget, &done);
  EXPECT_EQ(Shown(), "34.00");
  QTest::keySequence(&widget, QKeySequence::Undo);
  EXPECT_EQ(Shown(), "0.00");
  QTest::keySequence(&widget, QKeySequence::Redo);
  EXPECT_EQ(Shown(), "34.00");
}

TEST_F(NumericWidgetTest, EnteringByKeySelectsAllAndLeavingChecksTheBounds) {
  int invalid = 0;
  edit.MinValue = 1;
  edit.MaxValue = 10;
  edit.OnInvalidEntry = [&invalid] { ++invalid; };
  widget.setFocus(Qt::TabFocusReason);
  QFocusEvent in(QEvent::FocusIn, Qt::TabFocusReason);
  QApplication::sendEvent(&widget, &in);
  EXPECT_EQ(widget.selectedText(), "0.00");
  QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
  QApplication::sendEvent(&widget, &out);
  EXPECT_EQ(invalid, 1);
  edit.Text = std::string("x");
  QApplication::sendEvent(&widget, &out);
  EXPECT_NE(failure, "");
}

}  // namespace
}  // namespace dbkeeper
