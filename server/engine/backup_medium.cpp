#include "server/engine/backup_medium.h"

#include <xxhash.h>

#include <algorithm>
#include <cstring>
#include <system_error>

#include "server/storage/host_file.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr std::size_t kBlockSize = 1 << 20;
// Blocks of one set follow one another: their ids count from the set's position times this.
constexpr std::int64_t kMostBlocks = std::int64_t{1} << 32;

// SQLite's head has the number of pages, a number that says whose file it is, and one for the
// user, which is the checksum here: the bytes of the file with zeros in this place.
constexpr std::size_t kHeadSize = 100;
constexpr std::size_t kPageCountPlace = 28;
constexpr std::size_t kSumPlace = 60;
constexpr std::size_t kOwnerPlace = 68;
constexpr std::uint32_t kOwner = 0x44424B42;
constexpr std::int64_t kPageSize = 65536;

constexpr const char* kTables = R"(
pragma page_size = 65536; pragma application_id = 0x44424B42;
pragma journal_mode = off; pragma synchronous = off;
create table medium(id blob);
create table sets(position integer primary key, family blob, database_name text,
  backup_size integer, sum integer, backup_set_uuid blob, name text, description text,
  user_name text, server_name text, machine_name text, database_creation_date integer,
  backup_start_date integer, backup_finish_date integer);
create table files(position integer, number integer, type text, logical_name text,
  physical_name text, size integer);
create table blocks(id integer primary key, bytes blob, sum integer))";

// All that the medium says of a set.
constexpr const char* kDescription = R"(
select quote(medium.id) || quote(position) || quote(family) || quote(database_name) ||
  quote(backup_size) || quote(backup_set_uuid) || quote(name) || quote(description) ||
  quote(user_name) || quote(server_name) || quote(machine_name) || quote(database_creation_date) ||
  quote(backup_start_date) || quote(backup_finish_date) || (select group_concat(quote(number) ||
    quote(type) || quote(logical_name) || quote(physical_name) || quote(size))
    from files where files.position = sets.position)
from medium, sets where position = ?1)";

std::int64_t Add(std::int64_t sum, std::string_view bytes) {
  return static_cast<std::int64_t>(
      XXH3_64bits_withSeed(bytes.data(), bytes.size(), static_cast<std::uint64_t>(sum)));
}

std::int64_t BlockSum(std::int64_t description_sum, std::int64_t number, std::string_view bytes) {
  return Add(description_sum ^ number, bytes);
}

std::int64_t DescriptionSum(SqliteConnection& medium, std::int64_t position) {
  return Add(0, medium.TextOf(kDescription, position));
}

std::uint32_t NumberAt(std::string_view head, std::size_t place) {
  std::uint32_t number = 0;
  for (const char c : head.substr(place, 4)) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

// The checksum that belongs into the head of the file.
std::uint32_t SumOf(Workspace& workspace, const DatabaseBytes& file) {
  std::string block(kBlockSize, '\0');
  std::int64_t sum = 0;
  const std::int64_t size = file.Size();
  for (std::int64_t offset = 0; offset < size; offset += kBlockSize) {
    workspace.StopIfInterrupted();
    block.resize(std::min<std::size_t>(kBlockSize, static_cast<std::size_t>(size - offset)));
    file.Read(offset, block.data(), block.size());
    if (offset == 0) std::fill_n(block.begin() + kSumPlace, 4, '\0');
    sum = Add(sum, block);
  }
  return static_cast<std::uint32_t>(sum);
}

void CopySets(Workspace& workspace, SqliteConnection& medium) {
  medium.Execute(
      "insert into sets select * from earlier.sets; insert into files select * from "
      "earlier.files");
  SqliteStatement id = medium.Prepare("select id from earlier.blocks");
  while (id.Step()) {
    workspace.StopIfInterrupted();
    medium.Run("insert into blocks select * from earlier.blocks where id = ?", id.Integer(0));
  }
}

void Describe(SqliteConnection& medium, const BackupSet& set) {
  SqliteStatement row =
      medium.Prepare("insert into sets values (?, ?, ?, ?, 0, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     set.position, Cell(Blob{set.family}), set.database, set.data_size);
  int column = 4;
  for (const Parameter& detail : set.details) row.Bind(++column, detail.value);
  row.Step();
  std::int64_t number = 0;
  for (const ListedFile& file : set.files) {
    medium.Run("insert into files values (?, ?, ?, ?, ?, ?)", set.position, ++number,
               std::string(1, file.type), file.logical_name, file.physical_name, file.bytes);
  }
  medium.Run("update sets set sum = ?1 where position = ?2", DescriptionSum(medium, set.position),
             set.position);
}

void WriteBlocks(Workspace& workspace, SqliteConnection& medium, const BackupSet& set,
                 const DatabaseBytes& source) {
  SqliteStatement insert = medium.Prepare("insert into blocks values (?, ?, ?)");
  const std::int64_t description = DescriptionSum(medium, set.position);
  std::string block(kBlockSize, '\0');
  std::int64_t number = 0;
  for (std::int64_t offset = 0; offset < set.data_size; offset += kBlockSize) {
    workspace.StopIfInterrupted();
    const auto left = static_cast<std::size_t>(set.data_size - offset);
    block.resize(std::min(left, kBlockSize));
    source.Read(offset, block.data(), block.size());
    insert.Reset();
    insert.Bind(1, set.position * kMostBlocks + number);
    insert.BindBytes(2, block);
    insert.Bind(3, BlockSum(description, number++, block));
    insert.Step();
  }
}

}  // namespace

BackupMedium::BackupMedium(const BackupPlace& place)
    : physical_name_(place.physical_name), connection_([&] {
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(place.file, ignored)) {
          Fail(3201, {place.physical_name});
        }
        try {
          return SqliteConnection(FileUri(place.file, "mode=ro"));
        } catch (const SqliteError&) {
          Fail(3201, {place.physical_name});
        }
      }()) {
  try {
    CheckDescriptions();
  } catch (const SqliteError&) {
    Refuse();
  } catch (const std::system_error&) {
    Refuse();
  }
}

void BackupMedium::Refuse() const { Fail(3241, {physical_name_}); }

void BackupMedium::CheckDescriptions() {
  const DatabaseBytes file(connection_);
  std::string head(kHeadSize, '\0');
  file.Read(0, head.data(), head.size());
  const std::int64_t size = NumberAt(head, kPageCountPlace) * kPageSize;
  if (NumberAt(head, kOwnerPlace) != kOwner || file.Size() != size) Refuse();
  const std::int64_t count = set_count();
  if (count == 0) Refuse();
  for (std::int64_t position = 1; position <= count; ++position) {
    const std::int64_t sum =
        connection_.IntegerOf(-1, "select sum from sets where position = ?1", position);
    if (sum != DescriptionSum(connection_, position)) Refuse();
  }
}

BackupSet BackupMedium::Set(std::int64_t position) {
  SqliteStatement row = connection_.Prepare(
      "select position, family, database_name, backup_size from sets where position = ?1",
      position);
  if (!row.Step()) Fail(3287, {std::to_string(position), physical_name_});
  BackupSet set{row.Integer(0), row.Text(1), row.Text(2), row.Integer(3), {}, {}};
  SqliteStatement file = connection_.Prepare(
      "select logical_name, physical_name, type, size from files where position = ?1 order by "
      "number",
      position);
  while (file.Step()) {
    if (file.Bytes(2).size() != 1) Refuse();
    set.files.push_back({file.Text(0), file.Text(1), file.Bytes(2).front(), file.Integer(3)});
  }
  return set;
}

void BackupMedium::ReadBlocks(Workspace& workspace, const BackupSet& set,
                              const std::function<void(std::string_view)>& take) {
  const std::int64_t description = DescriptionSum(connection_, set.position);
  std::int64_t number = 0;
  std::int64_t size = 0;
  try {
    // What nobody reads is as it was written, too, when there is no other set that may be damaged.
    if (set_count() == 1 &&
        SumOf(workspace, DatabaseBytes(connection_)) !=
            static_cast<std::uint32_t>(connection_.IntegerOf(0, "pragma user_version"))) {
      Refuse();
    }
    SqliteStatement block =
        connection_.Prepare("select bytes, sum from blocks where id >= ?1 and id < ?2 order by id",
                            set.position * kMostBlocks, (set.position + 1) * kMostBlocks);
    while (block.Step()) {
      workspace.StopIfInterrupted();
      if (BlockSum(description, number++, block.Bytes(0)) != block.Integer(1)) Refuse();
      take(block.Bytes(0));
      size += static_cast<std::int64_t>(block.Bytes(0).size());
    }
  } catch (const SqliteError&) {
    Refuse();
  }
  if (size != set.data_size) Refuse();
}

void BackupMedium::Unpack(Workspace& workspace, const BackupSet& set,
                          const std::filesystem::path& to) {
  HostFile target = HostFile::Make(to);
  ReadBlocks(workspace, set, [&](std::string_view bytes) { target.Write(bytes); });
  target.Sync();
}

void WriteBackup(Workspace& workspace, const std::filesystem::path& to,
                 const std::string& medium_id, const std::filesystem::path& earlier,
                 const BackupSet& set, const DatabaseBytes& source) {
  SqliteConnection medium(to.string());
  medium.Execute(kTables);
  if (!earlier.empty()) medium.Run("attach ?1 as earlier", FileUri(earlier, "mode=ro"));
  medium.Execute("begin");
  medium.Run("insert into medium values (?1)", Cell(Blob{medium_id}));
  if (!earlier.empty()) CopySets(workspace, medium);
  Describe(medium, set);
  WriteBlocks(workspace, medium, set, source);
  medium.Execute("commit");
  const std::uint32_t sum = SumOf(workspace, DatabaseBytes(medium));
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(sum >> shift);
  HostFile file = HostFile::MakeOrOpen(to);
  file.Seek(kSumPlace);
  file.Write(bytes);
  file.Sync();
}

}  // namespace dbkeeper::server
