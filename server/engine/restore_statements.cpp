// RESTORE: what a medium holds as rows, and whether it is whole.
#include <algorithm>
#include <cstdlib>

#include "server/engine/backup_statements.h"
#include "server/engine/error_chain.h"
#include "server/engine/statements.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kReadError = 3203;

// Sends the rows of a query of the medium; `columns` declares them as a table would.
std::int64_t SendRows(ResultSink& sink, std::string_view columns, SqliteStatement rows) {
  sink.OnColumns(DeclaredColumns(columns));
  std::int64_t count = 0;
  while (rows.Step()) {
    ++count;
    if (!sink.OnRow(StatementRow(rows))) break;
  }
  return count;
}

std::int64_t SendHeaders(BackupMedium& medium, ResultSink& sink) {
  // The server's log has no counterpart here, so there are no places in it to give.
  return SendRows(sink,
                  "BackupName nvarchar(128), BackupDescription nvarchar(255), BackupType smallint, "
                  "ExpirationDate datetime, Compressed tinyint, Position smallint, "
                  "DeviceType tinyint, UserName nvarchar(128), ServerName nvarchar(128), "
                  "DatabaseName nvarchar(128), DatabaseVersion int, DatabaseCreationDate datetime, "
                  "BackupSize numeric(20,0), FirstLSN numeric(25,0), LastLSN numeric(25,0), "
                  "CheckpointLSN numeric(25,0), DatabaseBackupLSN numeric(25,0), "
                  "BackupStartDate datetime, BackupFinishDate datetime, SortOrder smallint, "
                  "CodePage smallint, UnicodeLocaleId int, UnicodeComparisonStyle int, "
                  "CompatibilityLevel tinyint, SoftwareVendorId int, SoftwareVersionMajor int, "
                  "SoftwareVersionMinor int, SoftwareVersionBuild int, MachineName nvarchar(128), "
                  "Flags int, BindingID uniqueidentifier, RecoveryForkID uniqueidentifier, "
                  "Collation nvarchar(128)",
                  medium.tables().Prepare(
                      "select nullif(name, ''), nullif(description, ''), 1, null, 0, position, 2, "
                      "user_name, server_name, database_name, 539, database_creation_date, "
                      "cast(backup_size as text), null, null, null, null, backup_start_date, "
                      "backup_finish_date, 0, 932, 1041, 0, 80, 0, 8, 0, 0, machine_name, 0, "
                      "nullif(family, x''), nullif(family, x''), 'Japanese_CI_AS' from sets order "
                      "by position"));
}

std::int64_t SendFileList(BackupMedium& medium, const BackupSet& set, ResultSink& sink) {
  // The last column is what the server gives for a file without a limit: 2^31 pages less one.
  return SendRows(sink,
                  "LogicalName nvarchar(128), PhysicalName nvarchar(260), Type char(1), "
                  "FileGroupName nvarchar(128), Size numeric(20,0), MaxSize numeric(20,0)",
                  medium.tables().Prepare(
                      "select logical_name, physical_name, type, case type when 'D' then 'PRIMARY' "
                      "end, cast(size as text), '35184372080640' from files where position = ?1 "
                      "order by number",
                      set.position));
}

// The position of the option FILE, else the first.
std::int64_t PositionOf(const std::vector<BackupOption>& options) {
  std::int64_t position = 1;
  for (const BackupOption& option : options) {
    if (option.name == "FILE") position = std::strtoll(option.value.c_str(), nullptr, 10);
  }
  return position;
}

}  // namespace

std::int64_t RunRestore(EngineSession& session, const RestoreStatement& statement,
                        const Execution& execution) {
  struct Kind {
    RestoreKind kind;
    std::string_view words;
  };
  constexpr Kind kKinds[] = {{RestoreKind::kDatabase, "RESTORE DATABASE"},
                             {RestoreKind::kHeaderOnly, "RESTORE HEADERONLY"},
                             {RestoreKind::kFileListOnly, "RESTORE FILELIST"},
                             {RestoreKind::kVerifyOnly, "VERIFY DATABASE"}};
  const auto* kind = std::ranges::find(kKinds, statement.kind, &Kind::kind);
  if (kind == std::end(kKinds)) throw Unsupported("restore of logs and labels");
  ResultSink& sink = execution.sink;
  std::int64_t rows = -1;
  RunChained({sink, MakeMessage(3013, {kind->words}), kReadError}, [&] {
    BackupMedium medium(PlaceOf(session.workspace(), statement.devices));
    if (statement.kind == RestoreKind::kHeaderOnly) {
      rows = SendHeaders(medium, sink);
      return;
    }
    const BackupSet set = medium.Set(PositionOf(statement.options));
    if (statement.kind == RestoreKind::kFileListOnly) {
      rows = SendFileList(medium, set, sink);
    } else if (statement.kind == RestoreKind::kVerifyOnly) {
      medium.Verify(session.workspace(), set);
      sink.OnMessage(MakeMessage(3262));
    } else {
      RestoreDatabase(session, statement, medium, set, sink);
    }
  });
  return rows;
}

}  // namespace dbkeeper::server
