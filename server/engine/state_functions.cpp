#include "server/engine/state_functions.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "server/catalog/login_store.h"
#include "server/catalog/system_tables.h"
#include "server/sql/parser.h"
#include "server/storage/host_file.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

using Arguments = std::vector<Cell>;
using Function = Cell (*)(const StateContext&, const Arguments&);

Cell Number(std::int64_t value) { return value; }

bool IsNull(const Arguments& arguments, std::size_t i) {
  return i >= arguments.size() || IsNullCell(arguments[i]);
}

std::int64_t IntegerAt(const Arguments& arguments, std::size_t i) {
  const auto* integer = i < arguments.size() ? std::get_if<std::int64_t>(&arguments[i]) : nullptr;
  return integer == nullptr ? 0 : *integer;
}

std::string TextAt(const Arguments& arguments, std::size_t i) {
  return i < arguments.size() ? TextOfCell(arguments[i]) : std::string();
}

std::optional<FoundObject> FindByName(const StateContext& context, const std::string& text) {
  try {
    return context.resolver.Find(ParseObjectName(text));
  } catch (const SqlError&) {
    return std::nullopt;
  }
}

// The user that the login is in the current database.
Cell UserName(const StateContext& context, const Arguments&) {
  Workspace& workspace = context.workspace;
  return workspace.UserName(workspace.FindDatabase(workspace.database()));
}

Cell DatabaseName(const StateContext& context, const Arguments& arguments) {
  if (arguments.empty()) return context.workspace.database();
  const auto database = context.workspace.LookUpDatabase(static_cast<int>(IntegerAt(arguments, 0)));
  return database ? Cell(database->name) : Cell();
}

Cell ObjectId(const StateContext& context, const Arguments& arguments) {
  const auto found = FindByName(context, TextAt(arguments, 0));
  return found ? Number(found->object.id) : Cell();
}

// Null for an object of another database.
Cell LocalObjectId(const StateContext& context, const Arguments& arguments) {
  const auto found = FindByName(context, TextAt(arguments, 0));
  const bool local = found && found->database.dbid == context.workspace.dbid();
  return local ? Number(found->object.id) : Cell();
}

// What the identity counter of a table began with (0), or goes on by (1); null where it has none.
Cell IdentityCounter(const StateContext& context, const Arguments& arguments, int part) {
  const auto found = FindByName(context, TextAt(arguments, 0));
  if (!found) return Cell();
  SqliteStatement row =
      Catalog(context.workspace.connection(), found->alias)
          .Prepare("select seed, increment from {}\"#identity\" where id = ?1", found->object.id);
  return row.Step() ? Number(row.Integer(part)) : Cell();
}

Cell ServerProperty(const StateContext& context, const Arguments& arguments) {
  const InstanceOptions& options = context.workspace.instance().options();
  const std::string property = TextAt(arguments, 0);
  const std::pair<std::string_view, Cell> properties[] = {
      {"MachineName", options.machine_name},
      {"ServerName", options.server_name},
      {"InstanceName", Cell()},
      {"Edition", std::string("DB Keeper Local Server")},
      {"ProductLevel", std::string("SP4")},
      {"ProductVersion", std::string(kProductVersion)},
      {"EngineEdition", Number(1)},
      {"Collation", std::string(kDefaultCollation)},
      {"IsIntegratedSecurityOnly", Number(0)},
      {"IsSingleUser", Number(0)},
      {"IsClustered", Number(0)},
      {"IsFullTextInstalled", Number(0)},
      {"IsSyncWithBackup", Number(0)},
      {"LicenseType", std::string("DISABLED")},
      {"NumLicenses", Cell()},
      {"ProcessID", Cell()},
  };
  for (const auto& [name, value] : properties) {
    if (SameName(name, property)) return value;
  }
  return {};
}

Cell IsServerRoleMember(const StateContext& context, const Arguments& arguments) {
  const std::string role = TextAt(arguments, 0);
  const auto* known = std::ranges::find_if(
      kServerRoles, [&](const auto& candidate) { return SameName(candidate.first, role); });
  if (known == std::end(kServerRoles)) return {};
  const std::string login =
      IsNull(arguments, 1) ? context.workspace.login().name : TextAt(arguments, 1);
  if (SameName(login, context.workspace.login().name) && context.workspace.login().sysadmin) {
    return Number(1);
  }
  return Number(context.workspace.connection().IntegerOf(
      0,
      "select max(sysadmin, " + std::string(known->first) + ") from main.syslogins where name = ?1",
      login));
}

Cell HasDatabaseAccess(const StateContext& context, const Arguments& arguments) {
  const auto database = context.workspace.LookUpDatabase(TextAt(arguments, 0));
  if (!database) return {};
  try {
    context.workspace.Open(*database);
    return Number(1);
  } catch (const SqlError&) {
    return Number(0);
  }
}

Cell NumberOrNull(const std::optional<std::int64_t>& number) {
  return number ? Number(*number) : Cell();
}

Cell Version(const StateContext& context, const Arguments&) {
  return "Microsoft SQL Server  2000 - " + std::string(kProductVersion) +
         " compatible, DB Keeper Local Server on " +
         context.workspace.instance().options().machine_name;
}

ClientInfo Client(const StateContext& context) {
  const auto record = context.workspace.instance().Find(context.workspace.spid());
  return record ? record->client : ClientInfo{};
}

// The rows of a table, or of one of its parts, as the counting columns of sysindexes want them:
// alias of the database and id of the table.
Cell TableRows(const StateContext& context, const Arguments& arguments) {
  SqliteConnection& connection = context.workspace.connection();
  Catalog catalog(connection, TextAt(arguments, 0));
  const auto object = catalog.FindObject(IntegerAt(arguments, 1));
  const bool stored = object && (object->xtype == "U" || object->xtype == "S");
  return Number(
      stored ? connection.IntegerOf(0, "select count(*) from " + catalog.Path(object->name)) : 0);
}

// Pages of 8 KB of a table's rows, or of the index whose number is given.
Cell TablePages(const StateContext& context, const Arguments& arguments) {
  SqliteConnection& connection = context.workspace.connection();
  const std::string alias = TextAt(arguments, 0);
  const std::int64_t id = IntegerAt(arguments, 1);
  const std::int64_t indid = IntegerAt(arguments, 2);
  const auto object = Catalog(connection, alias).FindObject(id);
  const std::string name = indid > 1 ? Catalog::IndexSqliteName(id, indid)
                           : object  ? object->name
                                     : "";
  const std::int64_t bytes = connection.IntegerOf(
      0, "select pgsize from dbstat where schema = ?1 and aggregate = 1 and name = ?2", alias,
      name);
  return Number(ServerPages(bytes));
}

// A database's file and SQLite's log of it, whether it can be opened or not.
Cell DatabaseBytes(const StateContext& context, const Arguments& arguments) {
  const auto dbid = static_cast<int>(IntegerAt(arguments, 0));
  const std::string file = context.workspace.instance().FileOf(dbid).string();
  return Number(BytesOf(file) + BytesOf(file + "-wal"));
}

struct StateFunction {
  std::string_view name;
  Function function;
};

// Those of every row of a statement come first.
constexpr StateFunction kFunctions[] = {
    {"next_identity",
     [](auto& c, auto& a) {
       return Number(
           c.workspace.NextIdentity(TextAt(a, 0), IntegerAt(a, 1), DecodeType(IntegerAt(a, 2))));
     }},
    {"next_timestamp",
     [](auto& c, auto&) { return Cell(Blob{c.workspace.instance().NextTimestamp()}); }},
    {"statement_time", [](auto& c, auto&) { return Number(c.workspace.statement_time); }},
    {"table_rows", TableRows},
    {"table_pages", TablePages},
    {"object_id", ObjectId},
    {"local_object_id", LocalObjectId},
    {"ident_seed", [](auto& c, auto& a) { return IdentityCounter(c, a, 0); }},
    {"ident_incr", [](auto& c, auto& a) { return IdentityCounter(c, a, 1); }},
    {"db_name", DatabaseName},
    {"database_bytes", DatabaseBytes},
    {"user", UserName},
    {"system_user", [](auto& c, auto&) { return Cell(c.workspace.login().name); }},
    {"host_name", [](auto& c, auto&) { return Cell(Client(c).host_name); }},
    {"host_id", [](auto& c, auto&) { return Cell(std::to_string(Client(c).process_id)); }},
    {"app_name", [](auto& c, auto&) { return Cell(Client(c).program_name); }},
    {"serverproperty", ServerProperty},
    {"is_srvrolemember", IsServerRoleMember},
    {"has_dbaccess", HasDatabaseAccess},
    {"scope_identity", [](auto& c, auto&) { return NumberOrNull(c.workspace.last_identity); }},
    {"@@identity", [](auto& c, auto&) { return NumberOrNull(c.workspace.last_insert_identity); }},
    {"@@connections",
     [](auto& c, auto&) {
       return Number(static_cast<std::int64_t>(c.workspace.instance().Sessions().size()));
     }},
    {"@@dbts", [](auto& c, auto&) { return Cell(Blob{c.workspace.instance().NextTimestamp()}); }},
    {"@@error", [](auto& c, auto&) { return Number(c.workspace.last_error); }},
    {"@@lock_timeout", [](auto& c, auto&) { return Number(c.workspace.LockTimeout().count()); }},
    {"@@rowcount", [](auto& c, auto&) { return Number(c.workspace.last_row_count); }},
    {"@@servername",
     [](auto& c, auto&) { return Cell(c.workspace.instance().options().server_name); }},
    {"@@spid", [](auto& c, auto&) { return Number(c.workspace.spid()); }},
    {"@@trancount", [](auto& c, auto&) { return Number(c.workspace.transaction_count()); }},
    {"@@version", Version},
};

}  // namespace

std::string TextOfCell(const Cell& cell) {
  if (const auto* integer = std::get_if<std::int64_t>(&cell)) return std::to_string(*integer);
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* blob = std::get_if<Blob>(&cell)) return blob->bytes;
  if (const auto* real = std::get_if<double>(&cell)) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), *real).ptr;
    return {digits.data(), end};
  }
  return {};
}

Cell EvaluateStateFunction(const StateContext& context, std::string_view function,
                           const std::vector<Cell>& arguments) {
  const auto* row = std::ranges::find(kFunctions, function, &StateFunction::name);
  // A check in a file that another version of the server made may ask for what this one has not.
  if (row == std::end(kFunctions)) throw Unsupported("the function " + std::string(function));
  return row->function(context, arguments);
}

}  // namespace dbkeeper::server
