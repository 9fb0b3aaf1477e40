// Browsing and writing rows over the real wire.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/session/BrowseQuery.h"
#include "platform/odbc/OdbcConnection.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

using Row = std::vector<std::string>;

class RowEditingTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { server_ = std::make_unique<LocalServer>(); }
  static void TearDownTestSuite() { server_.reset(); }

  RowEditingTest() {
    connection.Open(server_->ConnectionString());
    other.Open(server_->ConnectionString());
    connection.Execute("use [tempdb]");
    connection.Execute(
        "create table [items] (id int identity(1,1) primary key, name varchar(20) null, "
        "title nvarchar(20) null, price money null, ratio float null, small real null, "
        "made datetime null, code uniqueidentifier null, picture image null, note ntext null, "
        "flag bit not null default 1)");
    connection.Execute(
        "insert into [items] (name, title, price, ratio, small, made, code, picture, note) values "
        "('apple', N'林檎', 1.2345, 0.1, 1.1, '20050308 09:05:07.123', "
        "'6F9619FF-8B86-D011-B42D-00C04FC964FF', 0x00FF, N'長い文章')");
    connection.Execute("insert into [items] (name) values (null)");
    connection.Execute("create table [twins] (name varchar(20) null, n int null)");
    for (const char* row : {"'a', 1", "'a', 1", "'b', 2"}) {
      connection.Execute(std::string("insert into [twins] values (") + row + ")");
    }
  }
  ~RowEditingTest() override {
    query.Close();
    connection.Execute("drop table [items]");
    connection.Execute("drop table [twins]");
  }

  void Open(const std::string& table) {
    query.SetLock(LockType::kOptimistic);
    query.Clear();
    query.Add("select * from [" + table + "]");
    query.Open();
    ASSERT_TRUE(query.Active());
    ASSERT_EQ(query.Rows.EditRefusal(), "");
  }
  // The rows of a table as another client sees them, nulls as "-".
  std::vector<Row> Seen(const std::string& select) {
    std::vector<Row> rows;
    const auto reader = other.Query(select);
    while (reader->Next()) {
      Row& row = rows.emplace_back();
      for (std::size_t i = 0; i < reader->Fields().size(); ++i) {
        row.emplace_back(reader->IsNull(i) ? "-" : reader->Text(i));
      }
    }
    return rows;
  }
  std::string Shown(std::int64_t row, std::size_t column) {
    const GridCell cell = query.Rows.Cell(row, column);
    return cell.Null ? "-" : std::string(cell.Text);
  }

  static std::unique_ptr<LocalServer> server_;
  OdbcConnection connection{OdbcOptions{}, server_->Endpoint()};
  OdbcConnection other{OdbcOptions{}, server_->Endpoint()};
  testing::FakeLocale locale;
  BrowseQuery query{connection, locale, nullptr};
};

std::unique_ptr<LocalServer> RowEditingTest::server_;

TEST_F(RowEditingTest, ChangesTheOneRowWhoseValuesAreOfEveryType) {
  Open("items");
  RowView& rows = query.Rows;
  rows.SetCell(1, "梨");
  rows.SetCell(2, "日本語 '引用'");
  rows.SetCell(3, "2.5");
  rows.SetCell(8, "0x0102");
  rows.SetCell(9, std::nullopt);
  rows.Post();
  EXPECT_EQ(Seen("select name, title, price, picture, note from tempdb.dbo.items where id = 1"),
            (std::vector<Row>{{"梨", "日本語 '引用'", "2.5000", "0102", "-"}}));
  rows.SetCell(1, "");
  rows.Post();
  EXPECT_EQ(Seen("select name from tempdb.dbo.items"), (std::vector<Row>{{""}, {"-"}}));
}

TEST_F(RowEditingTest, InsertsARowAndShowsItsIdentityAndDefaults) {
  Open("items");
  query.Rows.Insert();
  query.Rows.SetCell(1, "fig");
  query.Rows.Post();
  EXPECT_EQ(Shown(0, 0), "3");
  EXPECT_EQ(Shown(0, 1), "fig");
  EXPECT_EQ(Shown(0, 10), "1");
  query.Rows.Refresh();
  EXPECT_EQ(query.Rows.RowCount().Rows, 3);
}

TEST_F(RowEditingTest, DoesNotOverwriteWhatSomeoneElseHasChanged) {
  Open("items");
  other.Execute("update tempdb.dbo.items set price = 9 where id = 1");
  query.Rows.SetCell(1, "pear");
  EXPECT_THROW(query.Rows.Post(), RowError);
  EXPECT_EQ(Seen("select name, price from tempdb.dbo.items where id = 1"),
            (std::vector<Row>{{"apple", "9.0000"}}));
  query.Rows.Cancel();
  EXPECT_THROW(query.Rows.Delete(), RowError);
  query.Rows.Refresh();
  query.Rows.Delete();
  EXPECT_EQ(Seen("select id from tempdb.dbo.items"), (std::vector<Row>{{"2"}}));
}

TEST_F(RowEditingTest, ChangesNoneOfTwoEqualRows) {
  Open("twins");
  query.Rows.SetCell(1, "7");
  EXPECT_THROW(query.Rows.Post(), RowError);
  query.Rows.Cancel();
  EXPECT_THROW(query.Rows.Delete(), RowError);
  query.Rows.Last();
  query.Rows.SetCell(1, "8");
  query.Rows.Post();
  EXPECT_EQ(Seen("select name, n from tempdb.dbo.twins order by n"),
            (std::vector<Row>{{"a", "1"}, {"a", "1"}, {"b", "8"}}));
  EXPECT_EQ(Seen("select @@trancount"), (std::vector<Row>{{"0"}}));
}

TEST_F(RowEditingTest, WritesToItsTableAfterAUseOfAnotherDatabase) {
  Open("items");
  connection.Execute("use [master]");
  query.Rows.SetCell(1, "pear");
  query.Rows.Post();
  EXPECT_EQ(Seen("select name from tempdb.dbo.items where id = 1"), (std::vector<Row>{{"pear"}}));
  connection.Execute("use [tempdb]");
}

TEST_F(RowEditingTest, LeavesTheServersRefusalAndTheRowAsItWas) {
  Open("items");
  query.Rows.SetCell(10, std::nullopt);
  EXPECT_THROW(query.Rows.Post(), ServerError);
  EXPECT_EQ(query.Rows.State(), GridState::kEdit);
  query.Rows.Cancel();
  EXPECT_EQ(Shown(0, 10), "1");
  query.Rows.SetCell(1, std::string(30, 'x'));
  EXPECT_THROW(query.Rows.Post(), ServerError) << "too long for its column";
  query.Rows.Cancel();
  query.Rows.SetCell(1, "pear");
  query.Rows.Post();
  EXPECT_EQ(Shown(0, 1), "pear");
}

TEST_F(RowEditingTest, TakesBackATextThatTheColumnsCodePageLacks) {
  Open("items");
  query.Rows.SetCell(1, "한국");
  EXPECT_THROW(query.Rows.Post(), Error);
  EXPECT_EQ(Seen("select name from tempdb.dbo.items where id = 1"), (std::vector<Row>{{"apple"}}));
}

TEST_F(RowEditingTest, BrowsesWhileOtherStatementsRunOnTheConnection) {
  connection.Execute(
      "create table [many] (n int not null)\r\ninsert into [many] select a.id * 10 + b.id from "
      "sysobjects a, sysobjects b where a.id < 40 and b.id < 40");
  query.Clear();
  query.Add("select * from [many]");
  query.Open();
  const auto expected = std::stoll(Seen("select count(*) from tempdb.dbo.many")[0][0]);
  for (std::int64_t row = 0; row < expected; row += 150) {
    EXPECT_NE(Shown(row, 0), "-");
    connection.Execute("select 1");
  }
  query.Rows.Last();
  EXPECT_EQ(query.Rows.CurrentRow(), expected - 1);
  EXPECT_FALSE(query.Rows.HasFailure());
  query.Close();
  connection.Execute("drop table [many]");
}

}  // namespace
}  // namespace dbkeeper
