// Every kind of control and its widget: what the program assigns appears, what a person does
// arrives, and what a handler throws goes to the one error handler.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTabBar>
#include <QTest>
#include <stdexcept>

#include "platform/qt/binders/Binder.h"

namespace dbkeeper::qt {
namespace {

class BinderTest : public ::testing::Test {
 protected:
  // The handler of an event that counts.
  Event Counted() {
    return [this] { ++events; };
  }

  int events = 0;
  std::vector<std::string> errors;
  ActionGuard guard{[this](const std::exception& error) { errors.emplace_back(error.what()); }};
  QWidget window;
  Binder binder{guard, window};
};

TEST_F(BinderTest, EveryWidgetFollowsWhatAllControlsShare) {
  Button button("SBtn_Update", "OK");
  QPushButton* widget = binder.Make(button);
  EXPECT_EQ(widget->objectName(), "SBtn_Update");
  button.Enabled = false;
  button.Visible = false;
  button.Hint = "hint";
  EXPECT_FALSE(widget->isEnabled());
  EXPECT_TRUE(widget->isHidden());
  EXPECT_EQ(widget->toolTip(), "hint");
  button.Visible = true;
  EXPECT_FALSE(widget->isHidden());
}

TEST_F(BinderTest, AnEditShowsItsTextAndTakesTyping) {
  Edit edit("", "login name :");
  edit.OnChange = Counted();
  edit.Text = "日本";
  QLineEdit* widget = binder.Make(edit);
  EXPECT_EQ(widget->text(), "日本");
  EXPECT_EQ(binder.Make(edit.EditLabel)->text(), "login name :");
  QTest::keyClicks(widget, "x");
  EXPECT_EQ(edit.Text(), "日本x");
  EXPECT_EQ(events, 1);
  edit.Text = "sa";
  EXPECT_EQ(widget->text(), "sa");
  EXPECT_EQ(events, 1);
  edit.Lock(true);
  QTest::keyClicks(widget, "y");
  EXPECT_EQ(edit.Text(), "sa");
}

TEST_F(BinderTest, AHandlerThatChangesWhatWasTypedIsShown) {
  Edit edit;
  edit.OnChange = [&edit] { edit.Text = "upper"; };
  QLineEdit* widget = binder.Make(edit);
  QTest::keyClicks(widget, "a");
  EXPECT_EQ(widget->text(), "upper");
}

TEST_F(BinderTest, APasswordShowsOneStarForEachCharacter) {
  Edit edit;
  edit.Text = "秘密x";
  EXPECT_EQ(binder.MakePassword(edit)->displayText(), "***");
}

TEST_F(BinderTest, AToggleButtonStaysDownAndShowsWhatTheHandlerMadeOfIt) {
  Button button("", "Open", ButtonKind::kToggle);
  QPushButton* widget = binder.Make(button);
  widget->click();
  EXPECT_TRUE(button.Down());
  EXPECT_TRUE(widget->isChecked());
  // The open failed: the handler releases the button.
  button.OnClick = [&button] { button.Down = false; };
  button.Down = false;
  widget->click();
  EXPECT_FALSE(widget->isChecked());
}

TEST_F(BinderTest, ACaptionKeepsItsAmpersand) {
  Button button("", "A&B");
  EXPECT_EQ(binder.Make(button)->text(), "A&&B");
}

TEST_F(BinderTest, ACheckBoxMirrorsBothWays) {
  CheckBox box("", "Windows統合認証 :");
  box.OnClick = Counted();
  QCheckBox* widget = binder.Make(box);
  widget->click();
  EXPECT_TRUE(box.Checked());
  EXPECT_EQ(events, 1);
  box.Checked = false;
  EXPECT_FALSE(widget->isChecked());
  EXPECT_EQ(events, 1);
}

TEST_F(BinderTest, AnEditableComboBoxTakesTypingAsItIsAndOffersItsItems) {
  ComboBox box("", ComboStyle::kEditable);
  box.Items.Assign({"(local)", "pc02"});
  box.Text = "(local)";
  QComboBox* widget = binder.Make(box);
  EXPECT_EQ(widget->count(), 2);
  EXPECT_EQ(widget->currentText(), "(local)");
  widget->lineEdit()->selectAll();
  QTest::keyClicks(widget->lineEdit(), "(LOCAL)");
  // Nothing completes it to the item that differs only in its case.
  EXPECT_EQ(box.Text(), "(LOCAL)");
  Q_EMIT widget->activated(1);
  EXPECT_EQ(widget->currentText(), "pc02");
}

TEST_F(BinderTest, ADropDownListShowsTheChosenItemAndNothingElse) {
  ComboBox box;
  box.OnChange = Counted();
  QComboBox* widget = binder.Make(box);
  box.Items.Assign({"*", "id"});
  EXPECT_EQ(widget->currentIndex(), -1);
  box.SetItemIndex(0);
  EXPECT_EQ(widget->currentIndex(), 0);
  QTest::keyClick(widget, Qt::Key_Down);
  EXPECT_EQ(box.Text(), "id");
  EXPECT_EQ(events, 1);
}

TEST_F(BinderTest, ARadioGroupMirrorsBothWays) {
  RadioGroup group;
  group.Items.Assign({"daily", "weekly"});
  group.ItemIndex = 0;
  QGroupBox* widget = binder.Make(group);
  const auto buttons = widget->findChildren<QRadioButton*>();
  ASSERT_EQ(buttons.size(), 2);
  EXPECT_TRUE(buttons[0]->isChecked());
  buttons[1]->click();
  EXPECT_EQ(group.ItemIndex(), 1);
  group.ItemIndex = -1;
  EXPECT_FALSE(buttons[0]->isChecked() || buttons[1]->isChecked());
}

TEST_F(BinderTest, ACheckListMirrorsBothWays) {
  CheckListBox list;
  list.OnClickCheck = Counted();
  QListWidget* widget = binder.Make(list);
  list.Add("select", true);
  list.Add("insert");
  ASSERT_EQ(widget->count(), 2);
  EXPECT_EQ(widget->item(0)->checkState(), Qt::Checked);
  EXPECT_EQ(events, 0);
  widget->item(1)->setCheckState(Qt::Checked);
  EXPECT_TRUE(list.Checked(1));
  EXPECT_EQ(events, 1);
  list.SetChecked(0, false);
  EXPECT_EQ(widget->item(0)->checkState(), Qt::Unchecked);
}

TEST_F(BinderTest, AMemoKeepsCrLfInsideAndLinesOutside) {
  Memo memo;
  memo.Text = "select 1\r\ngo";
  QPlainTextEdit* widget = binder.Make(memo);
  EXPECT_EQ(widget->toPlainText(), "select 1\ngo");
  memo.OnChange = Counted();
  widget->moveCursor(QTextCursor::End);
  QTest::keyClick(widget, Qt::Key_Return);
  EXPECT_EQ(memo.Text(), "select 1\r\ngo\r\n");
  EXPECT_EQ(events, 1);
}

TEST_F(BinderTest, AStatusBarShowsOneLine) {
  StatusBar bar;
  QStatusBar* widget = binder.Make(bar);
  bar.SimpleText = " >select *\r\nfrom t";
  EXPECT_EQ(widget->findChild<QLabel*>()->text(), " >select * from t");
}

TEST_F(BinderTest, APanelHasItsHeightAtEveryScale) {
  Panel panel;
  QFrame* widget = binder.Make(panel);
  panel.Height = 31;
  EXPECT_EQ(widget->minimumHeight(), (31 * window.logicalDpiX() + 48) / 96);
}

TEST_F(BinderTest, TabsMirrorBothWays) {
  TabControl tabs;
  tabs.OnChange = Counted();
  QTabBar* widget = binder.Make(tabs);
  tabs.Tabs.Assign({"DB 1", "DB 2"});
  EXPECT_EQ(events, 0);
  widget->setCurrentIndex(1);
  EXPECT_EQ(tabs.TabIndex(), 1);
  EXPECT_EQ(events, 1);
  tabs.TabIndex = 0;
  EXPECT_EQ(widget->currentIndex(), 0);
  EXPECT_EQ(events, 1);
}

TEST_F(BinderTest, AClickChoosesATabWhereNoneWasChosen) {
  TabControl tabs;
  tabs.OnChange = Counted();
  QTabBar* widget = binder.Make(tabs);
  tabs.Tabs.Assign({"Job Step", "Job Schedule"});
  tabs.TabIndex = -1;
  widget->resize(widget->sizeHint());
  QTest::mouseClick(widget, Qt::LeftButton, {}, widget->tabRect(0).center());
  EXPECT_EQ(tabs.TabIndex(), 0);
  EXPECT_EQ(events, 1);
}

TEST_F(BinderTest, AGroupBoxShowsItsTitle) {
  GroupBox group("GroupBox1", "Option :");
  EXPECT_EQ(binder.Make(group)->title(), "Option :");
}

TEST_F(BinderTest, ATextOfALanguageHasLettersOfOneWidthAndWholeLines) {
  Memo memo("Memo_Checks");
  const QPlainTextEdit* widget = binder.MakeCode(memo);
  const QFontMetrics letters = widget->fontMetrics();
  EXPECT_EQ(letters.horizontalAdvance("iiii"), letters.horizontalAdvance("MMMM"));
  EXPECT_EQ(widget->lineWrapMode(), QPlainTextEdit::NoWrap);
}

TEST_F(BinderTest, APickerMirrorsBothWays) {
  DateTimePicker picker("Picker", Picks::kTime);
  picker.Value = DateTimeValue{2005, 3, 8, 9, 5, 7};
  QDateTimeEdit* widget = binder.Make(picker);
  EXPECT_EQ(widget->text(), "09:05:07");
  widget->setTime({23, 0, 0});
  EXPECT_EQ(picker.Value(), (DateTimeValue{2005, 3, 8, 23, 0, 0}));
}

TEST_F(BinderTest, WhatAHandlerThrowsReachesTheErrorHandlerAndNothingElse) {
  Button button("", "OK");
  button.OnClick = [] { throw std::runtime_error("Login failed for user 'sa'."); };
  QPushButton* widget = binder.Make(button);
  widget->click();
  EXPECT_EQ(errors, std::vector<std::string>{"Login failed for user 'sa'."});
}

TEST_F(BinderTest, AControlMayGoBeforeItsWidgetAndTheOtherWayRound) {
  auto edit = std::make_unique<Edit>();
  QLineEdit* widget = binder.Make(*edit);
  delete widget;
  edit->Text = "nobody watches";
  binder.Make(*edit);
  edit.reset();
}

}  // namespace
}  // namespace dbkeeper::qt
