// Where the files of the databases are: paths as the server's clients write them, paths of this
// machine, and what is left to be removed after a crash.
#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "server/storage/sqlite.h"

namespace dbkeeper::server {

struct DatabasePlace {
  std::filesystem::path data;
  std::filesystem::path log;  // empty: SQLite's own log beside the data file
  std::string log_name;       // as clients see it
};

// Thread safe. Master keeps the places in a table of its own; here they are at hand.
class DatabasePlaces {
 public:
  explicit DatabasePlaces(const std::filesystem::path& folder);

  const std::filesystem::path& folder() const { return folder_; }

  // The file of this machine that a server path means. A path from the root ("/data\a.mdf", both
  // separators) is one of this machine; one with a drive ("C:\data\a.mdf") is kept in a folder for
  // the drive, and any other in the folder `home`, both within the instance's own folder.
  std::filesystem::path HostPath(std::string_view path, std::string_view home = "data") const;
  // Makes the folder of a file that HostPath has put within the instance's own folder.
  void MakeFolderOf(const std::filesystem::path& file) const;

  DatabasePlace Of(int dbid) const;
  void Set(int dbid, const DatabasePlace& place);
  void Forget(int dbid);
  // True when the file is the instance's own and no database's.
  bool IsOwn(const std::filesystem::path& file) const;

  // Reads the places from master, which gets the table when it has none, and removes what a crash
  // has left in the files of a database that was being made or removed.
  void Load(SqliteConnection& master);
  // In the master database of a session's connection, as part of its transaction.
  void Store(SqliteConnection& connection, int dbid, const DatabasePlace& place) const;
  void Erase(SqliteConnection& connection, int dbid) const;

 private:
  std::string Stored(const std::filesystem::path& path) const;

  const std::filesystem::path folder_;
  mutable std::mutex mutex_;
  std::map<int, DatabasePlace> places_;
};

// Files that are about to be made or removed, noted on the disk: when the process dies before the
// matter is settled, the next start removes those that belong to no database.
class PendingFiles {
 public:
  // The files go when they were to be made and the matter fails, or were to be removed and it is
  // done.
  enum class Purpose { kMake, kRemove };

  PendingFiles(const DatabasePlaces& places, std::vector<std::filesystem::path> files,
               Purpose purpose);
  ~PendingFiles();
  PendingFiles(const PendingFiles&) = delete;
  PendingFiles& operator=(const PendingFiles&) = delete;

  void Done() { done_ = true; }

 private:
  const std::vector<std::filesystem::path> files_;
  const std::filesystem::path note_;
  const Purpose purpose_;
  bool done_ = false;
};

}  // namespace dbkeeper::server
