// BACKUP DATABASE and what RESTORE reads of a medium.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "server/engine/backup_file.h"
#include "server/engine/engine_session.h"
#include "server/sql/ast.h"

namespace dbkeeper::server {

// All of these throw SqlError; they tell the cause to `execution.sink` before.
void RunBackup(EngineSession& session, const BackupStatement& statement,
               const Execution& execution);
// The number of rows sent; -1 when the statement sends none.
std::int64_t RunRestore(EngineSession& session, const RestoreStatement& statement,
                        const Execution& execution);

// A backup's place on this machine.
struct BackupPlace {
  std::string logical_name;  // of a device; empty for a file
  std::string physical_name;
  std::filesystem::path file;
};
// Throws SqlError 3206.
BackupPlace PlaceOf(EngineSession& session, const std::vector<BackupDevice>& devices);

// Throws SqlError 3201, 3241.
BackupMedium ReadMedium(const BackupPlace& place);
// The set at the position of the option FILE, else the first. Throws SqlError 3287.
const BackupSet& SelectedSet(const BackupMedium& medium, const BackupPlace& place,
                             const std::vector<BackupOption>& options);

// Restores the database of the set under the statement's name.
void RestoreDatabase(EngineSession& session, const RestoreStatement& statement,
                     const BackupPlace& place, const BackupSet& set, ResultSink& sink);

// Pages of 8 KB, and the message on how many were processed in the time.
std::int64_t ServerPages(std::int64_t bytes);
void TellProcessed(ResultSink& sink, const std::string& database, const BackupHeader& header,
                   std::int64_t position);
void TellFinished(ResultSink& sink, std::string_view verb, std::int64_t bytes, double seconds);

// Copies a database file as it is at one moment while others read and write it. False when it was
// asked to stop.
bool CopyDatabase(const std::filesystem::path& from, const std::filesystem::path& to,
                  const KeepGoing& keep_going);

}  // namespace dbkeeper::server
