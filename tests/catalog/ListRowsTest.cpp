// A row of each list: every column with its caption, width and side, and every field at its place.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "catalog/DatabaseList.h"
#include "catalog/DatabaseProperties.h"
#include "catalog/ObjectLists.h"
#include "catalog/ServerLists.h"
#include "tests/support/WorkbenchFixture.h"

namespace dbkeeper {
namespace {

using testing::FakeRow;
using testing::TextFields;
using testing::WorkbenchFixture;
using Texts = std::vector<std::string>;

// A field of the answer and its value, in the order of the server's answer.
using Answer = std::vector<std::pair<const char*, const char*>>;

struct Case {
  const char* title;
  ListRoutine list;
  Texts statements;
  const char* answered;  // what the answered statement holds
  Answer answer;
  Texts columns;  // "caption|width", and ">" behind it where texts stand at the right
  Texts row;
};

std::vector<Case> ServerCases() {
  return {
      {"databases",
       ListDatabases,
       {"select * from master.dbo.sysdatabases"},
       "sysdatabases",
       {{"name", "売上"},
        {"dbid", "7"},
        {"sid", "-"},
        {"mode", "-"},
        {"status", "1024"},
        {"status2", "99"},
        {"crdate", "[crdate]"},
        {"reserved", "-"},
        {"category", "-"},
        {"cmptlevel", "-"},
        {"filename", "[filename]"},
        {"version", "-"}},
       {"dbid|48>", "Name|96", "状態|118", "status|82>", "status2|82>", "作成日|118",
        "ファイル名|340"},
       {"7", "売上", "読取専用,", "1024", "99", "[crdate]", "[filename]"}},
      {"processes",
       ListProcesses,
       {"use msdb", "exec sp_who"},
       "sp_who",
       {{"spid", "51"},
        {"ecid", "[ecid]"},
        {"status", "[status]"},
        {"loginame", "[loginame]"},
        {"hostname", "[hostname]"},
        {"blk", "[blk]"},
        {"dbname", "[dbname]"},
        {"cmd", "[cmd]"}},
       {"spid|36", "ecid|36", "status|96", "loginame|64", "hostname|96", "blk|36", "dbname|64",
        "cmd|132"},
       {"51", "[ecid]", "[status]", "[loginame]", "[hostname]", "[blk]", "[dbname]", "[cmd]"}},
      {"locks",
       ListLocks,
       {"use msdb", "exec sp_lock"},
       "sp_lock",
       {{"spid", "52"},
        {"dbid", "[dbid]"},
        {"ObjId", "[ObjId]"},
        {"IndId", "[IndId]"},
        {"Type", "[Type]"},
        {"Resource", "[Resource]"},
        {"Mode", "[Mode]"},
        {"Status", "[Status]"}},
       {"spid|48", "dbid|48", "ObjId|64", "IndId|48", "Type|48", "Resource|96", "Mode|32",
        "Status|96"},
       {"52", "[dbid]", "[ObjId]", "[IndId]", "[Type]", "[Resource]", "[Mode]", "[Status]"}},
      {"logins",
       ListLogins,
       {"select * from master.dbo.syslogins"},
       "syslogins",
       {{"sid", "-"},
        {"status", "-"},
        {"createdate", "[createdate]"},
        {"updatedate", "[updatedate]"},
        {"accdate", "-"},
        {"name", "[name]"},
        {"dbname", "[dbname]"},
        {"password", "-"},
        {"language", "[language]"},
        {"denylogin", "-"},
        {"hasaccess", "[hasaccess]"},
        {"isntname", "[isntname]"},
        {"isntgroup", "-"},
        {"sysadmin", "[sysadmin]"},
        {"securityadmin", "-"},
        {"serveradmin", "[serveradmin]"},
        {"loginname", "-"}},
       {"No.|32", "Name|180", "作成日|118", "更新日|118", "言語|64", "dbname|64", "ｱｸｾｽ許可|72",
        "NTﾕｰｻﾞ|64", "sysadmin|64", "serveradmin|84"},
       {"1", "[name]", "[createdate]", "[updatedate]", "[language]", "[dbname]", "[hasaccess]",
        "[isntname]", "[sysadmin]", "[serveradmin]"}},
      {"jobs",
       ListJobs,
       {"use msdb", "exec sp_help_job"},
       "sp_help_job",
       {{"job_id", "[job_id]"},
        {"originating_server", "-"},
        {"name", "[name]"},
        {"enabled", "[enabled]"},
        {"description", "[description]"},
        {"start_step_id", "-"},
        {"date_created", "[date_created]"},
        {"date_modified", "[date_modified]"},
        {"last_run_date", "20050101"},
        {"last_run_time", "11111"},
        {"last_run_outcome", "3"},
        {"next_run_date", "20060202"},
        {"next_run_time", "22222"},
        {"current_execution_status", "2"}},
       {"job_id|16", "name|120", "有効|36", "稼動|52", "前回|36", "説明|220", "次回実行日時|104",
        "最終実行日時|104", "作成日|118", "更新日|118"},
       {"[job_id]", "[name]", "[enabled]", "待機中", "取消", "[description]", "20060202 22222",
        "20050101 11111", "[date_created]", "[date_modified]"}},
      {"devices",
       ListBackupDevices,
       {"select * from master.dbo.sysdevices where status=16"},
       "sysdevices",
       {{"name", "[name]"},
        {"size", "-"},
        {"low", "-"},
        {"high", "-"},
        {"status", "16"},
        {"cntrltype", "-"},
        {"phyname", "[phyname]"}},
       {"No.|32", "Name|128", "Path|360"},
       {"1", "[name]", "[phyname]"}},
      {"server roles",
       ListServerRoles,
       {"exec sp_helpsrvrole"},
       "sp_helpsrvrole",
       {{"ServerRole", "[ServerRole]"}, {"Description", "[Description]"}},
       {"No.|32", "ServerRole|96", "Description|240"},
       {"1", "[ServerRole]", "[Description]"}},
  };
}

std::vector<Case> DatabaseCases() {
  return {
      {"tables",
       ListTables,
       {"select * from [sales].dbo.sysobjects where (xtype='S')or       (xtype='U') order by name"},
       "sysobjects",
       {{"name", "[name]"},
        {"id", "-"},
        {"xtype", "[xtype]"},
        {"uid", "-"},
        {"crdate", "[crdate]"},
        {"type", "-"}},
       {"No.|32>", "Name|100", "xtype|48", "作成日|118"},
       {"1", "[name]", "[xtype]", "[crdate]"}},
      {"views",
       ListViews,
       {"select * from [sales].dbo.sysobjects where xtype='V' order by name"},
       "sysobjects",
       {{"name", "[name]"}, {"xtype", "[xtype]"}, {"crdate", "[crdate]"}, {"type", "-"}},
       {"No.|32>", "Name|100", "xtype|48", "作成日|118"},
       {"1", "[name]", "[xtype]", "[crdate]"}},
      {"procedures",
       ListProcedures,
       {"select * from [sales].dbo.sysobjects where (xtype='P')or       (xtype='X') order by name"},
       "sysobjects",
       {{"crdate", "[crdate]"}, {"name", "[name]"}, {"xtype", "[xtype]"}},
       {"No.|32>", "Name|100", "xtype|48", "作成日|118"},
       {"1", "[name]", "[xtype]", "[crdate]"}},
      {"users",
       ListUsers,
       {"use [sales]\r\nselect * from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)"},
       "sysusers",
       {{"uid", "5"},
        {"status", "-"},
        {"name", "[name]"},
        {"sid", "-"},
        {"createdate", "[createdate]"},
        {"updatedate", "[updatedate]"},
        {"hasdbaccess", "[hasdbaccess]"},
        {"islogin", "-"}},
       {"uid|48", "name|148", "createdate|118", "updatedate|118", "ｱｸｾｽ可|64"},
       {"5", "[name]", "[createdate]", "[updatedate]", "[hasdbaccess]"}},
      {"database roles",
       ListDatabaseRoles,
       {"exec sp_helprole"},
       "sp_helprole",
       {{"RoleName", "[RoleName]"}, {"RoleId", "16400"}, {"IsAppRole", "-"}},
       {"RoleId|48", "RoleName|240"},
       {"16400", "[RoleName]"}},
      {"backup history",
       ListBackupHistory,
       {"use msdb",
        "select backup_set_id,media_set_id,name,description,backup_start_date,       "
        "backup_finish_date,type,backup_size,database_name  from backupset where database_name = "
        "'sales' order by media_set_id,backup_set_id desc"},
       "backupset",
       {{"backup_set_id", "12"},
        {"media_set_id", "3"},
        {"name", "[name]"},
        {"description", "[description]"},
        {"backup_start_date", "[start]"},
        {"backup_finish_date", "-"},
        {"type", "-"},
        {"backup_size", "2048"},
        {"database_name", "-"}},
       {"id|32>", "Media|42>", "Name|118", "説明|220", "作成日|118", "Size|84>"},
       {"12", "3", "[name]", "[description]", "[start]", "2KB"}},
  };
}

Texts ColumnsOf(const ListView& list) {
  Texts columns;
  for (const auto& column : list.Columns()) {
    columns.push_back(column.Caption + "|" + std::to_string(column.Width) +
                      (column.Align == Alignment::kRight ? ">" : ""));
  }
  return columns;
}

Texts CellsOf(const ListItem& item) {
  Texts cells;
  for (std::size_t i = 0; i < item.CellCount(); ++i) cells.emplace_back(item.Cell(i));
  return cells;
}

void Expect(const Case& c) {
  SCOPED_TRACE(c.title);
  WorkbenchFixture fixture;
  Texts names;
  FakeRow row;
  for (const auto& [name, value] : c.answer) {
    names.emplace_back(name);
    row.emplace_back(value);
  }
  fixture.connection.Answer(c.answered, {TextFields(names), {row}});
  c.list(fixture.workbench, "sales");
  EXPECT_EQ(fixture.connection.statements, c.statements);
  EXPECT_EQ(ColumnsOf(fixture.list), c.columns);
  ASSERT_EQ(fixture.list.Items().size(), 1U);
  EXPECT_EQ(CellsOf(fixture.list.Items()[0]), c.row);
}

TEST(ListRows, OfTheServersListsHaveEveryFieldAtItsPlace) {
  for (const Case& c : ServerCases()) Expect(c);
}

TEST(ListRows, OfADatabasesListsHaveEveryFieldAtItsPlace) {
  for (const Case& c : DatabaseCases()) Expect(c);
}

TEST(ListRows, OfDescribedTablesAndOfCapacityHaveTheirOwnColumns) {
  WorkbenchFixture fixture;
  fixture.options.Advanced = true;
  fixture.connection.Answer("sysobjects",
                            {TextFields({"name", "xtype", "crdate"}), {{"t", "U", "c"}}});
  fixture.connection.Answer(
      "fn_listextendedproperty",
      {TextFields({"objtype", "objname", "name", "value"}),
       {{"TABLE", "t", "MS_Description", "[d]"}, {"TABLE", "t", "Note", "[n]"}}});
  fixture.connection.Answer(
      "sp_spaceused", {TextFields({"name", "rows", "reserved", "data", "index_size", "unused"}),
                       {{"t", "[rows]", "[reserved]", "[data]", "[index]", "[unused]"}}});
  ListTables(fixture.workbench, "sales");
  EXPECT_EQ(ColumnsOf(fixture.list), (Texts{"No.|32>", "Name|100", "Description|120", "Note|180",
                                            "xtype|48", "作成日|118"}));
  EXPECT_EQ(CellsOf(fixture.list.Items()[0]), (Texts{"1", "t", "[d]", "[n]", "U", "c"}));
  ListCapacity(fixture.workbench, "sales");
  EXPECT_EQ(ColumnsOf(fixture.list),
            (Texts{"No.|32>", "Name|128", "xtype|48", "作成日|118", "rows|64>", "reserved|82>",
                   "data|82>", "index_size|82>", "unused|82>"}));
  EXPECT_EQ(CellsOf(fixture.list.Items()[0]),
            (Texts{"1", "t", "U", "c", "[rows]", "[reserved]", "[data]", "[index]", "[unused]"}));
}

TEST(ListRows, OfServerPropertiesHaveEachItsNumberAndName) {
  WorkbenchFixture fixture;
  fixture.connection.Answer(
      "SERVERPROPERTY",
      {TextFields({"NumLicenses", "LicenseType", "IsSingleUser", "SecurityMode", "ProductVersion",
                   "ProductLevel", "Edition", "ServerName", "MachineName"}),
       {{"[9]", "[8]", "[7]", "[6]", "[5]", "[4]", "[3]", "[2]", "[1]"}}});
  ListServerProperties(fixture.workbench, {});
  EXPECT_EQ(ColumnsOf(fixture.list), (Texts{"No.|32", "項目|96", "内容|240"}));
  const char* const names[] = {"MachineName",  "ServerName",     "Edition",
                               "ProductLevel", "ProductVersion", "SecurityMode",
                               "IsSingleUser", "LicenseType",    "NumLicenses"};
  ASSERT_EQ(fixture.list.Items().size(), std::size(names));
  for (std::size_t i = 0; i < std::size(names); ++i) {
    const std::string number = std::to_string(i + 1);
    EXPECT_EQ(CellsOf(fixture.list.Items()[i]), (Texts{number, names[i], "[" + number + "]"}));
  }
}

TEST(ListRows, OfADatabasesPropertiesTellEveryOption) {
  struct Option {
    const char *marker, *item, *value;
  };
  const Option options[] = {
      {"Collation=Japanese_CI_AS,", "照合順序名", "Japanese_CI_AS"},
      {"Status=ONLINE", "Status", "ONLINE"},
      {"Updateability=READ_WRITE", "READ_WRITE", "READ_WRITE"},
      {"Updateability=READ_ONLY", "READ_WRITE", "READ_ONLY"},
      {"IsTornPageDetectionEnabled", "不完全な I/O 操作を検出", "True"},
      {"IsAutoCreateStatistics", "データ変更時の統計自動更新", "True"},
      {"IsAutoUpdateStatistics", "統計の自動更新", "True"},
      {"IsAutoShrink", "定期的な自動圧縮", "True"},
  };
  for (const Option& option : options) {
    WorkbenchFixture fixture;
    fixture.connection.Answer("sp_helpdb",
                              {TextFields({"name", "status"}), {{"sales", option.marker}}});
    ListDatabaseProperties(fixture.workbench, "sales");
    ASSERT_EQ(fixture.list.Items().size(), 1U) << option.marker;
    EXPECT_EQ(CellsOf(fixture.list.Items()[0]), (Texts{"5", option.item, option.value}));
  }
  WorkbenchFixture fixture;
  ListDatabaseProperties(fixture.workbench, "sales");
  EXPECT_EQ(ColumnsOf(fixture.list), (Texts{"No.|32", "項目|192", "内容|240"}));
  EXPECT_EQ(fixture.connection.statements,
            (Texts{"select * from master.dbo.sysdatabases where name = 'sales'", "use [sales]",
                   "EXEC sp_spaceused", "sp_helpdb [sales]"}));
}

TEST(ListRows, EveryCodeOfAJobHasItsWord) {
  const struct {
    const char *execution, *outcome, *execution_word, *outcome_word;
  } cases[] = {
      {"0", "0", "不明", "失敗"},   {"1", "1", "実行中", "成功"}, {"2", "2", "待機中", "不明"},
      {"3", "3", "再試行", "取消"}, {"4", "4", "ｱｲﾄﾞﾙ", "不明"},  {"5", "5", "中断", "不明"},
      {"6", "", "完了", "失敗"},    {"7", "-1", "不明", "不明"},  {"", "9", "不明", "不明"},
  };
  for (const auto& c : cases) {
    WorkbenchFixture fixture;
    fixture.connection.Answer(
        "sp_help_job",
        {TextFields({"job_id", "name", "enabled", "description", "next_run_date", "next_run_time",
                     "last_run_date", "last_run_time", "date_created", "date_modified",
                     "current_execution_status", "last_run_outcome"}),
         {{"", "", "", "", "", "", "", "", "", "", c.execution, c.outcome}}});
    ListJobs(fixture.workbench, {});
    EXPECT_EQ(fixture.list.Items()[0].SubItem(2), c.execution_word) << c.execution;
    EXPECT_EQ(fixture.list.Items()[0].SubItem(3), c.outcome_word) << c.outcome;
  }
}

TEST(ListRows, EveryBitOfADatabaseHasItsWord) {
  const struct {
    std::int32_t status;
    const char* words;
  } cases[] = {
      {0x40000000, ""},
      {0x400000, ""},
      {0x8000, "緊急ﾓｰﾄﾞ,"},
      {0x1000, "ｼﾝｸﾞﾙﾕｰｻﾞｰ,"},
      {0x800, "管理者専用,"},
      {0x400, "読取専用,"},
      {0x200, "offline,"},
      {0x100, "障害,"},
      {0x80, "復旧中,"},
      {0x40, "復旧準備中,"},
      {0x20, ""},
      {0x3F, ""},
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeDatabaseStatus(c.status), c.words) << c.status;
}

}  // namespace
}  // namespace dbkeeper
