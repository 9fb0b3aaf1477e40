#include "app/session/RowView.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/session/RowStore.h"
#include "app/support/Errors.h"
#include "controls/Navigator.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

using testing::FakeConnection;
using testing::FakeReader;
using testing::FakeResult;
using testing::TextFields;

using Statements = std::vector<std::string>;

constexpr const char* kSelect = "select * from [items]";
constexpr const char* kTable = "[sales]..[items]";

std::vector<Field> ItemFields() {
  return {{.name = "id", .kind = FieldKind::kInteger, .type_name = "int", .nullable = false},
          {.name = "name", .kind = FieldKind::kText, .type_name = "varchar", .size = 20},
          {.name = "price", .kind = FieldKind::kDecimal, .type_name = "money"},
          {.name = "note", .kind = FieldKind::kText, .type_name = "ntext", .long_value = true},
          {.name = "twice", .kind = FieldKind::kDecimal, .type_name = "money"}};
}

const std::vector<testing::FakeRow> kRows = {
    {"1", "apple", "1.5000", "x", "3.0000"},
    {"2", std::nullopt, std::nullopt, std::nullopt, std::nullopt}};

// A table items(id int identity, name varchar(20), price money, note ntext, twice as price * 2) of
// database sales, with two rows in the view.
class RowViewTest : public ::testing::Test {
 protected:
  RowViewTest() {
    connection.Answer("db_name()", {TextFields({"name"}), {{"sales"}}, {}});
    connection.Answer("sysobjects", {TextFields({"id", "xtype", "name", "type", "c", "s"}),
                                     {{"77", "U ", "id", "int", "0", "1"},
                                      {"77", "U ", "name", "varchar", "0", "0"},
                                      {"77", "U ", "price", "money", "0", "0"},
                                      {"77", "U ", "note", "ntext", "0", "0"},
                                      {"77", "U ", "twice", "money", "1", "0"}},
                                     {}});
    connection.Answer("@@trancount", {TextFields({"depth"}), {{"0"}}, {}});
    Touches("1");
    HoldsNow(kRows);
  }

  // What the server holds when a row is to be written.
  void HoldsNow(std::vector<testing::FakeRow> rows) {
    connection.Answer("with (updlock)", {ItemFields(), std::move(rows), {}});
  }
  // What the tables of the catalog say of a key.
  void HasKey() {
    connection.Answer(
        "sysindexkeys",
        {TextFields({"indid", "status", "name", "isnullable"}), {{"1", "2066", "id", "0"}}, {}});
  }
  void Touches(const std::string& rows) {
    connection.Answer("@@rowcount",
                      {TextFields({"dbkeeper_rows", "dbkeeper_identity"}), {{rows, "9"}}, {}});
  }

  void Open() {
    FakeReader reader({ItemFields(), kRows, {}});
    auto store = std::make_unique<RowStore>(ItemFields());
    store->ReadAll(reader);
    view.Open(std::move(store));
    view.AllowEditing(std::make_unique<RowEditor>(connection, kSelect, ItemFields()));
    connection.statements.clear();
  }

  std::string Text(std::int64_t row, std::size_t column) {
    const GridCell cell = view.Cell(row, column);
    return cell.Null ? "(null)" : std::string(cell.Text);
  }

  FakeConnection connection;
  testing::FakeLocale locale;
  RowView view{locale};
};

const std::string kCount =
    "\r\nselect @@rowcount as dbkeeper_rows, scope_identity() as dbkeeper_identity";
const std::string kList =
    "select top 2 [id], [name], [price], [note], [twice] from [sales]..[items]";
const std::string kFirstRow =
    " where [id] = 1 and [name] = 'apple' and [price] = 1.5000 and [twice] = 3.0000";

TEST_F(RowViewTest, WritesAChangedRowInATransactionAndNamesItByItsOriginalValues) {
  HasKey();
  Open();
  connection.Answer(kList + " where", {ItemFields(), {{"1", "梨", "2.0000", "x", "4.0000"}}, {}});
  view.SetCell(1, "梨");
  view.SetCell(2, "2");
  view.Post();
  EXPECT_EQ(
      connection.statements,
      (Statements{"select @@trancount as depth", "begin transaction",
                  kList + " with (updlock)" + kFirstRow,
                  "update [sales]..[items] set [name] = N'梨', [price] = 2" + kFirstRow + kCount,
                  kList + " where [id] = 1", "commit transaction"}));
  EXPECT_EQ(Text(0, 1), "梨");
  EXPECT_EQ(Text(0, 4), "4.0000") << "what the server computed is shown";
  EXPECT_EQ(view.State(), GridState::kBrowse);
}

TEST_F(RowViewTest, ComparesNullsAsNullsAndWritesThemAsNulls) {
  HasKey();
  Open();
  view.Next();
  view.SetCell(1, "");
  view.SetCell(2, std::nullopt);
  view.Post();
  EXPECT_EQ(
      connection.statements[3],
      "update [sales]..[items] set [name] = '', [price] = null where [id] = 2 and [name] is null"
      " and [price] is null and [twice] is null" +
          kCount);
}

TEST_F(RowViewTest, TakesBackWhateverTouchedAnotherNumberOfRowsThanOne) {
  const struct {
    const char* touched;
    const char* words;
  } kCases[] = {{"0", "他の利用者が先に変更または削除した"}, {"2", "同じ内容の行が 2 行あり"}};
  for (const auto& c : kCases) {
    for (const bool deleting : {false, true}) {
      Touches(c.touched);
      Open();
      try {
        if (deleting) {
          view.Delete();
        } else {
          view.SetCell(1, "pear");
          view.Post();
        }
        ADD_FAILURE() << c.touched;
      } catch (const RowError& error) {
        EXPECT_NE(std::string(error.what()).find(c.words), std::string::npos) << error.what();
      }
      EXPECT_EQ(connection.statements.back(), "rollback transaction");
      EXPECT_EQ(view.RowCount().Rows, 2);
      EXPECT_EQ(view.State(), deleting ? GridState::kBrowse : GridState::kEdit);
      view.Cancel();
      EXPECT_EQ(Text(0, 1), "apple");
    }
  }
}

TEST_F(RowViewTest, DoesNotWriteARowThatIsAnotherToTheLetter) {
  const struct {
    const char* name;
    const char* note;
  } kNow[] = {{"Apple", "x"}, {"apple ", "x"}, {"apple", "y"}};
  for (const auto& now : kNow) {
    HoldsNow({{"1", now.name, "1.5000", now.note, "3.0000"}});
    Open();
    EXPECT_THROW(view.Delete(), RowError) << now.name << now.note;
    EXPECT_EQ(connection.statements.size(), 4U) << "nothing but the transaction's own statements";
    EXPECT_EQ(connection.statements.back(), "rollback transaction");
  }
}

TEST_F(RowViewTest, LeavesTheOperatorsOwnTransactionOpen) {
  connection.Answer("@@trancount", {TextFields({"depth"}), {{"1"}}, {}});
  Touches("2");
  Open();
  EXPECT_THROW(view.Delete(), RowError);
  EXPECT_EQ(connection.statements[1], "save transaction dbkeeper_row");
  EXPECT_EQ(connection.statements.back(), "rollback transaction dbkeeper_row");
}

TEST_F(RowViewTest, TakesBackATextThatTheServerCannotKeep) {
  HasKey();
  Open();
  connection.Answer(kList + " where", {ItemFields(), {{"1", "?", "1.5000", "x", "3.0000"}}, {}});
  view.SetCell(1, "한");
  EXPECT_THROW(view.Post(), RowError);
  EXPECT_EQ(connection.statements.back(), "rollback transaction");
}

TEST_F(RowViewTest, InsertsOnlyTheValuesThatWereGivenAndShowsWhatTheServerFilledIn) {
  HasKey();
  Open();
  connection.Answer(kList + " where",
                    {ItemFields(), {{"9", "fig", "7.0000", std::nullopt, "14.0000"}}, {}});
  view.Next();
  view.Insert();
  EXPECT_EQ(view.RowCount().Rows, 3);
  EXPECT_EQ(Text(1, 1), "(null)");
  EXPECT_EQ(Text(2, 0), "2");
  view.SetCell(1, "fig");
  view.SetCell(3, std::nullopt);
  view.Post();
  EXPECT_EQ(connection.statements[2],
            "insert into [sales]..[items] ([name], [note]) values ('fig', null)" + kCount);
  EXPECT_EQ(connection.statements[3], kList + " where [id] = 9");
  EXPECT_EQ(Text(1, 0), "9");
  EXPECT_EQ(Text(1, 2), "7.0000");
  EXPECT_EQ(view.RowCount().Rows, 3);
}

TEST_F(RowViewTest, ShowsItsRowsInOrderThroughInsertsAndDeletes) {
  Open();
  view.Insert();
  view.Post();  // a row of defaults in front
  EXPECT_EQ(connection.statements[2], "insert into [sales]..[items] default values" + kCount);
  view.Last();
  EXPECT_EQ(view.CurrentRow(), 2);
  EXPECT_EQ(Text(2, 0), "2");
  view.MoveTo(1);
  view.Delete();
  EXPECT_EQ(view.RowCount().Rows, 2);
  EXPECT_EQ(Text(1, 0), "2");
  view.Insert();
  view.Cancel();
  EXPECT_EQ(view.RowCount().Rows, 2);
  EXPECT_EQ(Text(1, 0), "2");
  view.Delete();
  view.Delete();
  EXPECT_EQ(view.RowCount().Rows, 0);
  EXPECT_EQ(view.CurrentRow(), -1);
  view.Insert();
  EXPECT_EQ(view.RowCount().Rows, 1);
}

TEST_F(RowViewTest, WritesTheChangedRowBeforeItIsLeft) {
  Open();
  view.SetCell(1, "pear");
  EXPECT_TRUE(connection.statements.empty());
  view.Next();
  EXPECT_EQ(connection.statements.back(), "commit transaction");
  EXPECT_EQ(view.CurrentRow(), 1);

  Touches("0");
  view.SetCell(1, "plum");
  EXPECT_THROW(view.Prior(), RowError);
  EXPECT_EQ(view.CurrentRow(), 1);
  EXPECT_EQ(Text(1, 1), "plum") << "what was typed is still there to be tried again";
}

TEST_F(RowViewTest, ANewRowThatNobodyTypedIntoIsDroppedByWhateverLeavesIt) {
  const struct {
    const char* what;
    void (*leave)(RowView& view);
    const char* current;  // the first cell of the row that the view stands on then
  } kCases[] = {
      {"next", [](RowView& v) { v.Next(); }, "2"},
      {"prior", [](RowView& v) { v.Prior(); }, "1"},
      {"first", [](RowView& v) { v.First(); }, "1"},
      {"last", [](RowView& v) { v.Last(); }, "2"},
      {"the row behind it", [](RowView& v) { v.MoveTo(2); }, "2"},
      {"the edit switch", [](RowView& v) { v.Leave(); }, "2"},
      {"read-only", [](RowView& v) { v.ForbidEditing(); }, "2"},
      {"refresh", [](RowView& v) { v.Refresh(); }, "2"},
      {"another new row", [](RowView& v) { v.Insert(); }, "(null)"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    Open();
    view.Next();
    view.Insert();
    c.leave(view);
    EXPECT_TRUE(connection.statements.empty());
    EXPECT_EQ(view.RowCount().Rows, view.State() == GridState::kInsert ? 3 : 2);
    EXPECT_EQ(Text(view.CurrentRow(), 0), c.current);
  }
}

TEST_F(RowViewTest, StoredTextsLeaveOutWhatIsBeingChanged) {
  Open();
  view.SetCell(1, "pear");
  EXPECT_EQ(Text(0, 1), "pear");
  EXPECT_EQ(view.StoredText(0, 1), "apple");
  view.Cancel();
  view.Insert();
  EXPECT_TRUE(view.IsNew(0));
  EXPECT_FALSE(view.IsNew(1));
  EXPECT_EQ(view.StoredText(1, 1), "apple");
}

TEST_F(RowViewTest, RefusesToWriteWhatTheServerFillsItselfAndWhatItCannotRead) {
  Open();
  EXPECT_THROW(view.SetCell(0, "5"), RowError) << "identity";
  EXPECT_THROW(view.SetCell(4, "5"), RowError) << "computed";
  EXPECT_THROW(view.SetCell(2, "many"), ConvertError);
  EXPECT_EQ(view.State(), GridState::kBrowse);
  view.ForbidEditing();
  EXPECT_THROW(view.SetCell(1, "x"), RowError);
  EXPECT_THROW(view.Insert(), RowError);
  EXPECT_TRUE(connection.statements.empty());
}

TEST_F(RowViewTest, SaysWhyAResultCannotBeWritten) {
  connection.Answer("sysobjects", {TextFields({"id", "xtype", "name", "type", "c", "s"}),
                                   {{"78", "V ", "id", "int", "0", "0"}},
                                   {}});
  EXPECT_NE(RowEditor(connection, kSelect, ItemFields()).Refusal(), "");
  EXPECT_NE(RowEditor(connection, "select * from a, b", ItemFields()).Refusal(), "");
}

TEST_F(RowViewTest, ANavigatorOffersOnlyWhatWouldDoSomething) {
  Open();
  Navigator navigator;
  navigator.Source = &view;
  const auto enabled = [&] {
    std::string marks;
    for (const NavigatorButton button : AllNavigatorButtons()) {
      marks += navigator.ButtonEnabled(button) ? '1' : '0';
    }
    return marks;
  };
  EXPECT_EQ(enabled(), "0011111001");
  navigator.UserPress(NavigatorButton::kInsert);
  EXPECT_EQ(view.State(), GridState::kBrowse) << "the button is not visible";
  navigator.VisibleButtons = AllNavigatorButtons();
  navigator.UserPress(NavigatorButton::kLast);
  EXPECT_EQ(enabled(), "1100111001");
  navigator.UserPress(NavigatorButton::kEdit);
  EXPECT_EQ(enabled(), "1100110111");
  navigator.UserPress(NavigatorButton::kDelete);
  EXPECT_EQ(view.RowCount().Rows, 2) << "nobody was asked";
  navigator.ConfirmDelete = [] { return true; };
  navigator.UserPress(NavigatorButton::kDelete);
  EXPECT_EQ(view.RowCount().Rows, 1);
  view.Close();
  EXPECT_EQ(enabled(), "0000000000");
}

}  // namespace
}  // namespace dbkeeper
