#include "server/engine/database_places.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "server/storage/host_file.h"

namespace dbkeeper::server {

namespace {

constexpr std::string_view kNotePrefix = "pending-";

bool HasDrive(std::string_view path) {
  const auto is_letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  return path.size() > 1 && is_letter(path[0]) && path[1] == ':';
}

std::vector<std::filesystem::path> FilesOfNote(const std::filesystem::path& note) {
  std::ifstream file(note, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::filesystem::path> files;
  std::size_t begin = 0;
  // A note that was cut short names nothing that could be there already.
  for (std::size_t end = text.find('\0'); end != std::string::npos; end = text.find('\0', begin)) {
    files.emplace_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return files;
}

}  // namespace

DatabasePlaces::DatabasePlaces(const std::filesystem::path& folder)
    : folder_((std::filesystem::absolute(folder) / "").lexically_normal().parent_path()) {}

std::filesystem::path DatabasePlaces::HostPath(std::string_view path, std::string_view home) const {
  std::string text(path);
  std::ranges::replace(text, '\\', '/');
  if (text.starts_with('/')) return std::filesystem::path(text).lexically_normal();
  if (!HasDrive(text)) return (folder_ / home / text).lexically_normal();
  const std::string drive(1, static_cast<char>(text[0] & ~0x20));
  text.erase(0, 2);
  text.erase(0, std::min(text.find_first_not_of('/'), text.size()));
  return (folder_ / "drives" / drive / text).lexically_normal();
}

void DatabasePlaces::MakeFolderOf(const std::filesystem::path& file) const {
  const std::filesystem::path inside = file.lexically_relative(folder_);
  if (inside.empty() || inside.begin()->string() == "..") return;
  std::error_code ignored;
  std::filesystem::create_directories(file.parent_path(), ignored);
}

DatabasePlace DatabasePlaces::Of(int dbid) const {
  const std::scoped_lock lock(mutex_);
  const auto found = places_.find(dbid);
  if (found != places_.end()) return found->second;
  return {.data = folder_ / ("db" + std::to_string(dbid) + ".sqlite"), .log = {}, .log_name = {}};
}

void DatabasePlaces::Set(int dbid, const DatabasePlace& place) {
  const std::scoped_lock lock(mutex_);
  places_[dbid] = place;
}

void DatabasePlaces::Forget(int dbid) {
  const std::scoped_lock lock(mutex_);
  places_.erase(dbid);
}

bool DatabasePlaces::IsOwn(const std::filesystem::path& file) const {
  const std::string name = file.filename().string();
  return file.parent_path() == folder_ && (name == "lock" || name.starts_with(kNotePrefix));
}

std::string DatabasePlaces::Stored(const std::filesystem::path& path) const {
  // Files within the instance's folder move with it.
  const std::filesystem::path inside = path.lexically_relative(folder_);
  if (inside.empty() || inside.begin()->string() == "..") return path.string();
  return inside.string();
}

void DatabasePlaces::Load(SqliteConnection& master) {
  master.Execute(
      "create table if not exists \"#places\"(dbid integer primary key, data text, log text, "
      "log_name text)");
  SqliteStatement row = master.Prepare(
      "select p.dbid, data, log, log_name from \"#places\" p join sysdatabases d on d.dbid = "
      "p.dbid");
  while (row.Step()) {
    const std::string log = row.Text(2);
    Set(static_cast<int>(row.Integer(0)),
        {.data = folder_ / row.Text(1),
         .log = log.empty() ? std::filesystem::path() : folder_ / log,
         .log_name = row.Text(3)});
  }
  for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
    if (!entry.path().filename().string().starts_with(kNotePrefix)) continue;
    for (const std::filesystem::path& file : FilesOfNote(entry.path())) {
      const bool listed = master.IntegerOf(0,
                                           "select count(*) from sysdatabases where dbid not in "
                                           "(select dbid from \"#places\") and ?1 = ?2 || dbid || "
                                           "'.sqlite'",
                                           file.string(), (folder_ / "db").string()) > 0;
      const std::scoped_lock lock(mutex_);
      const bool used = std::ranges::any_of(places_, [&](const auto& place) {
        return file == place.second.data || file == place.second.log;
      });
      if (!listed && !used) RemoveWithLogs(file);
    }
    std::filesystem::remove(entry.path());
  }
}

void DatabasePlaces::Store(SqliteConnection& connection, int dbid,
                           const DatabasePlace& place) const {
  connection.Run("insert or replace into main.\"#places\" values (?1, ?2, ?3, ?4)", dbid,
                 Stored(place.data), place.log.empty() ? std::string() : Stored(place.log),
                 place.log_name);
}

void DatabasePlaces::Erase(SqliteConnection& connection, int dbid) const {
  connection.Run("delete from main.\"#places\" where dbid = ?1", dbid);
}

PendingFiles::PendingFiles(const DatabasePlaces& places, std::vector<std::filesystem::path> files,
                           Purpose purpose)
    : files_(std::move(files)),
      note_(places.folder() / (std::string(kNotePrefix) + RandomName())),
      purpose_(purpose) {
  std::string text;
  for (const std::filesystem::path& file : files_) text += file.string() + '\0';
  HostFile note = HostFile::Make(note_);
  note.Write(text);
  note.Sync();
  SyncFolder(places.folder());
}

PendingFiles::~PendingFiles() {
  if (done_ == (purpose_ == Purpose::kRemove)) {
    for (const std::filesystem::path& file : files_) RemoveWithLogs(file);
  }
  std::error_code ignored;
  std::filesystem::remove(note_, ignored);
}

}  // namespace dbkeeper::server
