// What BACKUP DATABASE and RESTORE share.
#pragma once

#include <string>
#include <vector>

#include "server/engine/backup_medium.h"
#include "server/engine/engine_session.h"
#include "server/sql/ast.h"

namespace dbkeeper::server {

// Throws SqlError 3206.
BackupPlace PlaceOf(Workspace& workspace, const std::vector<BackupDevice>& devices);

// Restores the database of the set under the statement's name.
void RestoreDatabase(EngineSession& session, const RestoreStatement& statement,
                     BackupMedium& medium, const BackupSet& set, ResultSink& sink);

// The messages on how many pages were processed, and in which time.
void TellProcessed(ResultSink& sink, const std::string& database, const BackupSet& set);
void TellFinished(ResultSink& sink, std::string_view verb, std::int64_t bytes, double seconds);

}  // namespace dbkeeper::server
