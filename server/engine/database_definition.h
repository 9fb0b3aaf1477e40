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

  // Tells `sink` why the files cannot be as the statement wants them, before it throws SqlError.
  void Create(const CreateDatabaseStatement& statement, ResultSink& sink);
  void Drop(const std::string& name);
  // Takes a database file in that is there already. An empty `log` makes a new log file beside it.
  void Attach(const std::string& name, const std::string& data, const std::string& log,
              ResultSink& sink);
  // Lets a database go; its files stay where they are.
  void Detach(const std::string& name);
  // Gives back the room that the file does not need.
  void Shrink(const std::string& name);
  void Alter(const AlterDatabaseStatement& statement);

 private:
  // Sets or clears one option by its word ("READ_ONLY", "AUTO_SHRINK ON").
  void SetOption(const DatabaseInfo& database, const std::string& option);
  void NeedOwner(const DatabaseInfo& database);
  void NeedCreator();
  // Throws 3703 (or the number) when a session has the database as its current one.
  void NeedUnused(const DatabaseInfo& database, int number);
  // Throws 5009 when a file is to be changed that the database does not have.
  void NeedListedFile(const DatabaseInfo& database, const std::string& wanted);
  void NeedNoTransaction(std::string_view statement);

  Workspace& workspace_;
};

// Enters a database that has its files into master; one that is there already gets the new files
// and is online.
void Enlist(Workspace& workspace, int dbid, const NewDatabase& database,
            const DatabasePlace& place);
// Takes a database out of master; its files stay.
void Delist(Workspace& workspace, int dbid);

// Makes its row in sysdatabases, in the connection's master database.
void ListDatabase(Workspace& workspace, int dbid, const NewDatabase& database);

}  // namespace dbkeeper::server
