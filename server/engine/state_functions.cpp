#include "server/engine/state_functions.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "server/catalog/column_types.h"
#include "server/engine/engine_messages.h"
#include "server/sql/parser.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

using Arguments = std::vector<Cell>;
using Function = Cell (*)(const StateContext&, const Arguments&);

Cell Number(std::int64_t value) { return value; }

bool IsNull(const Arguments& arguments, std::size_t i) {
  return i >= arguments.size() || std::holds_alternative<std::monostate>(arguments[i]);
}

std::int64_t IntegerAt(const Arguments& arguments, std::size_t i) {
  const auto* integer = i < arguments.size() ? std::get_if<std::int64_t>(&arguments[i]) : nullptr;
  return integer == nullptr ? 0 : *integer;
}

std::string TextAt(const Arguments& arguments, std::size_t i) {
  return i < arguments.size() ? TextOfCell(arguments[i]) : std::string();
}

// "db.owner.name", "[a b]" and the like; an empty name when it is no name.
ObjectName ParseName(const std::string& text) {
  try {
    const std::vector<Statement> statements = ParseBatch("truncate table " + text);
    return std::get<TruncateStatement>(statements.at(0).node).table;
  } catch (const SqlError&) {
    return {};
  }
}

std::optional<FoundObject> FindByName(const StateContext& context, const std::string& text) {
  const ObjectName name = ParseName(text);
  if (name.name.empty()) return std::nullopt;
  try {
    return context.resolver.Find(name);
  } catch (const SqlError&) {
    return std::nullopt;
  }
}

// An object of the current database by its id.
std::optional<FoundObject> FindById(const StateContext& context, std::int64_t id) {
  FoundObject found = context.resolver.Place({});
  std::optional<CatalogObject> object = context.resolver.CatalogAt(found).FindObject(id);
  if (!object) return std::nullopt;
  found.object = std::move(*object);
  return found;
}

Cell TextOrNull(const std::string& text) { return text.empty() ? Cell() : Cell(text); }

std::string Users(const StateContext& context) {
  return context.resolver.CatalogAt(context.resolver.Place({})).Path("sysusers");
}

// The user that the login is in the current database.
std::string UserName(const StateContext& context) {
  Workspace& workspace = context.workspace;
  if (workspace.login().sysadmin) return "dbo";
  const std::string name = workspace.connection().TextOf(
      "select name from " + Users(context) +
          " where sid = (select sid from main.syslogins where name = ?1)",
      workspace.login().name);
  return name.empty() ? "guest" : name;
}

Cell SuserName(const StateContext& context, const Arguments& arguments) {
  if (arguments.empty()) return context.workspace.login().name;
  return TextOrNull(context.workspace.connection().TextOf(
      "select name from main.syslogins where sid = ?1", arguments[0]));
}

Cell UserNameOf(const StateContext& context, const Arguments& arguments) {
  if (arguments.empty()) return UserName(context);
  return TextOrNull(context.workspace.connection().TextOf(
      "select name from " + Users(context) + " where uid = ?1", arguments[0]));
}

Cell UserId(const StateContext& context, const Arguments& arguments) {
  const std::string name = arguments.empty() ? UserName(context) : TextAt(arguments, 0);
  SqliteStatement row = context.workspace.connection().Prepare(
      "select uid from " + Users(context) + " where name = ?1", name);
  return row.Step() ? row.Value(0) : Cell();
}

Cell DatabaseName(const StateContext& context, const Arguments& arguments) {
  if (arguments.empty()) return context.workspace.database();
  const auto database = context.workspace.LookUpDatabase(static_cast<int>(IntegerAt(arguments, 0)));
  return database ? Cell(database->name) : Cell();
}

Cell DatabaseId(const StateContext& context, const Arguments& arguments) {
  if (arguments.empty()) return Number(context.workspace.dbid());
  const auto database = context.workspace.LookUpDatabase(TextAt(arguments, 0));
  return database ? Number(database->dbid) : Cell();
}

Cell ObjectId(const StateContext& context, const Arguments& arguments) {
  const auto found = FindByName(context, TextAt(arguments, 0));
  return found ? Number(found->object.id) : Cell();
}

Cell ObjectNameOf(const StateContext& context, const Arguments& arguments) {
  const auto found = FindById(context, IntegerAt(arguments, 0));
  return found ? Cell(found->object.name) : Cell();
}

Cell ColumnName(const StateContext& context, const Arguments& arguments) {
  const auto found = FindById(context, IntegerAt(arguments, 0));
  if (!found) return {};
  for (const CatalogColumn& column : context.resolver.CatalogAt(*found).Columns(found->object.id)) {
    if (column.colid == IntegerAt(arguments, 1)) return column.name;
  }
  return {};
}

std::optional<CatalogColumn> FindColumn(const StateContext& context,
                                        const std::optional<FoundObject>& found,
                                        const std::string& name) {
  if (!found) return std::nullopt;
  for (CatalogColumn& column : context.resolver.CatalogAt(*found).Columns(found->object.id)) {
    if (SameName(column.name, name)) return std::move(column);
  }
  return std::nullopt;
}

Cell ColumnLength(const StateContext& context, const Arguments& arguments) {
  const auto column =
      FindColumn(context, FindByName(context, TextAt(arguments, 0)), TextAt(arguments, 1));
  return column ? Number(StoredTypeOf(column->type, column->is_sysname).length) : Cell();
}

Cell ColumnProperty(const StateContext& context, const Arguments& arguments) {
  const auto column =
      FindColumn(context, FindById(context, IntegerAt(arguments, 0)), TextAt(arguments, 1));
  if (!column) return {};
  const StoredType stored = StoredTypeOf(column->type, column->is_sysname);
  const std::string property = TextAt(arguments, 2);
  if (SameName(property, "AllowsNull")) return Number(column->type.nullable ? 1 : 0);
  if (SameName(property, "IsIdentity")) return Number(column->identity ? 1 : 0);
  if (SameName(property, "IsRowGuidCol")) return Number(column->row_guid ? 1 : 0);
  if (SameName(property, "IsComputed")) return Number(0);
  if (SameName(property, "IsIdNotForRepl")) return Number(0);
  if (SameName(property, "UsesAnsiTrim")) return column->collation.empty() ? Cell() : Number(1);
  if (SameName(property, "Precision")) return stored.prec;
  if (SameName(property, "Scale")) return stored.scale;
  return {};
}

struct ObjectPropertyRow {
  std::string_view name;
  std::string_view xtypes;
};
constexpr ObjectPropertyRow kObjectProperties[] = {
    {"IsTable", "U S"},         {"IsUserTable", "U"},
    {"IsSystemTable", "S"},     {"IsView", "V"},
    {"IsProcedure", "P"},       {"IsTrigger", "TR"},
    {"IsPrimaryKey", "PK"},     {"IsUniqueCnst", "UQ"},
    {"IsForeignKey", "F"},      {"IsCheckCnst", "C"},
    {"IsDefaultCnst", "D"},     {"IsConstraint", "PK UQ F C D"},
    {"IsScalarFunction", "FN"}, {"IsExtendedProc", "X"},
    {"IsMSShipped", "S"},
};

Cell ObjectProperty(const StateContext& context, const Arguments& arguments) {
  const auto found = FindById(context, IntegerAt(arguments, 0));
  if (!found) return {};
  const std::string property = TextAt(arguments, 1);
  for (const ObjectPropertyRow& row : kObjectProperties) {
    if (!SameName(row.name, property)) continue;
    const std::string words = " " + std::string(row.xtypes) + " ";
    return Number(words.find(" " + found->object.xtype + " ") != std::string::npos ? 1 : 0);
  }
  Catalog catalog = context.resolver.CatalogAt(*found);
  const CatalogTable table = catalog.Table(found->object);
  if (SameName(property, "OwnerId")) return Number(1);
  if (SameName(property, "TableHasPrimaryKey")) return Number(table.PrimaryKey() != nullptr);
  if (SameName(property, "TableHasForeignKey")) return Number(!table.foreign_keys.empty());
  if (SameName(property, "TableHasCheckCnst")) return Number(!table.checks.empty());
  if (SameName(property, "TableHasForeignRef")) {
    return Number(!catalog.ReferencesTo(found->object.id).empty());
  }
  if (SameName(property, "TableHasIdentity")) {
    return Number(
        std::ranges::any_of(table.columns, [](const auto& c) { return c.identity.has_value(); }));
  }
  if (SameName(property, "TableHasIndex")) {
    return Number(std::ranges::any_of(table.indexes, [](const auto& i) { return i.indid > 0; }));
  }
  return {};
}

Cell IndexProperty(const StateContext& context, const Arguments& arguments) {
  const auto found = FindById(context, IntegerAt(arguments, 0));
  if (!found) return {};
  const CatalogTable table = context.resolver.CatalogAt(*found).Table(found->object);
  const CatalogIndex* index = table.FindIndex(TextAt(arguments, 1));
  if (index == nullptr) return {};
  const std::string property = TextAt(arguments, 2);
  if (SameName(property, "IsUnique")) return Number(index->Has(IndexStatus::kUnique));
  if (SameName(property, "IsClustered")) return Number(index->Has(IndexStatus::kClustered));
  if (SameName(property, "IndexID")) return Number(index->indid);
  if (SameName(property, "IsStatistics") || SameName(property, "IsAutoStatistics") ||
      SameName(property, "IsHypothetical") || SameName(property, "IsPadIndex") ||
      SameName(property, "IndexFillFactor")) {
    return Number(0);
  }
  return {};
}

const KeyColumn* KeyOf(const CatalogTable& table, std::int64_t indid, std::int64_t key) {
  for (const CatalogIndex& index : table.indexes) {
    if (index.indid != indid || key < 1 || key > static_cast<std::int64_t>(index.keys.size())) {
      continue;
    }
    return &index.keys[static_cast<std::size_t>(key - 1)];
  }
  return nullptr;
}

Cell IndexColumn(const StateContext& context, const Arguments& arguments) {
  const auto found = FindByName(context, TextAt(arguments, 0));
  if (!found) return {};
  const CatalogTable table = context.resolver.CatalogAt(*found).Table(found->object);
  const KeyColumn* key = KeyOf(table, IntegerAt(arguments, 1), IntegerAt(arguments, 2));
  return key == nullptr ? Cell() : Cell(key->name);
}

Cell IndexKeyProperty(const StateContext& context, const Arguments& arguments) {
  const auto found = FindById(context, IntegerAt(arguments, 0));
  if (!found) return {};
  const CatalogTable table = context.resolver.CatalogAt(*found).Table(found->object);
  const KeyColumn* key = KeyOf(table, IntegerAt(arguments, 1), IntegerAt(arguments, 2));
  if (key == nullptr) return {};
  const std::string property = TextAt(arguments, 3);
  if (SameName(property, "IsDescending")) return Number(key->descending);
  if (SameName(property, "ColumnId")) return Number(table.FindColumn(key->name)->colid);
  return {};
}

struct DatabasePropertyRow {
  std::string_view name;
  std::int64_t bit;
};
constexpr DatabasePropertyRow kDatabaseProperties[] = {
    {"IsOffline", DatabaseStatus::kOffline},
    {"IsReadOnly", DatabaseStatus::kReadOnly},
    {"IsSingleUser", DatabaseStatus::kSingleUser},
    {"IsDboOnly", DatabaseStatus::kDboOnly},
    {"IsTruncLog", DatabaseStatus::kTruncateLog},
    {"IsAutoClose", DatabaseStatus::kAutoClose},
    {"IsAutoShrink", DatabaseStatus::kAutoShrink},
    {"IsTornPageDetectionEnabled", DatabaseStatus::kTornPageDetection},
};

Cell DatabaseProperty(const StateContext& context, const Arguments& arguments) {
  const auto database = context.workspace.LookUpDatabase(TextAt(arguments, 0));
  if (!database) return {};
  const std::string property = TextAt(arguments, 1);
  for (const DatabasePropertyRow& row : kDatabaseProperties) {
    if (SameName(row.name, property)) return Number(database->Has(row.bit) ? 1 : 0);
  }
  if (SameName(property, "Version")) return Number(539);
  return {};
}

Cell DatabasePropertyEx(const StateContext& context, const Arguments& arguments) {
  const auto database = context.workspace.LookUpDatabase(TextAt(arguments, 0));
  if (!database) return {};
  const std::string property = TextAt(arguments, 1);
  const auto either = [&](std::int64_t bit, const char* yes, const char* no) {
    return Cell(std::string(database->Has(bit) ? yes : no));
  };
  if (SameName(property, "Collation")) return std::string(kDefaultCollation);
  if (SameName(property, "Status")) return either(DatabaseStatus::kOffline, "OFFLINE", "ONLINE");
  if (SameName(property, "Recovery")) return either(DatabaseStatus::kTruncateLog, "SIMPLE", "FULL");
  if (SameName(property, "Updateability")) {
    return either(DatabaseStatus::kReadOnly, "READ_ONLY", "READ_WRITE");
  }
  if (SameName(property, "UserAccess")) {
    return database->Has(DatabaseStatus::kSingleUser)
               ? Cell(std::string("SINGLE_USER"))
               : either(DatabaseStatus::kDboOnly, "RESTRICTED_USER", "MULTI_USER");
  }
  return DatabaseProperty(context, arguments);
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

Cell IsMember(const StateContext& context, const Arguments& arguments) {
  const std::string role = TextAt(arguments, 0);
  if (context.workspace.login().sysadmin) return Number(SameName(role, "db_owner") ? 1 : 0);
  const FoundObject place = context.resolver.Place({});
  Catalog catalog = context.resolver.CatalogAt(place);
  return Number(context.workspace.connection().IntegerOf(
      0,
      "select count(*) from " + catalog.Path("sysmembers") + " m join " + catalog.Path("sysusers") +
          " r on r.uid = m.groupuid join " + catalog.Path("sysusers") +
          " u on u.uid = m.memberuid where u.name = ?1 and r.name = ?2",
      UserName(context), role));
}

Cell IsServerRoleMember(const StateContext& context, const Arguments& arguments) {
  constexpr std::string_view kRoles[] = {"sysadmin",   "securityadmin", "serveradmin",
                                         "setupadmin", "processadmin",  "diskadmin",
                                         "dbcreator",  "bulkadmin"};
  const std::string role = TextAt(arguments, 0);
  const auto* known =
      std::ranges::find_if(kRoles, [&](std::string_view name) { return SameName(name, role); });
  if (known == std::end(kRoles)) return {};
  const std::string login =
      IsNull(arguments, 1) ? context.workspace.login().name : TextAt(arguments, 1);
  if (SameName(login, context.workspace.login().name) && context.workspace.login().sysadmin) {
    return Number(1);
  }
  return Number(context.workspace.connection().IntegerOf(
      0, "select max(sysadmin, " + std::string(*known) + ") from main.syslogins where name = ?1",
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

// One of the three numbers of an identity column: its column in the counters' table.
Cell IdentityValue(const StateContext& context, const Arguments& arguments,
                   const std::string& column) {
  const auto found = FindByName(context, TextAt(arguments, 0));
  if (!found) return {};
  SqliteStatement row = context.workspace.connection().Prepare(
      "select " + column + " from " + context.resolver.CatalogAt(*found).Path("#identity") +
          " where id = ?",
      found->object.id);
  return row.Step() ? row.Value(0) : Cell();
}

Cell LastIdentity(const StateContext& context, const Arguments&) {
  return context.workspace.last_identity ? Number(*context.workspace.last_identity) : Cell();
}

Cell Zero(const StateContext&, const Arguments&) { return Number(0); }

Cell Login(const StateContext& context, const Arguments&) { return context.workspace.login().name; }

Cell Version(const StateContext& context, const Arguments&) {
  return "Microsoft SQL Server  2000 - " + std::string(kProductVersion) +
         " compatible, DB Keeper Local Server on " +
         context.workspace.instance().options().machine_name;
}

ClientInfo Client(const StateContext& context) {
  const auto record = context.workspace.instance().Find(context.workspace.spid());
  return record ? record->client : ClientInfo{};
}

struct FunctionEntry {
  std::string_view name;
  Function function;
};

constexpr FunctionEntry kFunctions[] = {
    {"object_id", ObjectId},
    {"object_name", ObjectNameOf},
    {"db_id", DatabaseId},
    {"db_name", DatabaseName},
    {"user", UserNameOf},
    {"user_name", UserNameOf},
    {"user_id", UserId},
    {"current_user", UserNameOf},
    {"session_user", UserNameOf},
    {"system_user", Login},
    {"suser_sname", SuserName},
    {"suser_name", SuserName},
    {"suser_id", Zero},
    {"suser_sid",
     [](const StateContext& c, const Arguments& a) {
       const std::string name = a.empty() ? c.workspace.login().name : TextAt(a, 0);
       SqliteStatement row =
           c.workspace.connection().Prepare("select sid from main.syslogins where name = ?1", name);
       return row.Step() ? row.Value(0) : Cell();
     }},
    {"host_name",
     [](const StateContext& c, const Arguments&) { return Cell(Client(c).host_name); }},
    {"host_id", [](const StateContext& c,
                   const Arguments&) { return Cell(std::to_string(Client(c).process_id)); }},
    {"app_name",
     [](const StateContext& c, const Arguments&) { return Cell(Client(c).program_name); }},
    {"col_name", ColumnName},
    {"col_length", ColumnLength},
    {"columnproperty", ColumnProperty},
    {"objectproperty", ObjectProperty},
    {"indexproperty", IndexProperty},
    {"index_col", IndexColumn},
    {"indexkey_property", IndexKeyProperty},
    {"databaseproperty", DatabaseProperty},
    {"databasepropertyex", DatabasePropertyEx},
    {"serverproperty", ServerProperty},
    {"fulltextserviceproperty", Zero},
    {"is_member", IsMember},
    {"is_srvrolemember", IsServerRoleMember},
    {"has_dbaccess", HasDatabaseAccess},
    {"scope_identity", LastIdentity},
    {"@@identity", LastIdentity},
    {"ident_current",
     [](const StateContext& c, const Arguments& a) {
       return IdentityValue(c, a, "coalesce(last, seed)");
     }},
    {"ident_seed",
     [](const StateContext& c, const Arguments& a) { return IdentityValue(c, a, "seed"); }},
    {"ident_incr",
     [](const StateContext& c, const Arguments& a) { return IdentityValue(c, a, "increment"); }},
    {"@@connections",
     [](const StateContext& c, const Arguments&) {
       return Number(static_cast<std::int64_t>(c.workspace.instance().Sessions().size()));
     }},
    {"@@cursor_rows", Zero},
    {"@@datefirst", [](const StateContext&, const Arguments&) { return Number(7); }},
    {"@@error",
     [](const StateContext& c, const Arguments&) { return Number(c.workspace.last_error); }},
    {"@@fetch_status", Zero},
    {"@@langid", [](const StateContext&, const Arguments&) { return Number(0); }},
    {"@@language",
     [](const StateContext&, const Arguments&) { return Cell(std::string("us_english")); }},
    {"@@lock_timeout",
     [](const StateContext& c, const Arguments&) {
       const auto limit = c.workspace.options().lock_timeout.value_or(
           c.workspace.instance().options().lock_timeout);
       return Number(limit.count());
     }},
    {"@@max_connections", [](const StateContext&, const Arguments&) { return Number(32767); }},
    {"@@max_precision", [](const StateContext&, const Arguments&) { return Number(38); }},
    {"@@microsoftversion",
     [](const StateContext&, const Arguments&) { return Number(0x080007F7); }},
    {"next_timestamp",
     [](const StateContext& c, const Arguments&) {
       return Cell(Blob{c.workspace.instance().NextTimestamp()});
     }},
    {"@@dbts", [](const StateContext& c,
                  const Arguments&) { return Cell(Blob{c.workspace.instance().NextTimestamp()}); }},
    {"@@nestlevel", Zero},
    {"@@procid", Zero},
    {"@@rowcount",
     [](const StateContext& c, const Arguments&) { return Number(c.workspace.last_row_count); }},
    {"@@servername",
     [](const StateContext& c, const Arguments&) {
       return Cell(c.workspace.instance().options().server_name);
     }},
    {"@@servicename",
     [](const StateContext&, const Arguments&) { return Cell(std::string("MSSQLSERVER")); }},
    {"@@spid", [](const StateContext& c, const Arguments&) { return Number(c.workspace.spid()); }},
    {"@@textsize", [](const StateContext&, const Arguments&) { return Number(2147483647); }},
    {"@@trancount", [](const StateContext& c,
                       const Arguments&) { return Number(c.workspace.transaction_count()); }},
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
  const auto* entry = std::ranges::find(kFunctions, function, &FunctionEntry::name);
  if (entry == std::end(kFunctions)) Fail(195, {function, "function name of the local server"});
  return entry->function(context, arguments);
}

}  // namespace dbkeeper::server
