#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QTest>
#include <string>

#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/ListWidget.h"

namespace dbkeeper::qt {
namespace {

class ListTest : public ::testing::Test {
 protected:
  ListTest() {
    list.AddColumn("dbid", 48, Alignment::kRight);
    list.AddColumn("Name", 96);
    list.OnSelectItem = [this] { ++selections; };
    widget = binder.Make(list);
    window.resize(400, 300);
    widget->resize(400, 300);
    window.show();
  }

  void AddRows(std::size_t count) {
    const ListUpdate update(list);
    for (std::size_t i = 0; i < count; ++i) {
      list.AddItem({std::to_string(i), "name" + std::to_string(i)});
    }
  }
  QString Cell(int row, int column) const {
    return widget->model()->index(row, column).data().toString();
  }

  int selections = 0;
  std::vector<std::string> errors;
  ActionGuard guard{[this](const std::exception& error) { errors.emplace_back(error.what()); }};
  ListView list;
  QWidget window;
  Binder binder{guard, window};
  ListWidget* widget = nullptr;
};

TEST_F(ListTest, ColumnsHaveTheirCaptionsWidthsAndAlignments) {
  const auto header = [this](int column, int role) {
    return widget->model()->headerData(column, Qt::Horizontal, role);
  };
  EXPECT_EQ(header(0, Qt::DisplayRole).toString(), "dbid");
  EXPECT_EQ(header(1, Qt::DisplayRole).toString(), "Name");
  EXPECT_TRUE(header(0, Qt::TextAlignmentRole).value<Qt::Alignment>() & Qt::AlignRight);
  // Eight digits of six pixels are 48: the column holds them in the font that is there.
  EXPECT_GE(widget->columnWidth(0), widget->fontMetrics().horizontalAdvance("00000000"));
  EXPECT_GT(widget->columnWidth(1), widget->columnWidth(0));
}

TEST_F(ListTest, AHundredThousandRowsAreReadFromTheControlItself) {
  AddRows(100'000);
  EXPECT_EQ(widget->model()->rowCount(), 100'000);
  EXPECT_EQ(Cell(99'999, 1), "name99999");
  // The model holds no text: a row that changes is read as it is now.
  list.SetSubItem(99'999, 0, "other");
  EXPECT_EQ(Cell(99'999, 1), "other");
  widget->scrollToBottom();
  QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(list.SelCount(), 100'000U);
}

TEST_F(ListTest, ACellIsOneLineWithoutTheBlanksOfAFixedLength) {
  list.AddItem({"51", "sleeping" + std::string(120, ' ')});
  list.AddItem({"52", " two\r\nlines "});
  list.AddItem({"53", "   "});
  EXPECT_EQ(Cell(0, 1), "sleeping");
  EXPECT_EQ(Cell(1, 1), " two lines");
  EXPECT_EQ(Cell(2, 1), "");
}

TEST_F(ListTest, AListThatIsRebuiltMayBePaintedHalfway) {
  AddRows(100);
  const ListUpdate update(list);
  list.ClearItems();
  list.ClearColumns();
  widget->viewport()->repaint();
  EXPECT_EQ(Cell(50, 1), "");
}

TEST_F(ListTest, APersonsSelectionReachesTheControlAndAProgramsOneTheWidget) {
  AddRows(5);
  QTest::mouseClick(widget->viewport(), Qt::LeftButton, {},
                    widget->visualRect(widget->model()->index(2, 1)).center());
  EXPECT_EQ(list.Selection(), std::vector<std::size_t>{2});
  EXPECT_EQ(selections, 1);
  QTest::keyClick(widget, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(list.Selection(), (std::vector<std::size_t>{2, 3}));
  const int told = selections;
  list.Select({0, 4});
  EXPECT_EQ(widget->selectionModel()->selectedRows().size(), 2);
  EXPECT_EQ(selections, told);
}

TEST_F(ListTest, AClickBesideTheRowsTakesTheSelectionBackAndIsTold) {
  AddRows(2);
  std::vector<std::size_t> at_click{99};
  list.OnClick = [&] { at_click = list.Selection(); };
  const QRect last = widget->visualRect(widget->model()->index(1, 1));
  QTest::mouseClick(widget->viewport(), Qt::LeftButton, {}, last.center());
  EXPECT_EQ(at_click, std::vector<std::size_t>{1});
  QTest::mouseClick(widget->viewport(), Qt::LeftButton, {}, last.center() + QPoint(0, 100));
  EXPECT_TRUE(at_click.empty());
}

TEST_F(ListTest, ADialogsListMaySelectOneRowAlone) {
  AddRows(3);
  list.MultiSelect = false;
  list.Select({0});
  widget->setFocus();
  QTest::keyClick(widget, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(list.Selection(), std::vector<std::size_t>{1});
}

TEST_F(ListTest, AColumnMayStandInTheMiddle) {
  list.AddColumn("Role", 58, Alignment::kCenter);
  list.AddItem({"1", "guest", "-"});
  const QAbstractItemModel& model = *widget->model();
  const auto center = Qt::Alignment(Qt::AlignCenter);
  EXPECT_EQ(model.index(0, 2).data(Qt::TextAlignmentRole).value<Qt::Alignment>(), center);
  EXPECT_EQ(model.headerData(2, Qt::Horizontal, Qt::TextAlignmentRole).value<Qt::Alignment>(),
            center);
}

TEST_F(ListTest, TheSelectionGoesWithItsRowsThroughASort) {
  AddRows(3);
  list.Select({0});
  list.Reorder({2, 1, 0});
  const auto rows = widget->selectionModel()->selectedRows(1);
  ASSERT_EQ(rows.size(), 1);
  EXPECT_EQ(rows.front().data().toString(), "name0");
}

TEST_F(ListTest, TypingFindsARow) {
  AddRows(12);
  widget->setFocus();
  QTest::keyClicks(widget, "10");
  EXPECT_EQ(list.Selection(), std::vector<std::size_t>{10});
}

TEST_F(ListTest, AHeaderClickNamesItsColumn) {
  std::size_t clicked = 99;
  list.OnColumnClick = [&clicked](std::size_t column) { clicked = column; };
  QHeaderView& header = *widget->header();
  QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                    {header.sectionViewportPosition(1) + 10, header.height() / 2});
  EXPECT_EQ(clicked, 1U);
}

TEST_F(ListTest, CopyTakesTheSelectedRowsWithTabsBetweenCells) {
  AddRows(3);
  list.SetSubItem(1, 0, "two\r\nlines\tand a tab");
  list.Select({1, 2});
  QTest::keyClick(widget, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "1\ttwo lines and a tab\n2\tname2");
}

TEST_F(ListTest, AWidthThatAPersonChoseStaysAtARefreshAndNotWithOtherColumns) {
  widget->header()->resizeSection(1, 333);
  const auto rebuild = [this](int width) {
    const ListUpdate update(list);
    list.ClearItems();
    list.ClearColumns();
    list.AddColumn("dbid", 48, Alignment::kRight);
    list.AddColumn("Name", width);
  };
  rebuild(96);
  EXPECT_EQ(widget->columnWidth(1), 333);
  rebuild(200);
  EXPECT_NE(widget->columnWidth(1), 333);
}

TEST_F(ListTest, CheckBoxesAppearOnlyWhileTheyAreOn) {
  AddRows(2);
  const QModelIndex cell = widget->model()->index(1, 0);
  EXPECT_FALSE(cell.data(Qt::CheckStateRole).isValid());
  list.CheckBoxes = true;
  widget->model()->setData(cell, Qt::Checked, Qt::CheckStateRole);
  EXPECT_TRUE(list.Items()[1].Checked);
  EXPECT_EQ(cell.data(Qt::CheckStateRole).toInt(), Qt::Checked);
}

}  // namespace
}  // namespace dbkeeper::qt
