#include "bench/bare_loop.h"

#include <sqlext.h>

#include <stdexcept>

#include "tests/support/LocalServer.h"

namespace dbkeeper {

namespace {

void Require(SQLRETURN code, const char* what) {
  if (!SQL_SUCCEEDED(code)) throw std::runtime_error(what);
}

SQLCHAR* Chars(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

}  // namespace

BareLoop::BareLoop(int port) {
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

BareLoop::~BareLoop() {
  SQLFreeHandle(SQL_HANDLE_STMT, statement_);
  SQLDisconnect(connection_);
  SQLFreeHandle(SQL_HANDLE_DBC, connection_);
  SQLFreeHandle(SQL_HANDLE_ENV, environment_);
}

std::size_t BareLoop::Run(std::string sql) {
  Require(SQLExecDirect(statement_, Chars(sql), SQL_NTS), "execute");
  for (std::size_t i = 0; i < kColumns; ++i) {
    Require(SQLBindCol(statement_, static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, cells_[i].data(),
                       kCellBytes, &lengths_[i]),
            "bind");
  }
  std::size_t rows = 0;
  SQLRETURN code = SQLFetch(statement_);
  for (; code != SQL_NO_DATA; code = SQLFetch(statement_)) {
    Require(code, "fetch");
    ++rows;
  }
  SQLFreeStmt(statement_, SQL_CLOSE);
  return rows;
}

}  // namespace dbkeeper
