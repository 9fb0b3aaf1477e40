#include "catalog/TableCatalog.h"

#include "app/support/TextFilling.h"

namespace dbkeeper {

namespace {

// Of syscolumns.colstat.
constexpr std::int64_t kIsIdentity = 1;

// A name inside "[" "]", and a text inside quotes: what ends them is doubled.
std::string Doubled(std::string_view text, char end) {
  std::string doubled;
  for (const char letter : text) {
    doubled += letter;
    if (letter == end) doubled += letter;
  }
  return doubled;
}

// The statement with "%D" for "[database].dbo." and "%T" for the table's name in quotes.
std::string About(std::string_view statement, const std::string& database,
                  const std::string& table) {
  return FillText(statement, {{'D', "[" + Doubled(database, ']') + "].dbo."},
                              {'T', "N'" + Doubled(table, '\'') + "'"}});
}

constexpr std::string_view kColumns =
    "select c.name, t.name as type_name, c.length, c.xprec, c.xscale, c.isnullable, c.colstat,"
    " c.colid from %Dsysobjects o inner join %Dsyscolumns c on c.id = o.id"
    " inner join %Dsystypes t on t.xusertype = c.xusertype"
    " where o.name = %T and o.uid = 1 and o.xtype in ('U', 'S') order by c.colid";

constexpr std::string_view kDefaults =
    "select c.colid as field, m.text from %Dsysobjects o inner join %Dsyscolumns c on c.id = o.id"
    " inner join %Dsyscomments m on m.id = c.cdefault"
    " where o.name = %T and o.uid = 1 and o.xtype in ('U', 'S') order by c.colid, m.colid";

// The parts of a table that have texts, a row for each piece of a text.
constexpr std::string_view kModules =
    "select p.id, p.name, p.crdate, m.text from %Dsysobjects o"
    " inner join %Dsysobjects p on p.parent_obj = o.id left join %Dsyscomments m on m.id = p.id"
    " where o.name = %T and o.uid = 1 and o.xtype = 'U' and p.xtype = '%X'"
    " order by p.name, p.id, m.colid";

void ReadDefaults(Query& query, const std::string& statement,
                  const std::vector<std::int64_t>& column_ids, std::vector<TableColumn>& columns) {
  std::size_t column = 0;
  for (query.Open(statement); !query.Eof(); query.Next()) {
    const std::int64_t id = query.FieldByName("field").AsInteger();
    while (column < column_ids.size() && column_ids[column] < id) ++column;
    if (column == column_ids.size()) break;
    columns[column].default_text += query.FieldByName("text").AsString();
  }
  query.Close();
}

void ReadIdentity(Query& query, const std::string& database, const std::string& table,
                  TableColumn& column) {
  const std::string name = "N'[" + Doubled(Doubled(database, ']'), '\'') + "].dbo.[" +
                           Doubled(Doubled(table, ']'), '\'') + "]'";
  query.Open("select ident_seed(" + name + ") as seed, ident_incr(" + name + ") as increment");
  if (!query.Eof()) {
    column.identity_seed = query.FieldByName("seed").AsString();
    column.identity_increment = query.FieldByName("increment").AsString();
  }
  query.Close();
}

std::vector<Trigger> ReadModules(Query& query, const std::string& statement) {
  std::vector<Trigger> modules;
  for (query.Open(statement); !query.Eof(); query.Next()) {
    const std::string id = query.FieldByName("id").AsString();
    if (modules.empty() || modules.back().id != id) {
      modules.push_back(
          {id, query.FieldByName("name").AsString(), query.FieldByName("crdate").AsString(), {}});
    }
    modules.back().text += query.FieldByName("text").AsString();
  }
  query.Close();
  return modules;
}

std::string Modules(std::string_view type, const std::string& database, const std::string& table) {
  std::string statement(kModules);
  statement.replace(statement.find("%X"), 2, type);
  return About(statement, database, table);
}

}  // namespace

std::vector<TableColumn> ReadColumns(Query& query, const std::string& database,
                                     const std::string& table) {
  std::vector<TableColumn> columns;
  std::vector<std::int64_t> ids;
  std::size_t identity = 0;  // of the column, from 1
  for (query.Open(About(kColumns, database, table)); !query.Eof(); query.Next()) {
    TableColumn& column = columns.emplace_back();
    column.name = query.FieldByName("name").AsString();
    column.type = query.FieldByName("type_name").AsString();
    column.length = query.FieldByName("length").AsInteger();
    column.precision = query.FieldByName("xprec").AsInteger();
    column.scale = query.FieldByName("xscale").AsInteger();
    column.nullable = query.FieldByName("isnullable").AsInteger() != 0;
    if ((query.FieldByName("colstat").AsInteger() & kIsIdentity) != 0) identity = columns.size();
    ids.push_back(query.FieldByName("colid").AsInteger());
  }
  query.Close();
  if (!columns.empty()) ReadDefaults(query, About(kDefaults, database, table), ids, columns);
  if (identity != 0) ReadIdentity(query, database, table, columns[identity - 1]);
  return columns;
}

std::vector<CheckConstraint> ReadChecks(Query& query, const std::string& database,
                                        const std::string& table) {
  std::vector<CheckConstraint> checks;
  for (Trigger& module : ReadModules(query, Modules("C", database, table))) {
    checks.push_back({std::move(module.name), std::move(module.text)});
  }
  return checks;
}

std::vector<Trigger> ReadTriggers(Query& query, const std::string& database,
                                  const std::string& table) {
  return ReadModules(query, Modules("TR", database, table));
}

}  // namespace dbkeeper
