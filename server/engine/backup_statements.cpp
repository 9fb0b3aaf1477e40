#include "server/engine/backup_statements.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <system_error>
#include <thread>

#include "server/engine/database_files.h"
#include "server/engine/error_chain.h"
#include "server/engine/statements.h"
#include "server/storage/host_file.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kTempdb = 2;
constexpr int kWriteError = 3202;

// Options that change nothing here: what they ask for is done anyway or concerns tapes.
constexpr std::string_view kIdleOptions =
    "NOINIT NOFORMAT SKIP NOSKIP STATS NOUNLOAD UNLOAD NOREWIND REWIND RESTART BLOCKSIZE";

struct BackupOptions {
  std::string name;
  std::string description;
  bool format = false;
  bool init = false;
};

std::int64_t PagesOf(const BackupSet& set, const ListedFile& file) {
  return file.type == 'D' ? ServerPages(set.data_size) : 0;
}

BackupOptions OptionsOf(const BackupStatement& statement) {
  BackupOptions options;
  for (const BackupOption& option : statement.options) {
    if (option.name == "NAME") {
      options.name = option.value;
    } else if (option.name == "DESCRIPTION") {
      options.description = option.value;
    } else if (option.name == "FORMAT") {
      options.format = true;
    } else if (option.name == "INIT") {
      options.init = true;
    } else if (!HasWord(kIdleOptions, option.name)) {
      throw Unsupported("backup with " + option.name);
    }
  }
  return options;
}

Parameter Text(std::string name, const std::string& text) {
  constexpr int kWidest = 4000;
  return {std::move(name), {.id = TypeId::kNVarChar, .length = kWidest}, text};
}
Parameter Number(std::string name, std::int64_t value) {
  return {std::move(name), {.id = TypeId::kBigInt}, value};
}
Parameter Time(std::string name, std::int64_t value) {
  return {std::move(name), {.id = TypeId::kDateTime}, value};
}
Parameter Id(std::string name, const std::string& bytes) {
  return {std::move(name), {.id = TypeId::kUniqueIdentifier}, Blob{bytes}};
}

// Runs an insert of the dialect and gives the number of the row.
std::int64_t Insert(EngineSession& session, std::string_view text, const Parameters& values) {
  QuietSink sink;
  session.RunInside(text, values, sink);
  return session.workspace().last_identity.value_or(0);
}

std::int64_t MediaSetOf(EngineSession& session, const BackupPlace& place,
                        const std::string& medium_id) {
  const std::int64_t known = session.workspace().CatalogOf("msdb").IntegerOf(
      0, "select max(media_set_id) from {}backupmediaset where media_uuid = ?1",
      Cell(Blob{medium_id}));
  if (known != 0) return known;
  const std::int64_t id =
      Insert(session,
             "insert msdb.dbo.backupmediaset (media_uuid, media_family_count, software_name, "
             "software_vendor_id, MTF_major_version) values (@medium, 1, N'DB Keeper', 0, 1)",
             {Id("@medium", medium_id)});
  Insert(session,
         "insert msdb.dbo.backupmediafamily values (@id, 1, @medium, 1, nullif(@device, N''), "
         "@path, case @device when N'' then 2 else 102 end, 512)",
         {Number("@id", id), Id("@medium", medium_id), Text("@device", place.logical_name),
          Text("@path", place.physical_name)});
  return id;
}

void RecordFiles(EngineSession& session, std::int64_t set_id, const BackupSet& set) {
  std::int64_t number = 0;
  for (const ListedFile& file : set.files) {
    const std::string& path = file.physical_name;
    Insert(session,
           "insert msdb.dbo.backupfile values (@id, 1, 1, case @type when 'D' then N'PRIMARY' end, "
           "8192, @number, @pages, @type, 512, @size, @name, @drive, @path)",
           {Number("@id", set_id), Number("@number", ++number),
            Text("@type", std::string(1, file.type)), Number("@pages", PagesOf(set, file)),
            Number("@size", file.bytes), Text("@name", file.logical_name),
            Text("@drive", path.substr(0, path.find_first_of("\\/"))), Text("@path", path)});
  }
}

// The history in msdb: one transaction.
void Record(EngineSession& session, const BackupPlace& place, const std::string& medium_id,
            const BackupSet& set) {
  Workspace& workspace = session.workspace();
  // Whoever may back up a database need have no rights in msdb.
  const ServerWork own(workspace);
  workspace.BeginTransaction();
  try {
    Parameters values = set.details;
    values.push_back(Number("@media", MediaSetOf(session, place, medium_id)));
    values.push_back(Number("@position", set.position));
    values.push_back(Number("@size", set.data_size));
    values.push_back(Text("@database", set.database));
    const std::int64_t id = Insert(session, R"(
insert msdb.dbo.backupset (backup_set_uuid, media_set_id, first_family_number, first_media_number,
  last_family_number, last_media_number, position, software_vendor_id, name, description, user_name,
  software_major_version, software_minor_version, database_creation_date, backup_start_date,
  backup_finish_date, type, sort_order, code_page, compatibility_level, database_version,
  backup_size, database_name, server_name, machine_name, flags, collation_name)
values (@uuid, @media, 1, 1, 1, 1, @position, 0, nullif(@name, N''), nullif(@description, N''),
  @user, 8, 0, @created, @started, @finished, 'D', 0, 932, 80, 539, @size, @database, @server,
  @machine, 0, N'Japanese_CI_AS'))",
                                   values);
    RecordFiles(session, id, set);
    workspace.CommitTransaction();
  } catch (...) {
    if (workspace.transaction_count() > 0) workspace.RollbackTransaction();
    throw;
  }
}

// All but the data's size and the moment of the end, which comes last of the details.
BackupSet SetFor(EngineSession& session, const DatabaseInfo& database,
                 const BackupOptions& options) {
  Workspace& workspace = session.workspace();
  const std::string alias = workspace.Open(database);
  const InstanceOptions& instance = workspace.instance().options();
  const std::int64_t created = workspace.connection().IntegerOf(
      0, "select crdate from main.sysdatabases where dbid = ?1", database.dbid);
  BackupSet set;
  set.family = ReadLabel(workspace.connection(), alias).family;
  set.database = database.name;
  set.files = FilesOf(workspace, database, alias);
  set.details = {Id("@uuid", RandomBytes()),
                 Text("@name", options.name),
                 Text("@description", options.description),
                 Text("@user", workspace.login().name),
                 Text("@server", instance.server_name),
                 Text("@machine", instance.machine_name),
                 Time("@created", created),
                 Time("@started", CurrentTime())};
  return set;
}

// Copies a database file as it is at one moment while others read and write it.
void CopyDatabase(Workspace& workspace, const std::filesystem::path& from,
                  const std::filesystem::path& to) {
  constexpr int kPagesAtOnce = 4096;
  constexpr auto kPause = std::chrono::milliseconds(10);
  SqliteConnection source(from.string());
  // The open reading transaction holds the moment that is copied.
  source.Execute("begin");
  source.IntegerOf(0, "select count(*) from sqlite_schema");
  SqliteConnection target(to.string());
  // The copy is thrown away when anything happens to it.
  target.Execute("pragma journal_mode = off");
  target.Execute("pragma synchronous = off");
  struct Finisher {
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
  };
  const std::unique_ptr<sqlite3_backup, Finisher> backup(
      sqlite3_backup_init(target.handle(), "main", source.handle(), "main"));
  if (!backup) throw SqliteError(target.handle());
  for (;;) {
    workspace.StopIfInterrupted();
    const int code = sqlite3_backup_step(backup.get(), kPagesAtOnce);
    if (code == SQLITE_DONE) return;
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
      std::this_thread::sleep_for(kPause);
    } else if (code != SQLITE_OK) {
      throw SqliteError(target.handle());
    }
  }
}

// Completes the set. The medium gets its name when it is whole; a crash before leaves the earlier
// one.
void WriteMedium(Workspace& workspace, const DatabaseInfo& database, const BackupPlace& place,
                 const std::string& medium_id, BackupSet& set) {
  const std::string unfinished = place.file.string() + "." + RandomName();
  const std::filesystem::path copy = unfinished + ".copy";
  const std::filesystem::path medium = unfinished + ".medium";
  const PendingFiles pending(workspace.instance().places(), {copy, medium},
                             PendingFiles::Purpose::kMake);
  std::optional<SqliteConnection> held = HoldFile(workspace, database);
  if (!held) {
    CopyDatabase(workspace, workspace.instance().FileOf(database.dbid), copy);
    held.emplace(copy.string());
  }
  const DatabaseBytes source(*held);
  set.details.push_back(Time("@finished", CurrentTime()));
  set.data_size = source.Size();
  try {
    WriteBackup(workspace, medium, medium_id,
                set.position > 1 ? place.file : std::filesystem::path(), set, source);
  } catch (const SqliteError& error) {
    const int code = error.code() & 0xFF;
    if (code == SQLITE_CORRUPT) Fail(3241, {place.physical_name});
    throw std::system_error(code == SQLITE_FULL ? ENOSPC : EIO, std::generic_category(), "write");
  }
  std::filesystem::rename(medium, place.file);
  SyncFolder(place.file.parent_path());
}

void BackUp(EngineSession& session, const BackupStatement& statement, ResultSink& sink) {
  Workspace& workspace = session.workspace();
  const DatabasePlaces& places = workspace.instance().places();
  const auto begin = std::chrono::steady_clock::now();
  const BackupOptions options = OptionsOf(statement);
  if (workspace.transaction_count() > 0) Fail(3021);
  const DatabaseInfo database = workspace.FindDatabase(statement.database);
  if (database.dbid == kTempdb) Fail(3147);
  if (!workspace.IsOwner(database) && !workspace.IsIn(database, kBackupOperators)) {
    Fail(262, {"BACKUP DATABASE", database.name});
  }
  const BackupPlace place = PlaceOf(workspace, statement.devices);
  if (IsTaken(workspace, place.file)) Fail(3201, {place.physical_name});
  places.MakeFolderOf(place.file);
  std::error_code no_folder;
  if (!std::filesystem::is_directory(place.file.parent_path(), no_folder) ||
      std::filesystem::is_directory(place.file, no_folder)) {
    Fail(3201, {place.physical_name});
  }
  std::string medium_id;
  std::int64_t sets = 0;
  if (!options.format && std::filesystem::exists(place.file)) {
    BackupMedium earlier(place);
    medium_id = earlier.id();
    sets = earlier.set_count();
  }
  if (medium_id.empty()) medium_id = RandomBytes();

  BackupSet set = SetFor(session, database, options);
  set.position = options.init ? 1 : sets + 1;
  WriteMedium(workspace, database, place, medium_id, set);
  Record(session, place, medium_id, set);
  TellProcessed(sink, database.name, set);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  TellFinished(sink, "BACKUP DATABASE", set.data_size, seconds.count());
}

}  // namespace

void RunBackup(EngineSession& session, const BackupStatement& statement,
               const Execution& execution) {
  if (statement.log) throw Unsupported("backup log");
  RunChained({execution.sink, MakeMessage(3013, {"BACKUP DATABASE"}), kWriteError},
             [&] { BackUp(session, statement, execution.sink); });
}

BackupPlace PlaceOf(Workspace& workspace, const std::vector<BackupDevice>& devices) {
  BackupPlace place;
  for (const BackupDevice& device : devices) {
    place.physical_name = device.name;
    if (!device.kind.empty()) continue;
    place.logical_name = device.name;
    place.physical_name = workspace.connection().TextOf(
        "select phyname from main.sysdevices where name = ?1 and status & 16", device.name);
    if (place.physical_name.empty()) Fail(3206, {device.name});
  }
  if (devices.size() != 1) throw Unsupported("backups on more than one device");
  const std::string& kind = devices[0].kind;
  if (kind == "TAPE" || kind == "PIPE") throw Unsupported("backups on tapes");
  place.file = workspace.instance().places().HostPath(place.physical_name, "backup");
  if (!place.file.has_filename()) Fail(3201, {place.physical_name});
  return place;
}

void TellProcessed(ResultSink& sink, const std::string& database, const BackupSet& set) {
  for (const ListedFile& file : set.files) {
    sink.OnMessage(MakeMessage(4035, {std::to_string(PagesOf(set, file)), database,
                                      file.logical_name, std::to_string(set.position)}));
  }
}

void TellFinished(ResultSink& sink, std::string_view verb, std::int64_t bytes, double seconds) {
  constexpr double kMegabyte = 1'000'000;
  std::array<char, 32> time{};
  std::array<char, 32> rate{};
  std::snprintf(time.data(), time.size(), "%.3f", seconds);
  std::snprintf(rate.data(), rate.size(), "%.3f",
                seconds > 0 ? static_cast<double>(bytes) / kMegabyte / seconds : 0);
  sink.OnMessage(
      MakeMessage(3014, {verb, std::to_string(ServerPages(bytes)), time.data(), rate.data()}));
}

}  // namespace dbkeeper::server
