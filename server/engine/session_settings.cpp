#include "server/engine/session_settings.h"

#include <algorithm>
#include <cstdio>

#include "server/engine/state_functions.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

void SetNoCount(const SetStatement& s, Workspace& w) { w.options().no_count = s.value == "ON"; }
void SetFormatOnly(const SetStatement& s, Workspace& w) {
  w.options().format_only = s.value == "ON";
}
void SetNoExecute(const SetStatement& s, Workspace& w) { w.options().no_execute = s.value == "ON"; }
void SetQuoted(const SetStatement& s, Workspace& w) {
  w.options().quoted_identifiers = s.value == "ON";
}
void SetRowCount(const SetStatement& s, Workspace& w) {
  w.options().row_count = std::strtoll(s.value.c_str(), nullptr, 10);
}
void SetLockTimeout(const SetStatement& s, Workspace& w) {
  w.options().lock_timeout = std::chrono::milliseconds(std::strtoll(s.value.c_str(), nullptr, 10));
}
// Taken as it is: a client's wish about plans, texts or checks that has no counterpart here.
void Ignore(const SetStatement&, Workspace&) {}

struct SettingRow {
  std::string_view option;
  void (*apply)(const SetStatement&, Workspace&);
};

constexpr SettingRow kSettings[] = {
    {"NOCOUNT", SetNoCount},
    {"FMTONLY", SetFormatOnly},
    {"NOEXEC", SetNoExecute},
    {"QUOTED_IDENTIFIER", SetQuoted},
    {"ROWCOUNT", SetRowCount},
    {"LOCK_TIMEOUT", SetLockTimeout},
    {"ANSI_DEFAULTS", Ignore},
    {"ANSI_NULLS", Ignore},
    {"ANSI_NULL_DFLT_ON", Ignore},
    {"ANSI_NULL_DFLT_OFF", Ignore},
    {"ANSI_PADDING", Ignore},
    {"ANSI_WARNINGS", Ignore},
    {"ARITHABORT", Ignore},
    {"CONCAT_NULL_YIELDS_NULL", Ignore},
    {"CURSOR_CLOSE_ON_COMMIT", Ignore},
    {"NUMERIC_ROUNDABORT", Ignore},
    {"TEXTSIZE", Ignore},
    {"LANGUAGE", Ignore},
    {"DATEFORMAT", Ignore},
    {"DATEFIRST", Ignore},
    {"DEADLOCK_PRIORITY", Ignore},
    // A statement sees what was committed when it began, at either of the two lower levels. Nothing
    // here keeps others from changing what a transaction has read.
    {"TRANSACTION ISOLATION LEVEL",
     [](const SetStatement& s, Workspace&) {
       if (!s.value.starts_with("READ ")) {
         throw Unsupported("the isolation level " + s.value);
       }
     }},
    {"IMPLICIT_TRANSACTIONS",
     [](const SetStatement& s, Workspace&) {
       if (s.value == "ON") throw Unsupported("set implicit_transactions on");
     }},
    {"XACT_ABORT",
     [](const SetStatement& s, Workspace&) {
       if (s.value == "ON") throw Unsupported("set xact_abort on");
     }},
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
    const auto* row = std::ranges::find(kSettings, option, &SettingRow::option);
    if (row == std::end(kSettings)) throw Unsupported("set " + option);
    row->apply(statement, workspace);
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
  if (std::sscanf(text.c_str(), "%d:%d:%lf", &hours, &minutes, &seconds) < 2) Fail(148, {text});
  return std::chrono::milliseconds((hours * 60 + minutes) * 60'000 +
                                   static_cast<std::int64_t>(seconds * 1000));
}

}  // namespace dbkeeper::server
