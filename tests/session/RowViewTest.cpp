#include "app/session/RowView.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/session/RowStore.h"
#include "app/support/Errors.h"
#include "controls/Navigator.h"
#include "tests/support/EditableTable.h"
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
  RowViewTest() { AnswerForCatalog("U "); }

  void AnswerForCatalog(const std::string& kind) {
    const std::vector<testing::FakeRow> key = {{"1", "2066", "id", "0"}};
    testing::AnswerForTable(connection,
                            {{kind, "id", "int", "0", "1"},
                             {kind, "name", "varchar", "0", "0"},
                             {kind, "price", "money", "0", "0"},
                             {kind, "note", "ntext", "0", "0"},
                             {kind, "twice", "money", "1", "0"}},
                            has_key ? key : std::vector<testing::FakeRow>());
  }

  void Open() {
    FakeReader reader({ItemFields(), kRows, {}});
    auto store = std::make_unique<RowStore>(ItemFields());
    store->ReadAll(reader);
    view.Open(std::move(store));
    AnswerForCatalog("U ");
    view.AllowEditing(std::make_unique<RowEditor>(connection, kSelect, ItemFields()));
    connection.statements.clear();
    AnswerToChanges();
  }

  // What the server answers to every change from now on.
  void AnswerToChanges() {
    testing::AnswerToChange(connection, {ItemFields(), before_rows, touched, after_rows, depth});
  }

  std::string Text(std::int64_t row, std::size_t column) {
    const GridCell cell = view.Cell(row, column);
    return cell.Null ? "(null)" : std::string(cell.Text);
  }

  FakeConnection connection;
  testing::FakeLocale locale;
  RowView view{locale};
  bool has_key = false;
  std::string depth = "0";                            // of transactions
  std::vector<testing::FakeRow> before_rows = kRows;  // that a change finds
  std::string touched = "1";
  std::vector<testing::FakeRow> after_rows = {};
};

const std::string kBegin =
    "select @@trancount as dbkeeper_depth union all select @@trancount\r\n"
    "if @@trancount = 0 begin transaction else save transaction dbkeeper_row\r\n";
const std::string kCommit = "while @@trancount > 0 commit transaction";
const std::string kCount =
    "\r\nselect @@rowcount as dbkeeper_rows, scope_identity() as dbkeeper_identity";
const std::string kFrom = ", [id], [name], [price], [note], [twice] from [sales]..[items]";
const std::string kLock = "select top 2 1 as dbkeeper_before" + kFrom + " with (updlock)";
const std::string kStored = "\r\nselect top 2 1 as dbkeeper_after" + kFrom;
const std::string kFirstRow =
    " where [id] = 1 and [name] = 'apple' and [price] = 1.5000 and [twice] = 3.0000";

TEST_F(RowViewTest, WritesAChangedRowInTwoBatchesAndNamesItByItsOriginalValues) {
  has_key = true;
  before_rows = {kRows[0]};
  after_rows = {{"1", "梨", "2.0000", "x", "4.0000"}};
  Open();
  view.SetCell(1, "梨");
  view.SetCell(2, "2");
  view.Post();
  EXPECT_EQ(connection.statements,
            (Statements{kBegin + kLock + kFirstRow +
                            "\r\nupdate [sales]..[items] set [name] = N'梨', [price] = 2" +
                            kFirstRow + kCount + kStored + " where [id] = 1",
                        kCommit}));
  EXPECT_EQ(Text(0, 1), "梨");
  EXPECT_EQ(Text(0, 4), "4.0000") << "what the server computed is shown";
  EXPECT_EQ(view.State(), GridState::kBrowse);
}

TEST_F(RowViewTest, ComparesNullsAsNullsAndWritesThemAsNulls) {
  has_key = true;
  before_rows = {kRows[1]};
  Open();
  view.Next();
  view.SetCell(1, "");
  view.SetCell(2, std::nullopt);
  view.Post();
  const std::string row =
      " where [id] = 2 and [name] is null and [price] is null and [twice] is null";
  EXPECT_EQ(connection.statements.front(),
            kBegin + kLock + row + "\r\nupdate [sales]..[items] set [name] = '', [price] = null" +
                row + kCount + kStored + " where [id] = 2");
}

TEST_F(RowViewTest, TakesBackWhateverTouchedAnotherNumberOfRowsThanOne) {
  const struct {
    const char* touched;
    const char* words;
  } kCases[] = {{"0", "他の利用者が先に変更または削除した"}, {"2", "同じ内容の行が 2 行あり"}};
  for (const auto& c : kCases) {
    for (const bool deleting : {false, true}) {
      touched = c.touched;
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

TEST_F(RowViewTest, TakesBackAChangeToARowThatIsAnotherToTheLetter) {
  const struct {
    const char* name;
    const char* note;
  } kNow[] = {{"Apple", "x"}, {"apple ", "x"}, {"apple", "y"}};
  for (const auto& now : kNow) {
    before_rows = {{"1", now.name, "1.5000", now.note, "3.0000"}};
    Open();
    EXPECT_THROW(view.Delete(), RowError) << now.name << now.note;
    EXPECT_EQ(connection.statements.size(), 2U);
    EXPECT_EQ(connection.statements.back(), "rollback transaction");
  }
}

TEST_F(RowViewTest, TakesBackAChangeThatTheServerRefusesHalfWay) {
  Open();
  const ServerMessage refused{.number = 547, .severity = 16, .text = "conflicted"};
  connection.Answer("dbkeeper_depth", {.fields = TextFields({"dbkeeper_depth"}),
                                       .rows = {{"0"}, {"0"}},
                                       .then = {{.error = refused}}});
  EXPECT_THROW(view.Delete(), ServerError);
  EXPECT_EQ(connection.statements.back(), "rollback transaction");
}

TEST_F(RowViewTest, LeavesTheOperatorsOwnTransactionOpen) {
  depth = "1";
  before_rows = {kRows[0]};
  Open();
  view.SetCell(1, "pear");
  view.Post();
  EXPECT_EQ(connection.statements.size(), 1U) << "nothing is committed";
  touched = "2";
  AnswerToChanges();
  EXPECT_THROW(view.Delete(), RowError);
  EXPECT_EQ(connection.statements.back(), "rollback transaction dbkeeper_row");
}

TEST_F(RowViewTest, WritesNothingWhereTheAnswersAreCutOffOrOfAnotherForm) {
  struct Case {
    FakeResult answer;
    const char* words;
    const char* last;
  };
  const Case cases[] = {
      {{TextFields({"dbkeeper_depth"}), {{"0"}}}, "set rowcount 1", "rollback transaction"},
      {{TextFields({"StmtText"}), {{"select ..."}}}, "set showplan_text", nullptr},
      {{TextFields({"dbkeeper_depth"}), {}}, "set showplan_text", nullptr},
      {{}, "set showplan_text", nullptr},
  };
  for (const Case& c : cases) {
    Open();
    connection.Answer("dbkeeper_depth", c.answer);
    try {
      view.Delete();
      ADD_FAILURE() << c.words;
    } catch (const RowError& error) {
      EXPECT_NE(std::string(error.what()).find(c.words), std::string::npos) << error.what();
    }
    EXPECT_EQ(connection.statements.size(), c.last == nullptr ? 1U : 2U);
    if (c.last != nullptr) {
      EXPECT_EQ(connection.statements.back(), c.last);
    }
    EXPECT_EQ(view.RowCount().Rows, 2);
  }
}

TEST_F(RowViewTest, TakesBackATextThatTheServerCannotKeep) {
  has_key = true;
  before_rows = {kRows[0]};
  after_rows = {{"1", "?", "1.5000", "x", "3.0000"}};
  Open();
  view.SetCell(1, "한");
  EXPECT_THROW(view.Post(), RowError);
  EXPECT_EQ(connection.statements.back(), "rollback transaction");
}

TEST_F(RowViewTest, InsertsOnlyTheValuesThatWereGivenAndShowsWhatTheServerFilledIn) {
  has_key = true;
  after_rows = {{"9", "fig", "7.0000", std::nullopt, "14.0000"}};
  Open();
  view.Next();
  view.Insert();
  EXPECT_EQ(view.RowCount().Rows, 3);
  EXPECT_EQ(Text(1, 1), "(null)");
  EXPECT_EQ(Text(2, 0), "2");
  view.SetCell(1, "fig");
  view.SetCell(3, std::nullopt);
  view.Post();
  EXPECT_EQ(
      connection.statements,
      (Statements{kBegin + "insert into [sales]..[items] ([name], [note]) values ('fig', null)" +
                      kCount + kStored + " where [id] = scope_identity()",
                  kCommit}));
  EXPECT_EQ(Text(1, 0), "9");
  EXPECT_EQ(Text(1, 2), "7.0000");
  EXPECT_EQ(view.RowCount().Rows, 3);
}

TEST_F(RowViewTest, ShowsItsRowsInOrderThroughInsertsAndDeletes) {
  Open();
  view.Insert();
  view.Post();  // a row of defaults in front
  EXPECT_EQ(connection.statements.front(), kBegin + "insert into [sales]..[items] default values" +
                                               kCount + kStored + " where [id] = scope_identity()");
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
  before_rows = {kRows[0]};
  Open();
  view.SetCell(1, "pear");
  EXPECT_TRUE(connection.statements.empty());
  view.Next();
  EXPECT_EQ(connection.statements.back(), kCommit);
  EXPECT_EQ(view.CurrentRow(), 1);

  touched = "0";
  AnswerToChanges();
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
  AnswerForCatalog("V ");
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
