#include "controls/TreeView.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

namespace dbkeeper {
namespace {

TEST(TreeView, SelectionMovesUpWhenItsNodeIsDeleted) {
  TreeView tree;
  TreeNode& root = tree.AddRoot("server");
  TreeNode& deep = root.AddChild("Database").AddChild("sales").AddChild("Table");
  tree.Select(&deep);
  EXPECT_EQ(deep.Level(), 3);
  root.DeleteChildren();
  EXPECT_EQ(tree.Selected(), &root);
}

TEST(TreeView, DeletingChildrenLeavesASelectionElsewhereAlone) {
  TreeView tree;
  TreeNode& server = tree.AddRoot("server");
  server.AddChild("Database");
  TreeNode& config = tree.AddRoot("Config");
  tree.Select(&config);
  server.DeleteChildren();
  EXPECT_EQ(tree.Selected(), &config);
}

TEST(TreeView, PromisedChildrenAreMadeWhenTheyAreAskedFor) {
  constexpr std::array<std::string_view, 2> kKinds = {"Table", "View"};
  TreeView tree;
  TreeNode& database = tree.AddRoot("server").AddChild("sales");
  database.PromiseChildren(kKinds);
  EXPECT_TRUE(database.HasChildren());
  database.AddChild("Procedure");
  std::string texts;
  for (const auto& child : database.Children()) {
    texts += std::to_string(child->Index()) + child->Text() + " ";
  }
  EXPECT_EQ(texts, "0Table 1View 2Procedure ");

  database.DeleteChildren();
  database.PromiseChildren(kKinds);
  database.DeleteChildren();
  EXPECT_FALSE(database.HasChildren());
  EXPECT_TRUE(database.Children().empty());
}

TEST(TreeView, RightPressLeavesTheSelectionAlone) {
  TreeView tree;
  TreeNode& root = tree.AddRoot("server");
  tree.Select(&root);
  tree.AddRoot("Config");
  int presses = 0;
  tree.OnRightMouseDown = [&] { ++presses; };
  tree.UserRightMouseDown();
  EXPECT_EQ(presses, 1);
  EXPECT_EQ(tree.Selected(), &root);
}

}  // namespace
}  // namespace dbkeeper
