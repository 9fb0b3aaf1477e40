#include "controls/ListView.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace dbkeeper {
namespace {

using Change = ListView::Change;

class ListViewTest : public ::testing::Test {
 protected:
  ListViewTest() {
    for (const char* caption : {"a", "b", "c", "d"}) list.AddItem({caption});
    list.AddColumn("Name", 100);
  }
  std::string Captions() const {
    std::string all;
    for (const ListItem& item : list.Items()) all += item.Caption();
    return all;
  }

  ListView list;
};

TEST_F(ListViewTest, BulkUpdateTellsOnceAtItsEndAlsoWhenItIsLeftByAnError) {
  std::vector<Change> told;
  const Subscription subscription =
      list.Changed.Connect([&](Change change, std::size_t) { told.push_back(change); });
  try {
    const ListUpdate update(list);
    list.ClearItems();
    for (int i = 0; i < 10; ++i) list.AddItem({"x"});
    throw std::runtime_error("lost");
  } catch (const std::runtime_error&) {
    EXPECT_EQ(told, (std::vector<Change>{Change::kRows}));
  }
  EXPECT_EQ(list.Items().size(), 10U);
}

TEST_F(ListViewTest, SelectionGoesWithItsRows) {
  list.Select({1, 3, 3, 9});
  EXPECT_EQ(list.Selection(), (std::vector<std::size_t>{1, 3}));
  list.Reorder({3, 2, 1, 0});
  EXPECT_EQ(Captions(), "dcba");
  EXPECT_EQ(list.Selection(), (std::vector<std::size_t>{0, 2}));
  list.DeleteItem(1);
  EXPECT_EQ(Captions(), "dba");
  EXPECT_EQ(list.Selection(), (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(list.Selected()->Caption(), "d");
  list.ClearItems();
  EXPECT_EQ(list.Selected(), nullptr);
}

TEST_F(ListViewTest, ACellThatIsSetLeavesItsNeighboursAlone) {
  list.AddSubItem(0, "second");
  list.AddSubItem(0, "third");
  for (const std::string& text : {std::string(300, 'x'), std::string("y"), std::string()}) {
    list.SetSubItem(0, 0, text);
    EXPECT_EQ(list.Items()[0], (ListItem{"a", text, "third"}));
  }
}

TEST_F(ListViewTest, ShorterRowsShowEmptyCells) {
  list.SetSubItem(0, 2, "third");
  EXPECT_EQ(list.Items()[0], (ListItem{"a", "", "", "third"}));
  EXPECT_EQ(list.Items()[1].Cell(3), "");
}

}  // namespace
}  // namespace dbkeeper
