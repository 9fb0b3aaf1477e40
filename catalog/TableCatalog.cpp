#include "catalog/TableCatalog.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <map>
#include <unordered_map>
#include <utility>

#include "app/session/CellText.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace {

// One row of an answer, its fields by their place in the select list.
class Row {
 public:
  explicit Row(const RowReader& reader) : reader_(reader) {}

  std::string Text(std::size_t field) const { return std::string(reader_.Text(field)); }
  int Number(std::size_t field) const {
    const std::string_view text = reader_.Text(field);
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
  }
  bool Flag(std::size_t field) const { return Number(field) != 0; }

 private:
  const RowReader& reader_;
};

template <class Action>
void ForEachRow(Query& query, std::string sql, Action action) {
  for (query.Open(std::move(sql)); !query.Eof(); query.Next()) action(Row(*query.Reader()));
  query.Close();
}

// The texts of objects, by object and number in it. A long text stands in many rows, cut wherever
// a row was full: the next one goes on without a seam.
using Texts = std::map<std::pair<int, int>, ModuleText>;

Texts ReadTexts(Query& query, const std::string& catalog, const std::string& condition) {
  Texts texts;
  ForEachRow(query,
             "select m.id, m.number, m.encrypted, m.text from " + catalog + "syscomments m where " +
                 condition + " order by m.id, m.number, m.colid",
             [&texts](const Row& row) {
               ModuleText& module = texts[{row.Number(0), row.Number(1)}];
               module.encrypted = module.encrypted || row.Flag(2);
               module.text += row.Text(3);
             });
  return texts;
}

// The functions on objects know those of the current database alone; a system procedure named by
// its database runs its statement there, for that statement alone.
std::string Inside(const std::string& database, const std::string& sql) {
  const std::string quoted = QuotedText(sql);
  return "exec " + BracketedName(database) + ".dbo.sp_executesql " +
         (quoted.front() == 'N' ? "" : "N") + quoted;
}

// The statements of one reading, and what they have told so far.
class Reading {
 public:
  Reading(Query& query, const std::string& database)
      : query_(query), database_(database), catalog_(BracketedName(database) + ".dbo.") {}

  std::vector<TableDefinition> All() {
    ReadTables("");
    const std::string objects = "(select id from " + catalog_ + "sysobjects where xtype ";
    texts_ = ReadTexts(query_, catalog_, "m.id in " + objects + "in ('U', 'C', 'D', 'TR'))");
    ReadParts(" in " + objects + "= 'U')", " in (select id from dbo.sysobjects where xtype = 'U')");
    return std::move(tables_);
  }

  std::optional<TableDefinition> One(const std::string& table) {
    ReadTables(" and o.uid = 1 and o.name = " + QuotedText(table));
    if (tables_.empty()) return std::nullopt;
    const std::string is_wanted = " = " + std::to_string(tables_.front().id);
    texts_ = ReadTexts(query_, catalog_,
                       "m.id in (select id from " + catalog_ + "sysobjects where id" + is_wanted +
                           " or parent_obj" + is_wanted + ") or m.id in (select cdefault from " +
                           catalog_ + "syscolumns where id" + is_wanted + ")");
    ReadParts(is_wanted, is_wanted);
    return std::move(tables_.front());
  }

 private:
  void ReadTables(const std::string& condition) {
    ForEachRow(query_,
               Inside(database_,
                      "select o.id, user_name(o.uid), o.name, o.crdate, o.refdate, "
                      "filegroup_name(i.groupid), filegroup_name(l.groupid) from dbo.sysobjects o "
                      "left join dbo.sysindexes i on i.id = o.id and i.indid in (0, 1) left join "
                      "dbo.sysindexes l on l.id = o.id and l.indid = 255 where o.xtype = 'U'" +
                          condition + " order by o.name, o.uid"),
               [this](const Row& row) {
                 const std::string created = row.Text(3);
                 tables_.push_back({.id = row.Number(0),
                                    .owner = row.Text(1),
                                    .name = row.Text(2),
                                    .created = created,
                                    .changed = std::max(created, row.Text(4)),
                                    .file_group = row.Text(5),
                                    .text_file_group = row.Text(6)});
               });
    for (TableDefinition& table : tables_) by_id_[table.id] = &table;
  }

  // `wanted` is the condition on a table's id, `wanted_inside` the same in the database itself.
  void ReadParts(const std::string& wanted, const std::string& wanted_inside) {
    ReadIdentities(wanted_inside);
    ReadColumns(wanted);
    ReadIndexes(wanted_inside);
    ReadConstraintsAndTriggers(wanted_inside);
    ReadForeignKeys(wanted);
    ReadProperties(wanted);
  }

  // The rows that belong to a table, whose id is the first field. A table made in between is not
  // among those read.
  template <class Action>
  void ForEachPart(const std::string& sql, Action action) {
    ForEachRow(query_, sql, [this, &action](const Row& row) {
      const auto found = by_id_.find(row.Number(0));
      if (found != by_id_.end()) action(*found->second, row);
    });
  }

  void ReadIdentities(const std::string& wanted) {
    const std::string name = "quotename(user_name(o.uid)) + '.' + quotename(o.name)";
    ForEachPart(
        Inside(database_, "select o.id, ident_seed(" + name + "), ident_incr(" + name +
                              "), columnproperty(c.id, c.name, 'IsIdNotForRepl') from "
                              "dbo.sysobjects o inner join "
                              "dbo.syscolumns c on c.id = o.id and c.colstat & 1 = 1 where o.id" +
                              wanted),
        [this](const TableDefinition& table, const Row& row) {
          identities_[table.id] = {row.Text(1), row.Text(2), row.Flag(3)};
        });
  }

  std::string TextOf(int object, int number) const {
    const auto found = texts_.find({object, number});
    return found == texts_.end() ? std::string() : found->second.text;
  }

  void ReadColumns(const std::string& wanted) {
    ForEachPart(
        "select c.id, c.colid, c.name, t.name, b.name, c.length, c.prec, c.scale, c.isnullable, "
        "c.colstat, c.iscomputed, c.collation, d.id, d.name, d.parent_obj, r.name "
        "from " +
            catalog_ + "syscolumns c inner join " + catalog_ +
            "systypes t on t.xusertype = c.xusertype inner join " + catalog_ +
            "systypes b on b.xusertype = c.xtype left join " + catalog_ +
            "sysobjects d on d.id = c.cdefault left join " + catalog_ +
            "sysobjects r on r.id = c.domain where c.id" + wanted + " order by c.id, c.colid",
        [this](TableDefinition& table, const Row& row) {
          constexpr int kIdentity = 1;
          constexpr int kRowGuid = 2;
          const int default_id = row.Number(12);
          TableColumn column{.id = row.Number(1),
                             .name = row.Text(2),
                             .type = row.Text(3),
                             .base_type = row.Text(4),
                             .length = row.Number(5),
                             .precision = row.Number(6),
                             .scale = row.Number(7),
                             .nullable = row.Flag(8),
                             .row_guid = (row.Number(9) & kRowGuid) != 0,
                             .collation = row.Text(11),
                             .default_name = row.Text(13),
                             .default_is_bound = default_id != 0 && !row.Flag(14),
                             .rule_name = row.Text(15)};
          if ((row.Number(9) & kIdentity) != 0) column.identity = identities_[table.id];
          if (row.Flag(10)) column.formula = TextOf(table.id, column.id);
          // The only numbers of a default's text are 0 and 1.
          if (default_id != 0) column.default_text = TextOf(default_id, 0) + TextOf(default_id, 1);
          table.columns.push_back(std::move(column));
        });
  }

  void ReadIndexes(const std::string& wanted) {
    ForEachPart(
        Inside(
            database_,
            "select i.id, i.indid, i.name, i.status, i.OrigFillFactor, filegroup_name(i.groupid), "
            "c.name, indexkey_property(i.id, i.indid, k.keyno, 'IsDescending') from "
            "dbo.sysindexes i inner join dbo.sysindexkeys k on k.id = i.id and k.indid = "
            "i.indid inner join dbo.syscolumns c on c.id = k.id and c.colid = k.colid where "
            "i.id" +
                wanted +
                " and i.indid between 1 and 254 and i.status & 96 = 0 order by i.id, i.indid, "
                "k.keyno"),
        [](TableDefinition& table, const Row& row) {
          const int id = row.Number(1);
          if (table.indexes.empty() || table.indexes.back().id != id) {
            table.indexes.push_back({.id = id,
                                     .name = row.Text(2),
                                     .status = row.Number(3),
                                     .fill_factor = row.Number(4),
                                     .file_group = row.Text(5)});
          }
          table.indexes.back().keys.push_back({row.Text(6), row.Flag(7)});
        });
  }

  void ReadConstraintsAndTriggers(const std::string& wanted) {
    ForEachPart(
        Inside(database_,
               "select o.parent_obj, o.id, o.name, o.xtype, o.crdate, "
               "objectproperty(o.id, 'CnstIsDisabled'), objectproperty(o.id, 'CnstIsNotRepl'), "
               "objectproperty(o.id, 'CnstIsDeleteCascade'), "
               "objectproperty(o.id, 'CnstIsUpdateCascade'), "
               "objectproperty(o.id, 'ExecIsTriggerDisabled'), "
               "objectproperty(o.id, 'ExecIsQuotedIdentOn'), "
               "objectproperty(o.id, 'ExecIsAnsiNullsOn') from dbo.sysobjects o where "
               "o.parent_obj" +
                   wanted + " and o.xtype in ('C', 'F', 'TR') order by o.name"),
        [this](TableDefinition& table, const Row& row) {
          const int id = row.Number(1);
          const std::string type = Trim(row.Text(3));
          if (type == "C") {
            table.checks.push_back({.name = row.Text(2),
                                    .text = TextOf(id, 0) + TextOf(id, 1),
                                    .disabled = row.Flag(5),
                                    .not_for_replication = row.Flag(6)});
          } else if (type == "F") {
            foreign_keys_[id] = table.foreign_keys.size();
            table.foreign_keys.push_back({.name = row.Text(2),
                                          .delete_cascade = row.Flag(7),
                                          .update_cascade = row.Flag(8),
                                          .disabled = row.Flag(5),
                                          .not_for_replication = row.Flag(6)});
          } else {
            ModuleText module = texts_[{id, 1}];
            module.quoted_identifier = row.Text(10) != "0";
            module.ansi_nulls = row.Text(11) != "0";
            table.triggers.push_back({.id = id,
                                      .name = row.Text(2),
                                      .created = row.Text(4),
                                      .module = std::move(module),
                                      .disabled = row.Flag(9)});
          }
        });
  }

  void ReadForeignKeys(const std::string& wanted) {
    ForEachPart("select f.fkeyid, f.constid, c.name, u.name, p.name, pc.name from " + catalog_ +
                    "sysforeignkeys f inner join " + catalog_ +
                    "syscolumns c on c.id = f.fkeyid and c.colid = f.fkey inner join " + catalog_ +
                    "sysobjects p on p.id = f.rkeyid inner join " + catalog_ +
                    "sysusers u on u.uid = p.uid inner join " + catalog_ +
                    "syscolumns pc on pc.id = f.rkeyid and pc.colid = f.rkey where f.fkeyid" +
                    wanted + " order by f.fkeyid, f.constid, f.keyno",
                [this](TableDefinition& table, const Row& row) {
                  const auto found = foreign_keys_.find(row.Number(1));
                  if (found == foreign_keys_.end()) return;
                  TableForeignKey& key = table.foreign_keys[found->second];
                  key.columns.push_back(row.Text(2));
                  key.parent_owner = row.Text(3);
                  key.parent_table = row.Text(4);
                  key.parent_columns.push_back(row.Text(5));
                });
  }

  // Types 3 and 4 are the properties of tables and of columns.
  void ReadProperties(const std::string& wanted) {
    ForEachPart("select p.id, p.type, p.smallid, p.name, p.value from " + catalog_ +
                    "sysproperties p where p.id" + wanted +
                    " and p.type in (3, 4) order by p.id, p.type, p.smallid, p.name",
                [](TableDefinition& table, const Row& row) {
                  if (row.Number(1) == 3) {
                    table.properties.push_back({row.Text(3), row.Text(4)});
                    return;
                  }
                  const int id = row.Number(2);
                  const auto column = std::lower_bound(
                      table.columns.begin(), table.columns.end(), id,
                      [](const TableColumn& one, int other) { return one.id < other; });
                  if (column == table.columns.end() || column->id != id) return;
                  column->properties.push_back({row.Text(3), row.Text(4)});
                });
  }

  Query& query_;
  std::string database_;
  std::string catalog_;  // "[database].dbo."
  std::vector<TableDefinition> tables_;
  std::unordered_map<int, TableDefinition*> by_id_;
  Texts texts_;
  std::unordered_map<int, TableIdentity> identities_;  // by table
  std::unordered_map<int, std::size_t> foreign_keys_;  // places in their tables, by object
};

}  // namespace

std::vector<TableDefinition> ReadTables(Query& query, const std::string& database) {
  return Reading(query, database).All();
}

std::optional<TableDefinition> ReadTable(Query& query, const std::string& database,
                                         const std::string& table) {
  return Reading(query, database).One(table);
}

std::vector<ModuleText> ReadModule(Query& query, const std::string& database,
                                   const std::string& name, std::string_view type) {
  const std::string catalog = BracketedName(database) + ".dbo.";
  const std::string wanted =
      "where uid = 1 and name = " + QuotedText(name) + " and xtype = " + QuotedText(type);
  bool quoted_identifier = true;
  bool ansi_nulls = true;
  ForEachRow(query,
             Inside(database,
                    "select objectproperty(id, 'ExecIsQuotedIdentOn'), objectproperty(id, "
                    "'ExecIsAnsiNullsOn') from dbo.sysobjects " +
                        wanted),
             [&](const Row& row) {
               quoted_identifier = row.Text(0) != "0";
               ansi_nulls = row.Text(1) != "0";
             });
  std::vector<ModuleText> modules;
  for (auto& [place, module] : ReadTexts(
           query, catalog, "m.id in (select id from " + catalog + "sysobjects " + wanted + ")")) {
    module.quoted_identifier = quoted_identifier;
    module.ansi_nulls = ansi_nulls;
    modules.push_back(std::move(module));
  }
  return modules;
}

}  // namespace dbkeeper
