#include "app/session/RowEditor.h"

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

#include "app/session/CellText.h"
#include "app/support/Messages.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace {

constexpr const char* kSavepoint = "dbkeeper_row";
constexpr const char* kCountName = "dbkeeper_rows";

bool IsAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Whether the column keeps only the characters of a code page.
bool KeepsCodePage(const Field& field) {
  return field.kind == FieldKind::kText && !field.type_name.starts_with("n");
}

// The rows of a result as texts, nulls being empty.
std::vector<std::vector<std::string>> RowsOf(Connection& connection, const std::string& sql) {
  std::vector<std::vector<std::string>> rows;
  const auto reader = connection.Query(sql);
  while (reader != nullptr && reader->Next()) {
    auto& row = rows.emplace_back();
    for (std::size_t i = 0; i < reader->Fields().size(); ++i) row.emplace_back(reader->Text(i));
  }
  return rows;
}

// A transaction, or a savepoint inside the one that is open already and belongs to the operator.
// Leaving the scope before Commit takes everything back.
class RowTransaction {
 public:
  explicit RowTransaction(Connection& connection) : connection_(connection) {
    const auto depth = RowsOf(connection, "select @@trancount as depth");
    nested_ = !depth.empty() && depth[0][0] != "0";
    connection_.Execute(nested_ ? std::string("save transaction ") + kSavepoint
                                : "begin transaction");
  }
  RowTransaction(const RowTransaction&) = delete;
  RowTransaction& operator=(const RowTransaction&) = delete;
  ~RowTransaction() {
    if (done_) return;
    try {
      connection_.Execute(nested_ ? std::string("rollback transaction ") + kSavepoint
                                  : "rollback transaction");
    } catch (const std::exception&) {
      // The server has already taken the transaction back, or is gone and will.
    }
  }

  void Commit() {
    if (!nested_) connection_.Execute("commit transaction");
    done_ = true;
  }

 private:
  Connection& connection_;
  bool nested_ = false;
  bool done_ = false;
};

std::string ObjectName(const SelectSource& source, const std::string& database) {
  const auto& parts = source.table;
  const std::string owner = parts.size() > 1 ? parts[parts.size() - 2] : std::string();
  return BracketedName(database) + "." + (owner.empty() ? owner : BracketedName(owner)) + "." +
         BracketedName(parts.back());
}

}  // namespace

RowEditor::RowEditor(Connection& connection, std::string_view sql, const std::vector<Field>& fields)
    : connection_(connection) {
  for (const Field& field : fields) columns_.push_back({.field = field, .name = {}});
  const auto source = SingleTableOf(sql);
  if (!source || (!source->columns.empty() && source->columns.size() != fields.size())) {
    refusal_ = messages::kNotOneTable;
    return;
  }
  MatchColumns(*source);
  ReadTable(*source);
}

void RowEditor::MatchColumns(const SelectSource& source) {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    columns_[i].name =
        source.columns.empty() ? columns_[i].field.name : source.columns[i].value_or(std::string());
  }
}

RowEditor::Column* RowEditor::ColumnNamed(std::string_view name) {
  const auto found = std::find_if(columns_.begin(), columns_.end(), [name](const Column& column) {
    return EqualsIgnoringCase(column.name, name);
  });
  return found == columns_.end() ? nullptr : &*found;
}

void RowEditor::ReadTable(const SelectSource& source) {
  std::string database = source.table.size() == 3 ? source.table[0] : std::string();
  if (database.empty()) {
    const auto names = RowsOf(connection_, "select db_name() as name");
    if (!names.empty()) database = names[0][0];
  }
  table_ = ObjectName(source, database);
  const std::string catalog = BracketedName(database) + ".dbo.";
  const auto rows = RowsOf(
      connection_, "select o.id, o.xtype, c.name, t.name as type, c.iscomputed, c.colstat from " +
                       catalog + "sysobjects o inner join " + catalog +
                       "syscolumns c on c.id = o.id inner join " + catalog +
                       "systypes t on t.xusertype = c.xtype where o.id = object_id(" +
                       QuotedText(table_) + ") order by c.colid");
  if (rows.empty() || Trim(rows[0][1]) != "U") {
    refusal_ = messages::Fill(messages::kNoUserTable, source.table.back());
    return;
  }
  for (const auto& row : rows) {
    Column* const column = ColumnNamed(row[2]);
    if (column == nullptr) continue;
    const std::string& type = row[3];
    const bool filled_by_server = type == "timestamp" || row[4] == "1";
    column->identity = (std::atoi(row[5].c_str()) & 1) != 0;
    column->writable = !filled_by_server && !column->identity && type != "sql_variant";
    column->comparable = !column->field.long_value && type != "sql_variant";
  }
  ReadKey(catalog, rows[0][0]);
  const bool named = std::any_of(columns_.begin(), columns_.end(),
                                 [](const Column& column) { return column.comparable; });
  if (!named) refusal_ = messages::kNothingNamesRow;
}

// The primary key, or else the first unique index without nulls, whose columns are all in the
// result.
void RowEditor::ReadKey(const std::string& catalog, const std::string& table_id) {
  constexpr int kUnique = 2;
  constexpr int kPrimaryKey = 2048;
  const auto rows =
      RowsOf(connection_, "select i.indid, i.status, c.name, c.isnullable from " + catalog +
                              "sysindexes i inner join " + catalog +
                              "sysindexkeys k on k.id = i.id and k.indid = i.indid inner join " +
                              catalog + "syscolumns c on c.id = k.id and c.colid = k.colid" +
                              " where i.id = " + table_id + " order by i.indid, k.keyno");
  struct Index {
    bool usable = true;
    bool primary = false;
    std::vector<Column*> columns;
  };
  std::map<int, Index> indexes;
  for (const auto& row : rows) {
    const int status = std::atoi(row[1].c_str());
    Index& index = indexes[std::atoi(row[0].c_str())];
    index.primary = (status & kPrimaryKey) != 0;
    Column* const column = ColumnNamed(row[2]);
    if ((status & kUnique) == 0 || column == nullptr || row[3] != "0") index.usable = false;
    index.columns.push_back(column);
  }
  const Index* chosen = nullptr;
  for (const auto& [number, index] : indexes) {
    if (!index.usable) continue;
    if (chosen == nullptr || (index.primary && !chosen->primary)) chosen = &index;
  }
  if (chosen == nullptr) return;
  for (Column* const column : chosen->columns) column->in_key = true;
}

bool RowEditor::HasKey() const {
  return std::any_of(columns_.begin(), columns_.end(),
                     [](const Column& column) { return column.in_key; });
}

std::string RowEditor::Condition(const Column& column,
                                 const std::optional<std::string>& value) const {
  const std::string name = BracketedName(column.name);
  return value ? name + " = " + SqlLiteral(column.field, value) : name + " is null";
}

// Every original value, the key among them: a row that someone else has changed is not found.
std::string RowEditor::WhereOriginal(const RowValues& before) const {
  std::string where;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (!columns_[i].comparable) continue;
    where += (where.empty() ? " where " : " and ") + Condition(columns_[i], before[i]);
  }
  return where;
}

std::string RowEditor::WhereNow(const RowChange& change) const {
  const bool has_key = HasKey();
  std::string where;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const Column& column = columns_[i];
    if (has_key ? !column.in_key : !column.comparable) continue;
    const auto& value = change.after[i];
    const bool unknown = !value && !change.assigned[i] && !change.before[i];
    // A value that the server has filled in without our knowing it.
    if (unknown && has_key) return "";
    if (unknown) continue;
    where += (where.empty() ? " where " : " and ") + Condition(column, value);
  }
  return where;
}

std::vector<RowValues> RowEditor::ReadRows(const std::string& condition) {
  std::string list;
  for (const Column& column : columns_) {
    list += (list.empty() ? "" : ", ");
    list += column.name.empty() ? "null" : BracketedName(column.name);
  }
  std::vector<RowValues> rows;
  const auto reader = connection_.Query("select top 2 " + list + " from " + table_ + condition);
  while (reader != nullptr && reader->Next()) {
    RowValues& row = rows.emplace_back(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (!reader->IsNull(i)) row[i] = std::string(reader->Text(i));
    }
  }
  return rows;
}

// The server's comparison does not tell letter case, widths and trailing blanks apart, and cannot
// compare long values at all. Where it finds several rows, the statement that follows counts them.
void RowEditor::LockUnchanged(const RowValues& before) {
  const auto rows = ReadRows(" with (updlock)" + WhereOriginal(before));
  bool unchanged = !rows.empty();
  for (std::size_t i = 0; rows.size() == 1 && i < columns_.size(); ++i) {
    const bool computed = columns_[i].name.empty();
    unchanged = unchanged && (computed || rows.front()[i] == before[i]);
  }
  if (!unchanged) throw RowError(std::string(messages::kRowGone));
}

RowValues RowEditor::ReadBack(const RowChange& change) {
  const std::string where = WhereNow(change);
  if (where.empty()) return change.after;
  const auto rows = ReadRows(where);
  RowValues row = change.after;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const Column& column = columns_[i];
    if (column.name.empty()) continue;
    // Of several rows alike it is not known which one was written.
    if (rows.size() == 1) row[i] = rows.front()[i];
    const auto& given = change.after[i];
    if (!change.assigned[i] || !given || IsAscii(*given) || !KeepsCodePage(column.field)) continue;
    const bool kept = std::any_of(rows.begin(), rows.end(), [&](const RowValues& now) {
      return now[i] && WithoutTrailingBlanks(*now[i]) == WithoutTrailingBlanks(*given);
    });
    if (!kept) throw RowError(messages::Fill(messages::kTextLost, column.field.name));
  }
  return row;
}

// The count is asked for in the batch itself: "set nocount on" and triggers hide what the driver
// tells.
std::string RowEditor::RequireOneRow(const std::string& statement) {
  const auto reader = connection_.Query(statement + "\r\nselect @@rowcount as " + kCountName +
                                        ", scope_identity() as dbkeeper_identity");
  bool counted = false;
  for (bool more = reader != nullptr; more && !counted; more = !counted && reader->NextResult()) {
    counted = !reader->Fields().empty() && reader->Fields()[0].name == kCountName;
  }
  const std::string count = counted && reader->Next() ? std::string(reader->Text(0)) : "0";
  if (count == "0") throw RowError(std::string(messages::kRowGone));
  if (count != "1") throw RowError(messages::Fill(messages::kRowsAlike, count));
  return std::string(reader->Text(1));
}

RowValues RowEditor::Insert(const RowChange& change) {
  std::string names;
  std::string values;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (!change.assigned[i] || !columns_[i].writable) continue;
    const std::string separator = names.empty() ? "" : ", ";
    names += separator + BracketedName(columns_[i].name);
    values += separator + SqlLiteral(columns_[i].field, change.after[i]);
  }
  const std::string what =
      names.empty() ? " default values" : " (" + names + ") values (" + values + ")";
  RowTransaction transaction(connection_);
  const std::string identity = RequireOneRow("insert into " + table_ + what);
  RowChange written = change;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (columns_[i].identity) written.after[i] = identity;
  }
  RowValues row = ReadBack(written);
  transaction.Commit();
  return row;
}

RowValues RowEditor::Update(const RowChange& change) {
  std::string assignments;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (!change.assigned[i] || !columns_[i].writable) continue;
    assignments += (assignments.empty() ? "" : ", ") + BracketedName(columns_[i].name) + " = " +
                   SqlLiteral(columns_[i].field, change.after[i]);
  }
  if (assignments.empty()) return change.after;
  RowTransaction transaction(connection_);
  LockUnchanged(change.before);
  RequireOneRow("update " + table_ + " set " + assignments + WhereOriginal(change.before));
  RowValues row = ReadBack(change);
  transaction.Commit();
  return row;
}

void RowEditor::Delete(const RowValues& before) {
  RowTransaction transaction(connection_);
  LockUnchanged(before);
  RequireOneRow("delete from " + table_ + WhereOriginal(before));
  transaction.Commit();
}

}  // namespace dbkeeper
