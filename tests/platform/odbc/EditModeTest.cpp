// Edit mode over the real wire: what an operator does in the grid and on the navigator of the query
// window and of the table browser, and what another client then sees in the table.
#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/main/Application.h"
#include "platform/odbc/OdbcConnection.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

using testing::FileBytes;
using testing::PutFile;
using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

enum class Face { kQueryWindow, kTableBrowser };

class EditModeTest : public ::testing::TestWithParam<Face> {
 protected:
  static void SetUpTestSuite() { server_ = std::make_unique<LocalServer>(); }
  static void TearDownTestSuite() { server_.reset(); }

  EditModeTest() {
    app.Session.ServerName = kLocalServer;
    app.Session.LoginMode = Authentication::kWindows;
    app.Session.Open();
    other.Open(server_->ConnectionString());
    for (Connection* each : std::initializer_list<Connection*>{&connection, &other}) {
      each->Execute("use [tempdb]");
    }
    Click(OnQueryWindow() ? window.SBtn_RE : browser.Sbtn_RE);
  }
  ~EditModeTest() override {
    Close();
    for (const std::string& table : tables_) connection.Execute("drop table [" + table + "]");
  }

  static bool OnQueryWindow() { return GetParam() == Face::kQueryWindow; }

  void Create(const std::string& table, const std::string& columns) {
    Close();
    if (tables_.count(table) > 0) connection.Execute("drop table [" + table + "]");
    connection.Execute("create table [" + table + "] (" + columns + ")");
    tables_.insert(table);
  }
  void Click(Button& button) {
    app.Guard().Run([&button] { button.UserClick(); });
  }
  void Open(const std::string& table) {
    Close();
    window.MemoSQL.UserType("select * from [" + table + "]");
    browser.Edit_Open_TableName.Text = table;
    Click(opener);
    ASSERT_TRUE(opener.Down);
  }
  void Close() {
    if (opener.Down) Click(opener);
  }
  GridSource& Shown() { return *grid.Source(); }
  void Go(std::int64_t row) {
    app.Guard().Run([&] { grid.UserMoveTo(row, 0); });
  }
  void Type(std::size_t column, const std::optional<std::string>& text) {
    app.Guard().Run([&] { grid.UserSetCell(column, text); });
  }
  void Press(NavigatorButton button) {
    if (button == NavigatorButton::kDelete) fake.dialogs.answers = {Answer::kOk};
    app.Guard().Run([&] { navigator.UserPress(button); });
  }
  // Types into a cell of the row and posts it.
  void Write(std::int64_t row, std::size_t column, const std::optional<std::string>& text) {
    Go(row);
    Type(column, text);
    Press(NavigatorButton::kPost);
  }
  std::string Cell(std::int64_t row, std::size_t column) {
    const GridCell cell = Shown().Cell(row, column);
    return cell.Null ? "-" : std::string(cell.Text);
  }
  // The rows of a select as another client sees them, nulls as "-".
  Rows Seen(const std::string& select) { return RowsOf(other, select); }
  static Rows RowsOf(Connection& from, const std::string& select) {
    Rows rows;
    const auto reader = from.Query(select);
    while (reader->Next()) {
      Row& row = rows.emplace_back();
      for (std::size_t i = 0; i < reader->Fields().size(); ++i) {
        row.emplace_back(reader->IsNull(i) ? "-" : reader->Text(i));
      }
    }
    return rows;
  }
  // What the error box has said since the last call.
  std::string Told() {
    std::string told;
    for (const std::string& text : std::exchange(fake.dialogs.errors, {})) told += text;
    return told;
  }

  static const Host& Installed(testing::FakeHost& fake, const testing::TemporaryFolder& folder) {
    fake.shell.executable = folder / "DBKEEPER.exe";
    return fake.host;
  }

  static std::unique_ptr<LocalServer> server_;
  testing::TemporaryFolder folder;
  testing::FakeHost fake;
  OdbcConnection connection{OdbcOptions{}, server_->Endpoint()};
  OdbcConnection other{OdbcOptions{}, server_->Endpoint()};
  Application app{connection, Installed(fake, folder)};
  TFormExecSQL& window = app.FormExecSQL;
  TableBrowser& browser = app.FormMain.Browser;
  Button& opener = OnQueryWindow() ? window.Sbtn_Select : browser.Sbtn_TableOpen;
  DataGrid& grid = OnQueryWindow() ? window.DBGrid1 : browser.DBGrid1;
  Navigator& navigator = OnQueryWindow() ? window.DBNavigator1 : browser.DBNavigator1;
  std::set<std::string> tables_;
};

std::unique_ptr<LocalServer> EditModeTest::server_;

INSTANTIATE_TEST_SUITE_P(, EditModeTest, ::testing::Values(Face::kQueryWindow, Face::kTableBrowser),
                         [](const auto& face) {
                           return face.param == Face::kQueryWindow ? "QueryWindow" : "TableBrowser";
                         });

struct TypeCase {
  const char* type;
  const char* before;  // a literal
  const char* typed;
  const char* seen;
};

const TypeCase kTypes[] = {
    {"bit", "0", "true", "1"},
    {"tinyint", "1", "255", "255"},
    {"smallint", "1", "-32768", "-32768"},
    {"int", "5", "+2147483647", "2147483647"},
    {"bigint", "5", "-9223372036854775808", "-9223372036854775808"},
    {"decimal(38)", "1", "99999999999999999999999999999999999999",
     "99999999999999999999999999999999999999"},
    {"decimal(38, 10)", "-0.5", "-1234567890123456789012345678.0123456789",
     "-1234567890123456789012345678.0123456789"},
    {"numeric(12, 4)", "1.5", ".25", "0.2500"},
    {"money", "0.0001", "-922337203685477.5808", "-922337203685477.5808"},
    {"smallmoney", "1", "214748.3647", "214748.3647"},
    {"float", "0.1", "1e-300", "1e-300"},
    {"real", "1.1", "0.3", "0.3"},
    {"datetime", "'20050308 09:05:07.123'", "9999/12/31 23:59:59.997", "9999-12-31 23:59:59.997"},
    {"datetime", "'17530101'", "2004/2/29", "2004-02-29 00:00:00.000"},
    {"smalldatetime", "'20050308 09:05'", "2079/06/06 23:59", "2079-06-06 23:59:00.000"},
    {"uniqueidentifier", "'6F9619FF-8B86-D011-B42D-00C04FC964FF'",
     "{00112233-4455-6677-8899-aabbccddeeff}", "00112233-4455-6677-8899-AABBCCDDEEFF"},
    {"char(6)", "'ab'", "日本", "日本  "},
    {"nchar(4)", "N'林檎'", "ab", "ab  "},
    {"varchar(40)", "'apple'", "梨 'と' 髙①~\\ ﾓﾓ", "梨 'と' 髙①~\\ ﾓﾓ"},
    {"nvarchar(40)", "N'林檎'", "한국 😀 \xE3\x82\xAB\xE3\x82\x99 --'",
     "한국 😀 \xE3\x82\xAB\xE3\x82\x99 --'"},
    {"varchar(10)", "'a'", "", ""},
    {"varchar(10)", "''", " x ", " x "},
    {"nvarchar(10)", "N''", "", ""},
    {"text", "'a'", "長い\r\n文章", "長い\r\n文章"},
    {"text", "'a'", "", ""},
    {"ntext", "N''", "長い\t文章 😀", "長い\t文章 😀"},
    {"ntext", "N'一'", "", ""},
    {"binary(4)", "0x01", "0x0102", "01020000"},
    {"varbinary(20)", "0x", "0x00ff", "00FF"},
    {"varbinary(20)", "0x01", "0x", ""},
    {"image", "0x00", "FF00", "FF00"},
    {"image", "0xFF", "0x", ""},
};

TEST_P(EditModeTest, WritesEveryTypeAndNamesTheRowByItsOriginalValues) {
  for (const std::string key : {"", " primary key"}) {
    for (const TypeCase& c : kTypes) {
      SCOPED_TRACE(std::string(c.type) + key + ", " + c.typed);
      const std::string type = c.type;
      Create("t", "id int not null" + key + ", v " + type + " null");
      connection.Execute(std::string("insert t values (1, ") + c.before +
                         ") insert t values (2, null)");
      Open("t");
      ASSERT_EQ(Shown().EditRefusal(), "");
      const std::string all = "select id, v from t order by id";

      Write(0, 1, c.typed);
      EXPECT_EQ(Seen(all), (Rows{{"1", c.seen}, {"2", "-"}}));
      const std::string shown = Cell(0, 1);
      Press(NavigatorButton::kRefresh);
      EXPECT_EQ(Cell(0, 1), shown);

      Write(0, 1, std::nullopt);
      EXPECT_EQ(Seen(all), (Rows{{"1", "-"}, {"2", "-"}}));
      Write(1, 1, c.typed);
      EXPECT_EQ(Seen(all), (Rows{{"1", "-"}, {"2", c.seen}}));
      Press(NavigatorButton::kInsert);
      Type(0, "3");
      Type(1, c.typed);
      Press(NavigatorButton::kPost);
      EXPECT_EQ(Seen(all), (Rows{{"1", "-"}, {"2", c.seen}, {"3", c.seen}}));
      Press(NavigatorButton::kDelete);
      EXPECT_EQ(Seen(all), (Rows{{"1", "-"}, {"2", c.seen}}));
      Press(NavigatorButton::kRefresh);
      EXPECT_EQ(Shown().RowCount(), (GridRowCount{2, true}));
      Go(1);
      Press(NavigatorButton::kDelete);
      EXPECT_EQ(Seen(all), (Rows{{"1", "-"}}));
      EXPECT_EQ(Told(), "");
    }
  }
}

TEST_P(EditModeTest, KeepsValuesOfMegabytesWhole) {
  std::string text;
  while (text.size() < 3'000'000) text += "漢字 ABC\r\n";
  std::string digits;
  while (digits.size() < 6'000'000) digits += "00FF7F80";
  Create("big", "id int primary key, t text null, n ntext null, i image null");
  connection.Execute("insert big values (1, 'a', null, 0x00)");
  Open("big");
  Type(1, text);
  Type(2, text);
  Type(3, "0x" + digits);
  Press(NavigatorButton::kPost);
  EXPECT_EQ(Told(), "");
  EXPECT_TRUE(Seen("select t, n, i from big") == (Rows{{text, text, digits}}));
  Press(NavigatorButton::kRefresh);
  EXPECT_TRUE(Shown().WholeText(0, 1) == text && Shown().WholeText(0, 2) == text);
  EXPECT_TRUE(Shown().WholeText(0, 3) == "0x" + digits);
  Press(NavigatorButton::kDelete);
  EXPECT_EQ(Seen("select id from big"), Rows{});
}

TEST_P(EditModeTest, WritesNoRowThatIsNotTheOneThatWasRead) {
  struct Case {
    const char* key;
    const char* row;
    const char* meanwhile;  // what someone else does
    const char* told;
  };
  const char* const gone = "他の利用者が先に変更または削除した";
  const Case cases[] = {
      {"", "1, 'a', 'x'", "insert t values (1, 'a', 'x')", "同じ内容の行が 2 行あり"},
      {" primary key", "1, 'a', 'x'", "update t set v = 'b'", gone},
      {" primary key", "1, 'a', 'x'", "update t set v = 'A'", gone},
      {" primary key", "1, 'a', 'x'", "update t set v = 'a '", gone},
      {" primary key", "1, 'ｱ', 'x'", "update t set v = 'ア'", gone},
      {" primary key", "1, 'a', 'x'", "update t set v = null", gone},
      {" primary key", "1, null, 'x'", "update t set v = ''", gone},
      {" primary key", "1, 'a', 'x'", "update t set note = 'y'", gone},
      {" primary key", "1, 'a', null", "update t set note = ''", gone},
      {" primary key", "1, 'a', 'x'", "update t set id = 2", gone},
      {" primary key", "1, 'a', 'x'", "delete t", gone},
      {"", "1, 'a', 'x'", "update t set v = 'b'", gone},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.meanwhile);
    Create("t", std::string("id int not null") + c.key + ", v varchar(10) null, note text null");
    connection.Execute(std::string("insert t values (") + c.row + ")");
    Open("t");
    const std::string shown = Cell(0, 1);
    other.Execute(std::string("use [tempdb] ") + c.meanwhile);
    const Rows theirs = Seen("select * from t");

    Write(0, 1, "mine");
    EXPECT_NE(Told().find(c.told), std::string::npos);
    EXPECT_EQ(Shown().State(), GridState::kEdit);
    EXPECT_EQ(Cell(0, 1), "mine") << "to be tried again";
    Press(NavigatorButton::kCancel);
    EXPECT_EQ(Cell(0, 1), shown);
    Press(NavigatorButton::kDelete);
    EXPECT_NE(Told().find(c.told), std::string::npos);
    EXPECT_EQ(Seen("select * from t"), theirs);
    EXPECT_EQ(RowsOf(connection, "select @@trancount"), (Rows{{"0"}}));

    Press(NavigatorButton::kRefresh);
    EXPECT_EQ(Shown().RowCount().Rows, static_cast<std::int64_t>(theirs.size()));
  }
}

TEST_P(EditModeTest, LeavesToTheServerWhatTheServerFillsIn) {
  Create("filled",
         "id int identity(7, 1) primary key, n int null, made varchar(10) not null default "
         "'today', stamp timestamp");
  connection.Execute("insert filled (n) values (1)");
  Open("filled");
  const bool editable[] = {false, true, true, false};
  for (std::size_t column = 0; column < std::size(editable); ++column) {
    EXPECT_EQ(grid.Editable(column), editable[column]) << column;
  }
  Type(0, "9");
  EXPECT_EQ(Shown().State(), GridState::kBrowse);
  Write(0, 1, "5");
  Write(0, 1, "6");  // the row's time stamp has changed with it
  EXPECT_EQ(Seen("select id, n, made from filled"), (Rows{{"7", "6", "today"}}));
  Press(NavigatorButton::kInsert);
  Type(1, "3");
  Press(NavigatorButton::kPost);
  EXPECT_EQ(Cell(0, 0) + Cell(0, 1) + Cell(0, 2), "83today");
  Press(NavigatorButton::kDelete);
  EXPECT_EQ(Seen("select id from filled"), (Rows{{"7"}}));
  EXPECT_EQ(Told(), "");
}

TEST_P(EditModeTest, DoesNotShowAnotherRowInThePlaceOfANewOne) {
  Create("logged", "name varchar(10) not null, n int null default 5");
  connection.Execute("insert logged values ('a', 1)");
  Open("logged");
  Press(NavigatorButton::kInsert);
  Type(0, "b");
  Press(NavigatorButton::kPost);
  EXPECT_EQ(Cell(0, 0) + Cell(0, 1), "b5");
  Press(NavigatorButton::kInsert);
  Type(0, "a");
  Press(NavigatorButton::kPost);
  EXPECT_EQ(Cell(0, 0) + Cell(0, 1), "a-") << "its default is not known before a refresh";
  Press(NavigatorButton::kRefresh);
  EXPECT_EQ(Shown().RowCount().Rows, 3);
  EXPECT_EQ(Told(), "");
}

TEST_P(EditModeTest, MovesAndDropsChangesAsTheNavigatorIsPressed) {
  Create("items", "id int primary key, name varchar(5) not null");
  connection.Execute("insert items values (1, 'a') insert items values (2, 'b')");
  Open("items");
  Type(1, "c");
  Press(NavigatorButton::kNext);  // posts
  EXPECT_EQ(Seen("select name from items"), (Rows{{"c"}, {"b"}}));
  EXPECT_EQ(Shown().CurrentRow(), 1);
  Type(1, "x");
  Press(NavigatorButton::kCancel);
  EXPECT_EQ(Cell(1, 1), "b");
  Press(NavigatorButton::kInsert);
  EXPECT_EQ(Shown().RowCount().Rows, 3);
  EXPECT_EQ(Cell(1, 1), "-");
  EXPECT_EQ(Cell(2, 1), "b");
  Press(NavigatorButton::kDelete);
  EXPECT_EQ(Shown().RowCount().Rows, 2);

  const struct {
    const char* id;
    const char* name;
    const char* told;
  } refused[] = {{"1", "d", "PRIMARY KEY"}, {"3", nullptr, "NULL"}, {"3", "too long", "truncated"}};
  for (const auto& c : refused) {
    Press(NavigatorButton::kInsert);
    Type(0, c.id);
    if (c.name != nullptr) Type(1, c.name);
    Press(NavigatorButton::kPost);
    EXPECT_NE(Told().find(c.told), std::string::npos) << c.told;
    EXPECT_EQ(Shown().State(), GridState::kInsert);
    Press(NavigatorButton::kCancel);
  }
  Type(0, "many");
  EXPECT_NE(Told().find("フィールドの型に合わない値です"), std::string::npos);
  EXPECT_EQ(Seen("select id, name from items"), (Rows{{"1", "c"}, {"2", "b"}}));

  Write(1, 1, "e");
  other.Execute("insert tempdb..items values (3, 'f')");
  Press(NavigatorButton::kRefresh);
  EXPECT_EQ(Shown().RowCount().Rows, 3);
  EXPECT_EQ(Shown().CurrentRow(), 1);
  EXPECT_EQ(Cell(1, 1), "e");
}

TEST_P(EditModeTest, TakesBackATextThatTheColumnsCodePageLacks) {
  Create("narrow", "id int primary key, name varchar(20) null, note text null");
  connection.Execute("insert narrow values (1, 'a', 'b')");
  Open("narrow");
  for (const std::size_t column : {1U, 2U}) {
    Write(0, column, "한국");
    EXPECT_NE(Told().find("サーバーの文字コードで表せない文字"), std::string::npos) << column;
    Press(NavigatorButton::kCancel);
  }
  EXPECT_EQ(Seen("select * from narrow"), (Rows{{"1", "a", "b"}}));
}

TEST_P(EditModeTest, WritesToItsTableAfterAUseOfAnotherDatabase) {
  Create("here", "name varchar(20) null");
  connection.Execute("insert here values ('a')");
  Open("here");
  connection.Execute("use [master]");
  Write(0, 0, "b");
  connection.Execute("use [tempdb]");
  EXPECT_EQ(Seen("select name from here"), (Rows{{"b"}}));
  EXPECT_EQ(Told(), "");
}

// Pages are long enough to be dropped and fetched again.
TEST_P(EditModeTest, ShowsEveryRowOnceWhileRowsAreDeletedAndInserted) {
  constexpr int kRows = 1500;
  Create("wide", "id int not null, filler char(7500) not null");
  std::string inserts = "begin transaction";
  for (int id = 0; id < kRows; ++id)
    inserts += " insert wide values (" + std::to_string(id) + ", 'x')";
  connection.Execute(inserts + " commit transaction");
  Open("wide");
  std::set<std::string> gone;
  std::set<std::string> theirs;
  const auto remove = [&](std::int64_t row) {
    Go(row);
    gone.insert(Cell(row, 0));
    Press(NavigatorButton::kDelete);
  };
  const auto expect_all = [&] {
    Row shown;
    for (std::int64_t row = 0; row < Shown().RowCount().Rows; ++row) {
      if (Cell(row, 0) != "-") shown.push_back(Cell(row, 0));
      if (row + 1 == Shown().RowCount().Rows) Shown().FetchMore();
    }
    Row wanted;
    for (int id = 0; id < kRows; ++id) {
      const std::string text = std::to_string(id);
      if (gone.count(text) == 0 && theirs.count(text) == 0) wanted.push_back(text);
    }
    EXPECT_EQ(shown, wanted);
  };
  remove(5);
  remove(5);
  Press(NavigatorButton::kLast);
  remove(Shown().CurrentRow());
  remove(250);
  expect_all();
  for (const int id : {99, 100, 700, 1400}) {
    other.Execute("delete tempdb..wide where id = " + std::to_string(id));
    if (!OnQueryWindow()) theirs.insert(std::to_string(id));
  }
  remove(0);
  expect_all();
  Go(800);
  Press(NavigatorButton::kRefresh);
  EXPECT_EQ(Shown().CurrentRow(), 800);
  for (const int id : {99, 100, 700, 1400}) theirs.insert(std::to_string(id));
  expect_all();
  EXPECT_EQ(Told(), "");
}

class QueryWindowEditTest : public EditModeTest {};
INSTANTIATE_TEST_SUITE_P(, QueryWindowEditTest, ::testing::Values(Face::kQueryWindow));

TEST_P(QueryWindowEditTest, OnlyARowOfOneTableCanBeWritten) {
  Create("items", "id int primary key, name varchar(20) null");
  connection.Execute(
      "insert items values (1, 'a') exec('create view seen as select * from items')");
  const struct {
    const char* sql;
    const char* editable;  // of each column
  } cases[] = {
      {"select * from items", "11"},
      {"select name, id from tempdb.dbo.items as i where id = 1 order by name", "11"},
      {"select top 1 [name] label, id + 1, upper(name) from items", "100"},
      {"select a.id, b.name from items a, items b", "00"},
      {"select a.id from items a inner join items b on a.id = b.id", "0"},
      {"select count(*) from items", "0"},
      {"select distinct id from items", "0"},
      {"select id from items union select 2", "0"},
      {"select id from (select id from items) t", "0"},
      {"select * from seen", "00"},
      {"exec sp_who", nullptr},
      {"select * from master.dbo.sysdatabases", nullptr},
  };
  for (const auto& c : cases) {
    Close();
    window.MemoSQL.UserType(c.sql);
    Click(opener);
    ASSERT_TRUE(opener.Down) << c.sql << Told();
    std::string editable;
    for (std::size_t i = 0; i < Shown().Columns().size(); ++i)
      editable += grid.Editable(i) ? '1' : '0';
    const std::string wanted =
        c.editable != nullptr ? c.editable : std::string(editable.size(), '0');
    EXPECT_EQ(editable, wanted) << c.sql;
    EXPECT_EQ(Shown().EditRefusal().empty(), wanted.find('1') != std::string::npos) << c.sql;
  }
  connection.Execute("drop view seen");
}

TEST_P(QueryWindowEditTest, LoadsAnImageFromItsFileAndSavesItByteForByte) {
  std::string bytes;
  for (unsigned i = 0; bytes.size() < 5'000'000; ++i) {
    bytes += static_cast<char>(i * 2654435761U >> 24);
  }
  PutFile(folder / "D:\\TEST.bmp", bytes);
  Create("pictures", "id int primary key, picture image null, note text null");
  connection.Execute("insert pictures values (1, null, null)");
  const auto choose = [this](const char* item, int column) {
    app.Guard().Run([&] {
      grid.UserMoveTo(0, column);
      window.PopupMenu_Grid.Find(item)->UserChoose();
    });
  };
  Open("pictures");
  choose("PopupMenu_Grid_Blob_Load", 1);
  EXPECT_EQ(Told(), "");
  EXPECT_EQ(Shown().State(), GridState::kBrowse);
  EXPECT_EQ(Seen("select datalength(picture) from pictures"),
            (Rows{{std::to_string(bytes.size())}}));
  Press(NavigatorButton::kRefresh);
  choose("PopupMenu_Grid_Blob_Save", 1);
  EXPECT_TRUE(FileBytes(folder / "D:\\TEST2.bmp") == bytes);

  PutFile(folder / "D:\\TEST.bmp", "\x93\xfa\x96\x7b\r\n");
  choose("PopupMenu_Grid_Blob_Load", 2);
  EXPECT_EQ(Seen("select note from pictures"), (Rows{{"日本\r\n"}}));
  choose("PopupMenu_Grid_Blob_Save", 2);
  EXPECT_EQ(FileBytes(folder / "D:\\TEST2.bmp"), "\x93\xfa\x96\x7b\r\n");

  std::filesystem::remove(folder / "D:\\TEST.bmp");
  choose("PopupMenu_Grid_Blob_Load", 1);
  EXPECT_NE(Told().find("TEST.bmp"), std::string::npos);
  Press(NavigatorButton::kCancel);
  Click(window.SBtn_RE);
  Open("pictures");
  choose("PopupMenu_Grid_Blob_Load", 1);
  EXPECT_NE(Told(), "");
  EXPECT_EQ(Seen("select datalength(picture) from pictures"),
            (Rows{{std::to_string(bytes.size())}}));
}

class TableBrowserEditTest : public EditModeTest {};
INSTANTIATE_TEST_SUITE_P(, TableBrowserEditTest, ::testing::Values(Face::kTableBrowser));

TEST_P(TableBrowserEditTest, RowsOfAViewAreOnlyShown) {
  connection.Execute("exec('create view seen as select 1 as id')");
  Open("seen");
  EXPECT_FALSE(grid.Editable(0));
  EXPECT_NE(Shown().EditRefusal(), "");
  Close();
  connection.Execute("drop view seen");
}

TEST_P(TableBrowserEditTest, BrowsesWhileOtherStatementsRunOnTheConnection) {
  Create("many", "n int not null");
  connection.Execute(
      "insert many select a.id * 10 + b.id from sysobjects a, sysobjects b where "
      "a.id < 40 and b.id < 40");
  Open("many");
  const auto expected = std::stoll(Seen("select count(*) from many")[0][0]);
  for (std::int64_t row = 0; row < expected; row += 150) {
    EXPECT_NE(Cell(row, 0), "-");
    connection.Execute("select 1");
  }
  Press(NavigatorButton::kLast);
  EXPECT_EQ(Shown().CurrentRow(), expected - 1);
  EXPECT_FALSE(Shown().HasFailure());
}

}  // namespace
}  // namespace dbkeeper
