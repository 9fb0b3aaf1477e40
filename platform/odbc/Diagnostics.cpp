#include "platform/odbc/Diagnostics.h"

#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>
#include <array>
#include <utility>

#include "app/support/Utf16.h"

namespace dbkeeper::odbc {

namespace {

// The driver's own fields. FreeTDS gives the severity under the number that stands for the state
// elsewhere, and the state not at all.
constexpr SQLSMALLINT kSeverityField = -1150;
constexpr SQLSMALLINT kLineField = -1154;

constexpr int kChangedDatabase = 5701;
constexpr int kChangedLanguage = 5703;

// The driver manager takes a field that it does not know for a wide text: it copies the number
// unit by unit and stops behind the first zero.
int NumberField(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT record, SQLSMALLINT field) {
  SQLWCHAR units[8] = {};
  const SQLRETURN code =
      SQLGetDiagFieldW(type, handle, record, field, units, sizeof units, nullptr);
  constexpr SQLWCHAR kNone = 0xFFFF;  // the driver's -1, for messages of its own
  return SQL_SUCCEEDED(code) && units[0] != kNone ? units[0] | units[1] << 16 : 0;
}

// The text without the names of the driver and the driver manager before it.
std::string WithoutPrefixes(std::string text) {
  constexpr std::array<std::string_view, 3> kPrefixes = {"[FreeTDS]", "[SQL Server]", "[unixODBC]"};
  for (bool found = true; found;) {
    found = false;
    for (const std::string_view prefix : kPrefixes) {
      if (!text.starts_with(prefix)) continue;
      text.erase(0, prefix.size());
      found = true;
    }
  }
  return text;
}

std::string Narrow(const std::vector<SQLWCHAR>& buffer, std::size_t length) {
  std::u16string wide(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(length));
  return Utf16ToUtf8(wide);
}

// The driver sorts the records by severity, and not stably. With one severity alone they are as
// the server sent them; otherwise the line numbers are the best there is to go by.
void RestoreOrder(std::vector<DiagnosticRecord>& records) {
  const auto same_severity = [&records](const DiagnosticRecord& record) {
    return record.message.severity == records.front().message.severity;
  };
  const auto has_line = [](const DiagnosticRecord& record) { return record.message.line > 0; };
  if (std::all_of(records.begin(), records.end(), same_severity)) return;
  if (!std::all_of(records.begin(), records.end(), has_line)) return;
  std::stable_sort(records.begin(), records.end(), [](const auto& left, const auto& right) {
    return left.message.line < right.message.line;
  });
}

bool FromDriver(const ServerMessage& message) {
  constexpr int kFirstDriverMessage = 20000;
  constexpr int kLastDriverMessage = 20099;
  return message.line == 0 && message.number >= kFirstDriverMessage &&
         message.number <= kLastDriverMessage;
}

bool IsNoise(const DiagnosticRecord& record) {
  const ServerMessage& message = record.message;
  // A remark of the driver on its own call, such as that a piece of a long value is not its end.
  const bool remark =
      record.sql_state.starts_with("01") && message.number == 0 && message.line == 0;
  return remark || message.number == kChangedDatabase || message.number == kChangedLanguage;
}

// "Unable to connect to data source", which says nothing beside the reason.
bool IsBareConnectFailure(const DiagnosticRecord& record) {
  return record.sql_state == "08001" && record.message.number == 0;
}

}  // namespace

std::vector<DiagnosticRecord> ReadDiagnostics(SQLSMALLINT type, SQLHANDLE handle) {
  std::vector<DiagnosticRecord> records;
  std::vector<SQLWCHAR> text(1024);
  for (SQLSMALLINT number = 1;; ++number) {
    SQLWCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const SQLRETURN code = SQLGetDiagRecW(type, handle, number, state, &native, text.data(),
                                          static_cast<SQLSMALLINT>(text.size()), &length);
    if (!SQL_SUCCEEDED(code)) break;
    if (static_cast<std::size_t>(length) >= text.size()) {
      text.resize(static_cast<std::size_t>(length) + 1);
      --number;
      continue;
    }
    DiagnosticRecord record;
    record.sql_state.assign(state, state + 5);
    record.message.number = native;
    record.message.text = WithoutPrefixes(Narrow(text, static_cast<std::size_t>(length)));
    record.message.severity = NumberField(type, handle, number, kSeverityField);
    record.message.line = NumberField(type, handle, number, kLineField);
    records.push_back(std::move(record));
  }
  RestoreOrder(records);
  return records;
}

Diagnosis Diagnose(const std::vector<DiagnosticRecord>& records, CallOutcome outcome) {
  Diagnosis diagnosis;
  std::vector<ServerMessage> bare_failures;
  for (const DiagnosticRecord& record : records) {
    const ServerMessage& message = record.message;
    if (IsNoise(record)) continue;
    const bool failed = outcome == CallOutcome::kFailed;
    if (failed && IsBareConnectFailure(record)) {
      bare_failures.push_back(message);
    } else if (!record.sql_state.starts_with("01") || (failed && FromDriver(message))) {
      diagnosis.errors.push_back(message);
    } else {
      diagnosis.information.push_back(message);
    }
  }
  if (outcome == CallOutcome::kFailed && diagnosis.errors.empty()) {
    diagnosis.errors =
        bare_failures.empty() ? std::exchange(diagnosis.information, {}) : std::move(bare_failures);
  }
  return diagnosis;
}

}  // namespace dbkeeper::odbc
