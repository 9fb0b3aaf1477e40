#include "controls/RecordMode.h"

#include <gtest/gtest.h>

#include "controls/Pages.h"

namespace dbkeeper {
namespace {

struct StepPanel {
  Edit name{"Edit_step_name"};
  Button create{"SBtn_Create", "新規作成"};
  Button update{"SBtn_Update", "登録/更新"};
  Button drop{"SBtn_Drop", "削除"};
};

TEST(RecordMode, IsShownInLocksColoursCaptionsAndEnabling) {
  StepPanel panel;
  RecordMode mode({.keys = {&panel.name},
                   .write = &panel.update,
                   .only_new = {&panel.create},
                   .only_existing = {&panel.drop}});
  for (const bool exists : {false, true, false}) {
    SCOPED_TRACE(exists);
    mode.Show(exists ? Record::kExisting : Record::kNew);
    EXPECT_EQ(mode.Exists(), exists);
    EXPECT_EQ(panel.name.ReadOnly(), exists);
    EXPECT_EQ(panel.name.Color(), exists ? Color::kButtonFace : Color::kWindow);
    EXPECT_EQ(panel.update.Caption(), exists ? "更新" : "登録");
    EXPECT_EQ(panel.create.Enabled(), !exists);
    EXPECT_EQ(panel.drop.Enabled(), exists);
  }
}

TEST(RecordMode, ShowsANewRecordFromTheStart) {
  StepPanel panel;
  panel.name.Lock(true);
  const RecordMode mode(
      {.keys = {&panel.name}, .write = &panel.update, .only_existing = {&panel.drop}});
  EXPECT_FALSE(mode.Exists());
  EXPECT_FALSE(panel.name.ReadOnly());
  EXPECT_EQ(panel.update.Caption(), "登録");
  EXPECT_FALSE(panel.drop.Enabled());
}

// Some panels write under one caption whatever the mode.
TEST(RecordMode, KeepsACaptionThatIsGivenTwice) {
  StepPanel panel;
  RecordMode mode({.write = &panel.update, .write_existing = "登録"});
  mode.Show(Record::kExisting);
  EXPECT_EQ(panel.update.Caption(), "登録");
}

TEST(RecordMode, IsNeverReadBackFromWhatShowsIt) {
  StepPanel panel;
  RecordMode mode({.keys = {&panel.name}, .write = &panel.update});
  mode.Show(Record::kExisting);
  panel.name.Lock(false);
  panel.update.Caption = "登録";
  EXPECT_TRUE(mode.Exists());
}

TEST(RecordMode, ANewRecordEmptiesItsKeysAndTakesTheKeyboard) {
  StepPanel panel;
  Edit second("Edit_second");
  RecordMode mode({.keys = {&panel.name, &second}});
  panel.name.Text = "step 1";
  second.Text = "x";
  mode.Show(Record::kExisting);
  int focused = 0;
  const Subscription watch = panel.name.FocusRequested.Connect([&focused] { ++focused; });
  mode.New();
  EXPECT_FALSE(mode.Exists());
  EXPECT_EQ(panel.name.Text(), "");
  EXPECT_EQ(second.Text(), "");
  EXPECT_EQ(focused, 1);
}

TEST(Pages, ShowThePanelOfTheChosenTabAlone) {
  TabControl tabs("TabControl1");
  Panel steps("Pnl_Job_Step");
  Panel history("Pnl_Job_History");
  const Pages pages(tabs,
                    {{"Job Step", &steps}, {"Job Steps too", &steps}, {"Job History", &history}});
  EXPECT_EQ(tabs.Tabs.All(),
            (std::vector<std::string>{"Job Step", "Job Steps too", "Job History"}));
  struct Case {
    int index;
    bool steps;
    bool history;
  };
  for (const Case c : {Case{0, true, false}, Case{1, true, false}, Case{2, false, true},
                       Case{-1, false, false}, Case{3, false, false}}) {
    SCOPED_TRACE(c.index);
    tabs.TabIndex = c.index;
    EXPECT_EQ(steps.Visible(), c.steps);
    EXPECT_EQ(history.Visible(), c.history);
  }
  tabs.UserSelect(2);
  EXPECT_TRUE(history.Visible());
}

}  // namespace
}  // namespace dbkeeper
