#include "platform/qt/Look.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QTest>
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/qt/Icons.h"
#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/ListWidget.h"

namespace dbkeeper::qt {
namespace {

class LookTest : public ::testing::Test {
 protected:
  ~LookTest() override { ApplyScheme(Scheme::kLight); }

  ActionGuard guard{[](const std::exception&) {}};
  QWidget window;
  Binder binder{guard, window};
};

bool IsEmpty(const QImage& image) {
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      if (qAlpha(image.pixel(x, y)) > 0) return false;
    }
  }
  return true;
}

TEST_F(LookTest, EveryDrawingCanBeShownInEverySizeAndOnEveryBackground) {
  NamedIcon("table");  // brings the drawings in
  const QStringList files = QDir(":/icons").entryList();
  EXPECT_GE(files.size(), 29);
  for (const QString& file : files) {
    const QIcon icon = NamedIcon(file.chopped(4));
    for (const int size : {16, 32}) {
      ApplyScheme(Scheme::kLight);
      const QImage light = icon.pixmap(size).toImage();
      EXPECT_FALSE(IsEmpty(light)) << file.toStdString();
      EXPECT_FALSE(IsEmpty(icon.pixmap(size, QIcon::Disabled).toImage())) << file.toStdString();
      ApplyScheme(Scheme::kDark);
      EXPECT_EQ(icon.pixmap(size).toImage() != light, file != "dbkeeper.svg") << file.toStdString();
    }
  }
}

TEST_F(LookTest, EveryKindOfNodeHasAPictureOfItsOwn) {
  TreeView tree;
  TreeNode& server = tree.AddRoot("SQL Server :SV1");
  TreeNode& databases = server.AddChild("Database");
  TreeNode& management = server.AddChild("Management");
  TreeNode& security = server.AddChild("Security");
  // Named as another kind.
  TreeNode& database = databases.AddChild("Job");
  std::vector<const TreeNode*> nodes = {&server,   &databases, &management,
                                        &security, &database,  &tree.AddRoot("Config")};
  for (const char* text : {"Table", "View", "Procedure", "User", "Role", "Backup"}) {
    nodes.push_back(&database.AddChild(text));
  }
  for (const char* text : {"Job", "BackUpDevice", "Process", "Lock"}) {
    nodes.push_back(&management.AddChild(text));
  }
  for (const char* text : {"Login", "Server role"}) nodes.push_back(&security.AddChild(text));
  std::vector<QImage> seen;
  for (const TreeNode* node : nodes) {
    const QImage picture = NodeIcon(*node).pixmap(16).toImage();
    ASSERT_FALSE(picture.isNull()) << node->Text();
    EXPECT_EQ(std::find(seen.begin(), seen.end(), picture), seen.end()) << node->Text();
    seen.push_back(picture);
  }
  EXPECT_TRUE(NodeIcon(management.AddChild("Other")).isNull());
}

TEST_F(LookTest, ALockedFieldHasTheColourOfTheButtonsWhateverTheDesktopChooses) {
  Edit edit;
  QLineEdit* const widget = binder.Make(edit);
  widget->resize(100, 24);
  const auto background = [widget] { return widget->grab().toImage().pixelColor(50, 12); };
  for (const Scheme scheme : {Scheme::kLight, Scheme::kDark}) {
    ApplyScheme(scheme);
    edit.Color = Color::kWindow;
    EXPECT_EQ(background(), widget->palette().color(QPalette::Base));
    edit.Color = Color::kButtonFace;
    EXPECT_EQ(background(), widget->palette().color(QPalette::Button));
    EXPECT_NE(background(), widget->palette().color(QPalette::Base));
  }
}

TEST_F(LookTest, ABarIsAsLongAsItsNumberAndMovesWithItsRow) {
  ListView list;
  list.AddColumn("reserved", 82, Alignment::kRight, ColumnPicture::kBar);
  list.AddColumn("unused", 82, Alignment::kRight);
  for (const char* size : {"40 KB", "160 KB", "", "0 KB"}) list.AddItem({size, "8 KB"});
  ListWidget* const widget = binder.Make(list);
  const auto bar = [widget](int row, int column) {
    return widget->model()->index(row, column).data(ListModel::kBarRole);
  };
  EXPECT_EQ(bar(0, 0).toDouble(), 0.25);
  EXPECT_EQ(bar(1, 0).toDouble(), 1);
  EXPECT_EQ(bar(2, 0).toDouble(), 0);
  EXPECT_FALSE(bar(0, 1).isValid());
  list.Reorder({1, 0, 2, 3});
  EXPECT_EQ(bar(0, 0).toDouble(), 1);
  list.SetSubItem(0, 0, "9 KB");
  list.DeleteItem(0);
  EXPECT_EQ(bar(0, 0).toDouble(), 1);
}

TEST_F(LookTest, NoBarHasALengthWhereAllNumbersAreZero) {
  ListView list;
  list.AddColumn("reserved", 82, Alignment::kRight, ColumnPicture::kBar);
  list.AddItem({"0 KB"});
  ListWidget* const widget = binder.Make(list);
  EXPECT_FALSE(widget->model()->index(0, 0).data(ListModel::kBarRole).isValid());
}

}  // namespace
}  // namespace dbkeeper::qt
