// RESTORE DATABASE: the file of the backup takes the place of the database's own.
#include <algorithm>
#include <chrono>

#include "server/engine/backup_statements.h"
#include "server/engine/database_definition.h"
#include "server/engine/database_files.h"
#include "server/storage/host_file.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr std::string_view kIdleOptions =
    "FILE RECOVERY STATS RESTART NOUNLOAD UNLOAD NOREWIND REWIND";

struct RestoreOptions {
  bool replace = false;
  std::vector<BackupOption> moves;
};

RestoreOptions OptionsOf(const RestoreStatement& statement) {
  RestoreOptions options;
  for (const BackupOption& option : statement.options) {
    if (option.name == "MOVE") {
      options.moves.push_back(option);
    } else if (option.name == "REPLACE") {
      options.replace = true;
    } else if (!HasWord(kIdleOptions, option.name)) {
      throw Unsupported("restore with " + option.name);
    }
  }
  return options;
}

// Where a file of the database shall be, as the statement or the backup names it.
struct Target {
  std::string text;
  bool moved = false;
};

Target TargetOf(char type, const BackupSet& set, const RestoreOptions& options) {
  Target target;
  for (const ListedFile& file : set.files) {
    if (file.type == type) target.text = file.physical_name;
  }
  for (const BackupOption& move : options.moves) {
    const auto file = std::ranges::find_if(
        set.files, [&](const ListedFile& f) { return SameName(f.logical_name, move.value); });
    if (file == set.files.end()) Fail(3234, {move.value, set.database});
    if (file->type == type) target = {move.target, true};
  }
  return target;
}

// Keeps every session out of a database. Throws SqlError 3101 when another is in it.
class Closed {
 public:
  Closed(Workspace& workspace, int dbid) : instance_(workspace.instance()), dbid_(dbid) {
    if (!instance_.BeginRestore(dbid, workspace.spid())) Fail(3101);
  }
  ~Closed() { instance_.EndRestore(dbid_); }
  Closed(const Closed&) = delete;
  Closed& operator=(const Closed&) = delete;

 private:
  InstanceState& instance_;
  const int dbid_;
};

class DatabaseRestore {
 public:
  DatabaseRestore(EngineSession& session, const RestoreStatement& statement, BackupMedium& medium,
                  const BackupSet& set)
      : workspace_(session.workspace()),
        places_(workspace_.instance().places()),
        options_(OptionsOf(statement)),
        name_(statement.database),
        medium_(medium),
        set_(set),
        existing_(workspace_.LookUpDatabase(statement.database)) {}

  void Run() {
    if (workspace_.transaction_count() > 0) Fail(3021);
    NeedRight();
    std::optional<Closed> closed;
    if (existing_) {
      NeedReplaceable();
      closed.emplace(workspace_, existing_->dbid);
    }
    ChoosePlace();
    const std::filesystem::path unfinished = place_.data.string() + "." + RandomName();
    std::vector<std::filesystem::path> made = {unfinished};
    for (const std::filesystem::path& file : {place_.data, place_.log}) {
      if (!file.empty() && !std::filesystem::exists(file)) made.push_back(file);
    }
    PendingFiles pending(places_, made, PendingFiles::Purpose::kMake);
    Unpack(unfinished);
    if (existing_ && OldPlace().data == place_.data) {
      SwapIn(unfinished);
    } else {
      MoveIn(unfinished);
    }
    pending.Done();
  }

 private:
  DatabasePlace OldPlace() const { return places_.Of(existing_->dbid); }

  void NeedRight() {
    if (workspace_.login().sysadmin || workspace_.login().dbcreator) return;
    const bool owner =
        existing_ && !existing_->Has(DatabaseStatus::kOffline) && workspace_.IsOwner(*existing_);
    if (!owner) Fail(3110, {name_});
  }

  void NeedReplaceable() {
    if (existing_->IsSystem()) throw Unsupported("restore of system databases");
    if (existing_->dbid == workspace_.dbid()) Fail(3102, {name_});
    if (options_.replace) return;
    std::string family;
    if (IsDatabaseFile(OldPlace().data)) family = LabelOfFile(OldPlace().data).family;
    const bool same = family.empty() || set_.family.empty()
                          ? SameName(set_.database, existing_->name)
                          : family == set_.family;
    if (!same) Fail(3154, {existing_->name});
  }

  // Without a move the files go where the database has them now, else where they were backed up.
  void ChoosePlace() {
    const Target data = TargetOf('D', set_, options_);
    const Target log = TargetOf('L', set_, options_);
    if (existing_ && !data.moved) {
      place_.data = OldPlace().data;
      data_text_ = workspace_.connection().TextOf(
          "select filename from main.sysdatabases where dbid = ?1", existing_->dbid);
    } else {
      place_.data = NewPlace('D', data.text);
      data_text_ = data.text;
    }
    // The log of a database that was never given files of its own lies beside its data file.
    const bool implied_log = !log.moved && log.text == data.text + "-wal";
    if (existing_ && !log.moved) {
      place_.log = OldPlace().log;
      place_.log_name = OldPlace().log_name;
    } else if (!implied_log) {
      place_.log = NewPlace('L', log.text);
      place_.log_name = log.text;
    }
    if (place_.log == place_.data) Fail(3176, {place_.log_name});
  }

  std::filesystem::path NewPlace(char type, const std::string& text) {
    std::filesystem::path file = places_.HostPath(text);
    places_.MakeFolderOf(file);
    std::error_code ignored;
    const bool own = existing_ && file == (type == 'D' ? OldPlace().data : OldPlace().log);
    int problem = 0;
    if (!file.has_filename() || std::filesystem::is_directory(file, ignored) ||
        !std::filesystem::is_directory(file.parent_path(), ignored)) {
      problem = 5105;
    } else if (!own && IsTaken(workspace_, file)) {
      problem = 1834;
    } else if (!own && !options_.replace && std::filesystem::exists(file, ignored)) {
      problem = 5170;
    }
    if (problem == 0) return file;
    const auto listed = std::ranges::find(set_.files, type, &ListedFile::type);
    Fail(3156, {listed->logical_name, text, MakeMessage(problem, {text}).text});
  }

  // Writes the database's file from the backup and labels it, beside its final place.
  void Unpack(const std::filesystem::path& file) {
    medium_.Unpack(workspace_, set_, file);
    if (!IsDatabaseFile(file)) medium_.Refuse();
    label_ = LabelOfFile(file);
    if (label_.family.empty()) label_.family = RandomBytes();
    for (const ListedFile& listed : set_.files) {
      (listed.type == 'D' ? label_.data_name : label_.log_name) = listed.logical_name;
    }
    LabelFile(file, label_);
  }

  // The database keeps its place: from one moment to the next its file is the new one.
  void SwapIn(const std::filesystem::path& file) {
    workspace_.Detach(existing_->dbid);
    {
      // A damaged file has nothing that would be worth keeping, and cannot be quieted.
      std::optional<QuietFile> quiet;
      if (IsDatabaseFile(place_.data)) quiet.emplace(workspace_, *existing_);
      for (const char* suffix : {"-wal", "-shm"}) {
        std::filesystem::remove(place_.data.string() + suffix);
      }
      std::filesystem::rename(file, place_.data);
      workspace_.instance().NewGeneration(existing_->dbid);
    }
    SyncFolder(place_.data.parent_path());
    List(existing_->dbid);
  }

  void MoveIn(const std::filesystem::path& file) {
    RemoveWithLogs(place_.data);
    std::filesystem::rename(file, place_.data);
    SyncFolder(place_.data.parent_path());
    if (existing_) {
      workspace_.Detach(existing_->dbid);
      List(existing_->dbid);
      return;
    }
    const auto lock = workspace_.instance().LockDatabases();
    if (workspace_.LookUpDatabase(name_)) Fail(1801, {name_});
    List(FreeDatabaseId(workspace_));
  }

  // Files of the database that it does not keep.
  std::vector<std::filesystem::path> Leftover() const {
    std::vector<std::filesystem::path> files;
    if (!existing_) return files;
    for (const std::filesystem::path& file : {OldPlace().data, OldPlace().log}) {
      if (!file.empty() && file != place_.data && file != place_.log) files.push_back(file);
    }
    return files;
  }

  // Enters the database into master, or its new place and state.
  void List(int dbid) {
    if (!place_.log.empty()) MakeLogFile(place_.log, label_.family);
    PendingFiles leftover(places_, Leftover(), PendingFiles::Purpose::kRemove);
    Enlist(workspace_, dbid, {.name = name_, .file_name = data_text_}, place_);
    leftover.Done();
  }

  Workspace& workspace_;
  DatabasePlaces& places_;
  const RestoreOptions options_;
  const std::string name_;
  BackupMedium& medium_;
  const BackupSet& set_;
  const std::optional<DatabaseInfo> existing_;
  DatabasePlace place_;
  std::string data_text_;
  FileLabel label_;
};

}  // namespace

void RestoreDatabase(EngineSession& session, const RestoreStatement& statement,
                     BackupMedium& medium, const BackupSet& set, ResultSink& sink) {
  const auto begin = std::chrono::steady_clock::now();
  DatabaseRestore(session, statement, medium, set).Run();
  TellProcessed(sink, statement.database, set);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  TellFinished(sink, "RESTORE DATABASE", set.data_size, seconds.count());
}

}  // namespace dbkeeper::server
