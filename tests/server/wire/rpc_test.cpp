#include "server/wire/rpc.h"

#include <gtest/gtest.h>

#include "server/wire/server.h"
#include "tests/server/wire/fake_engine.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

class Calls : public testing::Test {
 protected:
  SQLHSTMT statement() const { return client_.statement(); }
  static SQLCHAR* Chars(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

  FakeEngine engine_;
  Server server_{engine_, {}};
  OdbcClient client_{server_.port(), "tester", "Secret_1"};
};

TEST_F(Calls, APreparedStatementRunsAgainWithOtherValues) {
  std::string text = "insert into t values (?)";
  client_.Check(SQLPrepare(statement(), Chars(text), SQL_NTS));
  SQLINTEGER value = 0;
  client_.Check(SQLBindParameter(statement(), 1, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER, 10, 0,
                                 &value, 0, nullptr));
  for (value = 1; value <= 3; ++value) client_.Check(SQLExecute(statement()));
  const std::vector<FakeCall> calls = engine_.CallsWith("insert into t");
  ASSERT_EQ(calls.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(calls[i].text, "insert into t values (@P1)");
    EXPECT_EQ(calls[i].parameters[0].value, Cell(static_cast<std::int64_t>(i + 1)));
  }
}

TEST_F(Calls, AnyOtherProcedureGoesToTheEngineByName) {
  std::string text = "{call sp_help(?)}";
  SQLINTEGER value = 5;
  client_.Check(SQLBindParameter(statement(), 1, SQL_PARAM_INPUT, SQL_C_LONG, SQL_INTEGER, 10, 0,
                                 &value, 0, nullptr));
  client_.Check(SQLExecDirect(statement(), Chars(text), SQL_NTS));
  const std::vector<FakeCall> calls = engine_.CallsWith("sp_help");
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].kind, "procedure");
  EXPECT_EQ(calls[0].parameters[0].value, Cell(std::int64_t{5}));
}

class Cursors : public Calls {
 protected:
  Cursors() {
    SqlType text;
    text.id = TypeId::kNVarChar;
    text.length = 20;
    engine_.cursor.columns = {Column("id", {TypeId::kInt}), Column("name", text)};
    for (ResultColumn& column : engine_.cursor.columns) column.updatable = true;
    for (std::int64_t i = 1; i <= 10; ++i) {
      engine_.cursor.rows.push_back({Cell(i), Cell("行" + std::to_string(i))});
    }
    const auto set = [this](SQLINTEGER attribute, std::uintptr_t value) {
      client_.Check(SQLSetStmtAttr(statement(), attribute, reinterpret_cast<SQLPOINTER>(value), 0));
    };
    set(SQL_ATTR_CURSOR_TYPE, SQL_CURSOR_KEYSET_DRIVEN);
    set(SQL_ATTR_CONCURRENCY, SQL_CONCUR_ROWVER);
    client_.Check(SQLBindCol(statement(), 1, SQL_C_LONG, &id_, 0, &id_length_));
    client_.Check(SQLBindCol(statement(), 2, SQL_C_CHAR, name_, sizeof name_, &name_length_));
  }

  SQLINTEGER id_ = 0;
  SQLLEN id_length_ = 0;
  char name_[50] = {};
  SQLLEN name_length_ = 0;
};

TEST_F(Cursors, MoveWhereTheDriverAsks) {
  client_.Execute("select * from t");
  const struct {
    SQLSMALLINT direction;
    SQLLEN offset;
    int id;
  } cases[] = {
      {SQL_FETCH_LAST, 0, 10},    {SQL_FETCH_FIRST, 0, 1},    {SQL_FETCH_NEXT, 0, 2},
      {SQL_FETCH_ABSOLUTE, 5, 5}, {SQL_FETCH_RELATIVE, 2, 7}, {SQL_FETCH_PRIOR, 0, 6},
  };
  for (const auto& each : cases) {
    client_.Check(SQLFetchScroll(statement(), each.direction, each.offset));
    EXPECT_EQ(id_, each.id);
    EXPECT_EQ(std::string(name_), "行" + std::to_string(each.id));
    SQLULEN row = 0;
    SQLGetStmtAttr(statement(), SQL_ATTR_ROW_NUMBER, &row, 0, nullptr);
    EXPECT_EQ(row, static_cast<SQLULEN>(each.id));
  }
  SQLSMALLINT columns = 0;
  SQLNumResultCols(statement(), &columns);
  EXPECT_EQ(columns, 2);
}

TEST_F(Cursors, GivePagesOfRows) {
  constexpr SQLULEN kPage = 4;
  SQLINTEGER ids[kPage] = {};
  SQLULEN fetched = 0;
  SQLSetStmtAttr(statement(), SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(kPage), 0);
  SQLSetStmtAttr(statement(), SQL_ATTR_ROWS_FETCHED_PTR, &fetched, 0);
  SQLFreeStmt(statement(), SQL_UNBIND);
  client_.Check(SQLBindCol(statement(), 1, SQL_C_LONG, ids, 0, nullptr));
  client_.Execute("select * from t");
  std::vector<SQLULEN> pages;
  while (SQLFetch(statement()) != SQL_NO_DATA) pages.push_back(fetched);
  EXPECT_EQ(pages, (std::vector<SQLULEN>{4, 4, 2}));
  EXPECT_EQ(ids[1], 10);
}

TEST_F(Cursors, WriteTheRowThatTheyStandOn) {
  client_.Execute("select * from t");
  client_.Check(SQLFetchScroll(statement(), SQL_FETCH_ABSOLUTE, 3));
  id_ = 33;
  std::snprintf(name_, sizeof name_, "%s", "新しい");
  name_length_ = SQL_NTS;
  client_.Check(SQLSetPos(statement(), 1, SQL_UPDATE, SQL_LOCK_NO_CHANGE));
  client_.Check(SQLSetPos(statement(), 1, SQL_DELETE, SQL_LOCK_NO_CHANGE));
  std::vector<FakeCall> calls;
  for (const FakeCall& call : engine_.calls()) {
    if (call.kind == "update" || call.kind == "delete") calls.push_back(call);
  }
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].kind, "update");
  EXPECT_EQ(calls[0].text, "1");
  ASSERT_EQ(calls[0].parameters.size(), 2u);
  EXPECT_EQ(calls[0].parameters[0].name, "id");
  EXPECT_EQ(calls[0].parameters[0].value, Cell(std::int64_t{33}));
  EXPECT_EQ(calls[0].parameters[1].name, "name");
  EXPECT_EQ(calls[0].parameters[1].value, Cell(std::string("新しい")));
  EXPECT_EQ(calls[1].kind, "delete");
}

TEST_F(Cursors, OverNoSingleSelectBecomeAPlainResult) {
  const FakeResult result = std::exchange(engine_.cursor, {});
  engine_.answer = [&result](const FakeCall& call, ResultSink& sink) {
    if (call.text == "exec something") return Send(result, sink);
    sink.OnStatementEnd({});
  };
  SQLFreeStmt(statement(), SQL_UNBIND);
  EXPECT_EQ(client_.Query("exec something").size(), 10u);
}

}  // namespace
}  // namespace dbkeeper::server
