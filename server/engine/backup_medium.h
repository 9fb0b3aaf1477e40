// The file of a backup medium: a database of SQLite with the backup sets, the files each of them
// tells of, and the blocks of its data. Descriptions and blocks have their checksums, so that one
// set can be read when another is damaged; a checksum of the whole file stands in the file's head.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "server/engine/database_files.h"
#include "server/engine/workspace.h"
#include "server/types/parameter.h"

namespace dbkeeper::server {

// A backup's place on this machine.
struct BackupPlace {
  std::string logical_name;  // of a device; empty for a file
  std::string physical_name;
  std::filesystem::path file;
};

struct BackupSet {
  std::int64_t position = 1;  // on its medium
  std::string family;         // of databases that are copies of each other; empty: unknown
  std::string database;
  std::int64_t data_size = 0;  // bytes
  std::vector<ListedFile> files;
  // What else the medium's table "sets" has of it, in the order of its columns; for writing.
  Parameters details;
};

// A medium that is there. What is not as it was written throws SqlError 3241.
class BackupMedium {
 public:
  // Reads the descriptions, not the data. Throws SqlError 3201 when the file cannot be read.
  explicit BackupMedium(const BackupPlace& place);

  std::string id() { return connection_.TextOf("select id from medium"); }
  std::int64_t set_count() { return connection_.IntegerOf(0, "select count(*) from sets"); }
  // Throws SqlError 3287 when there is none.
  BackupSet Set(std::int64_t position);
  SqliteConnection& tables() { return connection_; }

  // Both check every byte of the set, and throw SqlError 3617 when the session is interrupted.
  void Verify(Workspace& workspace, const BackupSet& set) {
    ReadBlocks(workspace, set, [](std::string_view) {});
  }
  // Makes the file with the data of the set.
  void Unpack(Workspace& workspace, const BackupSet& set, const std::filesystem::path& to);
  // Throws SqlError 3241.
  [[noreturn]] void Refuse() const;

 private:
  void CheckDescriptions();
  void ReadBlocks(Workspace& workspace, const BackupSet& set,
                  const std::function<void(std::string_view)>& take);

  const std::string physical_name_;
  SqliteConnection connection_;
};

// Writes the new file `to`: a medium with the id, the sets of the medium `earlier` unless that is
// empty, and the set with the bytes of `source`. Throws SqlError 3617.
void WriteBackup(Workspace& workspace, const std::filesystem::path& to,
                 const std::string& medium_id, const std::filesystem::path& earlier,
                 const BackupSet& set, const DatabaseBytes& source);

}  // namespace dbkeeper::server
