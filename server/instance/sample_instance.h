// The instance that a new folder starts with: the system databases and some to look at.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/instance.h"
#include "server/engine/instance_state.h"

namespace dbkeeper::server {

// The contents of the sample databases. The batches are run in order by a system administrator;
// they change the database themselves.
struct SampleDatabase {
  int dbid;
  std::string_view name;
};
std::span<const SampleDatabase> SampleDatabases();
std::vector<std::string> SampleBatches();

// Makes it beside the final place and moves master in last, so that a torn set-up is made again.
// Throws SqlError, SqliteError, std::filesystem::filesystem_error.
void MakeSampleInstance(const InstanceOptions& options);

// Whether the folder has one: master comes last into it.
bool HoldsInstance(const InstanceState& state);

// tempdb starts empty with each start of the server.
void RenewTemporaryDatabase(InstanceState& state);

}  // namespace dbkeeper::server
