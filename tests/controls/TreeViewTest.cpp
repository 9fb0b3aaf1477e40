#include "controls/TreeView.h"

#include <gtest/gtest.h>

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
