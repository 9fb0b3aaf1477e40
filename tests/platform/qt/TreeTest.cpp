#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QTest>
#include <array>
#include <random>
#include <string>
#include <string_view>

#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/TreeWidget.h"

namespace dbkeeper::qt {
namespace {

class TreeTest : public ::testing::Test {
 protected:
  TreeTest() {
    server = &tree.AddRoot("SQL Server");
    tree.AddRoot("Config");
    tree.Select(server);
    tree.OnClick = [this] { events += "click " + tree.Selected()->Text() + ";"; };
    tree.OnKeyUp = [this] { events += "key " + tree.Selected()->Text() + ";"; };
    widget = binder.Make(tree);
    widget->resize(300, 300);
    window.resize(300, 300);
    window.show();
  }

  QPoint PlaceOf(const TreeNode& node) {
    return widget->visualRect(widget->Model().IndexOf(&node)).center();
  }
  // A node that the view sees first when its children are promised already.
  TreeNode& AddFoldedDatabase() {
    static constexpr std::array<std::string_view, 2> kKinds = {"Table", "View"};
    tree.BeginUpdate();
    TreeNode& sales = server->AddChild("sales");
    sales.PromiseChildren(kKinds);
    tree.EndUpdate();
    return sales;
  }
  // The tree as the view sees it when all is opened.
  QString Shape(const QModelIndex& parent = {}) const {
    QString shape;
    QAbstractItemModel& model = *widget->model();
    model.fetchMore(parent);
    for (int row = 0; row < model.rowCount(parent); ++row) {
      const QModelIndex node = model.index(row, 0, parent);
      EXPECT_EQ(node.parent(), parent);
      shape += node.data().toString() + "(" + Shape(node) + ")";
    }
    return shape;
  }
  static QString Shape(const std::vector<std::unique_ptr<TreeNode>>& nodes) {
    QString shape;
    for (const auto& node : nodes) {
      shape += ToQt(node->Text()) + "(" + Shape(node->Children()) + ")";
    }
    return shape;
  }

  std::string events;
  ActionGuard guard{[](const std::exception& error) { FAIL() << error.what(); }};
  TreeView tree;
  TreeNode* server = nullptr;
  QWidget window;
  Binder binder{guard, window};
  TreeWidget* widget = nullptr;
};

TEST_F(TreeTest, TheSelectedNodeIsSelectedFromTheStart) {
  EXPECT_EQ(widget->currentIndex().data().toString(), "SQL Server");
  EXPECT_EQ(widget->selectionModel()->selectedIndexes().size(), 1);
}

TEST_F(TreeTest, TheViewFollowsEveryChangeOfTheTree) {
  std::mt19937 random(7);
  std::vector<TreeNode*> nodes = {server};
  for (int i = 0; i < 300; ++i) {
    TreeNode& node = *nodes[random() % nodes.size()];
    switch (random() % 5) {
      case 0:
        node.SetText("text" + std::to_string(i));
        break;
      case 1:
        if (node.Level() < 2) break;
        node.Parent()->DeleteChildren();
        nodes = {server};  // the others are found again by growing
        server->DeleteChildren();
        break;
      default:
        nodes.push_back(&node.AddChild("node" + std::to_string(i)));
    }
    ASSERT_EQ(Shape(), Shape(tree.Roots())) << i;
  }
}

TEST_F(TreeTest, ABulkUpdateIsShownAtItsEnd) {
  tree.BeginUpdate();
  server->AddChild("Database").AddChild("master");
  server->SetText("SQL Server :(local)");
  tree.EndUpdate();
  EXPECT_EQ(Shape(), Shape(tree.Roots()));
}

TEST_F(TreeTest, OpenNodesStayOpenWhileOthersChange) {
  TreeNode& database = server->AddChild("Database");
  database.AddChild("master");
  tree.Expand(*server);
  tree.Expand(database);
  server->AddChild("Security");
  database.SetText("Databases");
  EXPECT_TRUE(widget->isExpanded(widget->Model().IndexOf(&database)));
}

TEST_F(TreeTest, PromisedChildrenAppearWhenTheirNodeIsOpened) {
  TreeNode& sales = AddFoldedDatabase();
  tree.Expand(*server);
  const QModelIndex node = widget->Model().IndexOf(&sales);
  EXPECT_TRUE(widget->model()->hasChildren(node));
  EXPECT_EQ(widget->model()->rowCount(node), 0);
  tree.Select(&sales);
  QTest::keyClick(widget, Qt::Key_Right);
  EXPECT_EQ(widget->model()->rowCount(node), 2);
  EXPECT_EQ(Shape(), Shape(tree.Roots()));
}

TEST_F(TreeTest, AFoldedNodeIsOpenedForASelectionBelowIt) {
  TreeNode& sales = AddFoldedDatabase();
  tree.Select(sales.Children()[1].get());
  EXPECT_EQ(widget->currentIndex().data().toString(), "View");
  server->DeleteChildren();
  EXPECT_EQ(Shape(), Shape(tree.Roots()));
}

TEST_F(TreeTest, ALeftClickTellsTheNode) {
  QTest::mouseClick(widget->viewport(), Qt::LeftButton, {}, PlaceOf(*tree.Roots()[1]));
  EXPECT_EQ(events, "click Config;");
}

TEST_F(TreeTest, APressThatSlidesToAnotherNodeTellsTheOneThatItSelected) {
  QWidget* const area = widget->viewport();
  QTest::mousePress(area, Qt::LeftButton, {}, PlaceOf(*server));
  QTest::mouseMove(area, PlaceOf(*tree.Roots()[1]));
  QTest::mouseRelease(area, Qt::LeftButton, {}, PlaceOf(*tree.Roots()[1]));
  EXPECT_EQ(widget->currentIndex().data().toString(), "Config");
  EXPECT_EQ(events, "click Config;");
}

TEST_F(TreeTest, AKeyReleaseTellsTheNodeThatTheKeyWentTo) {
  QTest::keyClick(widget, Qt::Key_Down);
  EXPECT_EQ(events, "key Config;");
}

TEST_F(TreeTest, OfTwoKeysAtATimeTheFirstReleaseTellsTheNode) {
  QTest::keyPress(widget, Qt::Key_Down);
  QTest::keyPress(widget, Qt::Key_Right);
  QTest::keyRelease(widget, Qt::Key_Down);
  EXPECT_EQ(events, "key Config;");
}

TEST_F(TreeTest, AReleaseWhosePressWentElsewhereTellsNothing) {
  // Tab brings the focus here while it is down.
  QTest::keyRelease(widget, Qt::Key_Tab);
  EXPECT_EQ(events, "");
}

TEST_F(TreeTest, ARightPressLeavesTheSelectionAndShowsTheMenuThatTheHandlerNames) {
  PopupMenu menu("PopupMenu_SQLServer");
  int chosen = 0;
  MenuItem& item = menu.Add(std::make_unique<MenuItem>("Connect", "接続 ..."));
  item.OnClick = [&chosen] { ++chosen; };
  item.Default = true;
  menu.Add(std::make_unique<MenuItem>("TEST", "TEST")).Visible = false;
  MenuItem& stop = menu.Add(std::make_unique<MenuItem>("Stop", "停止"));
  menu.OnPopup = [&stop] { stop.Enabled = false; };
  tree.OnRightMouseDown = [this, &menu] { tree.Popup = &menu; };

  const QPoint place = PlaceOf(*tree.Roots()[1]);
  QContextMenuEvent press(QContextMenuEvent::Mouse, place, widget->viewport()->mapToGlobal(place));
  QApplication::sendEvent(widget->viewport(), &press);
  EXPECT_EQ(tree.Selected()->Text(), "SQL Server");
  auto* shown = dynamic_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_NE(shown, nullptr);
  const auto actions = shown->actions();
  ASSERT_EQ(actions.size(), 3);
  EXPECT_EQ(shown->defaultAction(), actions[0]);
  EXPECT_FALSE(actions[1]->isVisible());
  EXPECT_FALSE(actions[2]->isEnabled());

  QTest::mouseClick(shown, Qt::LeftButton, {}, shown->actionGeometry(actions[0]).center());
  QApplication::processEvents();
  EXPECT_EQ(chosen, 1);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

}  // namespace
}  // namespace dbkeeper::qt
