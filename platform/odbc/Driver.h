// The driver manager behind one checked door. Only this folder includes the headers of ODBC, and
// every call that can fail passes Link::Check.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/session/Connection.h"

namespace dbkeeper::odbc {

// Told of every call: its name and what it returned.
using CallLog = std::function<void(std::string_view call, int code)>;

class Statement;

// Whoever has rows on the wire that are not read yet. The server carries one open result per
// connection.
class WireUser {
 public:
  virtual ~WireUser() = default;
  // Reads what is still on the wire into memory, because another statement wants to run. Failures
  // are kept for the reader's own next move.
  virtual void LeaveWire() = 0;
};

// The environment, the connection and what the server said on it.
class Link {
 public:
  explicit Link(CallLog log);
  ~Link();
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

  // The names of the registered drivers.
  std::vector<std::string> Drivers();
  // Throws ServerError.
  void Connect(const std::string& connection_string, int timeout_seconds);
  // Drops every statement too.
  void Disconnect();
  // False when not connected and once the server or the network was found gone.
  bool Usable() const { return connected_ && !broken_; }

  // Passes on what a call returned. Keeps its informational messages; throws ServerError with the
  // error messages when it failed.
  SQLRETURN Check(std::string_view call, SQLSMALLINT type, SQLHANDLE handle, SQLRETURN code);

  // Makes room for a statement: who has rows on the wire reads them into memory. Throws
  // SessionError when not connected.
  void ClearWire();
  // `user` has rows on the wire from now on.
  void TakeWire(WireUser& user) { wire_user_ = &user; }
  void ReturnWire(const WireUser& user);
  // A server-side cursor has been opened or fetched from. FreeTDS then takes its columns for those
  // of every later statement that has none, until a result with columns of its own comes between.
  void NoteCursorColumns() { cursor_columns_linger_ = true; }

  void Keep(std::vector<ServerMessage> messages);
  std::vector<ServerMessage> TakeMessages() { return std::exchange(messages_, {}); }

 private:
  friend class Statement;

  bool ServerGone();

  CallLog log_;
  SQLHENV environment_ = nullptr;
  SQLHDBC connection_ = nullptr;
  bool connected_ = false;
  bool broken_ = false;
  std::vector<Statement*> statements_;
  WireUser* wire_user_ = nullptr;
  bool cursor_columns_linger_ = false;
  std::vector<ServerMessage> messages_;
};

// What the next result of a batch is.
enum class Step { kRows, kCount, kEnd };

// One statement handle. When its link is disconnected the handle goes, and every call throws
// SessionError.
class Statement {
 public:
  explicit Statement(std::shared_ptr<Link> link);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Link& TheLink() const { return *link_; }
  // The handle for calls that this class does not wrap.
  SQLHSTMT Handle() const {
    if (handle_ == nullptr) ThrowClosed();
    return handle_;
  }
  SQLRETURN Check(std::string_view call, SQLRETURN code) const;

  void SetAttribute(SQLINTEGER attribute, SQLULEN value);
  SQLULEN Attribute(SQLINTEGER attribute) const;
  void SetPointer(SQLINTEGER attribute, SQLPOINTER value);

  // Runs a batch up to its first result. Throws ServerError.
  Step Execute(const std::string& sql);
  // Goes to the next result of the batch; may be called again after it threw.
  Step NextResult();
  // Gives up what is left of the batch.
  void Cancel();
  // The rows that the present statement of the batch counted, -1 when it counts none.
  std::int64_t RowCount() const;

 private:
  friend class Link;

  Step PresentStep(SQLRETURN code) const;
  void ClearCursorColumns();
  void Drop();
  [[noreturn]] static void ThrowClosed();

  std::shared_ptr<Link> link_;
  SQLHSTMT handle_ = nullptr;
};

// After a failure: runs the statements behind it that only count rows, so that it is not left to
// chance which of them the server still gets to. What they say is kept with the messages; the
// statement ends up before its next rows or at its end.
void RunOut(Statement& statement);

}  // namespace dbkeeper::odbc
