// The contents of the sample databases, as batches of the dialect.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper::server {

struct SampleDatabase {
  int dbid;
  std::string_view name;
};

std::span<const SampleDatabase> SampleDatabases();

// Run in order by a system administrator; they change the database themselves.
std::vector<std::string> SampleBatches();

}  // namespace dbkeeper::server
