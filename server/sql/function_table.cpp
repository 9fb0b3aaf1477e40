#include "server/sql/function_table.h"

namespace dbkeeper::server {
namespace {

constexpr SqlType kVariantType{TypeId::kSqlVariant, 8016, 0, 0, true};

constexpr SqlType VarBinary(int length) { return {TypeId::kVarBinary, length, 0, 0, true}; }

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
  when 'CnstIsDisabled' then iif(xtype in ('C', 'F'), status >> 14 & 1, null)
  when 'CnstIsNotRepl' then iif(xtype in ('C', 'F'), 0, null)
  when 'CnstIsDeleteCascade' then iif(xtype = 'F', status >> 12 & 1, null)
  when 'CnstIsUpdateCascade' then iif(xtype = 'F', status >> 13 & 1, null)
  when 'ExecIsTriggerDisabled' then iif(xtype = 'TR', 0, null)
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

// The number that ODBC has for a type of systypes; dates have others since version 3.
constexpr std::string_view kOdbcType = R"((case $1 when 104 then -7 when 48 then -6 when 52 then 5
  when 56 then 4 when 127 then -5 when 59 then 7 when 62 then 6 when 106 then 3 when 108 then 2
  when 60 then 3 when 122 then 3 when 61 then iif($2 = 3, 93, 11) when 58 then iif($2 = 3, 93, 11)
  when 175 then 1 when 167 then 12 when 35 then -1 when 239 then -8 when 231 then -9
  when 99 then -10 when 173 then -2 when 165 then -3 when 34 then -4 when 189 then -2
  when 36 then -11 else -150 end))";

constexpr FunctionRow kRows[] = {
    {"object_id", "t[t", kIntType, "state"},
    {"object_name", "i", kNameType, "(select name from $d.sysobjects where id = $1)"},
    {"db_id", "[t", kIntType,
     "(select dbid from main.sysdatabases where name = coalesce($1, ms_state('db_name')))"},
    {"db_name", "[i", kNameType, "state"},
    {"database_bytes", "i", kBigIntType, "state"},
    {"user", "", kNameType, "state"},
    {"user_id", "[t", kIntType,
     "(select uid from $d.sysusers where name = coalesce($1, ms_state('user')))"},
    {"user_name", "[i", kNameType,
     "coalesce((select name from $d.sysusers where uid = $1), iif($1 is null, ms_state('user'), "
     "null))"},
    {"current_user", "", kNameType, "ms_state('user')"},
    {"session_user", "", kNameType, "ms_state('user')"},
    {"system_user", "", kNameType, "state"},
    {"suser_id", "[t", kIntType, "0"},
    {"suser_name", "[i", kNameType,
     "iif($1 is null, ms_state('system_user'), (select name from main.syslogins where sid = $1))"},
    {"suser_sid", "[t", VarBinary(85),
     "(select sid from main.syslogins where name = coalesce($1, ms_state('system_user')))"},
    {"suser_sname", "[a", kNameType,
     "iif($1 is null, ms_state('system_user'), (select name from main.syslogins where sid = $1))"},
    {"host_name", "", kNameType, "state"},
    {"host_id", "", VarChar(10), "state"},
    {"app_name", "", kNameType, "state"},
    {"odbc_type", "ii", kIntType, kOdbcType},
    {"type_id", "t", kIntType, "(select xusertype from $d.systypes where name = $1)"},
    {"type_name", "i", kNameType, "(select name from $d.systypes where xusertype = $1)"},
    {"col_name", "ii", kNameType, "(select name from $d.syscolumns where id = $1 and colid = $2)"},
    {"col_length", "tt", kIntType, kColumnLength},
    {"columnproperty", "itt", kIntType, kColumnProperty},
    {"objectproperty", "it", kIntType, kObjectProperty},
    {"filegroup_name", "i", kNameType, "(case $1 when 1 then 'PRIMARY' end)"},
    {"indexproperty", "itt", kIntType, kIndexProperty},
    {"index_col", "tii", kNameType, kIndexColumn},
    {"indexkey_property", "iiit", kIntType, kIndexKeyProperty},
    {"databaseproperty", "tt", kIntType, kDatabaseProperty},
    {"databasepropertyex", "tt", kVariantType, kDatabasePropertyEx},
    {"serverproperty", "t", kVariantType, "state"},
    {"fulltextserviceproperty", "t", kIntType, "0"},
    {"is_member", "t", kIntType, kIsMember},
    {"is_srvrolemember", "t[t", kIntType, "state"},
    {"has_dbaccess", "t", kIntType, "state"},
    {"scope_identity", "", kIdentityType, "state"},
    {"ident_current", "t", kIdentityType, kIdentityCurrent},
    {"ident_seed", "t", kIdentityType, "state"},
    {"ident_incr", "t", kIdentityType, "state"},
    {"@@connections", "", kIntType, "state"},
    {"@@cursor_rows", "", kIntType, "0"},
    {"@@datefirst", "", kIntType, "7"},
    {"@@dbts", "", VarBinary(8), "state"},
    {"@@error", "", kIntType, "state"},
    {"@@fetch_status", "", kIntType, "0"},
    {"@@identity", "", kIdentityType, "state"},
    {"@@langid", "", kIntType, "0"},
    {"@@language", "", kNameType, "'us_english'"},
    {"@@lock_timeout", "", kIntType, "state"},
    {"@@max_connections", "", kIntType, "32767"},
    {"@@max_precision", "", kIntType, "38"},
    {"@@microsoftversion", "", kIntType, "134219767"},
    {"@@nestlevel", "", kIntType, "0"},
    {"@@procid", "", kIntType, "0"},
    {"@@rowcount", "", kIntType, "state"},
    {"@@servername", "", kNameType, "state"},
    {"@@servicename", "", kNameType, "'MSSQLSERVER'"},
    {"@@spid", "", kIntType, "state"},
    {"@@textsize", "", kIntType, "2147483647"},
    {"@@trancount", "", kIntType, "state"},
    {"@@version", "", NVarChar(300), "state"},
};

}  // namespace

std::span<const FunctionRow> StateFunctions() { return kRows; }

const FunctionRow* FindFunction(std::string_view lower_name) {
  for (const auto& rows : {TextFunctions(), NumberFunctions(), DateFunctions(), StateFunctions()}) {
    for (const FunctionRow& row : rows) {
      if (row.name == lower_name && !row.internal) return &row;
    }
  }
  return nullptr;
}

}  // namespace dbkeeper::server
