#include "server/engine/database_files.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>
#include <thread>

#include "server/storage/host_file.h"
#include "server/types/messages.h"
#include "server/types/text.h"

namespace dbkeeper::server {

namespace {

constexpr std::int64_t kKilobyte = 1024;
constexpr std::int64_t kMegabyte = kKilobyte * kKilobyte;
constexpr std::int64_t kSmallestFile = 512 * kKilobyte;
constexpr std::int64_t kLargestFile = 32'000'000 * kMegabyte;
constexpr std::string_view kLogMark = "DB Keeper log file of ";

struct Measure {
  std::int64_t value = 0;  // bytes, or percents
  bool percent = false;
};

// "10", "10MB", "512 KB", "10%"; none for anything else.
std::optional<Measure> MeasureOf(const std::string& text) {
  struct Unit {
    std::string_view word;
    std::int64_t bytes;
  };
  constexpr Unit kUnits[] = {{"", kMegabyte},
                             {"KB", kKilobyte},
                             {"MB", kMegabyte},
                             {"GB", kMegabyte * kKilobyte},
                             {"%", 0}};
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || number < 0) return std::nullopt;
  std::string word;
  std::copy_if(stop, end, std::back_inserter(word), [](char c) { return c != ' '; });
  for (const Unit& unit : kUnits) {
    if (!SameName(unit.word, word)) continue;
    if (unit.bytes == 0) return Measure{number, true};
    if (number > kLargestFile / unit.bytes) return std::nullopt;
    return Measure{number * unit.bytes, false};
  }
  return std::nullopt;
}

// Gives the size the file starts with; 0 when nothing was said.
std::int64_t CheckMeasures(const DatabaseFile& file) {
  const auto measure = [&](const std::string& text) {
    const std::optional<Measure> found = MeasureOf(text);
    if (!found) throw MakeError(170, {text, "1"});
    return *found;
  };
  const Measure size = file.size.empty() ? Measure{} : measure(file.size);
  if (!file.size.empty() && (size.percent || size.value < kSmallestFile)) Fail(5174);
  const bool limited = !file.maximum_size.empty() && !SameName(file.maximum_size, "UNLIMITED");
  const Measure most = limited ? measure(file.maximum_size) : Measure{kLargestFile, false};
  if (most.percent || most.value < size.value) Fail(5103, {file.logical_name});
  const Measure growth = file.growth.empty() ? Measure{} : measure(file.growth);
  if (!growth.percent && growth.value > most.value) Fail(5169, {file.logical_name});
  return size.value;
}

// A new file: in a folder that is there, under a name that is free.
std::filesystem::path PlaceNewFile(Workspace& workspace, const std::string& text) {
  const DatabasePlaces& places = workspace.instance().places();
  std::filesystem::path file = places.HostPath(text);
  places.MakeFolderOf(file);
  std::error_code ignored;
  if (!file.has_filename() || !std::filesystem::is_directory(file.parent_path(), ignored)) {
    Fail(5105, {text});
  }
  if (IsTaken(workspace, file) || std::filesystem::exists(file, ignored)) Fail(5170, {text});
  return file;
}

// Reads something, for before that SQLite does not look for a log.
void OpenLog(SqliteConnection& connection) {
  connection.IntegerOf(0, "select count(*) from sqlite_schema");
}

// The file's path within the instance's data folder for a database without one of its own.
std::string DefaultFile(const DatabasePlaces& places, const std::string& database,
                        std::string_view ending) {
  std::string name = database;
  std::ranges::replace(name, '/', '_');
  std::ranges::replace(name, '\\', '_');
  return (places.folder() / "data" / (name + std::string(ending))).string();
}

}  // namespace

FileLabel ReadLabel(SqliteConnection& connection, const std::string& alias) {
  Catalog catalog(connection, alias);
  if (catalog.IntegerOf(0, "select 1 from {}sqlite_schema where name = '#label'") == 0) return {};
  SqliteStatement row = catalog.Prepare(
      "select family, data_name, log_name, data_bytes, log_bytes from {}\"#label\"");
  if (!row.Step()) return {};
  return {row.Text(0), row.Text(1), row.Text(2), row.Integer(3), row.Integer(4)};
}

bool IsDatabaseFile(const std::filesystem::path& file) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(file, ignored)) return false;
  try {
    SqliteConnection connection(file.string());
    return connection.IntegerOf(0,
                                "select count(*) from sqlite_schema where type = 'table' and name "
                                "in ('sysobjects', 'syscolumns', 'sysusers', '#identity')") == 4;
  } catch (const SqliteError&) {
    return false;
  }
}

FileLabel LabelOfFile(const std::filesystem::path& file) {
  SqliteConnection connection(file.string());
  return ReadLabel(connection, "main");
}

void LabelFile(const std::filesystem::path& file, const FileLabel& label) {
  SqliteConnection connection(file.string());
  connection.Execute(
      "begin immediate; create table if not exists \"#label\"(family blob, data_name text, "
      "log_name "
      "text, data_bytes integer, log_bytes integer); delete from \"#label\"");
  connection.Run("insert into \"#label\" values (?, ?, ?, ?, ?)", Cell(Blob{label.family}),
                 label.data_name, label.log_name, label.data_bytes, label.log_bytes);
  connection.Execute("commit");
}

std::vector<ListedFile> FilesOf(Workspace& workspace, const DatabaseInfo& database,
                                const std::string& alias) {
  const DatabasePlace place = workspace.instance().places().Of(database.dbid);
  const FileLabel label = ReadLabel(workspace.connection(), alias);
  const std::string data_text = workspace.connection().TextOf(
      "select filename from main.sysdatabases where dbid = ?1", database.dbid);
  const std::string wal = place.data.string() + "-wal";
  return {{label.data_name.empty() ? database.name + "_Data" : label.data_name, data_text, 'D',
           std::max(BytesOf(place.data), label.data_bytes)},
          {label.log_name.empty() ? database.name + "_Log" : label.log_name,
           place.log.empty() ? data_text + "-wal" : place.log_name, 'L',
           std::max(BytesOf(wal), label.log_bytes)}};
}

PlannedFiles PlanFiles(Workspace& workspace, const CreateDatabaseStatement& statement) {
  const DatabasePlaces& places = workspace.instance().places();
  if (statement.data_files.size() > 1 || statement.log_files.size() > 1) {
    throw Unsupported("databases of more than one data file and one log file");
  }
  PlannedFiles plan;
  plan.label.family = RandomBytes();
  DatabaseFile data = statement.data_files.empty() ? DatabaseFile{} : statement.data_files[0];
  DatabaseFile log = statement.log_files.empty() ? DatabaseFile{} : statement.log_files[0];
  if (data.logical_name.empty()) data.logical_name = statement.name;
  if (log.logical_name.empty()) log.logical_name = statement.name + "_log";
  if (SameName(data.logical_name, log.logical_name)) Fail(1828, {log.logical_name});
  plan.label.data_name = data.logical_name;
  plan.label.log_name = log.logical_name;
  plan.label.data_bytes = CheckMeasures(data);
  plan.label.log_bytes = CheckMeasures(log);
  if (data.file_name.empty()) data.file_name = DefaultFile(places, statement.name, ".mdf");
  if (log.file_name.empty()) log.file_name = DefaultFile(places, statement.name, "_log.ldf");
  plan.data_text = data.file_name;
  plan.place.data = PlaceNewFile(workspace, data.file_name);
  plan.place.log = PlaceNewFile(workspace, log.file_name);
  plan.place.log_name = log.file_name;
  if (plan.place.data == plan.place.log) Fail(5104, {log.file_name});
  return plan;
}

void MakeLogFile(const std::filesystem::path& file, const std::string& family) {
  HostFile log = HostFile::MakeOrOpen(file);
  log.Write(std::string(kLogMark) + FormatGuid(family) + "\n");
  log.EndHere();
  log.Sync();
  SyncFolder(file.parent_path());
}

std::string LogFileBeside(const std::string& data) {
  const std::size_t name = data.find_last_of("\\/") + 1;
  const std::size_t dot = data.rfind('.');
  return data.substr(0, dot == std::string::npos || dot < name ? data.size() : dot) + "_log.ldf";
}

void CheckLogFile(const std::filesystem::path& file, const std::string& family,
                  const std::string& text) {
  std::ifstream log(file, std::ios::binary);
  std::string line;
  if (!std::getline(log, line) || !line.starts_with(kLogMark)) Fail(5105, {text});
  if (line.substr(kLogMark.size()) != FormatGuid(family)) Fail(5173);
}

QuietFile::QuietFile(Workspace& workspace, const DatabaseInfo& database)
    : workspace_(workspace), connection_(workspace.instance().FileOf(database.dbid).string()) {
  const std::string wal = workspace.instance().FileOf(database.dbid).string() + "-wal";
  sqlite3* const handle = connection_.handle();
  sqlite3_busy_handler(handle, OnBusy, this);
  OpenLog(connection_);
  for (;;) {
    Check(sqlite3_wal_checkpoint_v2(handle, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr));
    Check(sqlite3_exec(handle, "begin immediate", nullptr, nullptr, nullptr));
    // A writer may have been quicker than the lock.
    if (BytesOf(wal) == 0) return;
    connection_.Execute("rollback");
    if (OnBusy(this, 0) == 0) Check(SQLITE_BUSY);
  }
}

int QuietFile::OnBusy(void* self, int) {
  constexpr auto kPause = std::chrono::milliseconds(5);
  const QuietFile& quiet = *static_cast<QuietFile*>(self);
  const auto limit = quiet.workspace_.LockTimeout();
  const bool late = limit.count() >= 0 && std::chrono::steady_clock::now() - quiet.start_ >= limit;
  if (late || quiet.workspace_.interrupted()) return 0;
  std::this_thread::sleep_for(kPause);
  return 1;
}

void QuietFile::Check(int code) const {
  if (code == SQLITE_OK) return;
  workspace_.StopIfInterrupted();
  if ((code & 0xFF) == SQLITE_BUSY) Fail(3101);
  throw SqliteError(connection_.handle());
}

DatabaseBytes::DatabaseBytes(const SqliteConnection& connection) {
  sqlite3_file_control(connection.handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file_);
}

std::int64_t DatabaseBytes::Size() const {
  sqlite3_int64 size = 0;
  if (file_->pMethods->xFileSize(file_, &size) != SQLITE_OK) {
    throw std::system_error(EIO, std::generic_category(), "size");
  }
  return size;
}

void DatabaseBytes::Read(std::int64_t offset, char* bytes, std::size_t count) const {
  if (file_->pMethods->xRead(file_, bytes, static_cast<int>(count), offset) != SQLITE_OK) {
    throw std::system_error(EIO, std::generic_category(), "read");
  }
}

std::optional<SqliteConnection> HoldFile(Workspace& workspace, const DatabaseInfo& database) {
  constexpr int kPatience = 200;  // milliseconds
  const std::string file = workspace.instance().FileOf(database.dbid).string();
  SqliteConnection writer(file);
  sqlite3_busy_timeout(writer.handle(), kPatience);
  if (sqlite3_exec(writer.handle(), "begin immediate", nullptr, nullptr, nullptr) != SQLITE_OK) {
    return std::nullopt;
  }
  // Nobody writes now.
  SqliteConnection reader(file);
  OpenLog(reader);
  int frames = 0;
  int folded = 0;
  const int code = sqlite3_wal_checkpoint_v2(reader.handle(), nullptr, SQLITE_CHECKPOINT_PASSIVE,
                                             &frames, &folded);
  if (code != SQLITE_OK || frames != folded) return std::nullopt;
  // A reader that finds nothing in the log but what is folded in reads the file alone, and keeps
  // everybody from folding in more.
  reader.Execute("begin");
  OpenLog(reader);
  return reader;
}

bool IsTaken(Workspace& workspace, const std::filesystem::path& file) {
  DatabasePlaces& places = workspace.instance().places();
  if (places.IsOwn(file)) return true;
  std::error_code ignored;
  SqliteStatement row = workspace.connection().Prepare("select dbid from main.sysdatabases");
  while (row.Step()) {
    const DatabasePlace place = places.Of(static_cast<int>(row.Integer(0)));
    // Two names may lead to one file.
    if (file == place.log ||
        (!place.log.empty() && std::filesystem::equivalent(file, place.log, ignored))) {
      return true;
    }
    for (const char* suffix : {"", "-wal", "-shm"}) {
      const std::filesystem::path own = place.data.string() + suffix;
      if (file == own || std::filesystem::equivalent(file, own, ignored)) return true;
    }
  }
  return false;
}

int FreeDatabaseId(Workspace& workspace) {
  int dbid = 1;
  while (workspace.LookUpDatabase(dbid)) ++dbid;
  return dbid;
}

}  // namespace dbkeeper::server
