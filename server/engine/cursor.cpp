#include "server/engine/cursor.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "server/engine/engine_session.h"
#include "server/sql/parser.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// The rows of a page as positions in the whole result, counted from 1.
struct Page {
  std::int64_t first = 0;
  std::int64_t count = 0;
};

class EngineCursor : public Cursor {
 public:
  EngineCursor(EngineSession& session, Translation translation)
      : session_(session), translation_(std::move(translation)) {}

  const std::vector<ResultColumn>& columns() const override { return translation_.columns; }
  bool updatable() const override { return false; }
  std::int64_t position() const override { return page_.first; }

  void Fetch(FetchKind kind, std::int64_t row, int count, ResultSink& sink) override {
    Reported(sink, [&] {
      page_ = Move(kind, row, count);
      return StatementEnd{.rows = Send(page_, sink), .is_select = true};
    });
  }

  void Update(int, const Parameters&, ResultSink& sink) override { Refuse(sink); }
  void Delete(int, ResultSink& sink) override { Refuse(sink); }
  void Insert(const Parameters&, ResultSink& sink) override { Refuse(sink); }

 protected:
  EngineSession& session() { return session_; }
  const Translation& translation() const { return translation_; }
  const Page& page() const { return page_; }

  // Finds the first `wanted` rows, or all that there are, and gives how many are found by now.
  virtual std::int64_t Find(std::int64_t wanted) = 0;
  // Sends the rows of the page and gives their number.
  virtual std::int64_t Send(const Page& page, ResultSink& sink) = 0;

  template <typename Action>
  void Reported(ResultSink& sink, const Action& action) {
    try {
      session_.workspace().statement_time = CurrentTime();
      sink.OnStatementEnd(action());
    } catch (const SqlError& error) {
      sink.OnMessage(error.message());
      sink.OnStatementEnd({.failed = true});
    }
  }

 private:
  Page Move(FetchKind kind, std::int64_t row, int count) {
    constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();
    std::int64_t first = page_.first;
    switch (kind) {
      case FetchKind::kFirst:
        first = 1;
        break;
      case FetchKind::kNext:
        first = page_.first == 0 ? 1 : page_.first + page_.count;
        break;
      case FetchKind::kPrior:
        // A page that would begin before the first row begins there.
        first = page_.first > 1 ? std::max<std::int64_t>(page_.first - count, 1) : 0;
        break;
      case FetchKind::kLast:
        first = std::max<std::int64_t>(Find(kAll) - count + 1, 1);
        break;
      case FetchKind::kAbsolute:
        first = row < 0 ? Find(kAll) + row + 1 : row;
        break;
      case FetchKind::kRelative:
        first = page_.first + row;
        break;
      case FetchKind::kRefresh:
        break;
    }
    if (first < 1) return {0, 0};
    const std::int64_t total = Find(first > kAll - count ? kAll : first + count - 1);
    if (first > total) return {total + 1, 0};
    return {first, std::min<std::int64_t>(count, total - first + 1)};
  }

  void Refuse(ResultSink& sink) {
    sink.OnMessage(MakeMessage(16929));
    sink.OnStatementEnd({.failed = true});
  }

  EngineSession& session_;
  Translation translation_;
  Page page_;
};

// Whether the rows come in an order of their own, or as the table gives them.
enum class RowOrder { kGiven, kOfTable };

RowOrder OrderOf(const Query& query) {
  const auto* const core = std::get_if<SelectCore>(&query.terms[0]);
  const bool plain = core != nullptr && !core->top && query.order_by.empty();
  return plain ? RowOrder::kOfTable : RowOrder::kGiven;
}

// Row ids of one table. In the table's own order they are looked up as far as a fetch needs them,
// so that a long table opens as fast as a short one.
class KeysetCursor : public EngineCursor {
 public:
  KeysetCursor(EngineSession& session, Translation rows, RowOrder order)
      : EngineCursor(session, std::move(rows)) {
    if (order == RowOrder::kOfTable) {
      end_ = session.workspace().connection().IntegerOf(
          0, "select max(_rowid_) from " + translation().target->sqlite_from);
      FindMore();
    } else {
      FindAllInOrder();
    }
  }

  // -1 until the last row has been found.
  std::int64_t row_count() const override {
    return complete_ ? static_cast<std::int64_t>(ids_.size()) : -1;
  }
  bool updatable() const override { return true; }

  void Update(int page_row, const Parameters& values, ResultSink& sink) override {
    Reported(sink, [&] {
      Parameters with_id = values;
      with_id.push_back(IdOf(page_row));
      return Change(Changes().UpdateRow(Table(), values), with_id, "UPDATE");
    });
  }

  void Delete(int page_row, ResultSink& sink) override {
    Reported(sink,
             [&] { return Change(Changes().DeleteRow(Table()), {IdOf(page_row)}, "DELETE"); });
  }

  void Insert(const Parameters& values, ResultSink& sink) override {
    Reported(sink,
             [&] { return Change(Changes().InsertBound(Table(), values), values, "INSERT"); });
  }

 protected:
  std::int64_t Find(std::int64_t wanted) override {
    while (!complete_ && static_cast<std::int64_t>(ids_.size()) < wanted) FindMore();
    return static_cast<std::int64_t>(ids_.size());
  }

  std::int64_t Send(const Page& page, ResultSink& sink) override {
    // SQLite turns the condition on the select's last column into a look-up by row id.
    SqliteStatement statement =
        session().workspace().connection().Prepare(Rows() + "select * from page where id = ?1");
    const StatementRow row(statement);
    bool wanted = true;
    std::int64_t sent = 0;
    for (; wanted && sent < page.count; ++sent) {
      statement.Reset();
      statement.Bind(1, ids_[static_cast<std::size_t>(page.first - 1 + sent)]);
      if (statement.Step()) {
        wanted = sink.OnRow(row);
      } else {
        sink.OnMissingRow();
      }
    }
    return sent;
  }

 private:
  // The select as a table "page" whose last column is the row id.
  std::string Rows() {
    std::string names;
    for (std::size_t i = 0; i < columns().size(); ++i) names += "c" + std::to_string(i) + ", ";
    return "with page(" + names + "id) as (" + translation().sqlite_sql + ") ";
  }

  void FindAllInOrder() {
    const int id_column = static_cast<int>(translation().columns.size());
    SqliteStatement row = session().workspace().connection().Prepare(translation().sqlite_sql);
    while (row.Step()) Note(row.Integer(id_column));
    complete_ = true;
  }

  // The next rows behind the last one found; rows that came after the cursor was opened are none of
  // its own. No statement stays open between two fetches: it would hold the session in the past of
  // other sessions' changes.
  void FindMore() {
    SqliteStatement row = session().workspace().connection().Prepare(
        Rows() + "select id from page where id > ?1 and id <= ?2 order by id limit ?3",
        ids_.empty() ? std::numeric_limits<std::int64_t>::min() : ids_.back(), end_, step_);
    const std::size_t before = ids_.size();
    while (row.Step()) Note(row.Integer(0));
    complete_ = ids_.size() - before < static_cast<std::size_t>(step_);
    step_ = std::min(step_ * 2, kLongestStep);
  }

  void Note(std::int64_t id) {
    session().workspace().StopIfInterrupted();
    ids_.push_back(id);
  }

  Translator Changes() { return Translator(session().resolver()); }
  const ObjectInfo& Table() const { return *translation().target; }

  Parameter IdOf(int page_row) const {
    const std::int64_t position = page().first + page_row - 1;
    const auto found = static_cast<std::int64_t>(ids_.size());
    if (page_row < 1 || page_row > page().count || position > found) Fail(16931);
    return {"", {}, ids_[static_cast<std::size_t>(position - 1)]};
  }

  StatementEnd Change(const Translation& change, const Parameters& values,
                      const std::string& verb) {
    StatementEnd end;
    end.rows = session().queries().Change(change, values, verb);
    if (end.rows == 0) Fail(16947);
    return end;
  }

  static constexpr std::int64_t kLongestStep = 1 << 17;
  std::vector<std::int64_t> ids_;
  std::int64_t end_ = 0;  // the highest id when the cursor was opened
  std::int64_t step_ = 1024;
  bool complete_ = false;
};

// The whole result, kept in a temporary table.
class StaticCursor : public EngineCursor {
 public:
  StaticCursor(EngineSession& session, Translation rows, int number)
      : EngineCursor(session, std::move(rows)),
        table_("temp.\"#cursor" + std::to_string(number) + "\"") {
    SqliteConnection& connection = session.workspace().connection();
    connection.Execute("drop table if exists " + table_);
    connection.Execute("create table " + table_ + " as " + translation().sqlite_sql);
    rows_ = connection.IntegerOf(0, "select max(rowid) from " + table_);
  }

  ~StaticCursor() override {
    const std::string drop = "drop table if exists " + table_;
    sqlite3_exec(session().workspace().connection().handle(), drop.c_str(), nullptr, nullptr,
                 nullptr);
  }

  std::int64_t row_count() const override { return rows_; }

 protected:
  std::int64_t Find(std::int64_t) override { return rows_; }

  std::int64_t Send(const Page& page, ResultSink& sink) override {
    SqliteStatement rows = session().workspace().connection().Prepare(
        "select * from " + table_ + " where rowid >= ? and rowid < ? order by rowid", page.first,
        page.first + page.count);
    return session().queries().SendRows(rows, sink);
  }

 private:
  std::string table_;
  std::int64_t rows_ = 0;
};

}  // namespace

std::unique_ptr<Cursor> OpenEngineCursor(EngineSession& session, std::string_view text) {
  const std::vector<Statement> statements = ParseBatch(text);
  if (statements.size() != 1) return nullptr;
  const auto* select = std::get_if<SelectStatement>(&statements[0].node);
  if (select == nullptr) return nullptr;
  Translator translator(session.resolver());
  Translation rows = translator.Select(*select, {.with_row_id = true});
  if (rows.into) return nullptr;
  if (rows.has_row_id && rows.target && rows.target->kind == ObjectKind::kTable) {
    return std::make_unique<KeysetCursor>(session, std::move(rows), OrderOf(*select->query));
  }
  rows = translator.Select(*select);
  return std::make_unique<StaticCursor>(session, std::move(rows), session.NextCursor());
}

}  // namespace dbkeeper::server
