#include "server/engine/query_runner.h"

#include <algorithm>

#include "server/engine/engine_messages.h"
#include "server/engine/permissions.h"
#include "server/engine/table_definition.h"
#include "server/sql/constraint_errors.h"

namespace dbkeeper::server {

namespace {

FoundObject NeedTarget(Resolver& resolver, const ObjectInfo& info) {
  ObjectName name;
  name.database = info.name.starts_with('#') ? "" : info.database;
  name.name = info.name;
  FoundObject found = resolver.Need(name, "U S");
  if (found.IsSystem() && !info.name.starts_with('#')) Fail(259);
  return found;
}

}  // namespace

void BindAll(SqliteStatement& statement, const std::vector<Cell>& values) {
  const std::size_t wanted = std::min(values.size(), statement.ParameterCount());
  for (std::size_t i = 0; i < wanted; ++i) statement.Bind(static_cast<int>(i + 1), values[i]);
}

std::int64_t QueryRunner::SendRows(SqliteStatement& rows, ResultSink& sink) {
  const StatementRow row(rows);
  const std::int64_t limit = workspace_.options().row_count;
  std::int64_t count = 0;
  while (rows.Step()) {
    ++count;
    if (!sink.OnRow(row)) {
      workspace_.Interrupt();
      Fail(3617);
    }
    if (workspace_.interrupted()) Fail(3617);
    if (limit > 0 && count >= limit) break;
  }
  return count;
}

std::int64_t QueryRunner::Select(const SelectStatement& statement, const Execution& execution) {
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  const Translation translation = translator.Select(statement);
  NeedReading(nullptr);
  if (translation.into) return SelectInto(translation, execution);
  try {
    SqliteStatement rows = workspace_.connection().Prepare(translation.sqlite_sql);
    BindAll(rows, execution.values);
    execution.sink.OnColumns(translation.columns);
    return workspace_.options().format_only ? 0 : SendRows(rows, execution.sink);
  } catch (const SqliteError& failure) {
    throw SqlError(MessageOfFailed(failure, nullptr, "SELECT", execution.line));
  }
}

std::int64_t QueryRunner::SelectInto(const Translation& translation, const Execution& execution) {
  const ObjectName& name = *translation.into;
  FoundObject place = resolver_.Place(name);
  WriteScope scope(workspace_, place.database, place.alias);
  TableDefinition definition(workspace_, resolver_);
  place.object = definition.MakeFromColumns(place, name.name, translation.columns);
  try {
    SqliteStatement insert = workspace_.connection().Prepare(
        "insert into " + resolver_.CatalogAt(place).Path(name.name) + " " + translation.sqlite_sql);
    BindAll(insert, execution.values);
    insert.Step();
  } catch (const SqliteError& failure) {
    throw SqlError(MessageOfFailed(failure, &place, "INSERT", execution.line));
  }
  const std::int64_t count = sqlite3_changes64(workspace_.connection().handle());
  definition.AdoptIdentity(place);
  scope.Commit();
  return count;
}

void QueryRunner::NeedReading(const FoundObject* target) {
  for (const FoundObject& object : resolver_.seen()) {
    if (target != nullptr && object.object.id == target->object.id) continue;
    NeedPermission(workspace_, object, "SELECT");
  }
}

std::int64_t QueryRunner::Insert(const InsertStatement& statement, const Execution& execution) {
  const std::string& identity_insert = workspace_.options().identity_insert;
  if (insert_ && execution.tree == TreeLife::kKept && insert_->tree == &statement &&
      insert_->identity_insert == identity_insert &&
      insert_->version == workspace_.DefinitionVersion(insert_->target.alias)) {
    insert_->target.database = workspace_.FindDatabase(insert_->target.database.name);
    workspace_.Open(insert_->target.database);
    return Execute(insert_->translation, insert_->statement, insert_->target, execution.values,
                   "INSERT", execution.line);
  }
  insert_.reset();
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  Translation translation = translator.Insert(statement);
  if (execution.tree == TreeLife::kOneRun || resolver_.asked_time() || statement.query != nullptr) {
    return Change(translation, execution.values, "INSERT", execution.line);
  }
  const FoundObject target = NeedTarget(resolver_, *translation.target);
  NeedReading(&target);
  SqliteStatement prepared = workspace_.connection().Prepare(translation.sqlite_sql);
  insert_.emplace(&statement, workspace_.DefinitionVersion(target.alias), identity_insert, target,
                  std::move(translation), std::move(prepared));
  return Execute(insert_->translation, insert_->statement, insert_->target, execution.values,
                 "INSERT", execution.line);
}

std::int64_t QueryRunner::Update(const UpdateStatement& statement, const Execution& execution) {
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  return Change(translator.Update(statement), execution.values, "UPDATE", execution.line);
}

std::int64_t QueryRunner::Delete(const DeleteStatement& statement, const Execution& execution) {
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  return Change(translator.Delete(statement), execution.values, "DELETE", execution.line);
}

std::int64_t QueryRunner::Change(const Translation& translation, const std::vector<Cell>& values,
                                 const std::string& verb, int line) {
  const FoundObject target = NeedTarget(resolver_, *translation.target);
  NeedReading(&target);
  SqliteStatement statement = workspace_.connection().Prepare(translation.sqlite_sql);
  return Execute(translation, statement, target, values, verb, line);
}

std::int64_t QueryRunner::Execute(const Translation& translation, SqliteStatement& statement,
                                  const FoundObject& target, const std::vector<Cell>& values,
                                  const std::string& verb, int line) {
  NeedPermission(workspace_, target, verb);
  WriteScope scope(workspace_, target.database, target.alias, target.object.id,
                   WriteScope::Undo::kNothing);
  try {
    BindAll(statement, values);
    while (statement.Step()) {
      if (workspace_.interrupted()) Fail(3617);
    }
    statement.Reset();
  } catch (const SqliteError& failure) {
    statement.Reset();
    throw SqlError(failure.constraint().kind == ConstraintFailureKind::kForeignKey
                       ? ForeignKeyFailure(target, translation.sqlite_sql, values, verb, line)
                       : MessageOfFailed(failure, &target, verb, line));
  }
  const std::int64_t count = sqlite3_changes64(workspace_.connection().handle());
  if (verb == "INSERT" && translation.target->identity_insert) {
    TableDefinition(workspace_, resolver_).AdoptIdentity(target);
  }
  scope.Commit();
  return count;
}

Cell QueryRunner::Scalar(const Expression& expression, const Execution& execution, SqlType& type) {
  Translator translator(resolver_, execution.parameters);
  const Translation translation = translator.Scalar(expression);
  type = translation.columns.front().type;
  try {
    SqliteStatement row = workspace_.connection().Prepare(translation.sqlite_sql);
    BindAll(row, execution.values);
    return row.Step() ? row.Value(0) : Cell();
  } catch (const SqliteError& failure) {
    throw SqlError(MessageOfFailed(failure, nullptr, "SELECT", execution.line));
  }
}

Cell QueryRunner::Scalar(const Expression& expression, const Execution& execution) {
  SqlType ignored;
  return Scalar(expression, execution, ignored);
}

ServerMessage QueryRunner::MessageOfFailed(const SqliteError& failure, const FoundObject* target,
                                           const std::string& verb, int line) {
  const ConstraintFailure& constraint = failure.constraint();
  ServerMessage plain = failure.message();
  plain.line = line;
  if (failure.code() == SQLITE_BUSY_SNAPSHOT) {
    return MessageOf(1205, {std::to_string(workspace_.spid())});
  }
  if ((failure.code() & 0xFF) == SQLITE_BUSY) return MessageOf(1222);
  if (constraint.kind == ConstraintFailureKind::kNone || target == nullptr) {
    return plain;
  }
  const CatalogTable table = resolver_.CatalogAt(*target).Table(target->object);
  const std::string& name = table.object.name;
  if (constraint.kind == ConstraintFailureKind::kNotNull) {
    return NotNullMessage(verb, constraint.columns.front(), target->database.name + ".dbo." + name,
                          line);
  }
  if (constraint.kind == ConstraintFailureKind::kCheck) {
    const auto check = std::ranges::find(table.checks, constraint.name, &CatalogCheck::name);
    return CheckMessage(verb, constraint.name, target->database.name, name,
                        check == table.checks.end() ? "" : check->column, line);
  }
  for (const CatalogIndex& index : table.indexes) {
    if (!index.Has(IndexStatus::kUnique) || index.keys.size() != constraint.columns.size())
      continue;
    if (!std::ranges::equal(index.keys, constraint.columns, {}, &KeyColumn::name)) continue;
    const bool primary = index.Has(IndexStatus::kPrimaryKey);
    if (primary || index.Has(IndexStatus::kUniqueKey)) {
      return UniqueConstraintMessage(primary, index.name, name, line);
    }
    return UniqueIndexMessage(index.name, name, line);
  }
  return plain;
}

ServerMessage QueryRunner::ForeignKeyFailure(const FoundObject& target, const std::string& sql,
                                             const std::vector<Cell>& values,
                                             const std::string& verb, int line) {
  // SQLite does not say which key failed. The statement is run again with the check put off, and
  // each key is asked for a row without its other side; then all of it is undone.
  Catalog catalog = resolver_.CatalogAt(target);
  SqliteConnection& connection = workspace_.connection();
  const SqliteSavepoint undone(connection);
  connection.Execute("pragma defer_foreign_keys = on");
  workspace_.ForgetIdentities();
  {
    SqliteStatement again = connection.Prepare(sql);
    BindAll(again, values);
    while (again.Step()) {
    }
  }
  ServerMessage message = MessageOf(547);
  const auto ask = [&](const CatalogForeignKey& key, ForeignKeySide side) {
    std::string orphan = "select 1 from " + catalog.Path(key.child_table) + " c where ";
    std::string match;
    for (std::size_t i = 0; i < key.child_columns.size(); ++i) {
      const std::string column = "c." + QuoteName(key.child_columns[i]);
      orphan += column + " is not null and ";
      match += (i == 0 ? "" : " and ") + ("p." + QuoteName(key.parent_columns[i])) + " = " + column;
    }
    orphan += "not exists (select 1 from " + catalog.Path(key.parent_table) + " p where " + match +
              ") limit 1";
    if (connection.IntegerOf(0, orphan) == 0) return false;
    const bool referencing = side == ForeignKeySide::kReferencing;
    const bool single = key.child_columns.size() == 1;
    message = ForeignKeyMessage(side, verb, key.name, target.database.name,
                                referencing ? key.parent_table : key.child_table,
                                !single       ? ""
                                : referencing ? key.parent_columns[0]
                                              : key.child_columns[0],
                                line);
    return true;
  };
  const CatalogTable table = catalog.Table(target.object);
  const auto referencing = catalog.ReferencesTo(target.object.id);
  const bool found =
      std::ranges::any_of(table.foreign_keys,
                          [&](const auto& k) { return ask(k, ForeignKeySide::kReferencing); }) ||
      std::ranges::any_of(referencing,
                          [&](const auto& k) { return ask(k, ForeignKeySide::kReferenced); });
  static_cast<void>(found);
  connection.Execute("pragma defer_foreign_keys = off");
  return message;
}

}  // namespace dbkeeper::server
