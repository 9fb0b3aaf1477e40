// The file of a backup medium: a head, then one backup set after the other. A set is its
// description, the database file in blocks, and an end mark; every byte is under a checksum.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper::server {

// A file of the database as it was when it was backed up.
struct BackedUpFile {
  std::string logical_name;
  std::string physical_name;
  char type = 'D';  // 'D' data, 'L' log
  std::int64_t size = 0;
};

// Times are in the storage form of datetime; ids are 16 bytes.
struct BackupHeader {
  std::string set_id;
  std::string family;  // of databases that are copies of each other; empty: unknown
  std::string database;
  std::string name;
  std::string description;
  std::string user;
  std::string server;
  std::string machine;
  std::int64_t created = 0;  // the database
  std::int64_t started = 0;
  std::int64_t finished = 0;
  std::vector<BackedUpFile> files;
  std::int64_t data_size = 0;  // bytes
};

struct BackupSet {
  BackupHeader header;
  std::int64_t data_offset = 0;
  std::uint64_t seed = 0;  // of the checksums of its blocks
};

struct BackupMedium {
  std::string id;
  std::vector<BackupSet> sets;  // positions count from 1
  std::int64_t size = 0;        // bytes
};

// What is there is no backup medium, or no longer a whole one.
class MalformedBackup : public std::runtime_error {
 public:
  MalformedBackup() : std::runtime_error("malformed backup") {}
};

// False asks to stop.
using KeepGoing = std::function<bool()>;

// Reads the head and the descriptions, not the data. Throws std::system_error, MalformedBackup.
BackupMedium ReadBackupMedium(const std::filesystem::path& path);

// Gives the database file of a set part by part. Throws MalformedBackup at the first wrong byte;
// false when it was asked to stop.
bool ReadBackupData(const std::filesystem::path& path, const BackupSet& set,
                    const std::function<void(std::string_view)>& take, const KeepGoing& keep_going);

// Fills `bytes` from the offset of the file that is backed up.
using ReadAt = std::function<void(std::int64_t offset, char* bytes, std::size_t count)>;

// Writes the new file `path`: a medium with the id, the sets of the medium `earlier` unless that is
// empty, and the set of `header` with the bytes that it tells the number of. False when it was
// asked to stop.
bool WriteBackup(const std::filesystem::path& path, const std::string& medium_id,
                 const std::filesystem::path& earlier, const BackupHeader& header,
                 const ReadAt& read, const KeepGoing& keep_going);

}  // namespace dbkeeper::server
