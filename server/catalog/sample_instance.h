// The instance that a new folder starts with: the system databases and some to look at.
#pragma once

#include "server/engine/instance.h"
#include "server/engine/instance_state.h"

namespace dbkeeper::server {

// Makes it beside the final place and moves master in last, so that a torn set-up is made again.
// Throws SqlError, SqliteError, std::filesystem::filesystem_error.
void MakeSampleInstance(const InstanceOptions& options);

// tempdb starts empty with each start of the server.
void RenewTemporaryDatabase(InstanceState& state);

}  // namespace dbkeeper::server
