// The statements of a batch, one after the other, and what stands of them in sources of its own.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "server/engine/engine_session.h"

namespace dbkeeper::server {

// Whether it is a select into.
bool MakesTable(const SelectStatement& statement);

// All of these throw SqlError.

// Carries out one statement.
StatementEnd RunStatement(EngineSession& session, const Statement& statement,
                          const Execution& execution);

// BACKUP and RESTORE; they tell the cause of an error to `execution.sink` before. The number of
// rows sent; -1 when the statement sends none.
void RunBackup(EngineSession& session, const BackupStatement& statement,
               const Execution& execution);
std::int64_t RunRestore(EngineSession& session, const RestoreStatement& statement,
                        const Execution& execution);

// GRANT, DENY and REVOKE.
void ChangePermissions(const PermissionStatement& statement, Workspace& workspace,
                       Resolver& resolver);

// SET. Options that this server has no use for are taken without effect when their value asks for
// what it does anyway or for what only clients see; others are refused by name.
void ApplySetting(const SetStatement& statement, Workspace& workspace, Resolver& resolver);

// RAISERROR.
ServerMessage RaisedMessage(const RaiseErrorStatement& statement, QueryRunner& queries,
                            const Execution& execution);

// WAITFOR: "0:00:05" or "000:00:05.250".
std::chrono::milliseconds DelayOf(const std::string& text);

// A server-side cursor. Over a select that reads one table row by row it keeps the row ids (a
// keyset) and reads the rows when they are fetched; any other select is run once into a temporary
// table. Null when `text` is no single select. The session outlives the cursor.
std::unique_ptr<Cursor> OpenEngineCursor(EngineSession& session, std::string_view text);

}  // namespace dbkeeper::server
