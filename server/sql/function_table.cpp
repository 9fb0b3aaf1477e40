#include "server/sql/function_table.h"

namespace dbkeeper::server {
namespace {

using enum ResultRule;

// What the system tables know, asked with the arguments $1, $2 ... in the current database $d.
constexpr std::string_view kColumnLength =
    "(select length from $d.syscolumns where id = ms_state('local_object_id', $1) and name = $2)";
constexpr std::string_view kColumnProperty = R"((select case $3 collate mstext
  when 'AllowsNull' then isnullable when 'IsIdentity' then colstat & 1
  when 'IsRowGuidCol' then colstat >> 1 & 1 when 'IsComputed' then 0 when 'IsIdNotForRepl' then 0
  when 'UsesAnsiTrim' then iif(collation is null, null, 1) when 'Precision' then prec
  when 'Scale' then scale end from $d.syscolumns where id = $1 and name = $2))";
constexpr std::string_view kObjectProperty = R"((select case $2 collate mstext
  when 'IsTable' then xtype in ('U', 'S') when 'IsUserTable' then xtype = 'U'
  when 'IsSystemTable' then xtype = 'S' when 'IsMSShipped' then xtype = 'S'
  when 'IsView' then xtype = 'V' when 'IsProcedure' then xtype = 'P'
  when 'IsTrigger' then xtype = 'TR' when 'IsPrimaryKey' then xtype = 'PK'
  when 'IsUniqueCnst' then xtype = 'UQ' when 'IsForeignKey' then xtype = 'F'
  when 'IsCheckCnst' then xtype = 'C' when 'IsDefaultCnst' then xtype = 'D'
  when 'IsConstraint' then xtype in ('PK', 'UQ', 'F', 'C', 'D')
  when 'IsScalarFunction' then xtype = 'FN' when 'IsExtendedProc' then xtype = 'X'
  when 'OwnerId' then uid
  when 'TableHasPrimaryKey' then exists(select 1 from $d.sysobjects p where p.parent_obj = o.id
    and p.xtype = 'PK')
  when 'TableHasCheckCnst' then exists(select 1 from $d.sysobjects p where p.parent_obj = o.id
    and p.xtype = 'C')
  when 'TableHasForeignKey' then exists(select 1 from $d.sysforeignkeys where fkeyid = o.id)
  when 'TableHasForeignRef' then exists(select 1 from $d.sysforeignkeys where rkeyid = o.id)
  when 'TableHasIdentity' then exists(select 1 from $d.syscolumns c where c.id = o.id
    and c.colstat & 1)
  when 'TableHasIndex' then exists(select 1 from $d.sysindexes i where i.id = o.id
    and i.indid > 0) end from $d.sysobjects o where id = $1))";
constexpr std::string_view kIndexProperty = R"((select case $3 collate mstext
  when 'IsUnique' then status >> 1 & 1 when 'IsClustered' then status >> 4 & 1
  when 'IndexID' then indid when 'IsStatistics' then 0 when 'IsAutoStatistics' then 0
  when 'IsHypothetical' then 0 when 'IsPadIndex' then 0 when 'IndexFillFactor' then 0 end
  from $d.sysindexes where id = $1 and name = $2 and keycnt > 0))";
constexpr std::string_view kIndexColumn =
    "(select name from $d.sysindexkeys k join $d.syscolumns c on c.id = k.id and c.colid = k.colid "
    "where k.id = ms_state('local_object_id', $1) and indid = $2 and keyno = $3)";
constexpr std::string_view kIndexKeyProperty = R"((select case $4 collate mstext
  when 'ColumnId' then k.colid when 'IsDescending' then substr(i.keys, k.keyno, 1) = x'01' end
  from $d.sysindexkeys k join $d.sysindexes i on i.id = k.id and i.indid = k.indid
  where k.id = $1 and k.indid = $2 and k.keyno = $3))";
constexpr std::string_view kDatabaseProperty = R"((select case $2 collate mstext
  when 'IsOffline' then status & 512 <> 0 when 'IsReadOnly' then status & 1024 <> 0
  when 'IsSingleUser' then status & 4096 <> 0 when 'IsDboOnly' then status & 2048 <> 0
  when 'IsTruncLog' then status & 8 <> 0 when 'IsAutoClose' then status & 1 <> 0
  when 'IsAutoShrink' then status & 4194304 <> 0
  when 'IsTornPageDetectionEnabled' then status & 16 <> 0
  when 'Version' then version end from main.sysdatabases where name = $1))";
constexpr std::string_view kDatabasePropertyEx = R"((select case $2 collate mstext
  when 'Collation' then 'Japanese_CI_AS'
  when 'Status' then iif(status & 512, 'OFFLINE', 'ONLINE')
  when 'Recovery' then iif(status & 8, 'SIMPLE', 'FULL')
  when 'Updateability' then iif(status & 1024, 'READ_ONLY', 'READ_WRITE')
  when 'UserAccess' then iif(status & 4096, 'SINGLE_USER',
    iif(status & 2048, 'RESTRICTED_USER', 'MULTI_USER'))
  when 'IsAutoClose' then status & 1 <> 0 when 'IsAutoShrink' then status & 4194304 <> 0
  when 'IsTornPageDetectionEnabled' then status & 16 <> 0
  when 'Version' then version end from main.sysdatabases where name = $1))";
constexpr std::string_view kIsMember = R"((select count(*) from $d.sysmembers m
  join $d.sysusers r on r.uid = m.groupuid join $d.sysusers u on u.uid = m.memberuid
  where u.name = ms_state('user') and r.name = $1))";
constexpr std::string_view kIdentityCurrent =
    "(select coalesce(last, seed) from $d.\"#identity\" where id = ms_state('local_object_id', "
    "$1))";
constexpr std::string_view kIdentitySeed =
    "(select seed from $d.\"#identity\" where id = ms_state('local_object_id', $1))";
constexpr std::string_view kIdentityIncrement =
    "(select increment from $d.\"#identity\" where id = ms_state('local_object_id', $1))";

// The number that ODBC has for a type of systypes; dates have others since version 3.
constexpr std::string_view kOdbcType = R"((case $1 when 104 then -7 when 48 then -6 when 52 then 5
  when 56 then 4 when 127 then -5 when 59 then 7 when 62 then 6 when 106 then 3 when 108 then 2
  when 60 then 3 when 122 then 3 when 61 then iif($2 = 3, 93, 11) when 58 then iif($2 = 3, 93, 11)
  when 175 then 1 when 167 then 12 when 35 then -1 when 239 then -8 when 231 then -9
  when 99 then -10 when 173 then -2 when 165 then -3 when 34 then -4 when 189 then -2
  when 36 then -11 else -150 end))";

constexpr FunctionRow kFunctions[] = {
    // dates
    {"getdate", 0, 0, "", kDateTime, 0, "$t"},
    {"getutcdate", 0, 0, "", kDateTime, 0, "ms_utc($t)"},
    {"current_timestamp", 0, 0, "", kDateTime, 0, "$t"},
    {"dateadd", 3, 3, "pid", kDateTime, 0, ""},
    {"datediff", 3, 3, "pdd", kInt, 0, ""},
    {"datepart", 2, 2, "pd", kInt, 0, ""},
    {"datename", 2, 2, "pd", kNVarChar, 30, ""},
    {"day", 1, 1, "d", kInt, 0, "ms_datepart('day', $*)"},
    {"month", 1, 1, "d", kInt, 0, "ms_datepart('month', $*)"},
    {"year", 1, 1, "d", kInt, 0, "ms_datepart('year', $*)"},
    {"isdate", 1, 1, "t", kInt, 0, ""},
    // texts
    {"len", 1, 1, "t", kInt, 0, ""},
    {"left", 2, 2, "ti", kText, 0, ""},
    {"right", 2, 2, "ti", kText, 0, ""},
    {"substring", 3, 3, "bii", kText, 0, ""},
    {"charindex", 2, 3, "tti", kInt, 0, ""},
    {"patindex", 2, 2, "tt", kInt, 0, ""},
    {"replace", 3, 3, "ttt", kWideText, 0, ""},
    {"replicate", 2, 2, "ti", kWideText, 0, ""},
    {"reverse", 1, 1, "t", kText, 0, ""},
    {"rtrim", 1, 1, "t", kText, 0, "rtrim($*, ' ')"},
    {"ltrim", 1, 1, "t", kText, 0, "ltrim($*, ' ')"},
    {"upper", 1, 1, "t", kText, 0, ""},
    {"lower", 1, 1, "t", kText, 0, ""},
    {"space", 1, 1, "i", kVarChar, 8000, ""},
    {"stuff", 4, 4, "tiit", kWideText, 0, ""},
    {"str", 1, 3, "fii", kVarChar, 128, ""},
    {"char", 1, 1, "i", kVarChar, 1, ""},
    {"nchar", 1, 1, "i", kNVarChar, 1, ""},
    {"ascii", 1, 1, "t", kInt, 0, ""},
    {"unicode", 1, 1, "t", kInt, 0, ""},
    {"quotename", 1, 2, "tt", kNVarChar, 258, ""},
    {"isnumeric", 1, 1, "t", kInt, 0, ""},
    // numbers
    {"abs", 1, 1, "n", kNumber, 0, ""},
    {"ceiling", 1, 1, "n", kWhole, 0, ""},
    {"floor", 1, 1, "n", kWhole, 0, ""},
    {"round", 2, 3, "nii", kNumber, 0, ""},
    {"sign", 1, 1, "n", kNumber, 0, ""},
    {"power", 2, 2, "nf", kNumber, 0, ""},
    {"sqrt", 1, 1, "f", kFloat, 0, "ms_math('sqrt', $*)"},
    {"square", 1, 1, "f", kFloat, 0, "ms_math('square', $*)"},
    {"exp", 1, 1, "f", kFloat, 0, "ms_math('exp', $*)"},
    {"log", 1, 1, "f", kFloat, 0, "ms_math('log', $*)"},
    {"log10", 1, 1, "f", kFloat, 0, "ms_math('log10', $*)"},
    {"sin", 1, 1, "f", kFloat, 0, "ms_math('sin', $*)"},
    {"cos", 1, 1, "f", kFloat, 0, "ms_math('cos', $*)"},
    {"tan", 1, 1, "f", kFloat, 0, "ms_math('tan', $*)"},
    {"cot", 1, 1, "f", kFloat, 0, "ms_math('cot', $*)"},
    {"asin", 1, 1, "f", kFloat, 0, "ms_math('asin', $*)"},
    {"acos", 1, 1, "f", kFloat, 0, "ms_math('acos', $*)"},
    {"atan", 1, 1, "f", kFloat, 0, "ms_math('atan', $*)"},
    {"atn2", 2, 2, "ff", kFloat, 0, ""},
    {"degrees", 1, 1, "f", kFloat, 0, "ms_math('degrees', $*)"},
    {"radians", 1, 1, "f", kFloat, 0, "ms_math('radians', $*)"},
    {"pi", 0, 0, "", kFloat, 0, "3.1415926535897931"},
    {"rand", 0, 1, "i", kFloat, 0, ""},
    {"newid", 0, 0, "", kGuid, 0, ""},
    // the server's state
    {"object_id", 1, 2, "t", kInt, 0, "state"},
    {"object_name", 1, 1, "i", kName, 0, "(select name from $d.sysobjects where id = $1)"},
    {"db_id", 0, 1, "t", kInt, 0,
     "(select dbid from main.sysdatabases where name = coalesce($1, ms_state('db_name')))"},
    {"db_name", 0, 1, "i", kName, 0, "state"},
    {"database_bytes", 1, 1, "i", kBigInt, 0, "state"},
    {"user", 0, 0, "", kName, 0, "state"},
    {"user_id", 0, 1, "t", kInt, 0,
     "(select uid from $d.sysusers where name = coalesce($1, ms_state('user')))"},
    {"user_name", 0, 1, "i", kName, 0,
     "coalesce((select name from $d.sysusers where uid = $1), iif($1 is null, ms_state('user'), "
     "null))"},
    {"current_user", 0, 0, "", kName, 0, "ms_state('user')"},
    {"session_user", 0, 0, "", kName, 0, "ms_state('user')"},
    {"system_user", 0, 0, "", kName, 0, "state"},
    {"suser_id", 0, 1, "t", kInt, 0, "0"},
    {"suser_name", 0, 1, "i", kName, 0,
     "iif($1 is null, ms_state('system_user'), (select name from main.syslogins where sid = $1))"},
    {"suser_sid", 0, 1, "t", kBinary, 85,
     "(select sid from main.syslogins where name = coalesce($1, ms_state('system_user')))"},
    {"suser_sname", 0, 1, "a", kName, 0,
     "iif($1 is null, ms_state('system_user'), (select name from main.syslogins where sid = $1))"},
    {"host_name", 0, 0, "", kName, 0, "state"},
    {"host_id", 0, 0, "", kVarChar, 10, "state"},
    {"app_name", 0, 0, "", kName, 0, "state"},
    {"odbc_type", 2, 2, "ii", kInt, 0, kOdbcType},
    {"type_id", 1, 1, "t", kInt, 0, "(select xusertype from $d.systypes where name = $1)"},
    {"type_name", 1, 1, "i", kName, 0, "(select name from $d.systypes where xusertype = $1)"},
    {"col_name", 2, 2, "ii", kName, 0,
     "(select name from $d.syscolumns where id = $1 and colid = $2)"},
    {"col_length", 2, 2, "tt", kInt, 0, kColumnLength},
    {"columnproperty", 3, 3, "itt", kInt, 0, kColumnProperty},
    {"objectproperty", 2, 2, "it", kInt, 0, kObjectProperty},
    {"indexproperty", 3, 3, "itt", kInt, 0, kIndexProperty},
    {"index_col", 3, 3, "tii", kName, 0, kIndexColumn},
    {"indexkey_property", 4, 4, "iiit", kInt, 0, kIndexKeyProperty},
    {"databaseproperty", 2, 2, "tt", kInt, 0, kDatabaseProperty},
    {"databasepropertyex", 2, 2, "tt", kVariant, 0, kDatabasePropertyEx},
    {"serverproperty", 1, 1, "t", kVariant, 0, "state"},
    {"fulltextserviceproperty", 1, 1, "t", kInt, 0, "0"},
    {"is_member", 1, 1, "t", kInt, 0, kIsMember},
    {"is_srvrolemember", 1, 2, "t", kInt, 0, "state"},
    {"has_dbaccess", 1, 1, "t", kInt, 0, "state"},
    {"scope_identity", 0, 0, "", kIdentity, 0, "state"},
    {"ident_current", 1, 1, "t", kIdentity, 0, kIdentityCurrent},
    {"ident_seed", 1, 1, "t", kIdentity, 0, kIdentitySeed},
    {"ident_incr", 1, 1, "t", kIdentity, 0, kIdentityIncrement},
    {"@@connections", 0, 0, "", kInt, 0, "state"},
    {"@@cursor_rows", 0, 0, "", kInt, 0, "0"},
    {"@@datefirst", 0, 0, "", kInt, 0, "7"},
    {"@@dbts", 0, 0, "", kBinary, 8, "state"},
    {"@@error", 0, 0, "", kInt, 0, "state"},
    {"@@fetch_status", 0, 0, "", kInt, 0, "0"},
    {"@@identity", 0, 0, "", kIdentity, 0, "state"},
    {"@@langid", 0, 0, "", kInt, 0, "0"},
    {"@@language", 0, 0, "", kName, 0, "'us_english'"},
    {"@@lock_timeout", 0, 0, "", kInt, 0, "state"},
    {"@@max_connections", 0, 0, "", kInt, 0, "32767"},
    {"@@max_precision", 0, 0, "", kInt, 0, "38"},
    {"@@microsoftversion", 0, 0, "", kInt, 0, "134219767"},
    {"@@nestlevel", 0, 0, "", kInt, 0, "0"},
    {"@@procid", 0, 0, "", kInt, 0, "0"},
    {"@@rowcount", 0, 0, "", kInt, 0, "state"},
    {"@@servername", 0, 0, "", kName, 0, "state"},
    {"@@servicename", 0, 0, "", kName, 0, "'MSSQLSERVER'"},
    {"@@spid", 0, 0, "", kInt, 0, "state"},
    {"@@textsize", 0, 0, "", kInt, 0, "2147483647"},
    {"@@trancount", 0, 0, "", kInt, 0, "state"},
    {"@@version", 0, 0, "", kNVarChar, 300, "state"},
};

}  // namespace

const FunctionRow* FindFunction(std::string_view lower_name) {
  for (const FunctionRow& row : kFunctions) {
    if (row.name == lower_name) return &row;
  }
  return nullptr;
}

}  // namespace dbkeeper::server
