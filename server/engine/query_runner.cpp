#include "server/engine/query_runner.h"

#include <algorithm>
#include <iterator>

#include "server/engine/state_functions.h"
#include "server/engine/table_definition.h"
#include "server/sql/parser.h"
#include "server/sql/server_functions.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

FoundObject NeedTarget(Resolver& resolver, const ObjectInfo& info) {
  ObjectName name;
  name.database = info.name.starts_with('#') ? "" : info.database;
  name.owner = info.owner;
  name.name = info.name;
  FoundObject found = resolver.Need(name, "U S");
  if (found.IsSystem() && !info.name.starts_with('#')) Fail(259);
  return found;
}

// Checks and foreign keys hold again at the end, not in between.
class PutOffChecks {
 public:
  explicit PutOffChecks(SqliteConnection& connection) : connection_(connection) {
    Set("ignore_check_constraints = on");
    Set("defer_foreign_keys = on");
  }
  ~PutOffChecks() {
    Set("ignore_check_constraints = off");
    Set("defer_foreign_keys = off");
  }
  PutOffChecks(const PutOffChecks&) = delete;
  PutOffChecks& operator=(const PutOffChecks&) = delete;

  void CheckAgain() const { Set("ignore_check_constraints = off"); }
  bool HasOrphans() const {
    int orphans = 0;
    int most = 0;
    sqlite3_db_status(connection_.handle(), SQLITE_DBSTATUS_DEFERRED_FKS, &orphans, &most, 0);
    return orphans != 0;
  }

 private:
  void Set(const std::string& pragma) const {
    sqlite3_exec(connection_.handle(), ("pragma " + pragma).c_str(), nullptr, nullptr, nullptr);
  }

  SqliteConnection& connection_;
};

// "k = <something else>, ..." for the assigned columns of unique indexes: a text in a column of
// bytes, bytes in every other one.
std::string KeysGivenUp(const Translation& update, const CatalogTable& table) {
  std::string set;
  for (const std::string& column : update.assigned) {
    const auto has = [&](const CatalogIndex& index) {
      return index.Has(IndexStatus::kUnique) &&
             std::ranges::find(index.keys, column, &KeyColumn::name) != index.keys.end();
    };
    if (std::ranges::none_of(table.indexes, has)) continue;
    const bool bytes = IsStoredAsBytes(table.FindColumn(column)->type.id);
    set += (set.empty() ? "" : ", ") + QuoteName(column) +
           (bytes ? " = 'key ' || _rowid_" : " = cast('key ' || _rowid_ as blob)");
  }
  return set;
}

}  // namespace

std::vector<ResultColumn> DeclaredColumns(std::string_view columns) {
  const std::vector<Statement> table = ParseBatch("create table t (" + std::string(columns) + ")");
  std::vector<ResultColumn> declared;
  for (const ColumnDefinition& column : std::get<CreateTableStatement>(table[0].node).columns) {
    declared.emplace_back().name = column.name;
    declared.back().type = column.type;
  }
  return declared;
}

void BindAll(SqliteStatement& statement, const Parameters& values) {
  const std::size_t wanted = std::min(values.size(), statement.ParameterCount());
  for (std::size_t i = 0; i < wanted; ++i) statement.Bind(static_cast<int>(i + 1), values[i].value);
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
    workspace_.StopIfInterrupted();
    if (limit > 0 && count >= limit) break;
  }
  return count;
}

std::int64_t QueryRunner::Select(const SelectStatement& statement, const Execution& execution) {
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  const Translation translation = translator.Select(statement);
  NeedReading();
  if (translation.into) return SelectInto(translation, execution);
  SqliteStatement rows = workspace_.connection().Prepare(translation.sqlite_sql);
  BindAll(rows, execution.parameters);
  execution.sink.OnColumns(translation.columns);
  return workspace_.options().format_only ? 0 : SendRows(rows, execution.sink);
}

std::int64_t QueryRunner::SelectInto(const Translation& translation, const Execution& execution) {
  const ObjectName& name = *translation.into;
  FoundObject place = resolver_.Place(name);
  WriteScope scope(workspace_, place.database, place.alias);
  TableDefinition definition(workspace_, resolver_);
  place.object = definition.MakeFromColumns(place, name.name, translation.columns);
  try {
    SqliteStatement insert = workspace_.connection().Prepare(
        "insert into " + resolver_.CatalogAt(place).Path(name.name) + " select * from (" +
        translation.sqlite_sql + ")" + RowLimit());
    BindAll(insert, execution.parameters);
    insert.Step();
  } catch (const SqliteError& failure) {
    throw SqlError(MessageOfFailed(failure, place, "INSERT"));
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
    return Execute(insert_->translation, insert_->statement, insert_->target, execution.parameters,
                   "INSERT");
  }
  insert_.reset();
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  Translation translation = translator.Insert(statement);
  if (statement.query != nullptr) translation.sqlite_sql += RowLimit();
  if (execution.tree == TreeLife::kOneRun || resolver_.asked_time() || statement.query != nullptr) {
    return Change(translation, execution.parameters, "INSERT");
  }
  const FoundObject target = NeedTarget(resolver_, *translation.target);
  NeedReading(&target);
  SqliteStatement prepared = workspace_.connection().Prepare(translation.sqlite_sql);
  insert_.emplace(PreparedInsert{&statement, workspace_.DefinitionVersion(target.alias),
                                 identity_insert, target, std::move(translation),
                                 std::move(prepared)});
  return Execute(insert_->translation, insert_->statement, insert_->target, execution.parameters,
                 "INSERT");
}

std::int64_t QueryRunner::Update(const UpdateStatement& statement, const Execution& execution) {
  resolver_.BeginStatement();
  Translation translation = Translator(resolver_, execution.parameters).Update(statement);
  translation.sqlite_sql += RowLimit();
  translation.rows_sql += RowLimit();
  return Change(translation, execution.parameters, "UPDATE");
}

std::int64_t QueryRunner::Delete(const DeleteStatement& statement, const Execution& execution) {
  resolver_.BeginStatement();
  Translation translation = Translator(resolver_, execution.parameters).Delete(statement);
  translation.sqlite_sql += RowLimit();
  return Change(translation, execution.parameters, "DELETE");
}

std::string QueryRunner::RowLimit() const {
  const std::int64_t rows = workspace_.options().row_count;
  return rows > 0 ? " limit " + std::to_string(rows) : "";
}

std::int64_t QueryRunner::Change(const Translation& translation, const Parameters& values,
                                 const std::string& verb) {
  const FoundObject target = NeedTarget(resolver_, *translation.target);
  NeedReading(&target);
  if (translation.reads_target) NeedPermission(workspace_, target, "SELECT");
  SqliteStatement statement = workspace_.connection().Prepare(translation.sqlite_sql);
  return Execute(translation, statement, target, values, verb);
}

std::int64_t QueryRunner::Execute(const Translation& translation, SqliteStatement& statement,
                                  const FoundObject& target, const Parameters& values,
                                  const std::string& verb) {
  NeedPermission(workspace_, target, verb);
  WriteScope scope(workspace_, target.database, target.alias, target.object.id,
                   WriteScope::Undo::kNothing);
  std::int64_t count = 0;
  try {
    count = RunToEnd(statement, values);
  } catch (const SqliteError& failure) {
    switch (failure.constraint().kind) {
      case ConstraintFailureKind::kForeignKey:
        throw SqlError(ForeignKeyFailure(target, translation.sqlite_sql, values, verb));
      case ConstraintFailureKind::kUnique:
        count = UpdateInSteps(translation, target, values, failure);
        break;
      default:
        throw SqlError(MessageOfFailed(failure, target, verb));
    }
  }
  if (verb == "INSERT" && translation.target->identity_insert) {
    TableDefinition(workspace_, resolver_).AdoptIdentity(target);
  }
  if (verb == "INSERT" && !translation.takes_identity) workspace_.last_insert_identity.reset();
  scope.Commit();
  return count;
}

std::int64_t QueryRunner::RunToEnd(SqliteStatement& statement, const Parameters& values) {
  BindAll(statement, values);
  try {
    while (statement.Step()) {
      workspace_.StopIfInterrupted();
    }
  } catch (const SqlError&) {
    statement.Reset();
    throw;
  }
  statement.Reset();
  return sqlite3_changes64(workspace_.connection().handle());
}

// SQLite compares a changed row with those that are yet to change; the server compares what the
// statement leaves behind. So the rows are first given keys that nothing else has.
std::int64_t QueryRunner::UpdateInSteps(const Translation& translation, const FoundObject& target,
                                        const Parameters& values, const SqliteError& failure) {
  const std::string keys =
      KeysGivenUp(translation, resolver_.CatalogAt(target).Table(target.object));
  if (keys.empty()) throw SqlError(MessageOfFailed(failure, target, "UPDATE"));
  SqliteConnection& connection = workspace_.connection();
  const std::string& table = translation.target->sqlite_from;
  SqliteSavepoint steps(connection);
  const PutOffChecks checks(connection);
  const auto run = [&](const std::string& sql) {
    SqliteStatement statement = connection.Prepare(sql);
    return RunToEnd(statement, values);
  };
  try {
    run("create table temp.\"##changes\" as " + translation.rows_sql);
    run("update " + table + " set " + keys +
        " where _rowid_ in (select r from temp.\"##changes\")");
    checks.CheckAgain();
    const std::int64_t count = run("update " + table + " as u set " + translation.set_sql +
                                   " from temp.\"##changes\" as s where u._rowid_ = s.r");
    if (checks.HasOrphans()) throw SqlError(OrphanMessage(target, "UPDATE"));
    run("drop table temp.\"##changes\"");
    steps.Keep();
    return count;
  } catch (const SqliteError& second) {
    throw SqlError(MessageOfFailed(second, target, "UPDATE"));
  }
}

Cell QueryRunner::Scalar(const Expression& expression, const Execution& execution, SqlType& type) {
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  const Translation translation = translator.Scalar(expression);
  type = translation.columns.front().type;
  return FirstCell(translation, execution);
}

std::string QueryRunner::Text(const Expression& expression, const Execution& execution) {
  resolver_.BeginStatement();
  Translator translator(resolver_, execution.parameters);
  return TextOfCell(FirstCell(translator.ScalarText(expression), execution));
}

Cell QueryRunner::FirstCell(const Translation& translation, const Execution& execution) {
  NeedReading();
  SqliteStatement row = workspace_.connection().Prepare(translation.sqlite_sql);
  BindAll(row, execution.parameters);
  return row.Step() ? row.Value(0) : Cell();
}

Cell QueryRunner::Scalar(const Expression& expression, const Execution& execution) {
  SqlType ignored;
  return Scalar(expression, execution, ignored);
}

ServerMessage QueryRunner::MessageOfFailed(const SqliteError& failure, const FoundObject& target,
                                           const std::string& verb) {
  const ConstraintFailure& constraint = failure.constraint();
  if (constraint.kind == ConstraintFailureKind::kNone) return failure.message();
  const CatalogTable table = resolver_.CatalogAt(target).Table(target.object);
  const std::string& name = table.object.name;
  if (constraint.kind == ConstraintFailureKind::kNotNull) {
    const std::string full_name = target.database.name + ".dbo." + name;
    return MakeMessage(515, {constraint.columns.front(), full_name, verb});
  }
  if (constraint.kind == ConstraintFailureKind::kCheck) {
    const auto check = std::ranges::find(table.checks, constraint.name, &CatalogCheck::name);
    const std::string column = check == table.checks.end() ? "" : check->column;
    return ConflictMessage(verb, "CHECK", constraint.name, target.database, name, column);
  }
  for (const CatalogIndex& index : table.indexes) {
    const bool same_keys = std::ranges::equal(index.keys, constraint.columns, {}, &KeyColumn::name);
    const bool same_name =
        constraint.name == Catalog::NullIndexSqliteName(table.object.id, index.indid);
    if (!index.Has(IndexStatus::kUnique) || (!same_keys && !same_name)) continue;
    const bool primary = index.Has(IndexStatus::kPrimaryKey);
    if (!primary && !index.Has(IndexStatus::kUniqueKey))
      return MakeMessage(2601, {name, index.name});
    return MakeMessage(2627, {primary ? "PRIMARY KEY" : "UNIQUE KEY", index.name, name});
  }
  return failure.message();
}

// SQLite does not say which key failed. The statement is run again with the check put off, and
// each key is asked for a row without its other side; then all of it is undone.
ServerMessage QueryRunner::ForeignKeyFailure(const FoundObject& target, const std::string& sql,
                                             const Parameters& values, const std::string& verb) {
  const SqliteSavepoint undone(workspace_.connection());
  const PutOffChecks checks(workspace_.connection());
  workspace_.ForgetIdentities();
  SqliteStatement again = workspace_.connection().Prepare(sql);
  RunToEnd(again, values);
  return OrphanMessage(target, verb);
}

ServerMessage QueryRunner::OrphanMessage(const FoundObject& target, const std::string& verb) {
  Catalog catalog = resolver_.CatalogAt(target);
  SqliteConnection& connection = workspace_.connection();
  ServerMessage message = MakeMessage(547);
  const auto failed = [&](const CatalogForeignKey& key) {
    if (connection.IntegerOf(0, catalog.OrphanSql(key)) == 0) return false;
    const bool referencing = key.child == target.object.id;
    const auto& columns = referencing ? key.parent_columns : key.child_columns;
    message =
        ConflictMessage(verb, referencing ? "FOREIGN KEY" : "REFERENCE", key.name, target.database,
                        referencing ? key.parent_table : key.child_table, key.OnlyColumn(columns));
    return true;
  };
  std::vector<CatalogForeignKey> keys = catalog.Table(target.object).foreign_keys;
  std::ranges::copy(catalog.ReferencesTo(target.object.id), std::back_inserter(keys));
  static_cast<void>(std::ranges::any_of(keys, failed));
  return message;
}

}  // namespace dbkeeper::server
