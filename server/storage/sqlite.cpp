#include "server/storage/sqlite.h"

#include <new>

namespace dbkeeper::server {

SqliteError::SqliteError(sqlite3* connection)
    : SqlError(MessageOfFailure(connection)),
      code_(sqlite3_extended_errcode(connection)),
      constraint_(FailedConstraint(connection)) {}

SqliteStatement::SqliteStatement(sqlite3* connection, std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  const int code =
      sqlite3_prepare_v2(connection, sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
  if (code != SQLITE_OK) throw SqliteError(connection);
  statement_.reset(statement);
}

void SqliteStatement::Check(int code) const {
  if (code == SQLITE_OK) return;
  throw SqliteError(sqlite3_db_handle(statement_.get()));
}

void SqliteStatement::Bind(int index, std::int64_t value) {
  Check(sqlite3_bind_int64(statement_.get(), index, value));
}

void SqliteStatement::Bind(int index, double value) {
  Check(sqlite3_bind_double(statement_.get(), index, value));
}

void SqliteStatement::Bind(int index, std::string_view text) {
  Check(sqlite3_bind_text64(statement_.get(), index, text.data() == nullptr ? "" : text.data(),
                            text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void SqliteStatement::Bind(int index, const Cell& cell) {
  if (const auto* integer = std::get_if<std::int64_t>(&cell)) {
    Bind(index, *integer);
  } else if (const auto* real = std::get_if<double>(&cell)) {
    Bind(index, *real);
  } else if (const auto* text = std::get_if<std::string>(&cell)) {
    Bind(index, std::string_view(*text));
  } else if (const auto* blob = std::get_if<Blob>(&cell)) {
    Check(sqlite3_bind_blob64(statement_.get(), index, blob->bytes.data(), blob->bytes.size(),
                              SQLITE_TRANSIENT));
  } else {
    Check(sqlite3_bind_null(statement_.get(), index));
  }
}

void SqliteStatement::BindBytes(int index, std::string_view bytes) {
  Check(sqlite3_bind_blob64(statement_.get(), index, bytes.data(), bytes.size(), SQLITE_STATIC));
}

bool SqliteStatement::Step() {
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  Check(code);
  return false;
}

void SqliteStatement::Reset() { sqlite3_reset(statement_.get()); }

bool SqliteStatement::IsNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::int64_t SqliteStatement::Integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

double SqliteStatement::Real(int column) const {
  return sqlite3_column_double(statement_.get(), column);
}

std::string_view SqliteStatement::Bytes(int column) const {
  const void* bytes = sqlite3_column_type(statement_.get(), column) == SQLITE_BLOB
                          ? sqlite3_column_blob(statement_.get(), column)
                          : sqlite3_column_text(statement_.get(), column);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes),
          static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

Cell SqliteStatement::Value(int column) const {
  switch (sqlite3_column_type(statement_.get(), column)) {
    case SQLITE_INTEGER:
      return Integer(column);
    case SQLITE_FLOAT:
      return Real(column);
    case SQLITE_TEXT:
      return Text(column);
    case SQLITE_BLOB:
      return Blob{Text(column)};
    default:
      return std::monostate{};
  }
}

std::size_t SqliteStatement::ParameterCount() const {
  return static_cast<std::size_t>(sqlite3_bind_parameter_count(statement_.get()));
}

std::vector<Cell> SqliteStatement::Row() const {
  std::vector<Cell> cells;
  cells.reserve(static_cast<std::size_t>(ColumnCount()));
  for (int i = 0; i < ColumnCount(); ++i) cells.push_back(Value(i));
  return cells;
}

int SqliteStatement::ColumnCount() const { return sqlite3_column_count(statement_.get()); }

std::string FileUri(const std::filesystem::path& file, std::string_view mode) {
  std::string uri = "file:";
  for (const char c : file.string()) {
    if (c == '%' || c == '?' || c == '#') {
      uri += c == '%' ? "%25" : c == '?' ? "%3f" : "%23";
    } else {
      uri += c;
    }
  }
  return uri.append("?").append(mode);
}

SqliteConnection::SqliteConnection(const std::string& path) {
  sqlite3* connection = nullptr;
  const int code = sqlite3_open_v2(
      path.c_str(), &connection,
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(connection);
  if (connection == nullptr) throw std::bad_alloc();
  if (code != SQLITE_OK) throw SqliteError(connection);
  sqlite3_extended_result_codes(connection, 1);
}

void SqliteConnection::Execute(const std::string& sql) {
  const int code = sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) throw SqliteError(handle());
}

SqliteSavepoint::SqliteSavepoint(SqliteConnection& connection) : connection_(connection) {
  connection_.Execute("savepoint part");
}

void SqliteSavepoint::Keep() {
  connection_.Execute("release part");
  kept_ = true;
}

SqliteSavepoint::~SqliteSavepoint() {
  if (kept_) return;
  // A failure may have rolled back the whole transaction and the savepoint with it.
  sqlite3_exec(connection_.handle(), "rollback to part; release part", nullptr, nullptr, nullptr);
}

bool CellRow::IsNull(std::size_t column) const {
  return std::holds_alternative<std::monostate>(cells_[column]);
}

std::int64_t CellRow::Integer(std::size_t column) const {
  const auto* integer = std::get_if<std::int64_t>(&cells_[column]);
  return integer == nullptr ? 0 : *integer;
}

double CellRow::Real(std::size_t column) const {
  const auto* real = std::get_if<double>(&cells_[column]);
  return real == nullptr ? static_cast<double>(Integer(column)) : *real;
}

std::string_view CellRow::Bytes(std::size_t column) const {
  if (const auto* text = std::get_if<std::string>(&cells_[column])) return *text;
  if (const auto* blob = std::get_if<Blob>(&cells_[column])) return blob->bytes;
  return {};
}

}  // namespace dbkeeper::server
