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
    {"IMPLICIT_TRANSACTIONS",
     [](const std::string& v, Options&) {
       if (v == "ON") throw Unsupported("set implicit_transactions on");
     }},
    {"XACT_ABORT",
     [](const std::string& v, Options&) {
       if (v == "ON") throw Unsupported("set xact_abort on");
     }},
};

// A client's wishes about plans, texts or checks that have no counterpart here.
constexpr std::string_view kIgnored[] = {"ANSI_DEFAULTS",
                                         "ANSI_NULLS",
                                         "ANSI_NULL_DFLT_ON",
                                         "ANSI_NULL_DFLT_OFF",
                                         "ANSI_PADDING",
                                         "ANSI_WARNINGS",
                                         "ARITHABORT",
                                         "CONCAT_NULL_YIELDS_NULL",
                                         "CURSOR_CLOSE_ON_COMMIT",
                                         "NUMERIC_ROUNDABORT",
                                         "TEXTSIZE",
                                         "LANGUAGE",
                                         "DATEFORMAT",
                                         "DATEFIRST",
                                         "DEADLOCK_PRIORITY"};

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
    if (std::ranges::find(kIgnored, option) != std::end(kIgnored)) continue;
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
  message.severity =
      static_cast<int>(std::clamp<std::int64_t>(integer(statement.severity, 16), 0, 18));
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
      if (next >= statement.arguments.size()) Fail(2786, {std::to_string(next + 1)});
      message.text += TextOfCell(queries.Scalar(*statement.arguments[next++], execution));
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
