// The files of a database as a whole: checked, made known, folded, let go.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "server/engine/database_places.h"
#include "server/engine/workspace.h"
#include "server/sql/ast.h"

namespace dbkeeper::server {

// A file of a database, as its catalog lists it or as it was when it was backed up.
struct ListedFile {
  std::string logical_name;
  std::string physical_name;
  char type = 'D';  // 'D' data, 'L' log
  std::int64_t bytes = 0;
};

// What a database's own file says of itself, so that it goes along with a copy of it.
struct FileLabel {
  std::string family;  // 16 bytes, the same in all copies of the database
  std::string data_name;
  std::string log_name;
  std::int64_t data_bytes = 0;  // as the database was created with; its file grows from less
  std::int64_t log_bytes = 0;
};

// Of the database `alias` of the connection; all empty when it has none.
FileLabel ReadLabel(SqliteConnection& connection, const std::string& alias);

// True when the database file can be opened and is a database of this server.
bool IsDatabaseFile(const std::filesystem::path& file);
FileLabel LabelOfFile(const std::filesystem::path& file);
void LabelFile(const std::filesystem::path& file, const FileLabel& label);

// The data file and the log of an open database (its alias in the workspace's connection).
std::vector<ListedFile> FilesOf(Workspace& workspace, const DatabaseInfo& database,
                                const std::string& alias);

// Where a new database goes, and what it says of itself. Throws SqlError 5103, 5104, 5105, 5169,
// 5170, 5174, 1828.
struct PlannedFiles {
  DatabasePlace place;
  std::string data_text;  // as sysdatabases shows it
  FileLabel label;
};
PlannedFiles PlanFiles(Workspace& workspace, const CreateDatabaseStatement& statement);

// Writes the log file that stands beside the data file. It holds no data: it says which database
// it belongs to. At no moment is a log file gone that was there before.
void MakeLogFile(const std::filesystem::path& file, const std::string& family);
// The log file, as a path of either kind, that goes with a data file when nobody names one.
std::string LogFileBeside(const std::string& data);
// Throws SqlError 5105, 5173.
void CheckLogFile(const std::filesystem::path& file, const std::string& family,
                  const std::string& text);

// Keeps writers out of a database file, all of whose log is folded in. The file is as good as a
// copy while this lives. Throws SqlError 3101 when somebody reads or writes for longer than the
// session waits for a lock, 3617 when it is interrupted.
class QuietFile {
 public:
  QuietFile(Workspace& workspace, const DatabaseInfo& database);
  QuietFile(const QuietFile&) = delete;
  QuietFile& operator=(const QuietFile&) = delete;

 private:
  static int OnBusy(void* self, int calls);
  void Check(int code) const;

  Workspace& workspace_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  SqliteConnection connection_;
};

// Reads the bytes of a database file through the connection that has it open: a descriptor of our
// own would take SQLite's locks with it when it is closed.
class DatabaseBytes {
 public:
  explicit DatabaseBytes(const SqliteConnection& connection);

  // Both throw std::system_error.
  std::int64_t Size() const;
  void Read(std::int64_t offset, char* bytes, std::size_t count) const;

 private:
  sqlite3_file* file_ = nullptr;
};

// The file of a database as it is at this moment, its log folded in, and as it stays while this
// lives: what others write stays in the log. None when somebody reads an earlier state or writes
// for long, for then the log cannot be folded in.
std::optional<SqliteConnection> HoldFile(Workspace& workspace, const DatabaseInfo& database);

// True when the file is one of a database's or of the instance itself.
bool IsTaken(Workspace& workspace, const std::filesystem::path& file);

// Lowest free database id for a new database.
int FreeDatabaseId(Workspace& workspace);

}  // namespace dbkeeper::server
