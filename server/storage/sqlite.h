// SQLite behind three small classes; every call of it in the engine is checked here.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/sql/server_functions.h"
#include "server/types/messages.h"
#include "server/types/result_sink.h"
#include "server/types/text.h"

namespace dbkeeper::server {

// A failed call, with what the connection said of it: SQLite forgets that with its next call.
class SqliteError : public SqlError {
 public:
  explicit SqliteError(sqlite3* connection);
  int code() const { return code_; }  // extended
  // The bare facts of a constraint; the message does not know the server's names of them.
  const ConstraintFailure& constraint() const { return constraint_; }

 private:
  int code_;
  ConstraintFailure constraint_;
};

// A prepared statement. Parameters count from 1, columns from 0.
class SqliteStatement {
 public:
  SqliteStatement(sqlite3* connection, std::string_view sql);

  void Bind(int index, std::int64_t value);
  void Bind(int index, int value) { Bind(index, static_cast<std::int64_t>(value)); }
  void Bind(int index, double value);
  void Bind(int index, std::string_view text);
  void Bind(int index, const char* text) { Bind(index, std::string_view(text)); }
  void Bind(int index, const std::string& text) { Bind(index, std::string_view(text)); }
  void Bind(int index, const Cell& cell);
  // A blob that stays where it is until the statement has run.
  void BindBytes(int index, std::string_view bytes);

  // True when there is a row.
  bool Step();
  void Reset();

  bool IsNull(int column) const;
  std::int64_t Integer(int column) const;
  double Real(int column) const;
  std::string_view Bytes(int column) const;  // text or blob, until the next step
  std::string Text(int column) const { return std::string(Bytes(column)); }
  Cell Value(int column) const;
  std::vector<Cell> Row() const;
  int ColumnCount() const;
  std::size_t ParameterCount() const;

 private:
  void Check(int code) const;

  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

// The name of a file for SQLite; "mode=rw" is one that must be there, "mode=ro" one to be read.
std::string FileUri(const std::filesystem::path& file, std::string_view mode);

// An open database file and what is attached to it.
class SqliteConnection {
 public:
  // Opens or makes the file.
  explicit SqliteConnection(const std::string& path);

  sqlite3* handle() const { return connection_.get(); }

  // Runs statements without parameters that give no rows.
  void Execute(const std::string& sql);

  // Runs one statement with parameters to its end.
  template <typename... Values>
  void Run(std::string_view sql, const Values&... values) {
    SqliteStatement statement = Prepare(sql, values...);
    while (statement.Step()) {
    }
  }

  template <typename... Values>
  SqliteStatement Prepare(std::string_view sql, const Values&... values) {
    SqliteStatement statement(handle(), sql);
    int index = 0;
    (statement.Bind(++index, values), ...);
    return statement;
  }

  // The first column of the first row; `otherwise` when there is none or it is null.
  template <typename... Values>
  std::int64_t IntegerOf(std::int64_t otherwise, std::string_view sql, const Values&... values) {
    SqliteStatement statement = Prepare(sql, values...);
    return statement.Step() && !statement.IsNull(0) ? statement.Integer(0) : otherwise;
  }
  template <typename... Values>
  std::string TextOf(std::string_view sql, const Values&... values) {
    SqliteStatement statement = Prepare(sql, values...);
    return statement.Step() ? statement.Text(0) : std::string();
  }

  bool InTransaction() const { return sqlite3_get_autocommit(handle()) == 0; }

 private:
  struct Closer {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
  };
  std::unique_ptr<sqlite3, Closer> connection_;
};

// What is done while this lives is undone at its end, unless it is kept.
class SqliteSavepoint {
 public:
  explicit SqliteSavepoint(SqliteConnection& connection);
  ~SqliteSavepoint();
  SqliteSavepoint(const SqliteSavepoint&) = delete;
  SqliteSavepoint& operator=(const SqliteSavepoint&) = delete;
  void Keep();

 private:
  SqliteConnection& connection_;
  bool kept_ = false;
};

// The present row of a statement as the sink sees it.
class StatementRow : public RowView {
 public:
  explicit StatementRow(const SqliteStatement& statement) : statement_(statement) {}
  bool IsNull(std::size_t column) const override {
    return statement_.IsNull(static_cast<int>(column));
  }
  std::int64_t Integer(std::size_t column) const override {
    return statement_.Integer(static_cast<int>(column));
  }
  double Real(std::size_t column) const override {
    return statement_.Real(static_cast<int>(column));
  }
  std::string_view Bytes(std::size_t column) const override {
    return statement_.Bytes(static_cast<int>(column));
  }

 private:
  const SqliteStatement& statement_;
};

// A row made up by a procedure.
class CellRow : public RowView {
 public:
  explicit CellRow(const std::vector<Cell>& cells) : cells_(cells) {}
  bool IsNull(std::size_t column) const override;
  std::int64_t Integer(std::size_t column) const override;
  double Real(std::size_t column) const override;
  std::string_view Bytes(std::size_t column) const override;

 private:
  const std::vector<Cell>& cells_;
};

}  // namespace dbkeeper::server
