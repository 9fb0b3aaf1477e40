// What the ODBC driver asks the server's catalog, and its cursors on real tables.
#include <gtest/gtest.h>

#include "tests/server/e2e/server_process.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

class Driver : public testing::Test {
 protected:
  Driver() {
    client_.Execute("create database work");
    client_.Execute("use work");
    client_.Execute(
        "create table [顧客] (id int not null, sub smallint not null, name nvarchar(30), "
        "price decimal(10,2), constraint pk_customer primary key (id, sub))");
    client_.Execute(
        "insert into [顧客] select 1, 1, N'田中', 1.50 union all select 1, 2, N'鈴木', "
        "2.50 union all select 2, 1, null, null");
  }

  static SQLCHAR* Chars(const char* text) {
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text));
  }
  // One column of the present result.
  std::vector<std::string> Column(std::size_t index) const {
    std::vector<std::string> values;
    for (const OdbcRow& row : client_.Rows()) values.push_back(row.at(index).value_or("NULL"));
    return values;
  }

  TemporaryFolder folder_;
  ServerProcess server_{folder_.path() / "data"};
  OdbcClient client_{server_.port(), "tester", "Secret_1"};
};

using Names = std::vector<std::string>;

TEST_F(Driver, ListsTables) {
  SQLFreeStmt(client_.statement(), SQL_CLOSE);
  client_.Check(SQLTables(client_.statement(), nullptr, 0, nullptr, 0, Chars("顧客"), SQL_NTS,
                          Chars("TABLE"), SQL_NTS));
  EXPECT_EQ(Column(2), Names{"顧客"});
}

TEST_F(Driver, ListsColumnsWithTheirTypes) {
  SQLFreeStmt(client_.statement(), SQL_CLOSE);
  client_.Check(
      SQLColumns(client_.statement(), nullptr, 0, nullptr, 0, Chars("顧客"), SQL_NTS, nullptr, 0));
  std::vector<OdbcRow> columns;
  for (const OdbcRow& row : client_.Rows()) columns.push_back({row[3], row[4], row[5], row[6]});
  EXPECT_EQ(columns, (std::vector<OdbcRow>{{"id", "4", "int", "10"},
                                           {"sub", "5", "smallint", "5"},
                                           {"name", "-9", "nvarchar", "30"},
                                           {"price", "3", "decimal", "10"}}));
}

TEST_F(Driver, ListsThePrimaryKey) {
  SQLFreeStmt(client_.statement(), SQL_CLOSE);
  client_.Check(
      SQLPrimaryKeys(client_.statement(), nullptr, 0, nullptr, 0, Chars("顧客"), SQL_NTS));
  EXPECT_EQ(Column(3), (Names{"id", "sub"}));
}

TEST_F(Driver, ListsTheTypes) {
  SQLFreeStmt(client_.statement(), SQL_CLOSE);
  client_.Check(SQLGetTypeInfo(client_.statement(), SQL_ALL_TYPES));
  const Names types = Column(0);
  for (const char* type : {"int", "nvarchar", "datetime", "uniqueidentifier", "image"}) {
    EXPECT_NE(std::find(types.begin(), types.end(), type), types.end()) << type;
  }
}

TEST_F(Driver, DescribesAPreparedStatementBeforeItRuns) {
  SQLFreeStmt(client_.statement(), SQL_CLOSE);
  client_.Check(SQLPrepare(client_.statement(),
                           Chars("select name, price * 2 as twice from [顧客] where id = ?"),
                           SQL_NTS));
  SQLCHAR name[30] = {};
  SQLSMALLINT type = 0;
  SQLSMALLINT digits = 0;
  SQLULEN size = 0;
  client_.Check(SQLDescribeCol(client_.statement(), 1, name, sizeof name, nullptr, &type, &size,
                               &digits, nullptr));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(name)), "name");
  EXPECT_EQ(type, SQL_WVARCHAR);
  EXPECT_EQ(size, 30u);
  client_.Check(SQLDescribeCol(client_.statement(), 2, name, sizeof name, nullptr, &type, &size,
                               &digits, nullptr));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(name)), "twice");
  EXPECT_EQ(type, SQL_NUMERIC);
  EXPECT_EQ(digits, 2);
  SQLINTEGER id = 2;
  client_.Check(SQLBindParameter(client_.statement(), 1, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER,
                                 0, 0, &id, 0, nullptr));
  client_.Check(SQLExecute(client_.statement()));
  EXPECT_EQ(client_.Rows().size(), 1u);
}

class DriverCursor : public Driver {
 protected:
  DriverCursor() {
    const auto set = [this](SQLINTEGER attribute, std::uintptr_t value) {
      client_.Check(
          SQLSetStmtAttr(client_.statement(), attribute, reinterpret_cast<SQLPOINTER>(value), 0));
    };
    SQLFreeStmt(client_.statement(), SQL_CLOSE);
    set(SQL_ATTR_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN);
    set(SQL_ATTR_CONCURRENCY, SQL_CONCUR_ROWVER);
    client_.Check(SQLBindCol(client_.statement(), 1, SQL_C_LONG, &id_, 0, nullptr));
    client_.Check(SQLBindCol(client_.statement(), 2, SQL_C_LONG, &sub_, 0, nullptr));
    client_.Check(SQLBindCol(client_.statement(), 3, SQL_C_CHAR, name_, sizeof name_, &length_));
  }
  std::vector<OdbcRow> Table() {
    return OdbcClient(server_.port(), "tester", "Secret_1")
        .Query("select id, sub, name from work.dbo.[顧客] order by id, sub");
  }

  SQLINTEGER id_ = 0;
  SQLINTEGER sub_ = 0;
  char name_[100] = {};
  SQLLEN length_ = 0;
};

TEST_F(DriverCursor, ReadsForwardsAndBackwards) {
  client_.Execute("select id, sub, name from [顧客] order by id, sub");
  client_.Check(SQLFetchScroll(client_.statement(), SQL_FETCH_LAST, 0));
  EXPECT_EQ(id_, 2);
  client_.Check(SQLFetchScroll(client_.statement(), SQL_FETCH_PRIOR, 0));
  EXPECT_EQ(std::string(name_), "鈴木");
  client_.Check(SQLFetchScroll(client_.statement(), SQL_FETCH_ABSOLUTE, 1));
  EXPECT_EQ(std::string(name_), "田中");
  EXPECT_EQ(SQLFetchScroll(client_.statement(), SQL_FETCH_ABSOLUTE, 4), SQL_NO_DATA);
}

TEST_F(DriverCursor, WritesExactlyTheRowThatItStandsOn) {
  client_.Execute("select id, sub, name from [顧客] order by id, sub");
  client_.Check(SQLFetchScroll(client_.statement(), SQL_FETCH_ABSOLUTE, 2));
  std::snprintf(name_, sizeof name_, "%s", "佐藤");
  length_ = SQL_NTS;
  client_.Check(SQLSetPos(client_.statement(), 1, SQL_UPDATE, SQL_LOCK_NO_CHANGE));
  EXPECT_EQ(Table(), (std::vector<OdbcRow>{
                         {"1", "1", "田中"}, {"1", "2", "佐藤"}, {"2", "1", std::nullopt}}));
  client_.Check(SQLSetPos(client_.statement(), 1, SQL_DELETE, SQL_LOCK_NO_CHANGE));
  EXPECT_EQ(Table(), (std::vector<OdbcRow>{{"1", "1", "田中"}, {"2", "1", std::nullopt}}));
}

}  // namespace
}  // namespace dbkeeper::server
