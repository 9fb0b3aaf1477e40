#include "catalog/ServerLists.h"

#include <array>
#include <string_view>
#include <utility>

#include "catalog/ListRoutine.h"

namespace dbkeeper {

namespace {

constexpr Alignment kLeft = Alignment::kLeft;
constexpr Alignment kRight = Alignment::kRight;

constexpr std::array<CatalogColumn, 8> kProcessColumns = {{
    {"spid", 36, kLeft, FieldText{"spid"}},
    {"ecid", 36, kLeft, FieldText{"ecid"}},
    {"status", 96, kLeft, FieldText{"status"}},
    {"loginame", 64, kLeft, FieldText{"loginame"}},
    {"hostname", 96, kLeft, FieldText{"hostname"}},
    {"blk", 36, kLeft, FieldText{"blk"}},
    {"dbname", 64, kLeft, FieldText{"dbname"}},
    {"cmd", 132, kLeft, FieldText{"cmd"}},
}};

constexpr std::array<CatalogColumn, 8> kLockColumns = {{
    {"spid", 48, kLeft, FieldText{"spid"}},
    {"dbid", 48, kLeft, FieldText{"dbid"}},
    {"ObjId", 64, kLeft, FieldText{"ObjId"}},
    {"IndId", 48, kLeft, FieldText{"IndId"}},
    {"Type", 48, kLeft, FieldText{"Type"}},
    {"Resource", 96, kLeft, FieldText{"Resource"}},
    {"Mode", 32, kLeft, FieldText{"Mode"}},
    {"Status", 96, kLeft, FieldText{"Status"}},
}};

constexpr std::array<CatalogColumn, 10> kLoginColumns = {{
    {"No.", 32, kLeft, RowNumber{}},
    {"Name", 180, kLeft, FieldText{"name"}},
    {"作成日", 118, kLeft, FieldText{"createdate"}},
    {"更新日", 118, kLeft, FieldText{"updatedate"}},
    {"言語", 64, kLeft, FieldText{"language"}},
    {"dbname", 64, kLeft, FieldText{"dbname"}},
    {"ｱｸｾｽ許可", 72, kLeft, FieldText{"hasaccess"}},
    {"NTﾕｰｻﾞ", 64, kLeft, FieldText{"isntname"}},
    {"sysadmin", 64, kLeft, FieldText{"sysadmin"}},
    {"serveradmin", 84, kLeft, FieldText{"serveradmin"}},
}};

struct CodeWord {
  std::int64_t code;
  const char* word;
};

constexpr std::array<CodeWord, 6> kExecutionStates = {{
    {1, "実行中"},
    {2, "待機中"},
    {3, "再試行"},
    {4, "ｱｲﾄﾞﾙ"},
    {5, "中断"},
    {6, "完了"},
}};

constexpr std::array<CodeWord, 3> kOutcomes = {{
    {0, "失敗"},
    {1, "成功"},
    {3, "取消"},
}};

template <std::size_t N>
std::string Decode(const std::array<CodeWord, N>& words, std::int64_t code) {
  for (const CodeWord& entry : words) {
    if (entry.code == code) return entry.word;
  }
  return "不明";
}

std::string ExecutionState(const FieldValue& status) {
  return Decode(kExecutionStates, status.AsInteger());
}

std::string Outcome(const FieldValue& outcome) { return Decode(kOutcomes, outcome.AsInteger()); }

// The job identifier is deliberately only 16 pixels wide: a key for the job commands, not a text to
// read. Dates and times are shown as the integers that the agent keeps; the job commands read "0 0"
// as "not assigned to a server".
constexpr std::array<CatalogColumn, 10> kJobColumns = {{
    {"job_id", 16, kLeft, FieldText{"job_id"}},
    {"name", 120, kLeft, FieldText{"name"}},
    {"有効", 36, kLeft, FieldText{"enabled"}},
    {"稼動", 52, kLeft, DecodedField{"current_execution_status", ExecutionState}},
    {"前回", 36, kLeft, DecodedField{"last_run_outcome", Outcome}},
    {"説明", 220, kLeft, FieldText{"description"}},
    {"次回実行日時", 104, kLeft, FieldPair{"next_run_date", "next_run_time"}},
    {"最終実行日時", 104, kLeft, FieldPair{"last_run_date", "last_run_time"}},
    {"作成日", 118, kLeft, FieldText{"date_created"}},
    {"更新日", 118, kLeft, FieldText{"date_modified"}},
}};

constexpr std::array<CatalogColumn, 3> kDeviceColumns = {{
    {"No.", 32, kLeft, RowNumber{}},
    {"Name", 128, kLeft, FieldText{"name"}},
    {"Path", 360, kLeft, FieldText{"phyname"}},
}};

constexpr std::array<CatalogColumn, 5> kUserColumns = {{
    {"uid", 48, kLeft, FieldText{"uid"}},
    {"name", 148, kLeft, FieldText{"name"}},
    {"createdate", 118, kLeft, FieldText{"createdate"}},
    {"updatedate", 118, kLeft, FieldText{"updatedate"}},
    {"ｱｸｾｽ可", 64, kLeft, FieldText{"hasdbaccess"}},
}};

constexpr std::array<CatalogColumn, 2> kDatabaseRoleColumns = {{
    {"RoleId", 48, kLeft, FieldText{"RoleId"}},
    {"RoleName", 240, kLeft, FieldText{"RoleName"}},
}};

constexpr std::array<CatalogColumn, 3> kServerRoleColumns = {{
    {"No.", 32, kLeft, RowNumber{}},
    {"ServerRole", 96, kLeft, FieldText{"ServerRole"}},
    {"Description", 240, kLeft, FieldText{"Description"}},
}};

constexpr std::array<CatalogColumn, 3> kPropertyColumns = {{
    {"No.", 32, kLeft, FilledLater{}},
    {"項目", 96, kLeft, FilledLater{}},
    {"内容", 240, kLeft, FilledLater{}},
}};

constexpr std::array<const char*, 9> kServerProperties = {
    "MachineName",  "ServerName",   "Edition",     "ProductLevel", "ProductVersion",
    "SecurityMode", "IsSingleUser", "LicenseType", "NumLicenses"};

std::string Kilobytes(const FieldValue& bytes) { return KilobytesText(bytes.AsInteger()); }

constexpr std::array<CatalogColumn, 6> kHistoryColumns = {{
    {"id", 32, kRight, FieldText{"backup_set_id"}},
    {"Media", 42, kRight, FieldText{"media_set_id"}},
    {"Name", 118, kLeft, FieldText{"name"}},
    {"説明", 220, kLeft, FieldText{"description"}},
    {"作成日", 118, kLeft, FieldText{"backup_start_date"}},
    {"Size", 84, kRight, DecodedField{"backup_size", Kilobytes}},
}};

// The lists that come from msdb switch there first, and stay.
void RunInMsdb(const Workbench& workbench, std::span<const CatalogColumn> columns,
               const std::string& sql) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  const ListUpdate update(list);
  ResetList(list, columns);
  query.Command("use msdb");
  query.Open(sql);
  AppendRows(list, query, columns);
  query.Close();
  query.Clear();
}

}  // namespace

std::string KilobytesText(std::int64_t bytes) {
  const std::int64_t whole = bytes / 1024;
  const std::int64_t rest = bytes % 1024;
  const bool up = rest > 512 || (rest == 512 && whole % 2 != 0);
  return std::to_string(whole + (up ? 1 : 0)) + "KB";
}

void ListProcesses(const Workbench& workbench, const std::string& /*database*/) {
  RunInMsdb(workbench, kProcessColumns, "exec sp_who");
}

void ListLocks(const Workbench& workbench, const std::string& /*database*/) {
  RunInMsdb(workbench, kLockColumns, "exec sp_lock");
}

void ListLogins(const Workbench& workbench, const std::string& /*database*/) {
  RunListRoutine(workbench, kLoginColumns, "select * from master.dbo.syslogins");
}

void ListJobs(const Workbench& workbench, const std::string& /*database*/) {
  RunInMsdb(workbench, kJobColumns, "exec sp_help_job");
}

void ListBackupDevices(const Workbench& workbench, const std::string& /*database*/) {
  RunListRoutine(workbench, kDeviceColumns, "select * from master.dbo.sysdevices where status=16");
}

void ListUsers(const Workbench& workbench, const std::string& database) {
  RunListRoutine(workbench, kUserColumns,
                 "use [" + database +
                     "]\r\n"
                     "select * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)");
}

// Deliberately without a switch to the database: the role node is reached through the database
// node, whose lists have switched the session already, and operators see the same roles as ever.
void ListDatabaseRoles(const Workbench& workbench, const std::string& /*database*/) {
  RunListRoutine(workbench, kDatabaseRoleColumns, "exec sp_helprole");
}

void ListServerRoles(const Workbench& workbench, const std::string& /*database*/) {
  RunListRoutine(workbench, kServerRoleColumns, "exec sp_helpsrvrole");
}

void ListServerProperties(const Workbench& workbench, const std::string& /*database*/) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  const ListUpdate update(list);
  ResetList(list, kPropertyColumns);
  query.Open(
      "SELECT SERVERPROPERTY('MachineName'             ) as MachineName,       "
      "SERVERPROPERTY('ServerName'              ) as ServerName,       "
      "SERVERPROPERTY('Edition'                 ) as Edition,       "
      "SERVERPROPERTY('ProductLevel'            ) as ProductLevel,       "
      "SERVERPROPERTY('ProductVersion'          ) as ProductVersion,       "
      "SERVERPROPERTY('IsIntegratedSecurityOnly') as SecurityMode,       "
      "SERVERPROPERTY('IsSingleUser'            ) as IsSingleUser,       "
      "SERVERPROPERTY('LicenseType'             ) as LicenseType,       "
      "SERVERPROPERTY('NumLicenses'             ) as NumLicenses");
  if (!query.Eof()) {
    for (std::size_t i = 0; i < kServerProperties.size(); ++i) {
      const char* const name = kServerProperties[i];
      list.AddItem({std::to_string(i + 1), name, query.FieldByName(name).AsString()});
    }
  }
  query.Close();
}

void ListBackupHistory(const Workbench& workbench, const std::string& database) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  const ListUpdate update(list);
  ResetList(list, kHistoryColumns);
  query.Command("use msdb");
  query.Open(
      "select backup_set_id,media_set_id,name,description,backup_start_date,       "
      "backup_finish_date,type,backup_size,database_name  from backupset where database_name = '" +
      database + "' order by media_set_id,backup_set_id desc");
  // The order makes the first record of a media set its newest backup.
  std::int64_t shown_media_set = 0;
  AppendRows(list, query, kHistoryColumns, [&shown_media_set](const Query& record) {
    const std::int64_t media_set = record.FieldByName("media_set_id").AsInteger();
    return std::exchange(shown_media_set, media_set) != media_set;
  });
  query.Close();
}

}  // namespace dbkeeper
