// A client over the real ODBC driver.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace dbkeeper::server {

// What the driver reported; `native` is the server's number.
class OdbcError : public std::runtime_error {
 public:
  OdbcError(std::string state, int native, const std::string& text)
      : std::runtime_error("[" + state + "] " + std::to_string(native) + ": " + text),
        state_(std::move(state)),
        native_(native) {}
  const std::string& state() const { return state_; }
  int native() const { return native_; }

 private:
  std::string state_;
  int native_;
};

using OdbcRow = std::vector<std::optional<std::string>>;

class OdbcClient {
 public:
  OdbcClient(std::uint16_t port, const std::string& user, const std::string& password,
             const std::string& more = "TDS_Version=7.1") {
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
    SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                  0);
    SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
    SQLSetConnectAttr(connection_, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(10), 0);
    std::string text =
        "DRIVER=/usr/lib/x86_64-linux-gnu/odbc/libtdsodbc.so;SERVER=127.0.0.1;ClientCharset=UTF-8;"
        "PORT=" +
        std::to_string(port) + ";UID=" + user + ";PWD=" + password + ";" + more;
    const SQLRETURN result = SQLDriverConnect(connection_, nullptr, Chars(text), SQL_NTS, nullptr,
                                              0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result)) {
      const OdbcError error = Diagnostic(SQL_HANDLE_DBC, connection_);
      Free();
      throw error;
    }
    SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement_);
  }
  ~OdbcClient() { Free(); }
  OdbcClient(const OdbcClient&) = delete;
  OdbcClient& operator=(const OdbcClient&) = delete;

  SQLHSTMT statement() const { return statement_; }
  SQLHDBC connection() const { return connection_; }

  // Throws OdbcError when a call of the driver failed.
  void Check(SQLRETURN result) const {
    if (!SQL_SUCCEEDED(result) && result != SQL_NO_DATA) {
      throw Diagnostic(SQL_HANDLE_STMT, statement_);
    }
  }

  void Execute(std::string text) const {
    SQLFreeStmt(statement_, SQL_CLOSE);
    Check(SQLExecDirect(statement_, Chars(text), SQL_NTS));
  }

  // The rows of the present result as texts.
  std::vector<OdbcRow> Rows() const {
    std::vector<OdbcRow> rows;
    for (;;) {
      const SQLRETURN result = SQLFetch(statement_);
      Check(result);
      if (result == SQL_NO_DATA) return rows;
      rows.push_back(Row());
    }
  }

  // The row that was fetched last.
  OdbcRow Row() const {
    SQLSMALLINT columns = 0;
    SQLNumResultCols(statement_, &columns);
    OdbcRow row;
    for (SQLUSMALLINT i = 1; i <= columns; ++i) row.push_back(Field(i));
    return row;
  }

  std::vector<OdbcRow> Query(const std::string& text) const {
    Execute(text);
    return Rows();
  }

 private:
  static SQLCHAR* Chars(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

  std::optional<std::string> Field(SQLUSMALLINT column) const {
    std::string value;
    std::vector<char> piece(100'000);
    for (;;) {
      SQLLEN length = 0;
      const SQLRETURN result = SQLGetData(statement_, column, SQL_C_CHAR, piece.data(),
                                          static_cast<SQLLEN>(piece.size()), &length);
      Check(result);
      if (length == SQL_NULL_DATA) return std::nullopt;
      if (result == SQL_NO_DATA) return value;
      value += piece.data();
      if (result == SQL_SUCCESS) return value;
    }
  }

  static OdbcError Diagnostic(SQLSMALLINT kind, SQLHANDLE handle) {
    SQLCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLCHAR text[1000] = {};
    SQLSMALLINT length = 0;
    SQLGetDiagRec(kind, handle, 1, state, &native, text, sizeof text, &length);
    return {reinterpret_cast<char*>(state), native, reinterpret_cast<char*>(text)};
  }

  void Free() {
    if (statement_) SQLFreeHandle(SQL_HANDLE_STMT, statement_);
    if (connection_) {
      SQLDisconnect(connection_);
      SQLFreeHandle(SQL_HANDLE_DBC, connection_);
    }
    if (environment_) SQLFreeHandle(SQL_HANDLE_ENV, environment_);
  }

  SQLHENV environment_ = nullptr;
  SQLHDBC connection_ = nullptr;
  SQLHSTMT statement_ = nullptr;
};

}  // namespace dbkeeper::server
