// Databases as a whole: made, dropped, renamed, their state changed.
#pragma once

#include <string>

#include "server/engine/workspace.h"
#include "server/sql/ast.h"

namespace dbkeeper::server {

// A database that is entered into sysdatabases.
struct NewDatabase {
  std::string name;
  std::string file_name;  // as sysdatabases shows it; empty: the file itself
  std::int64_t status = DatabaseStatus::kTruncateLog | DatabaseStatus::kTornPageDetection;
};

class DatabaseDefinition {
 public:
  explicit DatabaseDefinition(Workspace& workspace) : workspace_(workspace) {}

  void Create(const CreateDatabaseStatement& statement);
  void Drop(const std::string& name);
  void Alter(const AlterDatabaseStatement& statement);

  // Sets and clears one option by its word ("READ_ONLY", "AUTO_SHRINK ON"); false when there is
  // none of that word.
  bool SetOption(const DatabaseInfo& database, const std::string& option);

 private:
  void NeedOwner(const DatabaseInfo& database);
  void NeedNoTransaction(std::string_view statement);

  Workspace& workspace_;
};

// Makes the file of a database and its row in sysdatabases, in the connection's master database.
void MakeDatabase(Workspace& workspace, int dbid, const NewDatabase& database);

}  // namespace dbkeeper::server
