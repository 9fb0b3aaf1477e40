// Server-side cursors.
#include <algorithm>
#include <limits>
#include <numeric>
#include <vector>

#include "server/engine/statements.h"
#include "server/sql/parser.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

// The rows of a page as positions in the whole result, counted from 1.
struct Page {
  std::int64_t first = 0;
  std::int64_t count = 0;
};

// Whether the rows come in an order of their own, or as the table gives them.
enum class RowOrder { kGiven, kOfTable };

RowOrder OrderOf(const Query& query) {
  const auto* const core = std::get_if<SelectCore>(&query.terms[0]);
  const bool plain = core != nullptr && !core->top && query.order_by.empty();
  return plain ? RowOrder::kOfTable : RowOrder::kGiven;
}

// The rows of the result by ids: those of one table, or of a temporary table with the whole result.
// In a table's own order they are looked up as far as a fetch needs them, so that a long table
// opens as fast as a short one.
class EngineCursor : public Cursor {
 public:
  // Over the rows of one table, which are its target.
  EngineCursor(EngineSession& session, Translation rows, RowOrder order)
      : session_(session), translation_(std::move(rows)), rows_sql_(translation_.sqlite_sql) {
    if (order == RowOrder::kOfTable) {
      end_ = sqlite().IntegerOf(0, "select max(_rowid_) from " + Table().sqlite_from);
      FindMore();
    } else {
      FindAllInOrder();
    }
  }

  // Over the result, which a temporary table keeps.
  EngineCursor(EngineSession& session, Translation rows, int number)
      : session_(session),
        translation_(std::move(rows)),
        kept_("temp.\"#cursor" + std::to_string(number) + "\""),
        rows_sql_("select *, rowid from " + kept_),
        complete_(true) {
    sqlite().Execute("drop table if exists " + kept_);
    sqlite().Execute("create table " + kept_ + " as " + translation_.sqlite_sql);
    const std::int64_t count = sqlite().IntegerOf(0, "select max(rowid) from " + kept_);
    ids_.resize(static_cast<std::size_t>(count));
    std::iota(ids_.begin(), ids_.end(), 1);
  }

  ~EngineCursor() override {
    if (updatable()) return;
    const std::string drop = "drop table if exists " + kept_;
    sqlite3_exec(sqlite().handle(), drop.c_str(), nullptr, nullptr, nullptr);
  }
  EngineCursor(const EngineCursor&) = delete;
  EngineCursor& operator=(const EngineCursor&) = delete;

  const std::vector<ResultColumn>& columns() const override { return translation_.columns; }
  bool updatable() const override { return kept_.empty(); }
  std::int64_t position() const override { return page_.first; }
  // -1 until the last row has been found.
  std::int64_t row_count() const override { return complete_ ? Found() : -1; }

  void Fetch(FetchKind kind, std::int64_t row, int count, ResultSink& sink) override {
    Reported(sink, [&] {
      page_ = Move(kind, row, count);
      return StatementEnd{.rows = Send(sink), .is_select = true};
    });
  }

  void Update(int page_row, const Parameters& values, ResultSink& sink) override {
    Change(sink, "UPDATE", [&](Parameters& bound) {
      bound = values;
      bound.push_back(IdOf(page_row));
      return Translator(session_.resolver()).UpdateRow(Table(), values);
    });
  }

  void Delete(int page_row, ResultSink& sink) override {
    Change(sink, "DELETE", [&](Parameters& bound) {
      bound = {IdOf(page_row)};
      return Translator(session_.resolver()).DeleteRow(Table());
    });
  }

  void Insert(const Parameters& values, ResultSink& sink) override {
    Change(sink, "INSERT", [&](Parameters& bound) {
      bound = values;
      return Translator(session_.resolver()).InsertBound(Table(), values);
    });
  }

 private:
  SqliteConnection& sqlite() { return session_.workspace().connection(); }
  const ObjectInfo& Table() const { return *translation_.target; }
  std::int64_t Found() const { return static_cast<std::int64_t>(ids_.size()); }

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

  // `translate` gives the statement and what is bound to it.
  template <typename Translate>
  void Change(ResultSink& sink, const std::string& verb, const Translate& translate) {
    Reported(sink, [&] {
      if (!updatable()) Fail(16929);
      Parameters bound;
      const Translation change = translate(bound);
      StatementEnd end;
      end.rows = session_.queries().Change(change, bound, verb);
      if (end.rows == 0) Fail(16947);
      return end;
    });
  }

  Page Move(FetchKind kind, std::int64_t row, int count);

  // Finds the first `wanted` rows, or all that there are, and gives how many are found by now.
  std::int64_t Find(std::int64_t wanted) {
    while (!complete_ && Found() < wanted) FindMore();
    return Found();
  }

  // Sends the rows of the page and gives their number.
  std::int64_t Send(ResultSink& sink) {
    // SQLite turns the condition on the select's last column into a look-up by row id.
    SqliteStatement statement = sqlite().Prepare(Rows() + "select * from page where id = ?1");
    const StatementRow row(statement);
    const std::int64_t limit = updatable() ? 0 : session_.workspace().options().row_count;
    std::int64_t sent = 0;
    for (bool wanted = true; wanted && sent < page_.count; ++sent) {
      if (limit > 0 && sent == limit) break;
      statement.Reset();
      statement.Bind(1, ids_[static_cast<std::size_t>(page_.first - 1 + sent)]);
      if (statement.Step()) {
        wanted = sink.OnRow(row);
      } else {
        sink.OnMissingRow();
      }
    }
    return sent;
  }

  // The select as a table "page" whose last column is the row id.
  std::string Rows() {
    std::string names;
    for (std::size_t i = 0; i < columns().size(); ++i) names += "c" + std::to_string(i) + ", ";
    return "with page(" + names + "id) as (" + rows_sql_ + ") ";
  }

  void FindAllInOrder() {
    const int id_column = static_cast<int>(columns().size());
    SqliteStatement row = sqlite().Prepare(rows_sql_);
    while (row.Step()) Note(row.Integer(id_column));
    complete_ = true;
  }

  // The next rows behind the last one found; rows that came after the cursor was opened are none of
  // its own. No statement stays open between two fetches: it would hold the session in the past of
  // other sessions' changes.
  void FindMore() {
    SqliteStatement row = sqlite().Prepare(
        Rows() + "select id from page where id > ?1 and id <= ?2 order by id limit ?3",
        ids_.empty() ? std::numeric_limits<std::int64_t>::min() : ids_.back(), end_, step_);
    const std::size_t before = ids_.size();
    while (row.Step()) Note(row.Integer(0));
    complete_ = ids_.size() - before < static_cast<std::size_t>(step_);
    step_ = std::min(step_ * 2, kLongestStep);
  }

  void Note(std::int64_t id) {
    session_.workspace().StopIfInterrupted();
    ids_.push_back(id);
  }

  Parameter IdOf(int page_row) const {
    const std::int64_t position = page_.first + page_row - 1;
    if (page_row < 1 || page_row > page_.count || position > Found()) Fail(16931);
    return {"", {}, ids_[static_cast<std::size_t>(position - 1)]};
  }

  static constexpr std::int64_t kLongestStep = 1 << 17;
  EngineSession& session_;
  const Translation translation_;
  const std::string kept_;  // the temporary table; empty: there is none
  const std::string rows_sql_;
  Page page_;
  std::vector<std::int64_t> ids_;
  std::int64_t end_ = 0;  // the highest id when the cursor was opened
  std::int64_t step_ = 1024;
  bool complete_ = false;
};

Page EngineCursor::Move(FetchKind kind, std::int64_t row, int count) {
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

}  // namespace

std::unique_ptr<Cursor> OpenEngineCursor(EngineSession& session, std::string_view text) {
  const std::vector<Statement> statements = ParseBatch(text);
  if (statements.size() != 1) return nullptr;
  const auto* select = std::get_if<SelectStatement>(&statements[0].node);
  if (select == nullptr) return nullptr;
  session.resolver().BeginStatement();
  Translator translator(session.resolver());
  Translation rows = translator.Select(*select, {.with_row_id = true});
  if (rows.into) return nullptr;
  session.queries().NeedReading();
  if (rows.has_row_id && rows.target && rows.target->kind == ObjectKind::kTable) {
    return std::make_unique<EngineCursor>(session, std::move(rows), OrderOf(*select->query));
  }
  rows = translator.Select(*select);
  return std::make_unique<EngineCursor>(session, std::move(rows), session.NextCursor());
}

}  // namespace dbkeeper::server
