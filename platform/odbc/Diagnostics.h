// What the driver has to say about a call.
#pragma once

#include <sql.h>

#include <string>
#include <vector>

#include "app/session/Connection.h"

namespace dbkeeper::odbc {

struct DiagnosticRecord {
  std::string sql_state;
  ServerMessage message;
};

// All records of the handle's last call, in the order in which the server sent them.
std::vector<DiagnosticRecord> ReadDiagnostics(SQLSMALLINT type, SQLHANDLE handle);

// The records of a call, told apart and without the noise of a changed database or language.
struct Diagnosis {
  std::vector<ServerMessage> errors;
  std::vector<ServerMessage> information;
};

enum class CallOutcome { kSucceeded, kFailed };

Diagnosis Diagnose(const std::vector<DiagnosticRecord>& records, CallOutcome outcome);

}  // namespace dbkeeper::odbc
