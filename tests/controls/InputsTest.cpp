#include "controls/Inputs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dbkeeper {
namespace {

TEST(Edit, LockedOrDisabledEditTakesNoTyping) {
  Edit edit;
  int changes = 0;
  edit.OnChange = [&] { ++changes; };
  edit.UserType("a");
  edit.Lock(true);
  edit.UserType("b");
  edit.Lock(false);
  edit.Enabled = false;
  edit.UserType("c");
  EXPECT_EQ(edit.Text(), "a");
  EXPECT_EQ(changes, 1);
}

TEST(Button, ToggleButtonIsDownBeforeItsEvent) {
  Button button("", "Open", ButtonKind::kToggle);
  std::vector<bool> seen;
  button.OnClick = [&] { seen.push_back(button.Down); };
  button.UserClick();
  button.UserClick();
  button.Enabled = false;
  button.UserClick();
  EXPECT_EQ(seen, (std::vector<bool>{true, false}));
}

TEST(CheckBox, OnlyAPersonRaisesItsEvent) {
  CheckBox box("", "x");
  int clicks = 0;
  box.OnClick = [&] { ++clicks; };
  box.Checked = true;
  box.UserCheck(true);
  EXPECT_EQ(clicks, 0);
  box.UserCheck(false);
  EXPECT_EQ(clicks, 1);
}

TEST(ComboBox, TextFollowsTheItemAndTypingNeedsAnEditableBox) {
  ComboBox list("", ComboStyle::kDropDownList);
  list.Items.Assign({"a", "b"});
  EXPECT_EQ(list.ItemIndex(), -1);
  list.UserSelect(1);
  list.UserType("c");
  EXPECT_EQ(list.Text(), "b");
  list.SetItemIndex(7);
  EXPECT_EQ(list.Text(), "");

  ComboBox editable("", ComboStyle::kEditable);
  editable.UserType("host,1433");
  EXPECT_EQ(editable.Text(), "host,1433");
}

TEST(Memo, LinesAndTextAreTheSame) {
  struct Case {
    std::vector<std::string> lines;
    std::string text;
  };
  const Case cases[] = {
      {{}, ""},
      {{"select 1"}, "select 1"},
      {{"select 1", "", "go"}, "select 1\r\n\r\ngo"},
  };
  for (const Case& c : cases) {
    Memo memo;
    memo.SetLines(c.lines);
    EXPECT_EQ(memo.Text(), c.text);
    EXPECT_EQ(memo.Lines(), c.lines) << c.text;
  }
}

TEST(CheckListBox, ChecksStayWithTheirItems) {
  CheckListBox box;
  box.Add("a");
  box.Add("b", true);
  int clicks = 0;
  box.OnClickCheck = [&] { ++clicks; };
  box.UserCheck(0, true);
  box.SetChecked(1, false);
  EXPECT_TRUE(box.Checked(0));
  EXPECT_FALSE(box.Checked(1));
  EXPECT_EQ(clicks, 1);
}

}  // namespace
}  // namespace dbkeeper
