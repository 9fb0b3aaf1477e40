// SET options, raiserror's message, waitfor's delay.

#include <algorithm>
#include <cstdio>

#include "server/engine/state_functions.h"
#include "server/engine/statements.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

using Options = SessionOptions;

struct SettingRow {
  std::string_view option;
  void (*apply)(const std::string& value, Options&);
};

constexpr SettingRow kSettings[] = {
    {"NOCOUNT", [](const std::string& v, Options& o) { o.no_count = v == "ON"; }},
    {"FMTONLY", [](const std::string& v, Options& o) { o.format_only = v == "ON"; }},
    {"NOEXEC", [](const std::string& v, Options& o) { o.no_execute = v == "ON"; }},
    {"QUOTED_IDENTIFIER",
     [](const std::string& v, Options& o) { o.quoted_identifiers = v == "ON"; }},
    {"ROWCOUNT",
     [](const std::string& v, Options& o) { o.row_count = std::strtoll(v.c_str(), nullptr, 10); }},
    {"LOCK_TIMEOUT",
     [](const std::string& v, Options& o) {
       o.lock_timeout = std::chrono::milliseconds(std::strtoll(v.c_str(), nullptr, 10));
     }},
    // A statement sees what was committed when it began, at either of the two lower levels. Nothing
    // here keeps others from changing what a transaction has read.
    {"TRANSACTION ISOLATION LEVEL",
     [](const std::string& v, Options&) {
       if (!v.starts_with("READ ")) throw Unsupported("the isolation level " + v);
     }},
};

// Options of which one value is in force for good; an empty one is any, for it concerns plans or
// what clients see.
struct FixedRow {
  std::string_view option;
  std::string_view value;
};

constexpr FixedRow kFixed[] = {
    {"ANSI_DEFAULTS", "ON"},
    {"ANSI_NULLS", "ON"},
    {"ANSI_NULL_DFLT_ON", "ON"},
    {"ANSI_NULL_DFLT_OFF", "OFF"},
    {"ANSI_PADDING", "ON"},
    {"ANSI_WARNINGS", "ON"},
    {"ARITHABORT", ""},
    {"CONCAT_NULL_YIELDS_NULL", "ON"},
    {"CURSOR_CLOSE_ON_COMMIT", "OFF"},
    {"DATEFIRST", "7"},
    {"DATEFORMAT", "mdy"},
    {"DEADLOCK_PRIORITY", ""},
    {"IMPLICIT_TRANSACTIONS", "OFF"},
    {"LANGUAGE", "us_english"},
    {"NUMERIC_ROUNDABORT", "OFF"},
    {"TEXTSIZE", ""},
    {"XACT_ABORT", "OFF"},
};

void SetIdentityInsert(const SetStatement& statement, Workspace& workspace, Resolver& resolver) {
  const FoundObject found = resolver.Need(statement.table, "U", 1088);
  const std::string key = found.database.name + "." + found.object.name;
  std::string& current = workspace.options().identity_insert;
  if (statement.value != "ON") {
    if (SameName(current, key)) current.clear();
    return;
  }
  const std::vector<CatalogColumn> columns = resolver.CatalogAt(found).Columns(found.object.id);
  if (std::ranges::none_of(columns, [](const auto& c) { return c.identity.has_value(); })) {
    Fail(8106, {found.object.name});
  }
  if (!current.empty() && !SameName(current, key)) Fail(8107, {current, found.object.name});
  current = key;
}

}  // namespace

void ApplySetting(const SetStatement& statement, Workspace& workspace, Resolver& resolver) {
  for (const std::string& option : statement.options) {
    if (option == "IDENTITY_INSERT") {
      SetIdentityInsert(statement, workspace, resolver);
      continue;
    }
    const auto* fixed = std::ranges::find(kFixed, option, &FixedRow::option);
    if (fixed != std::end(kFixed)) {
      if (fixed->value.empty() || SameName(fixed->value, statement.value)) continue;
      throw Unsupported("set " + ToLowerAscii(option + " " + statement.value));
    }
    const auto* row = std::ranges::find(kSettings, option, &SettingRow::option);
    if (row == std::end(kSettings)) throw Unsupported("set " + option);
    row->apply(statement.value, workspace.options());
  }
}

ServerMessage RaisedMessage(const RaiseErrorStatement& statement, QueryRunner& queries,
                            const Execution& execution) {
  constexpr int kUserMessage = 50000;
  ServerMessage message;
  message.line = execution.line;
  const Cell text = queries.Scalar(*statement.message, execution);
  const auto integer = [&](const ExpressionPtr& expression, std::int64_t otherwise) {
    if (!expression) return otherwise;
    const Cell cell = queries.Scalar(*expression, execution);
    const auto* value = std::get_if<std::int64_t>(&cell);
    return value == nullptr ? otherwise : *value;
  };
  constexpr std::int64_t kHighestSeverity = 18;
  const std::int64_t severity = integer(statement.severity, 16);
  if (severity > kHighestSeverity) throw Unsupported("severities above 18 of raiserror");
  message.severity = static_cast<int>(std::max<std::int64_t>(severity, 0));
  message.state = static_cast<int>(std::clamp<std::int64_t>(integer(statement.state, 1), 1, 127));
  message.number = kUserMessage;
  if (const auto* number = std::get_if<std::int64_t>(&text)) {
    Fail(2758, {std::to_string(*number)});
  }
  const std::string format = TextOfCell(text);
  std::size_t next = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%' || i + 1 >= format.size()) {
      message.text += format[i];
      continue;
    }
    const char kind = format[++i];
    if (kind == '%') {
      message.text += '%';
    } else if (std::string_view("sdiux").find(kind) != std::string_view::npos) {
      const std::string number = std::to_string(next + 1);
      if (next >= statement.arguments.size()) Fail(2786, {number});
      const Cell value = queries.Scalar(*statement.arguments[next++], execution);
      const bool fits = kind == 's' ? std::holds_alternative<std::string>(value)
                                    : std::holds_alternative<std::int64_t>(value);
      if (!fits && !IsNullCell(value)) Fail(2786, {number});
      message.text += IsNullCell(value) ? "(null)" : TextOfCell(value);
    } else {
      throw Unsupported("this format of raiserror");
    }
  }
  return message;
}

std::chrono::milliseconds DelayOf(const std::string& text) {
  int hours = 0;
  int minutes = 0;
  double seconds = 0;
  const bool read = std::sscanf(text.c_str(), "%d:%d:%lf", &hours, &minutes, &seconds) >= 2;
  const auto within = [](double value, double limit) { return value >= 0 && value < limit; };
  if (!read || !within(hours, 24) || !within(minutes, 60) || !within(seconds, 60)) {
    Fail(148, {text});
  }
  return std::chrono::hours(hours) + std::chrono::minutes(minutes) +
         std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

}  // namespace dbkeeper::server
