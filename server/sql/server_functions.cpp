#include "server/sql/server_functions.h"

#include <sqlite3.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <string>

#include "server/sql/function_table.h"
#include "server/types/conversion.h"
#include "server/types/decimal.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

// An error on its way through SQLite: "MS:8134:16:1:Divide by zero error encountered."
constexpr std::string_view kErrorMark = "MS:";

void SetResult(sqlite3_context* context, const Cell& cell) {
  if (const auto* integer = std::get_if<std::int64_t>(&cell)) {
    sqlite3_result_int64(context, *integer);
  } else if (const auto* real = std::get_if<double>(&cell)) {
    sqlite3_result_double(context, *real);
  } else if (const auto* text = std::get_if<std::string>(&cell)) {
    sqlite3_result_text64(context, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  } else if (const auto* blob = std::get_if<Blob>(&cell)) {
    sqlite3_result_blob64(context, blob->bytes.data(), blob->bytes.size(), SQLITE_TRANSIENT);
  } else {
    sqlite3_result_null(context);
  }
}

void SetError(sqlite3_context* context, const ServerMessage& message) {
  const std::string text = std::string(kErrorMark) + std::to_string(message.number) + ':' +
                           std::to_string(message.severity) + ':' + std::to_string(message.state) +
                           ':' + message.text;
  sqlite3_result_error(context, text.data(), static_cast<int>(text.size()));
}

// No exception may pass through SQLite.
template <typename Body>
void Guarded(sqlite3_context* context, const Body& body) {
  try {
    body();
  } catch (const SqlError& error) {
    SetError(context, error.message());
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  } catch (const std::exception& error) {
    sqlite3_result_error(context, error.what(), -1);
  }
}

void RunFunction(sqlite3_context* context, int count, sqlite3_value** values) {
  const auto& function = *static_cast<const SqlFunction*>(sqlite3_user_data(context));
  for (int i = 0; i < count && function.kind == FunctionKind::kPlain; ++i) {
    if (IsNullValue(values[i])) return sqlite3_result_null(context);
  }
  Guarded(context, [&] { SetResult(context, function.run(count, values)); });
}

// ms_state(function, arguments ...)
void RunState(sqlite3_context* context, int count, sqlite3_value** values) {
  auto& state = *static_cast<ServerState*>(sqlite3_user_data(context));
  Guarded(context, [&] {
    std::vector<Cell> cells;
    cells.reserve(static_cast<std::size_t>(count));
    for (int i = 1; i < count; ++i) cells.push_back(Take<Cell>(values[i]));
    SetResult(context, state.Evaluate(Take<std::string_view>(values[0]), cells));
  });
}

// ---- aggregates --------------------------------------------------------------------------------

// SQLite gives an aggregate zeroed memory; the state behind it is made with the first row.
template <typename State>
State* StateOf(sqlite3_context* context, bool make) {
  auto** place = static_cast<State**>(
      sqlite3_aggregate_context(context, make ? static_cast<int>(sizeof(State*)) : 0));
  if (place == nullptr) return nullptr;
  if (*place == nullptr && make) *place = new State();
  return *place;
}

// What an aggregate keeps of the rows that it has seen.
template <typename State>
void RegisterAggregate(sqlite3* connection, const char* name) {
  const auto step = [](sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    Guarded(context, [&] {
      State* state = StateOf<State>(context, true);
      if (state == nullptr) throw std::bad_alloc();
      state->Step(values[0]);
    });
  };
  const auto finish = [](sqlite3_context* context) {
    const std::unique_ptr<State> state(StateOf<State>(context, false));
    SetResult(context, state == nullptr ? Cell() : state->Result());
  };
  sqlite3_create_function_v2(connection, name, 1, SQLITE_UTF8, nullptr, nullptr, step, finish,
                             nullptr);
}

class Sum {
 public:
  void Step(sqlite3_value* value) {
    if (IsNullValue(value)) return;
    const std::optional<Decimal> number = sqlite3_value_type(value) == SQLITE_TEXT
                                              ? ParseDecimal(Take<std::string_view>(value))
                                              : Decimal{sqlite3_value_int64(value), 0};
    if (!number) throw MakeError(8114, {"expression", "numeric"});
    const auto total = Add(total_, *number, std::max(total_.scale, number->scale));
    if (!total) throw MakeError(8115, {"expression", "numeric"});
    total_ = *total;
    any_ = true;
  }
  Cell Result() const { return any_ ? FormatDecimal(total_) : Cell(); }

 private:
  Decimal total_;
  bool any_ = false;
};

// The value of the one row; 512 at the second.
class Single {
 public:
  void Step(sqlite3_value* value) {
    if (std::exchange(any_, true)) throw MakeError(512, {});
    value_ = Take<Cell>(value);
  }
  Cell Result() const { return value_; }

 private:
  Cell value_;
  bool any_ = false;
};

// ---- collations --------------------------------------------------------------------------------

std::string_view ViewOf(int length, const void* text) {
  return {static_cast<const char*>(text), static_cast<std::size_t>(length)};
}

template <int (*Compare)(std::string_view, std::string_view)>
int Collate(void* /*data*/, int left_length, const void* left, int right_length,
            const void* right) {
  return Compare(ViewOf(left_length, left), ViewOf(right_length, right));
}

void Register(sqlite3* connection, const FunctionRow& row) {
  if (row.function.run == nullptr) return;
  const std::string name = "ms_" + std::string(row.name);
  const bool random = row.function.kind == FunctionKind::kRandom;
  // SQLite hands the row back as it was given; it is never changed through this pointer.
  sqlite3_create_function_v2(connection, name.c_str(), row.function.arguments,
                             SQLITE_UTF8 | (random ? 0 : SQLITE_DETERMINISTIC),
                             const_cast<SqlFunction*>(&row.function), RunFunction, nullptr, nullptr,
                             nullptr);
}

struct CodeRow {
  int code;  // of SQLite
  int number;
};
constexpr CodeRow kCodes[] = {
    {SQLITE_BUSY, 1222}, {SQLITE_LOCKED, 1222},   {SQLITE_INTERRUPT, 3617}, {SQLITE_NOMEM, 701},
    {SQLITE_FULL, 1105}, {SQLITE_READONLY, 3906}, {SQLITE_TOOBIG, 8152},    {SQLITE_CORRUPT, 823},
    {SQLITE_IOERR, 823}, {SQLITE_MISMATCH, 1060},
};

// "index 'name'" gives the name; SQLite says so of an index of expressions.
std::string IndexOf(std::string_view details) {
  constexpr std::string_view kIndex = "index '";
  if (!details.starts_with(kIndex)) return "";
  details.remove_prefix(kIndex.size());
  return std::string(details.substr(0, details.rfind('\'')));
}

// Splits "t.a, t.b".
std::vector<std::string> ColumnsOf(std::string_view details) {
  std::vector<std::string> columns;
  while (!details.empty()) {
    const std::size_t comma = std::min(details.find(", "), details.size());
    const std::string_view item = details.substr(0, comma);
    details.remove_prefix(std::min(comma + 2, details.size()));
    columns.emplace_back(item.substr(item.find('.') + 1));
  }
  return columns;
}

// Takes "number:severity:state:text" apart.
ServerMessage ParseRaised(std::string_view text) {
  ServerMessage message;
  for (int* field : {&message.number, &message.severity, &message.state}) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    *field = std::atoi(std::string(text.substr(0, colon)).c_str());
    text.remove_prefix(std::min(colon + 1, text.size()));
  }
  message.text = text;
  return message;
}

}  // namespace

// ---- arguments ---------------------------------------------------------------------------------

bool IsNullValue(sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_NULL; }

template <>
std::string_view Take<std::string_view>(sqlite3_value* value) {
  const int type = sqlite3_value_type(value);
  if (type != SQLITE_TEXT && type != SQLITE_BLOB) return "";
  const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
  if (bytes == nullptr) return "";
  return {bytes, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

template <>
Cell Take<Cell>(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return static_cast<Integer>(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      return sqlite3_value_double(value);
    case SQLITE_TEXT:
      return std::string(Take<std::string_view>(value));
    case SQLITE_BLOB:
      return Blob{std::string(Take<std::string_view>(value))};
    default:
      return {};
  }
}

template <>
Integer Take<Integer>(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return sqlite3_value_int64(value);
    case SQLITE_FLOAT:
      return static_cast<Integer>(sqlite3_value_double(value));
    default:
      return 0;
  }
}

template <>
double Take<double>(sqlite3_value* value) {
  const int type = sqlite3_value_type(value);
  if (type == SQLITE_FLOAT || type == SQLITE_INTEGER) return sqlite3_value_double(value);
  const std::optional<Decimal> number = ParseDecimal(Take<std::string_view>(value));
  return number ? ToDouble(*number) : 0;
}

template <>
std::u32string Take<std::u32string>(sqlite3_value* value) {
  return DecodeUtf8(Take<std::string_view>(value));
}

template <>
Decimal Take<Decimal>(sqlite3_value* value) {
  return DecimalOfCell(Take<Cell>(value));
}

template <>
SqlType Take<SqlType>(sqlite3_value* value) {
  return DecodeType(Take<Integer>(value));
}

void RegisterServerFunctions(sqlite3* connection, ServerState* state) {
  // SQLite's Bloom filters hash texts by their length, so that a join would miss rows that are
  // equal only by the collation: 'a' and 'a '.
  constexpr int kBloomFilters = 0x00080000;
  sqlite3_test_control(SQLITE_TESTCTRL_OPTIMIZATIONS, connection, kBloomFilters);
  sqlite3_create_collation(connection, "MSTEXT", SQLITE_UTF8, nullptr, Collate<CompareText>);
  sqlite3_create_collation(connection, "MSDECIMAL", SQLITE_UTF8, nullptr,
                           Collate<CompareDecimalText>);
  for (const auto& rows : {NumberFunctions(), TextFunctions(), DateFunctions()}) {
    for (const FunctionRow& row : rows) Register(connection, row);
  }
  sqlite3_create_function_v2(connection, "ms_state", -1, SQLITE_UTF8, state, RunState, nullptr,
                             nullptr, nullptr);
  RegisterAggregate<Sum>(connection, "ms_sum");
  RegisterAggregate<Single>(connection, "ms_single");
}

ServerMessage MessageOfFailure(sqlite3* connection) {
  const std::string_view text = sqlite3_errmsg(connection);
  if (text.starts_with(kErrorMark)) return ParseRaised(text.substr(kErrorMark.size()));
  // Of sum(): 64 bits hold every sum of smaller integers.
  if (text == "integer overflow") return MakeMessage(8115, {"expression", "bigint"});
  const auto* row = std::ranges::find(kCodes, sqlite3_errcode(connection) & 0xFF, &CodeRow::code);
  return row == std::end(kCodes) ? MakeMessage(50002, {text}) : MakeMessage(row->number);
}

ConstraintFailure FailedConstraint(sqlite3* connection) {
  // "UNIQUE constraint failed: t.a, t.b"
  std::string_view details = sqlite3_errmsg(connection);
  const std::size_t colon = details.find(": ");
  details = colon == std::string_view::npos ? "" : details.substr(colon + 2);
  switch (sqlite3_extended_errcode(connection)) {
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
    case SQLITE_CONSTRAINT_ROWID:
      return {ConstraintFailureKind::kUnique, ColumnsOf(details), IndexOf(details)};
    case SQLITE_CONSTRAINT_NOTNULL:
      return {ConstraintFailureKind::kNotNull, ColumnsOf(details), ""};
    case SQLITE_CONSTRAINT_CHECK:
      return {ConstraintFailureKind::kCheck, {}, std::string(details)};
    case SQLITE_CONSTRAINT_FOREIGNKEY:
      return {ConstraintFailureKind::kForeignKey, {}, ""};
    default:
      return {};
  }
}

}  // namespace dbkeeper::server
