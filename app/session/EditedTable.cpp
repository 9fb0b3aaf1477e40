#include "app/session/EditedTable.h"

#include <algorithm>
#include <cstdlib>
#include <map>

#include "app/session/BatchResults.h"
#include "app/session/CellText.h"
#include "app/session/SelectSource.h"
#include "app/support/Messages.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kColumnFields = 5;
constexpr std::size_t kKeyFields = 4;

using Rows = std::vector<RowValues>;

std::string TextOf(const std::optional<std::string>& value) { return value.value_or(""); }
int NumberOf(const std::optional<std::string>& value) { return std::atoi(TextOf(value).c_str()); }

// ".[table]" or "[owner].[table]".
std::string NameInDatabase(const SelectSource& source) {
  const auto& parts = source.table;
  const std::string owner = parts.size() > 1 ? parts[parts.size() - 2] : std::string();
  return (owner.empty() ? owner : BracketedName(owner)) + "." + BracketedName(parts.back());
}

// The database, the columns of the table, and those of its indexes. `database` is empty for the
// present one.
std::string CatalogBatch(const std::string& database, const SelectSource& source) {
  const std::string place = database.empty() ? "" : BracketedName(database) + ".";
  const std::string catalog = place + "dbo.";
  const std::string name = NameInDatabase(source);
  const std::string id =
      "object_id(" + QuotedText(place.empty() && name[0] == '.' ? name.substr(1) : place + name) +
      ")";
  return "select db_name() as dbkeeper_database\r\n"
         "select o.xtype as dbkeeper_column, c.name, t.name, c.iscomputed, c.colstat from " +
         catalog + "sysobjects o inner join " + catalog +
         "syscolumns c on c.id = o.id inner join " + catalog +
         "systypes t on t.xusertype = c.xtype where o.id = " + id +
         " order by c.colid\r\n"
         "select i.indid as dbkeeper_key, i.status, c.name, c.isnullable from " +
         catalog + "sysindexes i inner join " + catalog +
         "sysindexkeys k on k.id = i.id and k.indid = i.indid inner join " + catalog +
         "syscolumns c on c.id = k.id and c.colid = k.colid where i.id = " + id +
         " order by i.indid, k.keyno";
}

class Reading {
 public:
  Reading(const SelectSource& source, const std::vector<Field>& fields) : source_(source) {
    for (const Field& field : fields) table_.columns.push_back({.field = field, .name = {}});
    for (std::size_t i = 0; i < fields.size(); ++i) {
      table_.columns[i].name =
          source.columns.empty() ? fields[i].name : source.columns[i].value_or(std::string());
    }
  }

  EditedTable Run(Connection& connection) {
    std::string database = source_.table.size() == 3 ? source_.table[0] : std::string();
    BatchResults results(connection, CatalogBatch(database, source_));
    Rows present;
    Rows columns;
    Rows keys;
    const bool answered = results.Take("dbkeeper_database", 1, present) && present.size() == 1 &&
                          results.Take("dbkeeper_column", kColumnFields, columns) &&
                          results.Take("dbkeeper_key", kKeyFields, keys);
    if (!answered) throw RowError(std::string(messages::kAnswerUnreadable));
    if (database.empty()) database = TextOf(present.front()[0]);
    table_.name = BracketedName(database) + "." + NameInDatabase(source_);
    ReadColumns(columns);
    if (table_.refusal.empty()) ReadKey(keys);
    return std::move(table_);
  }

 private:
  EditedColumn* ColumnNamed(const std::string& name) {
    const auto found = std::find_if(
        table_.columns.begin(), table_.columns.end(),
        [&name](const EditedColumn& column) { return EqualsIgnoringCase(column.name, name); });
    return found == table_.columns.end() ? nullptr : &*found;
  }

  void ReadColumns(const Rows& rows) {
    if (rows.empty() || Trim(TextOf(rows[0][0])) != "U") {
      table_.refusal = messages::Fill(messages::kNoUserTable, source_.table.back());
      return;
    }
    for (const RowValues& row : rows) {
      EditedColumn* const column = ColumnNamed(TextOf(row[1]));
      if (column == nullptr) continue;
      const std::string type = TextOf(row[2]);
      const bool filled_by_server = type == "timestamp" || NumberOf(row[3]) == 1;
      column->identity = (NumberOf(row[4]) & 1) != 0;
      column->writable = !filled_by_server && !column->identity && type != "sql_variant";
      column->comparable = !column->field.long_value && type != "sql_variant";
    }
    const bool named = std::any_of(table_.columns.begin(), table_.columns.end(),
                                   [](const EditedColumn& column) { return column.comparable; });
    if (!named) table_.refusal = messages::kNothingNamesRow;
  }

  // The primary key, or else the first unique index without nulls, whose columns are all in the
  // result.
  void ReadKey(const Rows& rows) {
    constexpr int kUnique = 2;
    constexpr int kPrimaryKey = 2048;
    struct Index {
      bool usable = true;
      bool primary = false;
      std::vector<EditedColumn*> columns;
    };
    std::map<int, Index> indexes;
    for (const RowValues& row : rows) {
      const int status = NumberOf(row[1]);
      Index& index = indexes[NumberOf(row[0])];
      index.primary = (status & kPrimaryKey) != 0;
      EditedColumn* const column = ColumnNamed(TextOf(row[2]));
      const bool usable = (status & kUnique) != 0 && column != nullptr && NumberOf(row[3]) == 0;
      index.usable = index.usable && usable;
      index.columns.push_back(column);
    }
    const Index* chosen = nullptr;
    for (const auto& [number, index] : indexes) {
      if (!index.usable) continue;
      if (chosen == nullptr || (index.primary && !chosen->primary)) chosen = &index;
    }
    if (chosen == nullptr) return;
    for (EditedColumn* const column : chosen->columns) column->in_key = true;
  }

  const SelectSource& source_;
  EditedTable table_;
};

}  // namespace

bool EditedTable::HasKey() const {
  return std::any_of(columns.begin(), columns.end(),
                     [](const EditedColumn& column) { return column.in_key; });
}

EditedTable ReadEditedTable(Connection& connection, std::string_view sql,
                            const std::vector<Field>& fields) {
  const auto source = SingleTableOf(sql);
  if (!source || (!source->columns.empty() && source->columns.size() != fields.size())) {
    EditedTable table;
    for (const Field& field : fields) table.columns.push_back({.field = field, .name = {}});
    table.refusal = messages::kNotOneTable;
    return table;
  }
  return Reading(*source, fields).Run(connection);
}

}  // namespace dbkeeper
