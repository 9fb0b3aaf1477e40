// RESTORE: what a medium holds as rows, and whether it is whole.
#include <algorithm>
#include <cstdlib>

#include "server/engine/backup_statements.h"
#include "server/engine/error_chain.h"
#include "server/types/messages.h"

namespace dbkeeper::server {

namespace {

constexpr int kReadError = 3203;
constexpr int kSizeDigits = 20;
constexpr int kLogDigits = 25;

ResultColumn Column(std::string name, TypeId type, int length = 0) {
  ResultColumn column;
  column.name = std::move(name);
  column.type = {.id = type, .length = length};
  return column;
}

ResultColumn NumericColumn(std::string name, int precision) {
  ResultColumn column = Column(std::move(name), TypeId::kNumeric);
  column.type.precision = precision;
  return column;
}

std::int64_t SendRows(ResultSink& sink, const std::vector<ResultColumn>& columns,
                      const std::vector<std::vector<Cell>>& rows) {
  sink.OnColumns(columns);
  for (const std::vector<Cell>& cells : rows) {
    if (!sink.OnRow(CellRow(cells))) break;
  }
  return static_cast<std::int64_t>(rows.size());
}

Cell Number(std::int64_t value) { return value; }
Cell TextOrNull(const std::string& text) { return text.empty() ? Cell() : Cell(text); }

std::vector<ResultColumn> HeaderColumns() {
  return {Column("BackupName", TypeId::kNVarChar, 128),
          Column("BackupDescription", TypeId::kNVarChar, 255),
          Column("BackupType", TypeId::kSmallInt),
          Column("ExpirationDate", TypeId::kDateTime),
          Column("Compressed", TypeId::kTinyInt),
          Column("Position", TypeId::kSmallInt),
          Column("DeviceType", TypeId::kTinyInt),
          Column("UserName", TypeId::kNVarChar, 128),
          Column("ServerName", TypeId::kNVarChar, 128),
          Column("DatabaseName", TypeId::kNVarChar, 128),
          Column("DatabaseVersion", TypeId::kInt),
          Column("DatabaseCreationDate", TypeId::kDateTime),
          NumericColumn("BackupSize", kSizeDigits),
          NumericColumn("FirstLSN", kLogDigits),
          NumericColumn("LastLSN", kLogDigits),
          NumericColumn("CheckpointLSN", kLogDigits),
          NumericColumn("DatabaseBackupLSN", kLogDigits),
          Column("BackupStartDate", TypeId::kDateTime),
          Column("BackupFinishDate", TypeId::kDateTime),
          Column("SortOrder", TypeId::kSmallInt),
          Column("CodePage", TypeId::kSmallInt),
          Column("UnicodeLocaleId", TypeId::kInt),
          Column("UnicodeComparisonStyle", TypeId::kInt),
          Column("CompatibilityLevel", TypeId::kTinyInt),
          Column("SoftwareVendorId", TypeId::kInt),
          Column("SoftwareVersionMajor", TypeId::kInt),
          Column("SoftwareVersionMinor", TypeId::kInt),
          Column("SoftwareVersionBuild", TypeId::kInt),
          Column("MachineName", TypeId::kNVarChar, 128),
          Column("Flags", TypeId::kInt),
          Column("BindingID", TypeId::kUniqueIdentifier),
          Column("RecoveryForkID", TypeId::kUniqueIdentifier),
          Column("Collation", TypeId::kNVarChar, 128)};
}

std::vector<Cell> HeaderRow(const BackupHeader& header, std::int64_t position) {
  constexpr int kFullBackup = 1;
  constexpr int kDisk = 2;
  constexpr int kDatabaseVersion = 539;
  constexpr int kCodePage = 932;
  constexpr int kJapanese = 1041;
  constexpr int kCompatibility = 80;
  constexpr int kMajorVersion = 8;
  const Cell family = header.family.empty() ? Cell() : Cell(Blob{header.family});
  // The server's log has no counterpart here, so there are no places in it to give.
  return {TextOrNull(header.name),
          TextOrNull(header.description),
          Number(kFullBackup),
          Cell(),
          Number(0),
          position,
          Number(kDisk),
          header.user,
          header.server,
          header.database,
          Number(kDatabaseVersion),
          header.created,
          std::to_string(header.data_size),
          Cell(),
          Cell(),
          Cell(),
          Cell(),
          header.started,
          header.finished,
          Number(0),
          Number(kCodePage),
          Number(kJapanese),
          Number(0),
          Number(kCompatibility),
          Number(0),
          Number(kMajorVersion),
          Number(0),
          Number(0),
          header.machine,
          Number(0),
          family,
          family,
          std::string("Japanese_CI_AS")};
}

std::int64_t SendHeaders(const BackupMedium& medium, ResultSink& sink) {
  std::vector<std::vector<Cell>> rows;
  std::int64_t position = 0;
  for (const BackupSet& set : medium.sets) rows.push_back(HeaderRow(set.header, ++position));
  return SendRows(sink, HeaderColumns(), rows);
}

std::int64_t SendFileList(const BackupHeader& header, ResultSink& sink) {
  // What the server gives for a file without a limit: 2^31 pages less one.
  constexpr std::string_view kNoLimit = "35184372080640";
  std::vector<std::vector<Cell>> rows;
  for (const BackedUpFile& file : header.files) {
    rows.push_back({file.logical_name, file.physical_name, std::string(1, file.type),
                    file.type == 'D' ? Cell(std::string("PRIMARY")) : Cell(),
                    std::to_string(file.size), std::string(kNoLimit)});
  }
  return SendRows(sink,
                  {Column("LogicalName", TypeId::kNVarChar, 128),
                   Column("PhysicalName", TypeId::kNVarChar, 260), Column("Type", TypeId::kChar, 1),
                   Column("FileGroupName", TypeId::kNVarChar, 128),
                   NumericColumn("Size", kSizeDigits), NumericColumn("MaxSize", kSizeDigits)},
                  rows);
}

void Verify(EngineSession& session, const BackupPlace& place, const BackupSet& set,
            ResultSink& sink) {
  const auto keep_going = [&] { return !session.workspace().interrupted(); };
  try {
    if (!ReadBackupData(
            place.file, set, [](std::string_view) {}, keep_going))
      Fail(3617);
  } catch (const MalformedBackup&) {
    Fail(3241, {place.physical_name});
  }
  sink.OnMessage(MakeMessage(3262));
}

}  // namespace

BackupMedium ReadMedium(const BackupPlace& place) {
  try {
    return ReadBackupMedium(place.file);
  } catch (const MalformedBackup&) {
    Fail(3241, {place.physical_name});
  } catch (const std::system_error&) {
    Fail(3201, {place.physical_name});
  }
}

const BackupSet& SelectedSet(const BackupMedium& medium, const BackupPlace& place,
                             const std::vector<BackupOption>& options) {
  std::size_t position = 1;
  for (const BackupOption& option : options) {
    if (option.name != "FILE") continue;
    position = std::strtoul(option.value.c_str(), nullptr, 10);
  }
  if (position < 1 || position > medium.sets.size()) {
    Fail(3287, {std::to_string(position), place.physical_name});
  }
  return medium.sets[position - 1];
}

std::int64_t RunRestore(EngineSession& session, const RestoreStatement& statement,
                        const Execution& execution) {
  struct Kind {
    RestoreKind kind;
    std::string_view words;
  };
  constexpr Kind kKinds[] = {{RestoreKind::kDatabase, "RESTORE DATABASE"},
                             {RestoreKind::kHeaderOnly, "RESTORE HEADERONLY"},
                             {RestoreKind::kFileListOnly, "RESTORE FILELIST"},
                             {RestoreKind::kVerifyOnly, "VERIFY DATABASE"}};
  const auto* kind = std::ranges::find(kKinds, statement.kind, &Kind::kind);
  if (kind == std::end(kKinds)) throw Unsupported("restore of logs and labels");
  ResultSink& sink = execution.sink;
  std::int64_t rows = -1;
  RunChained({sink, MakeMessage(3013, {kind->words}), kReadError}, [&] {
    const BackupPlace place = PlaceOf(session, statement.devices);
    const BackupMedium medium = ReadMedium(place);
    if (statement.kind == RestoreKind::kHeaderOnly) {
      rows = SendHeaders(medium, sink);
      return;
    }
    const BackupSet& set = SelectedSet(medium, place, statement.options);
    if (statement.kind == RestoreKind::kFileListOnly) {
      rows = SendFileList(set.header, sink);
    } else if (statement.kind == RestoreKind::kVerifyOnly) {
      Verify(session, place, set, sink);
    } else {
      RestoreDatabase(session, statement, place, set, sink);
    }
  });
  return rows;
}

}  // namespace dbkeeper::server
