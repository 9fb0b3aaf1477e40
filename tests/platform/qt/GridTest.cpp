// The data grid's widget, driven by keys over rows of its own.
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTest>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "app/session/CursorRows.h"
#include "app/session/RowStore.h"
#include "app/session/RowView.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/CellViewer.h"
#include "platform/qt/binders/GridWidget.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

using qt::FromQt;
using qt::GridWidget;
using testing::FakeCursor;
using testing::FakeReader;
using testing::FakeResult;
using testing::TextFields;

std::vector<Field> ItemFields() {
  return {{.name = "id", .kind = FieldKind::kInteger, .type_name = "int", .nullable = false},
          {.name = "商品名", .kind = FieldKind::kText, .type_name = "nvarchar", .size = 40},
          {.name = "入荷日", .kind = FieldKind::kDateTime, .type_name = "datetime"},
          {.name = "画像", .kind = FieldKind::kBinary, .type_name = "image", .long_value = true},
          {.name = "備考", .kind = FieldKind::kText, .type_name = "ntext", .long_value = true}};
}

class GridTest : public ::testing::Test {
 protected:
  GridTest() {
    widget.resize(720, 240);
    window.show();
    grid.Source = &view;
    connection.Answer("db_name()", {TextFields({"name"}), {{"sales"}}, {}});
    testing::FakeResult columns{TextFields({"id", "xtype", "name", "type", "c", "s"}), {}, {}};
    for (const Field& field : ItemFields()) {
      const bool identity = field.name == "id";
      columns.rows.push_back({"77", "U ", field.name, field.type_name, "0", identity ? "1" : "0"});
    }
    connection.Answer("sysobjects", columns);
    connection.Answer("@@rowcount", {TextFields({"dbkeeper_rows", "i"}), {{"1", "1"}}, {}});
  }

  void Open(std::vector<testing::FakeRow> rows) {
    FakeReader reader({ItemFields(), std::move(rows), {}});
    auto store = std::make_unique<RowStore>(ItemFields());
    store->ReadAll(reader);
    view.Open(std::move(store));
  }
  void OpenForEditing() {
    const std::vector<testing::FakeRow> rows = {
        {"1", "りんご", "2005-03-08 09:05:07.000", std::nullopt, std::nullopt},
        {"2", std::nullopt, std::nullopt, "00FF10", "一行目\r\n二行目"},
        {"3", "", "2005-03-08 00:00:00.000", "00", "x"}};
    Open(rows);
    connection.Answer("with (updlock)", {ItemFields(), rows, {}});
    grid.ReadOnly = false;
    view.AllowEditing(
        std::make_unique<RowEditor>(connection, "select * from [商品]", ItemFields()));
    view.Changed.Emit(GridSource::Change::kAll, 0);
    connection.statements.clear();
  }

  void Focus(int row, int column) { widget.setCurrentIndex(widget.model()->index(row, column)); }
  std::string Shown(int row, int column) {
    return FromQt(widget.model()->index(row, column).data().toString());
  }
  void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    auto* editor = widget.findChild<QLineEdit*>("CellEdit");
    QTest::keyClick(editor != nullptr ? static_cast<QWidget*>(editor) : &widget, key, modifiers);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
  }
  void Type(const char* text) {
    Key(Qt::Key_F2);
    auto* editor = widget.findChild<QLineEdit*>("CellEdit");
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, text);
  }
  void Picture(const char* name) {
    const char* const folder = std::getenv("DBKEEPER_TEST_PICTURES");
    if (folder != nullptr) widget.grab().save(QString(folder) + "/" + name + ".png");
  }

  testing::FakeConnection connection;
  testing::FakeLocale locale;
  RowView view{locale};
  DataGrid grid;
  std::vector<std::string> errors;
  ActionGuard guard{[this](const std::exception& error) { errors.emplace_back(error.what()); }};
  QWidget window;  // also of the line below the grid
  GridWidget widget{grid, guard, &window};
};

TEST_F(GridTest, ShowsNullsNumbersAndControlCharactersApart) {
  Open({{"1", std::nullopt, "2005-03-08 09:05:07.000", "00FF", "a\tb\r\nc\x01\xE2\x80\xAE"},
        {"-20", "", std::nullopt, std::nullopt, "\xED\xA0\x80 broken"}});
  Picture("grid_values");
  EXPECT_EQ(Shown(0, 1), "(null)");
  EXPECT_EQ(Shown(1, 1), "");
  EXPECT_EQ(Shown(0, 2), "2005/03/08 9:05:07");
  EXPECT_EQ(Shown(0, 3), "0x00FF");
  EXPECT_EQ(Shown(0, 4), "a␉b↵c␁\xEF\xBF\xBD");
  const auto alignment = [&](int column) {
    return widget.model()->index(0, column).data(Qt::TextAlignmentRole).value<Qt::Alignment>();
  };
  EXPECT_TRUE(alignment(0) & Qt::AlignRight);
  EXPECT_TRUE(alignment(1) & Qt::AlignLeft);
  EXPECT_EQ(FromQt(widget.model()->headerData(1, Qt::Horizontal, Qt::ToolTipRole).toString()),
            "nvarchar(40) null");
}

TEST_F(GridTest, WritesWhatWasTypedWhenTheRowIsLeft) {
  OpenForEditing();
  Focus(0, 1);
  Type("pear");
  Picture("grid_editing");
  EXPECT_EQ(view.State(), GridState::kEdit) << "what is typed can be posted at once";
  Key(Qt::Key_Return);
  EXPECT_EQ(view.State(), GridState::kEdit);
  EXPECT_EQ(Shown(0, 1), "pear");
  EXPECT_TRUE(connection.statements.empty());
  Key(Qt::Key_Down);
  EXPECT_EQ(view.CurrentRow(), 1);
  ASSERT_GE(connection.statements.size(), 4U);
  EXPECT_TRUE(connection.statements[3].starts_with(
      "update [sales]..[商品] set [商品名] = 'pear' where [id] = 1 and [商品名] = N'りんご'"))
      << connection.statements[3];
  EXPECT_EQ(connection.statements.back(), "commit transaction");
}

// A composition begins on the cell itself, as typing does, or in an editor that is open.
TEST_F(GridTest, AnInputMethodWritesIntoACell) {
  OpenForEditing();
  const auto send = [](QWidget* target, const QString& composing, const QString& done) {
    QInputMethodEvent event(composing, {});
    event.setCommitString(done);
    QApplication::sendEvent(target, &event);
    QApplication::processEvents();
  };
  const auto editor = [this] { return widget.findChild<QLineEdit*>("CellEdit"); };
  Focus(0, 1);
  EXPECT_TRUE(widget.testAttribute(Qt::WA_InputMethodEnabled));
  for (const bool is_open : {false, true}) {
    if (is_open) Key(Qt::Key_F2);
    send(is_open ? static_cast<QWidget*>(editor()) : &widget, "にほ", "");
    ASSERT_NE(editor(), nullptr) << is_open;
    EXPECT_EQ(Shown(0, 1), is_open ? "日本" : "りんご");
    send(editor(), "", is_open ? "梨" : "日本");
    Key(Qt::Key_Return);
    EXPECT_EQ(Shown(0, 1), is_open ? "梨" : "日本");
  }
}

// A person sees which row a command would take.
TEST_F(GridTest, TheCurrentCellIsMarkedAfterEveryMove) {
  OpenForEditing();
  const auto expect_marked = [this](const char* what) {
    const QModelIndex current = widget.currentIndex();
    EXPECT_EQ(current.row(), view.CurrentRow()) << what;
    EXPECT_TRUE(widget.selectionModel()->isSelected(current)) << what;
  };
  const auto expect_alone = [&](const char* what) {
    expect_marked(what);
    EXPECT_EQ(widget.selectionModel()->selectedIndexes().size(), 1) << what;
  };
  struct Move {
    const char* what;
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
  };
  const Move moves[] = {{"ctrl+end", Qt::Key_End, Qt::ControlModifier},
                        {"ctrl+home", Qt::Key_Home, Qt::ControlModifier},
                        {"ctrl+down", Qt::Key_Down, Qt::ControlModifier},
                        {"ctrl+right", Qt::Key_Right, Qt::ControlModifier},
                        {"page down", Qt::Key_PageDown, Qt::NoModifier},
                        {"home", Qt::Key_Home, Qt::NoModifier},
                        {"up", Qt::Key_Up, Qt::NoModifier}};
  Focus(1, 1);
  for (const Move& move : moves) {
    Key(move.key, move.modifiers);
    expect_alone(move.what);
  }
  const auto click = [this](int row, Qt::KeyboardModifiers modifiers) {
    QTest::mouseClick(widget.viewport(), Qt::LeftButton, modifiers,
                      widget.visualRect(widget.model()->index(row, 1)).center());
  };
  for (const int row : {2, 2, 0}) {
    click(row, Qt::ControlModifier);
    expect_marked("ctrl+click");
  }
  click(2, Qt::ShiftModifier);
  expect_marked("shift+click");
  QTest::mouseClick(widget.viewport(), Qt::LeftButton, {}, QPoint(10, 230));
  expect_marked("a click beside the rows");
  view.First();
  expect_alone("first");
  view.Insert();
  expect_alone("insert");
  click(2, Qt::NoModifier);
  EXPECT_EQ(Shown(view.CurrentRow() < 0 ? 0 : static_cast<int>(view.CurrentRow()), 0), "2")
      << "the row that was clicked, though an untouched new one before it has gone";
  QApplication::processEvents();
  expect_alone("a click that drops a new row");
  connection.Answer(
      "with (updlock)",
      {ItemFields(), {{"2", std::nullopt, std::nullopt, "00FF10", "一行目\r\n二行目"}}, {}});
  view.Delete();
  expect_alone("delete");
}

TEST_F(GridTest, LookingAtANullDoesNotMakeItAnEmptyText) {
  OpenForEditing();
  Focus(1, 1);
  Key(Qt::Key_F2);
  Key(Qt::Key_Return);
  EXPECT_EQ(view.State(), GridState::kBrowse);
  Type("x");
  Key(Qt::Key_0, Qt::ControlModifier);
  EXPECT_EQ(Shown(1, 1), "(null)");
  Focus(2, 1);
  Key(Qt::Key_Delete, Qt::ControlModifier);
  EXPECT_EQ(Shown(2, 1), "(null)");
  EXPECT_EQ(view.State(), GridState::kEdit);
}

TEST_F(GridTest, TabDropsTheChangesOfTheRow) {
  OpenForEditing();
  Focus(0, 1);
  Type("pear");
  Key(Qt::Key_Return);
  Focus(0, 2);
  Type("2006");
  Key(Qt::Key_Tab);
  EXPECT_EQ(view.State(), GridState::kBrowse);
  EXPECT_EQ(Shown(0, 1), "りんご");
  EXPECT_TRUE(connection.statements.empty());
  EXPECT_TRUE(errors.empty());
}

TEST_F(GridTest, ARowThatCannotBeWrittenKeepsTheFocus) {
  OpenForEditing();
  connection.Fail("update", "Cannot insert the value NULL");
  Focus(0, 1);
  Type("pear");
  Key(Qt::Key_Return);
  Key(Qt::Key_Down);
  EXPECT_EQ(errors, std::vector<std::string>{"Cannot insert the value NULL"});
  EXPECT_EQ(widget.currentIndex().row(), 0);
  EXPECT_EQ(Shown(0, 1), "pear");
}

TEST_F(GridTest, SaysOnceThatATypedTextIsNoValue) {
  OpenForEditing();
  Focus(0, 2);
  Type("yesterday");
  Key(Qt::Key_Return);
  EXPECT_EQ(errors.size(), 1U);
  EXPECT_EQ(Shown(0, 2), "2005/03/08 9:05:07");
}

TEST_F(GridTest, CopiesASelectionAsTabbedLinesAndOneCellWhole) {
  OpenForEditing();
  Focus(1, 4);
  Key(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(FromQt(QApplication::clipboard()->text()), "一行目\n二行目");
  widget.selectAll();
  Key(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(FromQt(QApplication::clipboard()->text()),
            "1\tりんご\t2005-03-08 09:05:07.000\t\t\n2\t\t\t0x00FF10\t一行目 二行目\n"
            "3\t\t2005-03-08 00:00:00.000\t0x00\tx");
}

TEST_F(GridTest, TellsALostPageOnceAndKeepsTheRowsBeforeIt) {
  testing::FakeCursors cursors;
  bool is_open = true;
  FakeResult many{TextFields({"n"}), {}, {}};
  for (int i = 0; i < 1000; ++i) many.rows.push_back({std::to_string(i)});
  cursors.break_at = 150;
  view.Open(std::make_unique<CursorRows>(std::make_unique<FakeCursor>(many, cursors, is_open)));
  view.Last();
  Focus(900, 0);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !errors.empty(); }));
  EXPECT_EQ(errors, std::vector<std::string>{"Write to the server failed"});
  EXPECT_EQ(Shown(99, 0), "99");
  EXPECT_FALSE(view.Active());
}

TEST_F(GridTest, AColumnGrowsWithTheRowsThatComeIntoSightUnlessItWasSizedByHand) {
  std::vector<testing::FakeRow> rows(200, {"1", "x", std::nullopt, std::nullopt, std::nullopt});
  rows[150][0] = rows[150][1] = "12345678901234567890";
  Open(rows);
  const int text = widget.fontMetrics().horizontalAdvance("12345678901234567890");
  EXPECT_LT(widget.columnWidth(0), text);
  widget.horizontalHeader()->resizeSection(1, 50);
  Focus(150, 0);
  EXPECT_GT(widget.columnWidth(0), text);
  EXPECT_EQ(widget.columnWidth(1), 50);
}

TEST_F(GridTest, ShowsAThousandColumnsAndAMegabyteInACell) {
  std::vector<Field> fields;
  testing::FakeRow row;
  for (int i = 0; i < 1000; ++i) {
    fields.push_back({.name = "c" + std::to_string(i), .type_name = "varchar", .size = 10});
    row.emplace_back(std::to_string(i));
  }
  row[1] = std::string(1 << 20, 'x');
  FakeReader reader({fields, {row, row}, {}});
  auto store = std::make_unique<RowStore>(fields);
  store->ReadAll(reader);
  view.Open(std::move(store));
  EXPECT_EQ(widget.model()->columnCount(), 1000);
  EXPECT_EQ(Shown(0, 999), "999");
  EXPECT_LT(Shown(0, 1).size(), 2000U);
  widget.grab();
}

TEST(HexTable, ShowsPlaceBytesAndLetters) {
  EXPECT_EQ(FromQt(qt::HexTable("0x41420A")),
            "00000000  41 42 0a                                         AB.\n");
}

}  // namespace
}  // namespace dbkeeper
