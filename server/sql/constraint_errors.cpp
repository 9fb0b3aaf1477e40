#include "server/sql/constraint_errors.h"

#include <sqlite3.h>

#include <algorithm>
#include <string_view>

namespace dbkeeper::server {
namespace {

// "UNIQUE constraint failed: t.a, t.b"
std::string_view Details(std::string_view message) {
  const std::size_t colon = message.find(": ");
  return colon == std::string_view::npos ? "" : message.substr(colon + 2);
}

// "index 'name'" gives the name; SQLite says so of an index of expressions.
std::string IndexOf(std::string_view details) {
  constexpr std::string_view kIndex = "index '";
  if (!details.starts_with(kIndex)) return "";
  details.remove_prefix(kIndex.size());
  return std::string(details.substr(0, details.rfind('\'')));
}

// Splits "t.a, t.b".
std::vector<std::string> ColumnsOf(std::string_view details) {
  std::vector<std::string> columns;
  while (!details.empty()) {
    const std::size_t comma = std::min(details.find(", "), details.size());
    const std::string_view item = details.substr(0, comma);
    details.remove_prefix(std::min(comma + 2, details.size()));
    columns.emplace_back(item.substr(item.find('.') + 1));
  }
  return columns;
}

}  // namespace

ConstraintFailure FailedConstraint(sqlite3* connection) {
  const std::string_view details = Details(sqlite3_errmsg(connection));
  switch (sqlite3_extended_errcode(connection)) {
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
    case SQLITE_CONSTRAINT_ROWID:
      return {ConstraintFailureKind::kUnique, ColumnsOf(details), IndexOf(details)};
    case SQLITE_CONSTRAINT_NOTNULL:
      return {ConstraintFailureKind::kNotNull, ColumnsOf(details), ""};
    case SQLITE_CONSTRAINT_CHECK:
      return {ConstraintFailureKind::kCheck, {}, std::string(details)};
    case SQLITE_CONSTRAINT_FOREIGNKEY:
      return {ConstraintFailureKind::kForeignKey, {}, ""};
    default:
      return {};
  }
}

}  // namespace dbkeeper::server
