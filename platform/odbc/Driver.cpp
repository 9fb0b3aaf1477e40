#include "platform/odbc/Driver.h"

#include <sqlucode.h>

#include <algorithm>
#include <utility>

#include "app/support/Messages.h"
#include "app/support/Utf16.h"
#include "platform/odbc/Diagnostics.h"

namespace dbkeeper::odbc {

namespace {

SQLPOINTER AsPointer(SQLULEN value) { return reinterpret_cast<SQLPOINTER>(value); }

[[noreturn]] void ThrowNotConnected() { throw SessionError(std::string(messages::kNotConnected)); }

SQLWCHAR* WideData(std::u16string& text) {
  static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));
  return reinterpret_cast<SQLWCHAR*>(text.data());
}

}  // namespace

Link::Link(CallLog log) : log_(std::move(log)) {
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_))) {
    throw SessionError(std::string(messages::kNoDriverManager));
  }
  Check("SQLSetEnvAttr", SQL_HANDLE_ENV, environment_,
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, AsPointer(SQL_OV_ODBC3), 0));
}

Link::~Link() {
  Disconnect();
  SQLFreeHandle(SQL_HANDLE_ENV, environment_);
}

std::vector<std::string> Link::Drivers() {
  std::vector<std::string> names;
  SQLCHAR name[256];
  SQLSMALLINT length = 0;
  for (SQLUSMALLINT which = SQL_FETCH_FIRST;; which = SQL_FETCH_NEXT) {
    const SQLRETURN code =
        SQLDrivers(environment_, which, name, sizeof name, &length, nullptr, 0, nullptr);
    if (!SQL_SUCCEEDED(code)) return names;
    names.emplace_back(
        name, name + std::min<std::size_t>(static_cast<std::size_t>(length), sizeof name - 1));
  }
}

void Link::Connect(const std::string& connection_string, int timeout_seconds) {
  Disconnect();
  Check("SQLAllocHandle", SQL_HANDLE_ENV, environment_,
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_));
  Check("SQLSetConnectAttr", SQL_HANDLE_DBC, connection_,
        SQLSetConnectAttr(connection_, SQL_ATTR_LOGIN_TIMEOUT,
                          AsPointer(static_cast<SQLULEN>(timeout_seconds)), 0));
  // All text goes by the wide calls. The narrow form of this one takes the login name and the
  // password for Latin-1, and mixing both forms garbles the statements.
  std::u16string wide = Utf8ToUtf16(connection_string);
  try {
    Check("SQLDriverConnect", SQL_HANDLE_DBC, connection_,
          SQLDriverConnectW(connection_, nullptr, WideData(wide),
                            static_cast<SQLSMALLINT>(wide.size()), nullptr, 0, nullptr,
                            SQL_DRIVER_NOPROMPT));
  } catch (...) {
    Disconnect();
    throw;
  }
  connected_ = true;
}

void Link::Disconnect() {
  for (Statement* statement : statements_) statement->Drop();
  statements_.clear();
  wire_user_ = nullptr;
  cursor_columns_linger_ = false;
  if (connected_) SQLDisconnect(connection_);
  if (connection_ != nullptr) SQLFreeHandle(SQL_HANDLE_DBC, connection_);
  connection_ = nullptr;
  connected_ = false;
  broken_ = false;
}

bool Link::ServerGone() {
  if (!connected_) return false;
  SQLUINTEGER dead = SQL_CD_FALSE;
  const SQLRETURN code =
      SQLGetConnectAttr(connection_, SQL_ATTR_CONNECTION_DEAD, &dead, sizeof dead, nullptr);
  return SQL_SUCCEEDED(code) && dead == SQL_CD_TRUE;
}

SQLRETURN Link::Check(std::string_view call, SQLSMALLINT type, SQLHANDLE handle, SQLRETURN code) {
  if (log_) log_(call, code);
  if (code == SQL_SUCCESS || code == SQL_NO_DATA) return code;
  const bool failed = code != SQL_SUCCESS_WITH_INFO;
  Diagnosis diagnosis = Diagnose(ReadDiagnostics(type, handle),
                                 failed ? CallOutcome::kFailed : CallOutcome::kSucceeded);
  Keep(std::move(diagnosis.information));
  // A fetch of some rows and a failure behind them counts as a success to the driver.
  if (!failed && diagnosis.errors.empty()) return code;
  if (ServerGone()) broken_ = true;
  if (diagnosis.errors.empty()) {
    diagnosis.errors.push_back({.text = std::string(call) + " failed without a message."});
  }
  throw ServerError(std::move(diagnosis.errors));
}

void Link::ClearWire() {
  if (!connected_) ThrowNotConnected();
  if (WireUser* user = std::exchange(wire_user_, nullptr)) user->LeaveWire();
}

void Link::ReturnWire(const WireUser& user) {
  if (wire_user_ == &user) wire_user_ = nullptr;
}

void Link::Keep(std::vector<ServerMessage> messages) {
  std::move(messages.begin(), messages.end(), std::back_inserter(messages_));
}

Statement::Statement(std::shared_ptr<Link> link) : link_(std::move(link)) {
  if (!link_->connected_) ThrowNotConnected();
  link_->Check("SQLAllocHandle", SQL_HANDLE_DBC, link_->connection_,
               SQLAllocHandle(SQL_HANDLE_STMT, link_->connection_, &handle_));
  link_->statements_.push_back(this);
  // The text is the server's language as it stands; braces in it mean nothing to the driver.
  SetAttribute(SQL_ATTR_NOSCAN, SQL_NOSCAN_ON);
}

Statement::~Statement() {
  std::erase(link_->statements_, this);
  Drop();
}

void Statement::Drop() {
  if (handle_ != nullptr) SQLFreeHandle(SQL_HANDLE_STMT, handle_);
  handle_ = nullptr;
}

void Statement::ThrowClosed() { throw SessionError(std::string(messages::kConnectionClosed)); }

SQLRETURN Statement::Check(std::string_view call, SQLRETURN code) const {
  return link_->Check(call, SQL_HANDLE_STMT, handle_, code);
}

void Statement::SetAttribute(SQLINTEGER attribute, SQLULEN value) {
  SetPointer(attribute, AsPointer(value));
}

void Statement::SetPointer(SQLINTEGER attribute, SQLPOINTER value) {
  Check("SQLSetStmtAttr", SQLSetStmtAttr(Handle(), attribute, value, 0));
}

SQLULEN Statement::Attribute(SQLINTEGER attribute) const {
  SQLULEN value = 0;
  Check("SQLGetStmtAttr", SQLGetStmtAttr(Handle(), attribute, &value, sizeof value, nullptr));
  return value;
}

void Statement::ClearCursorColumns() {
  if (!std::exchange(link_->cursor_columns_linger_, false)) return;
  Statement between(link_);
  between.Execute("select 1");
  while (between.NextResult() != Step::kEnd) {
  }
}

Step Statement::Execute(const std::string& sql) {
  ClearCursorColumns();
  std::u16string wide = Utf8ToUtf16(sql);
  return PresentStep(Check("SQLExecDirect", SQLExecDirectW(Handle(), WideData(wide),
                                                           static_cast<SQLINTEGER>(wide.size()))));
}

Step Statement::NextResult() {
  const SQLRETURN code = Check("SQLMoreResults", SQLMoreResults(Handle()));
  return code == SQL_NO_DATA ? Step::kEnd : PresentStep(code);
}

void Statement::Cancel() { Check("SQLFreeStmt", SQLFreeStmt(Handle(), SQL_CLOSE)); }

Step Statement::PresentStep(SQLRETURN code) const {
  // A statement that changed no row says "no data", and more may follow.
  if (code == SQL_NO_DATA) return Step::kCount;
  SQLSMALLINT columns = 0;
  Check("SQLNumResultCols", SQLNumResultCols(Handle(), &columns));
  return columns > 0 ? Step::kRows : Step::kCount;
}

std::int64_t Statement::RowCount() const {
  SQLLEN rows = -1;
  Check("SQLRowCount", SQLRowCount(Handle(), &rows));
  return rows;
}

void RunOut(Statement& statement) {
  for (;;) {
    try {
      if (statement.NextResult() != Step::kCount) return;
    } catch (const ServerError& error) {
      statement.TheLink().Keep(error.Messages());
      if (!statement.TheLink().Usable()) return;
    }
  }
}

}  // namespace dbkeeper::odbc
