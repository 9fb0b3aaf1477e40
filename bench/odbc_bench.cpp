// Reading rows through the session beside a bare loop of bound columns over the same statement.
#include <benchmark/benchmark.h>
#include <sql.h>
#include <sqlext.h>

#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/odbc/OdbcConnection.h"
#include "tests/support/LocalServer.h"

namespace dbkeeper {
namespace {

constexpr const char* kStatement = "select id, name, amount, changed, note from tempdb.dbo.rows";
constexpr int kColumns = 5;

// A local server with a table of 1,000,000 rows of five short columns.
class Rows {
 public:
  Rows() {
    connection_.Open(server_.ConnectionString());
    connection_.Execute("create table tempdb.dbo.digits (n int not null)");
    for (int n = 0; n < 10; ++n) {
      connection_.Execute("insert into tempdb.dbo.digits values (" + std::to_string(n) + ")");
    }
    connection_.Execute(
        "create table tempdb.dbo.rows (id int not null, name varchar(30) not null, "
        "amount money not null, changed datetime not null, note nvarchar(30) null)");
    connection_.Execute(
        "insert into tempdb.dbo.rows select a.n + 10 * b.n + 100 * c.n + 1000 * d.n + 10000 * e.n "
        "+ 100000 * f.n, 'customer', 12.5, '20040229 12:30:00', N'備考' from tempdb.dbo.digits a, "
        "tempdb.dbo.digits b, tempdb.dbo.digits c, tempdb.dbo.digits d, tempdb.dbo.digits e, "
        "tempdb.dbo.digits f");
    connection_.Execute("select * into tempdb.dbo.few from tempdb.dbo.rows where id < 1000");
  }

  OdbcConnection& Connection() { return connection_; }
  int Port() { return server_.Port(); }

 private:
  LocalServer server_;
  OdbcConnection connection_{OdbcOptions{}, server_.Endpoint()};
};

Rows& TheRows() {
  static Rows rows;
  return rows;
}

void Session(benchmark::State& state) {
  Rows& rows = TheRows();
  std::size_t count = 0;
  for ([[maybe_unused]] auto step : state) {
    const auto reader = rows.Connection().Query(kStatement);
    while (reader->Next()) {
      for (std::size_t field = 0; field < kColumns; ++field) {
        benchmark::DoNotOptimize(reader->Text(field));
      }
      ++count;
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(count));
}
BENCHMARK(Session)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

void Require(SQLRETURN code, const char* what) {
  if (!SQL_SUCCEEDED(code)) throw std::runtime_error(what);
}

// A connection and statement without any of the program's code.
class BareStatement {
 public:
  explicit BareStatement(int port) {
    Require(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_), "environment");
    Require(SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION,
                          reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0),
            "version");
    Require(SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_), "connection");
    std::string text = "DRIVER=FreeTDS;SERVER=127.0.0.1;PORT=" + std::to_string(port) +
                       ";UID=" + LocalServer::kLogin + ";PWD={" + LocalServer::kPassword +
                       "};TDS_Version=7.1;ClientCharset=UTF-8";
    Require(SQLDriverConnect(connection_, nullptr, Chars(text), SQL_NTS, nullptr, 0, nullptr,
                             SQL_DRIVER_NOPROMPT),
            "connect");
    Require(SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement_), "statement");
  }
  ~BareStatement() {
    SQLFreeHandle(SQL_HANDLE_STMT, statement_);
    SQLDisconnect(connection_);
    SQLFreeHandle(SQL_HANDLE_DBC, connection_);
    SQLFreeHandle(SQL_HANDLE_ENV, environment_);
  }
  BareStatement(const BareStatement&) = delete;
  BareStatement& operator=(const BareStatement&) = delete;

  void Execute() {
    std::string text = kStatement;
    Require(SQLExecDirect(statement_, Chars(text), SQL_NTS), "execute");
    for (SQLUSMALLINT i = 0; i < kColumns; ++i) {
      Require(SQLBindCol(statement_, static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, cells_[i].data(),
                         kCellBytes, &lengths_[i]),
              "bind");
    }
  }
  bool Fetch() {
    const SQLRETURN code = SQLFetch(statement_);
    if (code == SQL_NO_DATA) return false;
    Require(code, "fetch");
    benchmark::DoNotOptimize(cells_);
    return true;
  }
  void Close() { SQLFreeStmt(statement_, SQL_CLOSE); }

 private:
  static constexpr std::size_t kCellBytes = 128;
  static SQLCHAR* Chars(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

  SQLHENV environment_ = nullptr;
  SQLHDBC connection_ = nullptr;
  SQLHSTMT statement_ = nullptr;
  std::array<std::array<char, kCellBytes>, kColumns> cells_{};
  std::array<SQLLEN, kColumns> lengths_{};
};

void BareLoop(benchmark::State& state) {
  BareStatement statement(TheRows().Port());
  std::size_t count = 0;
  for ([[maybe_unused]] auto step : state) {
    statement.Execute();
    while (statement.Fetch()) ++count;
    statement.Close();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(count));
}
BENCHMARK(BareLoop)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// The first page of a table of 1,000 or 1,000,000 rows, and the last one of the greater, behind a
// server-side cursor.
void FirstPage(benchmark::State& state) {
  const std::string table = state.range(0) == 1000 ? "few" : "rows";
  const std::string sql = "select id, name, amount, changed, note from tempdb.dbo." + table;
  Rows& rows = TheRows();
  for ([[maybe_unused]] auto step : state) {
    const auto cursor = rows.Connection().OpenCursor(sql);
    cursor->Fetch(0, 100);
  }
}
BENCHMARK(FirstPage)->Arg(1000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();

void LastPage(benchmark::State& state) {
  Rows& rows = TheRows();
  for ([[maybe_unused]] auto step : state) {
    const auto cursor = rows.Connection().OpenCursor(kStatement);
    cursor->FetchLast(100);
  }
}
BENCHMARK(LastPage)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace dbkeeper

BENCHMARK_MAIN();
