#include "tests/server/sql/sql_fixture.h"

#include "server/types/datetime.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

std::string CellText(sqlite3_stmt* statement, int column, const SqlType& type) {
  if (sqlite3_column_type(statement, column) == SQLITE_NULL) return "null";
  if (FamilyOf(type.id) == TypeFamily::kDateTime) {
    return FormatDateTime(sqlite3_column_int64(statement, column), 121).value_or("?");
  }
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  if (sqlite3_column_type(statement, column) == SQLITE_BLOB) {
    const std::string bytes(static_cast<const char*>(sqlite3_column_blob(statement, column)), size);
    return FamilyOf(type.id) == TypeFamily::kGuid ? FormatGuid(bytes) : "0x" + HexDigits(bytes);
  }
  return reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
}

}  // namespace

TestInstance::TestInstance() {
  sqlite3_open(":memory:", &connection_);
  RegisterServerFunctions(connection_, this);
  sqlite3_create_function(
      connection_, "next_identity", 1, SQLITE_UTF8, this,
      [](sqlite3_context* context, int, sqlite3_value** values) {
        auto& self = *static_cast<TestInstance*>(sqlite3_user_data(context));
        const auto* table = reinterpret_cast<const char*>(sqlite3_value_text(values[0]));
        sqlite3_result_int64(context, ++self.identities_[table]);
      },
      nullptr, nullptr);
}

TestInstance::~TestInstance() { sqlite3_close(connection_); }

std::optional<ObjectInfo> TestInstance::ResolveObject(const ObjectName& name) {
  if (name.database == "nowhere") throw MakeError(911, {"no such database"});
  const auto found = objects_.find(ToLowerAscii(name.name));
  if (found == objects_.end()) return std::nullopt;
  return found->second;
}

std::optional<ObjectInfo> TestInstance::ResolveTableFunction(
    const ObjectName& name, const std::vector<std::string>& arguments) {
  if (name.name != "fn_listextendedproperty") return std::nullopt;
  ObjectInfo object;
  object.kind = ObjectKind::kSystemTable;
  object.name = name.name;
  const std::string& level = arguments.at(1);
  object.sqlite_from =
      "(SELECT 'TABLE' AS objtype, 'items' AS objname, 'MS_Description' AS name, " + level +
      " AS value)";
  for (const char* column : {"objtype", "objname", "name", "value"}) {
    object.columns.push_back({column, SqlType{TypeId::kNVarChar, 128, 0, 0, true}, "", ""});
  }
  return object;
}

// 2004-03-08 10:20:30.500
std::int64_t TestInstance::StatementTime() { return FromCivil({2004, 3, 8, 10, 20, 30, 150}); }

Cell TestInstance::Evaluate(std::string_view function, const std::vector<Cell>& arguments) {
  if (function == "next_timestamp") return Blob{std::string("\0\0\0\0\0\0\0\1", 8)};
  if (function == "@@spid") return std::int64_t{51};
  if (function == "@@identity") return std::int64_t{7};
  if (function == "serverproperty") return std::string("value");
  if (function == "db_name") return std::string("test");
  if (function == "object_id") return static_cast<std::int64_t>(arguments.size());
  throw Unsupported(function);
}

void TestInstance::AddTable(const CreateTableStatement& create) {
  if (objects_.count(ToLowerAscii(create.table.name)) > 0) throw MakeError(2714, {"exists"});
  ObjectInfo object;
  object.database = "test";
  object.owner = "dbo";
  object.name = create.table.name;
  object.sqlite_from = '"' + create.table.name + '"';
  std::string ddl = "CREATE TABLE " + object.sqlite_from + " (";
  for (const ColumnDefinition& column : create.columns) {
    ColumnInfo info;
    info.name = column.name;
    info.type = column.type;
    if (column.identity) info.identity_sql = "next_identity('" + object.name + "')";
    bool is_key = false;
    for (const Constraint& constraint : column.constraints) {
      if (constraint.kind == ConstraintKind::kDefault) info.default_text = constraint.text;
      is_key = is_key || constraint.kind == ConstraintKind::kPrimaryKey;
    }
    ddl += (object.columns.empty() ? "\"" : ", \"") + column.name + "\" " +
           SqliteDeclaration(column.type) + (column.type.nullable ? "" : " NOT NULL") +
           (is_key ? " UNIQUE" : "");
    object.columns.push_back(std::move(info));
  }
  Translator translator(*this);
  for (const ColumnDefinition& column : create.columns) {
    for (const Constraint& constraint : column.constraints) {
      if (constraint.kind != ConstraintKind::kCheck) continue;
      ddl += ", CHECK (" + translator.CheckExpression(constraint.text, object) + ")";
    }
  }
  sqlite3_exec(connection_, (ddl + ")").c_str(), nullptr, nullptr, nullptr);
  objects_[ToLowerAscii(object.name)] = object;
}

void TestInstance::Step(const Translation& translation, const std::vector<std::string>& values,
                        Outcome& outcome) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(connection_, translation.sqlite_sql.c_str(), -1, &statement, nullptr) !=
      SQLITE_OK) {
    outcome.error = MessageOfFailure(connection_);
    outcome.error.text += "\n" + translation.sqlite_sql;
    return;
  }
  for (int i = 1; i <= sqlite3_bind_parameter_count(statement); ++i) {
    sqlite3_bind_text(statement, i, values.at(static_cast<std::size_t>(i - 1)).c_str(), -1,
                      SQLITE_TRANSIENT);
  }
  int code = sqlite3_step(statement);
  for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
    if (!outcome.rows.empty()) outcome.rows += ';';
    for (std::size_t i = 0; i < translation.columns.size(); ++i) {
      if (i > 0) outcome.rows += '|';
      outcome.rows += CellText(statement, static_cast<int>(i), translation.columns[i].type);
    }
  }
  if (code != SQLITE_DONE) {
    const ConstraintFailure failure = FailedConstraint(connection_);
    const int number = failure.kind == ConstraintFailureKind::kNotNull  ? 515
                       : failure.kind == ConstraintFailureKind::kUnique ? 2627
                       : failure.kind == ConstraintFailureKind::kCheck  ? 547
                                                                        : 0;
    outcome.error = number != 0 ? MakeMessage(number) : MessageOfFailure(connection_);
  }
  sqlite3_finalize(statement);
}

void TestInstance::Translate(const Statement& statement, Translator& translator, Outcome& outcome) {
  Translation translation;
  if (const auto* select = std::get_if<SelectStatement>(&statement.node)) {
    translation = translator.Select(*select);
    outcome.columns.clear();
    for (const ResultColumn& column : translation.columns) {
      outcome.columns +=
          (outcome.columns.empty() ? "" : ", ") + column.name + ' ' + DeclarationOf(column.type);
    }
  } else if (const auto* insert = std::get_if<InsertStatement>(&statement.node)) {
    translation = translator.Insert(*insert);
  } else if (const auto* update = std::get_if<UpdateStatement>(&statement.node)) {
    translation = translator.Update(*update);
  } else if (const auto* deletion = std::get_if<DeleteStatement>(&statement.node)) {
    translation = translator.Delete(*deletion);
  } else if (const auto* create = std::get_if<CreateTableStatement>(&statement.node)) {
    AddTable(*create);
    return;
  } else if (const auto* view = std::get_if<CreateViewStatement>(&statement.node)) {
    translator.ViewColumns(*view);
    ObjectInfo object;
    object.kind = ObjectKind::kView;
    object.database = "test";
    object.name = view->name.name;
    object.view_text = view->text;
    objects_[ToLowerAscii(object.name)] = object;
    return;
  } else {
    return;
  }
  Step(translation, values_, outcome);
}

Outcome TestInstance::Run(std::string_view batch, const Parameters& parameters,
                          const std::vector<std::string>& values) {
  Outcome outcome;
  values_ = values;
  try {
    for (const Statement& statement : ParseBatch(batch)) {
      Translator translator(*this, parameters);
      Translate(statement, translator, outcome);
      if (outcome.error.number != 0) break;
    }
  } catch (const SqlError& error) {
    outcome.error = error.message();
  }
  if (outcome.error.number != 0) outcome.rows = "error " + std::to_string(outcome.error.number);
  return outcome;
}

}  // namespace dbkeeper::server
