#include "app/session/RowEditor.h"

#include <algorithm>
#include <utility>

#include "app/session/BatchResults.h"
#include "app/session/CellText.h"
#include "app/support/Messages.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace {

using Rows = std::vector<RowValues>;

// The first field of each answer, which tells them apart.
constexpr const char* kDepth = "dbkeeper_depth";
constexpr const char* kBefore = "dbkeeper_before";
constexpr const char* kCount = "dbkeeper_rows";
constexpr const char* kAfter = "dbkeeper_after";

bool IsAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Whether the column keeps only the characters of a code page.
bool KeepsCodePage(const Field& field) {
  return field.kind == FieldKind::kText && !field.type_name.starts_with("n");
}

// Statements that run in a transaction, or in a savepoint inside the one that is open already and
// belongs to the operator. Leaving the scope before Commit takes everything back.
class RowTransaction {
 public:
  explicit RowTransaction(Connection& connection) : connection_(connection) {}
  RowTransaction(const RowTransaction&) = delete;
  RowTransaction& operator=(const RowTransaction&) = delete;
  ~RowTransaction() {
    results_.reset();
    if (done_ || depth_.empty()) return;
    try {
      connection_.Execute(Nested() ? "rollback transaction dbkeeper_row" : "rollback transaction");
    } catch (const std::exception&) {
      // The server has already taken the transaction back, or is gone and will.
    }
  }

  // Begins the transaction and sends the statements in one batch. The depth is asked for in two
  // rows: where only one arrives, "set rowcount 1" hides what else the statements touch.
  void Run(const std::string& statements) {
    results_.emplace(connection_,
                     "select @@trancount as dbkeeper_depth union all select @@trancount\r\n"
                     "if @@trancount = 0 begin transaction else save transaction dbkeeper_row\r\n" +
                         statements);
    if (!results_->Take(kDepth, 1, depth_) || depth_.empty()) {
      throw RowError(std::string(messages::kAnswerUnreadable));
    }
    if (depth_.size() == 1) throw RowError(std::string(messages::kOneRowAnswers));
  }

  // The rows of the answer that is so marked, which has `fields` fields.
  Rows Take(const char* marker, std::size_t fields) {
    Rows rows;
    if (!results_->Take(marker, fields, rows)) {
      throw RowError(std::string(messages::kAnswerUnreadable));
    }
    return rows;
  }

  // Throws RowError unless the statement before kCountRows touched one row; gives the identity
  // value that the session was given last.
  std::optional<std::string> RequireOneRow() {
    const Rows rows = Take(kCount, 2);
    const std::string count = rows.empty() ? "0" : rows[0][0].value_or("0");
    if (count == "0") throw RowError(std::string(messages::kRowGone));
    if (count != "1") throw RowError(messages::Fill(messages::kRowsAlike, count));
    return rows[0][1];
  }

  void Commit() {
    results_->Finish();
    // With implicit transactions the server has put one around ours.
    if (!Nested()) connection_.Execute("while @@trancount > 0 commit transaction");
    done_ = true;
  }

 private:
  bool Nested() const { return depth_.front()[0] != "0"; }

  Connection& connection_;
  std::optional<BatchResults> results_;
  Rows depth_;
  bool done_ = false;
};

// The count is asked for in the batch itself: "set nocount on" and triggers hide what the driver
// tells.
constexpr const char* kCountRows =
    "\r\nselect @@rowcount as dbkeeper_rows, scope_identity() as dbkeeper_identity";

}  // namespace

RowEditor::RowEditor(Connection& connection, std::string_view sql, const std::vector<Field>& fields)
    : connection_(connection), table_(ReadEditedTable(connection, sql, fields)) {}

std::string RowEditor::Condition(const EditedColumn& column,
                                 const std::optional<std::string>& value) const {
  const std::string name = BracketedName(column.name);
  return value ? name + " = " + SqlLiteral(column.field, value) : name + " is null";
}

// Every original value, the key among them: a row that someone else has changed is not found.
std::string RowEditor::WhereOriginal(const RowValues& before) const {
  std::string where;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (!table_.columns[i].comparable) continue;
    where += (where.empty() ? " where " : " and ") + Condition(table_.columns[i], before[i]);
  }
  return where;
}

std::string RowEditor::WhereNow(const RowChange& change) const {
  const bool has_key = table_.HasKey();
  std::string where;
  for (std::size_t i = 0; i < table_.columns.size(); ++i) {
    const EditedColumn& column = table_.columns[i];
    if (has_key ? !column.in_key : !column.comparable) continue;
    const std::string separator = where.empty() ? " where " : " and ";
    const auto& value = change.after[i];
    const bool given = value || change.assigned[i] || change.before[i];
    if (column.identity && !given) {
      where += separator + BracketedName(column.name) + " = scope_identity()";
    } else if (given) {
      where += separator + Condition(column, value);
    } else if (has_key) {
      // A value that the server has filled in without our knowing it.
      return "";
    }
  }
  return where;
}

std::string RowEditor::Select(const std::string& marker, const std::string& condition) const {
  std::string list;
  for (const EditedColumn& column : table_.columns) {
    list += ", ";
    list += column.name.empty() ? "null" : BracketedName(column.name);
  }
  return "select top 2 1 as " + marker + list + " from " + table_.name + condition;
}

// The server's comparison does not tell letter case, widths and trailing blanks apart, and cannot
// compare long values at all. Where it finds several rows, the statement behind it counts them.
void RowEditor::RequireUnchanged(const RowValues& before, const Rows& now) const {
  bool unchanged = !now.empty();
  for (std::size_t i = 0; now.size() == 1 && i < before.size(); ++i) {
    const bool computed = table_.columns[i].name.empty();
    unchanged = unchanged && (computed || now.front()[i + 1] == before[i]);
  }
  if (!unchanged) throw RowError(std::string(messages::kRowGone));
}

RowValues RowEditor::StoredRow(const RowChange& change, const Rows& now) const {
  RowValues row = change.after;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const EditedColumn& column = table_.columns[i];
    if (column.name.empty()) continue;
    // Of several rows alike it is not known which one was written.
    if (now.size() == 1) row[i] = now.front()[i + 1];
    const auto& given = change.after[i];
    if (!change.assigned[i] || !given || IsAscii(*given) || !KeepsCodePage(column.field)) continue;
    const bool kept = std::any_of(now.begin(), now.end(), [&](const RowValues& stored) {
      return stored[i + 1] &&
             WithoutTrailingBlanks(*stored[i + 1]) == WithoutTrailingBlanks(*given);
    });
    if (!kept) throw RowError(messages::Fill(messages::kTextLost, column.field.name));
  }
  return row;
}

RowValues RowEditor::Insert(const RowChange& change) {
  std::string names;
  std::string values;
  for (std::size_t i = 0; i < table_.columns.size(); ++i) {
    if (!change.assigned[i] || !table_.columns[i].writable) continue;
    const std::string separator = names.empty() ? "" : ", ";
    names += separator + BracketedName(table_.columns[i].name);
    values += separator + SqlLiteral(table_.columns[i].field, change.after[i]);
  }
  const std::string what =
      names.empty() ? " default values" : " (" + names + ") values (" + values + ")";
  const std::string where = WhereNow(change);
  RowTransaction transaction(connection_);
  transaction.Run("insert into " + table_.name + what + kCountRows +
                  (where.empty() ? "" : "\r\n" + Select(kAfter, where)));
  const auto identity = transaction.RequireOneRow();
  RowChange written = change;
  for (std::size_t i = 0; i < table_.columns.size(); ++i) {
    if (table_.columns[i].identity) written.after[i] = identity;
  }
  const std::size_t fields = table_.columns.size() + 1;
  RowValues row =
      where.empty() ? written.after : StoredRow(written, transaction.Take(kAfter, fields));
  transaction.Commit();
  return row;
}

RowValues RowEditor::Update(const RowChange& change) {
  std::string assignments;
  for (std::size_t i = 0; i < table_.columns.size(); ++i) {
    const EditedColumn& column = table_.columns[i];
    if (!change.assigned[i] || !column.writable) continue;
    assignments += (assignments.empty() ? "" : ", ") + BracketedName(column.name) + " = " +
                   SqlLiteral(column.field, change.after[i]);
  }
  if (assignments.empty()) return change.after;
  const std::string original = WhereOriginal(change.before);
  const std::string where = WhereNow(change);
  const std::size_t fields = table_.columns.size() + 1;
  RowTransaction transaction(connection_);
  transaction.Run(Select(kBefore, " with (updlock)" + original) + "\r\nupdate " + table_.name +
                  " set " + assignments + original + kCountRows +
                  (where.empty() ? "" : "\r\n" + Select(kAfter, where)));
  RequireUnchanged(change.before, transaction.Take(kBefore, fields));
  transaction.RequireOneRow();
  RowValues row =
      where.empty() ? change.after : StoredRow(change, transaction.Take(kAfter, fields));
  transaction.Commit();
  return row;
}

void RowEditor::Delete(const RowValues& before) {
  const std::string original = WhereOriginal(before);
  RowTransaction transaction(connection_);
  transaction.Run(Select(kBefore, " with (updlock)" + original) + "\r\ndelete from " + table_.name +
                  original + kCountRows);
  RequireUnchanged(before, transaction.Take(kBefore, before.size() + 1));
  transaction.RequireOneRow();
  transaction.Commit();
}

}  // namespace dbkeeper
