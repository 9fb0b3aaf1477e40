// The table browser's pane in the real main window.
#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <cstdlib>

#include "platform/qt/QtWindows.h"
#include "platform/qt/binders/GridWidget.h"
#include "platform/qt/forms/Windows.h"
#include "tests/support/AppFixture.h"

namespace dbkeeper::testing {
namespace {

class BrowserPaneTest : public AppFixture {
 protected:
  BrowserPaneTest() {
    FakeResult items{{{.name = "id", .kind = FieldKind::kInteger, .type_name = "int"},
                      {.name = "商品名", .type_name = "nvarchar", .size = 40},
                      {.name = "単価", .kind = FieldKind::kDecimal, .type_name = "money"}},
                     {},
                     {}};
    for (int i = 1; i <= 300; ++i) {
      items.rows.push_back({std::to_string(i), "商品" + std::to_string(i), "12.5000"});
    }
    items.rows[1][1] = std::nullopt;
    connection.Answer("select * from [商品]", items);
    connection.Answer("db_name()", {TextFields({"name"}), {{"sales"}}, {}});
    connection.Answer("syscolumns c on c.id = o.id",
                      {TextFields({"id", "xtype", "name", "type", "c", "s"}),
                       {{"77", "V ", "id", "int", "0", "0"}},
                       {}});
    Connect();
    ClickPath({"Database"});
    app.FormMain.TreeView.Select(&Node({"Database", "sales", "Table"}));
    app.FormMain.ListViewMain.ClearItems();
    app.FormMain.ListViewMain.AddItem({"1", "商品", "dbo"});
    app.FormMain.ListViewMain.Select({0});
    window->show();
    Choose(app.FormMain.Menu("PopupMenu_Table"), "PopupMenu_Table_Open");
    QApplication::processEvents();
  }

  template <class Widget>
  Widget& Find(const char* name) {
    auto* widget = window->findChild<Widget*>(name);
    if (widget == nullptr) throw std::out_of_range(name);
    return *widget;
  }
  void Press(const char* name) {
    QTest::mouseClick(&Find<QWidget>(name), Qt::LeftButton);
    QApplication::processEvents();
  }
  void Picture(const char* name) {
    const char* const pictures = std::getenv("DBKEEPER_TEST_PICTURES");
    if (pictures != nullptr) window->grab().save(QString(pictures) + "/" + name + ".png");
  }

  qt::QtWindows windows;
  std::unique_ptr<QWidget> window{qt::MakeMainWindow(app.FormMain, app.Guard(), windows)};
};

TEST_F(BrowserPaneTest, MovesWithTheNavigator) {
  Picture("browser_open");
  auto& grid = Find<qt::GridWidget>("DBGrid1");
  Press("Last");
  EXPECT_EQ(grid.model()->rowCount(), 300);
  EXPECT_EQ(grid.currentIndex().row(), 299);
  EXPECT_FALSE(Find<QToolButton>("Last").isEnabled());
  EXPECT_FALSE(Find<QToolButton>("Post").isVisible());
  Press("First");
  EXPECT_EQ(grid.currentIndex().row(), 0);
}

TEST_F(BrowserPaneTest, ShowsTheFilterRowWhenAFieldIsChosen) {
  const int height = Find<QWidget>("Pnl_SQL_Tool").height();
  QTest::keyClick(&Find<QComboBox>("ComboBox_Table_Where"), Qt::Key_Down);
  QApplication::processEvents();
  Picture("browser_filter");
  EXPECT_TRUE(Find<QWidget>("Edit_Table_Where").isVisible());
  EXPECT_GT(Find<QWidget>("Pnl_SQL_Tool").height(), height);
  EXPECT_EQ(app.FormMain.Browser.Edit_Table_Where.Text(), "(id = '')");
}

TEST_F(BrowserPaneTest, SaysInEditModeWhyAViewCannotBeWritten) {
  EXPECT_FALSE(Find<QWidget>("GridNote").isVisible());
  auto& grid = Find<qt::GridWidget>("DBGrid1");
  grid.setColumnWidth(1, 77);
  Press("Sbtn_RE");
  Picture("browser_edit");
  EXPECT_EQ(grid.columnWidth(1), 77) << "the rows were read again";
  EXPECT_TRUE(Find<QWidget>("GridNote").isVisible());
  EXPECT_TRUE(Find<QToolButton>("Post").isVisible());
  Press("Sbtn_RE");
  EXPECT_FALSE(Find<QWidget>("GridNote").isVisible());
}

}  // namespace
}  // namespace dbkeeper::testing
