#include "server/sql/constraint_errors.h"

#include <sqlite3.h>

#include <string_view>

#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

// "UNIQUE constraint failed: t.a, t.b"
std::string_view Details(std::string_view message) {
  const std::size_t colon = message.find(": ");
  return colon == std::string_view::npos ? "" : message.substr(colon + 2);
}

// Splits "t.a, t.b"; a table's name may itself hold points, so the table is what all have before
// their last point.
void ReadColumns(std::string_view details, ConstraintFailure& failure) {
  while (!details.empty()) {
    const std::size_t comma = std::min(details.find(", "), details.size());
    const std::string_view item = details.substr(0, comma);
    details.remove_prefix(std::min(comma + 2, details.size()));
    const std::size_t point = item.find('.');
    if (point == std::string_view::npos) continue;
    failure.table = item.substr(0, point);
    failure.columns.emplace_back(item.substr(point + 1));
  }
}

}  // namespace

ConstraintFailure FailedConstraint(sqlite3* connection) {
  ConstraintFailure failure;
  const std::string_view details = Details(sqlite3_errmsg(connection));
  switch (sqlite3_extended_errcode(connection)) {
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
    case SQLITE_CONSTRAINT_ROWID:
      failure.kind = ConstraintFailureKind::kUnique;
      if (details.substr(0, 7) == "index '" && details.size() > 8) {
        failure.name = details.substr(7, details.size() - 8);
      } else {
        ReadColumns(details, failure);
      }
      break;
    case SQLITE_CONSTRAINT_NOTNULL:
      failure.kind = ConstraintFailureKind::kNotNull;
      ReadColumns(details, failure);
      break;
    case SQLITE_CONSTRAINT_CHECK:
      failure.kind = ConstraintFailureKind::kCheck;
      failure.name = details;
      break;
    case SQLITE_CONSTRAINT_FOREIGNKEY:
    case SQLITE_CONSTRAINT_TRIGGER:
      failure.kind = ConstraintFailureKind::kForeignKey;
      break;
    default:
      break;
  }
  return failure;
}

ServerMessage UniqueConstraintMessage(bool primary_key, const std::string& constraint,
                                      const std::string& table, int line) {
  return MakeMessage(2627, {primary_key ? "PRIMARY KEY" : "UNIQUE KEY", constraint, table}, line);
}

ServerMessage UniqueIndexMessage(const std::string& index, const std::string& table, int line) {
  return MakeMessage(2601, {table, index}, line);
}

ServerMessage NotNullMessage(const std::string& verb, const std::string& column,
                             const std::string& table, int line) {
  return MakeMessage(515, {column, table, verb}, line);
}

ServerMessage CheckMessage(const std::string& verb, const std::string& constraint,
                           const std::string& database, const std::string& table,
                           const std::string& column, int line) {
  const std::string place = column.empty() ? "" : ", column '" + column + "'";
  const std::string_view kind = column.empty() ? "TABLE CHECK" : "COLUMN CHECK";
  return MakeMessage(547, {verb, kind, constraint, database, table, place}, line);
}

ServerMessage ForeignKeyMessage(ForeignKeySide side, const std::string& verb,
                                const std::string& constraint, const std::string& database,
                                const std::string& table, const std::string& column, int line) {
  const std::string place = column.empty() ? "" : ", column '" + column + "'";
  const std::string_view kind =
      side == ForeignKeySide::kReferenced ? "COLUMN REFERENCE" : "COLUMN FOREIGN KEY";
  return MakeMessage(547, {verb, kind, constraint, database, table, place}, line);
}

}  // namespace dbkeeper::server
