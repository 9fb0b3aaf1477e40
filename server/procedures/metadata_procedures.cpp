// What clients ask about sessions and locks, and drivers about tables, columns, keys, indexes and
// types.
#include "server/procedures/procedure_call.h"

namespace dbkeeper::server {

namespace {

constexpr std::string_view kTables = R"(
select db_name() as TABLE_QUALIFIER, user_name(uid) as TABLE_OWNER, name as TABLE_NAME,
  convert(varchar(32), case xtype when 'U' then 'TABLE' when 'V' then 'VIEW'
    else 'SYSTEM TABLE' end) as TABLE_TYPE,
  convert(varchar(254), null) as REMARKS
from sysobjects
where xtype in ('U', 'V', 'S') and (@table_name is null or name like @table_name)
  and (@table_owner is null or user_name(uid) like @table_owner)
  and (@table_type is null or charindex(case xtype when 'U' then '''TABLE''' when 'V' then '''VIEW'''
    else '''SYSTEM TABLE''' end, upper(@table_type)) > 0)
order by 4, 1, 2, 3)";

constexpr std::string_view kColumns = R"(
select db_name() as TABLE_QUALIFIER, user_name(o.uid) as TABLE_OWNER, o.name as TABLE_NAME,
  c.name as COLUMN_NAME,
  convert(smallint, odbc_type(c.xtype, @ODBCVer)) as DATA_TYPE,
  case when c.colstat & 1 = 1 then t.name + N' identity' else t.name end as TYPE_NAME,
  convert(int, case when c.xtype in (34, 35) then 2147483647 when c.xtype = 99 then 1073741823
    when c.xtype = 36 then 36 when c.xtype in (173, 165, 189) then c.length else c.prec end)
    as [PRECISION],
  convert(int, case when c.xtype in (34, 35) then 2147483647 when c.xtype = 99 then 2147483646
    when c.xtype in (106, 108) then c.prec + 2 when c.xtype = 60 then 21 when c.xtype = 122 then 12
    when c.xtype in (58, 61) then 16 else c.length end) as LENGTH,
  convert(smallint, case when c.xtype = 104 then null when c.xtype = 36 then null
    else c.scale end) as SCALE,
  convert(smallint, case when c.xtype in (59, 62) then 2
    when c.xtype in (48, 52, 56, 127, 106, 108, 60, 122) then 10 else null end) as RADIX,
  convert(smallint, c.isnullable) as NULLABLE, convert(varchar(254), null) as REMARKS,
  d.text as COLUMN_DEF,
  convert(smallint, case when c.xtype in (58, 61) then 9 else odbc_type(c.xtype, 2) end)
    as SQL_DATA_TYPE,
  convert(smallint, case when c.xtype in (58, 61) then 3 else null end) as SQL_DATETIME_SUB,
  convert(int, case when c.xtype in (35, 34) then 2147483647 when c.xtype = 99 then 2147483646
    when c.xtype in (175, 167, 239, 231, 173, 165) then c.length else null end)
    as CHAR_OCTET_LENGTH,
  convert(int, c.colid) as ORDINAL_POSITION,
  convert(varchar(254), case c.isnullable when 1 then 'YES' else 'NO' end) as IS_NULLABLE,
  c.type as SS_DATA_TYPE
from sysobjects o join syscolumns c on c.id = o.id join systypes t on t.xusertype = c.xusertype
  left join syscomments d on d.id = c.cdefault and d.colid = 1
where o.xtype in ('U', 'V', 'S') and (@table_name is null or o.name like @table_name)
  and (@table_owner is null or user_name(o.uid) like @table_owner)
  and (@column_name is null or c.name like @column_name)
order by 3, 17)";

constexpr std::string_view kPrimaryKeys = R"(
select db_name() as TABLE_QUALIFIER, user_name(o.uid) as TABLE_OWNER, o.name as TABLE_NAME,
  c.name as COLUMN_NAME, k.keyno as KEY_SEQ, i.name as PK_NAME
from sysobjects o join sysindexes i on i.id = o.id
  join sysindexkeys k on k.id = i.id and k.indid = i.indid
  join syscolumns c on c.id = k.id and c.colid = k.colid
where o.name = @table_name and i.status & 2048 = 2048
order by 3, 5)";

constexpr std::string_view kForeignKeys = R"(
select db_name() as PKTABLE_QUALIFIER, user_name(p.uid) as PKTABLE_OWNER, p.name as PKTABLE_NAME,
  pc.name as PKCOLUMN_NAME, db_name() as FKTABLE_QUALIFIER, user_name(f.uid) as FKTABLE_OWNER,
  f.name as FKTABLE_NAME, fc.name as FKCOLUMN_NAME, k.keyno as KEY_SEQ,
  convert(smallint, case when o.status & 8192 = 8192 then 0 else 1 end) as UPDATE_RULE,
  convert(smallint, case when o.status & 4096 = 4096 then 0 else 1 end) as DELETE_RULE,
  o.name as FK_NAME,
  (select min(i.name) from sysindexes i where i.id = p.id and i.status & 2048 = 2048) as PK_NAME,
  convert(smallint, 7) as DEFERRABILITY
from sysforeignkeys k join sysobjects o on o.id = k.constid join sysobjects p on p.id = k.rkeyid
  join sysobjects f on f.id = k.fkeyid join syscolumns pc on pc.id = p.id and pc.colid = k.rkey
  join syscolumns fc on fc.id = f.id and fc.colid = k.fkey
where (@pktable_name is null or p.name = @pktable_name)
  and (@fktable_name is null or f.name = @fktable_name)
order by 7, 9)";

constexpr std::string_view kStatistics = R"(
select db_name() as TABLE_QUALIFIER, user_name(o.uid) as TABLE_OWNER, o.name as TABLE_NAME,
  convert(smallint, null) as NON_UNIQUE, convert(sysname, null) as INDEX_QUALIFIER,
  convert(sysname, null) as INDEX_NAME, convert(smallint, 0) as TYPE,
  convert(smallint, null) as SEQ_IN_INDEX, convert(sysname, null) as COLUMN_NAME,
  convert(char(1), null) as COLLATION, i.rows as CARDINALITY, i.dpages as PAGES,
  convert(varchar(128), null) as FILTER_CONDITION
from sysobjects o join sysindexes i on i.id = o.id and i.indid < 2
where o.name = @table_name
union all
select db_name(), user_name(o.uid), o.name,
  convert(smallint, case when i.status & 2 = 2 then 0 else 1 end), o.name, i.name,
  convert(smallint, case i.indid when 1 then 1 else 3 end), k.keyno, c.name,
  convert(char(1), case indexkey_property(o.id, i.indid, k.keyno, 'IsDescending') when 1 then 'D'
    else 'A' end), i.rows, i.dpages, convert(varchar(128), null)
from sysobjects o join sysindexes i on i.id = o.id
  join sysindexkeys k on k.id = i.id and k.indid = i.indid
  join syscolumns c on c.id = k.id and c.colid = k.colid
where o.name = @table_name and (@is_unique is null or @is_unique <> 'Y' or i.status & 2 = 2)
order by 4, 7, 6, 8)";

constexpr std::string_view kSpecialColumns = R"(
select convert(smallint, 1) as SCOPE, c.name as COLUMN_NAME,
  convert(smallint, odbc_type(c.xtype, 2)) as DATA_TYPE,
  t.name as TYPE_NAME, convert(int, c.prec) as [PRECISION], convert(int, c.length) as LENGTH,
  convert(smallint, c.scale) as SCALE, convert(smallint, 1) as PSEUDO_COLUMN
from sysobjects o join sysindexes i on i.id = o.id
  join sysindexkeys k on k.id = i.id and k.indid = i.indid
  join syscolumns c on c.id = k.id and c.colid = k.colid
  join systypes t on t.xusertype = c.xusertype
where o.name = @table_name and i.status & 2048 = 2048
order by k.keyno)";

constexpr std::string_view kStoredProcedures = R"(
select db_name() as PROCEDURE_QUALIFIER, user_name(uid) as PROCEDURE_OWNER,
  convert(nvarchar(134), name + N';1') as PROCEDURE_NAME, convert(int, -1) as NUM_INPUT_PARAMS,
  convert(int, -1) as NUM_OUTPUT_PARAMS, convert(int, -1) as NUM_RESULT_SETS,
  convert(varchar(254), null) as REMARKS, convert(smallint, 2) as PROCEDURE_TYPE
from sysobjects where xtype = 'P' and (@sp_name is null or name like @sp_name)
order by 3)";

constexpr std::string_view kServerInfo = R"(
select attribute_id, attribute_name, attribute_value from (
select 1 as attribute_id, 'DBMS_NAME' as attribute_name, 'Microsoft SQL Server' as attribute_value
union all select 2, 'DBMS_VER', @@version
union all select 10, 'OWNER_TERM', 'owner'
union all select 11, 'TABLE_TERM', 'table'
union all select 12, 'MAX_OWNER_NAME_LENGTH', '128'
union all select 13, 'TABLE_LENGTH', '128'
union all select 14, 'MAX_QUAL_LENGTH', '128'
union all select 15, 'COLUMN_LENGTH', '128'
union all select 16, 'IDENTIFIER_CASE', 'MIXED'
union all select 17, 'TX_ISOLATION', '2'
union all select 18, 'COLLATION_SEQ', 'charset=cp932 collation=Japanese_CI_AS'
union all select 500, 'SYS_SPROC_VERSION', '8.00.2039') info
where @attribute_id is null or attribute_id = @attribute_id
order by attribute_id)";

constexpr std::string_view kTypes = R"(
select name as TYPE_NAME, convert(smallint, odbc_type(xtype, @ODBCVer)) as DATA_TYPE,
  convert(int, case xtype when 34 then 2147483647 when 35 then 2147483647 when 99 then 1073741823
    when 36 then 36 when 98 then 8000 else case prec when 0 then length else prec end end)
    as [PRECISION],
  convert(nvarchar(32), case when xtype in (99, 231, 239) then 'N'''
    when xtype in (35, 36, 58, 61, 167, 175) then '''' when xtype in (34, 165, 173, 189) then '0x'
    when xtype in (60, 122) then '$' end) as LITERAL_PREFIX,
  convert(nvarchar(32), case when xtype in (35, 36, 58, 61, 99, 167, 175, 231, 239) then ''''
    end) as LITERAL_SUFFIX,
  convert(nvarchar(32), case when xusertype in (165, 167, 231) then 'max length'
    when xtype in (173, 175, 239) then 'length' when xtype in (106, 108) then 'precision,scale'
    end) as CREATE_PARAMS,
  convert(smallint, 1) as NULLABLE, convert(smallint, 0) as CASE_SENSITIVE,
  convert(smallint, case when xtype = 34 then 0 when xtype in (35, 99) then 1
    when xtype in (58, 61, 167, 175, 231, 239) then 3 else 2 end) as SEARCHABLE,
  convert(smallint, case when xtype = 48 then 1
    when xtype in (52, 56, 59, 60, 62, 106, 108, 122, 127) then 0 end) as UNSIGNED_ATTRIBUTE,
  convert(smallint, case when xtype in (60, 122) then 1 else 0 end) as MONEY,
  convert(smallint, case when xtype in (48, 52, 56, 59, 60, 62, 106, 108, 122, 127) then 0 end)
    as AUTO_INCREMENT,
  name as LOCAL_TYPE_NAME,
  convert(smallint, case when xtype in (48, 52, 56, 59, 60, 62, 106, 108, 122, 127) then 0 end)
    as MINIMUM_SCALE,
  convert(smallint, case when xtype in (106, 108) then 38
    when xtype in (48, 52, 56, 59, 60, 62, 122, 127) then 0 end) as MAXIMUM_SCALE,
  convert(smallint, case when xtype in (58, 61) then 9 else odbc_type(xtype, 2) end)
    as SQL_DATA_TYPE,
  convert(smallint, case when xtype in (58, 61) then 3 end) as SQL_DATETIME_SUB,
  case when xtype in (59, 62) then 2 when xtype in (48, 52, 56, 60, 98, 106, 108, 122, 127) then 10
    end as NUM_PREC_RADIX,
  convert(smallint, null) as INTERVAL_PRECISION, convert(smallint, 0) as USERTYPE
from systypes
where @data_type is null or @data_type = 0 or odbc_type(xtype, @ODBCVer) = @data_type
order by 2, 1)";

constexpr ProcedureRow kProcedures[] = {
    {"sp_who", "@loginame=", nullptr, R"(
select spid, ecid, status, loginame, hostname, convert(char(5), blocked) as blk,
  convert(nchar(128), db_name(dbid)) as dbname, cmd
from master.dbo.sysprocesses
where @loginame is null or loginame = @loginame or convert(nvarchar(10), spid) = @loginame
  or (lower(@loginame) = N'active' and cmd <> 'AWAITING COMMAND')
order by spid)"},
    {"sp_lock", "@spid1=, @spid2=", nullptr, R"(
select convert(smallint, req_spid) as spid, rsc_dbid as dbid, rsc_objid as ObjId,
  rsc_indid as IndId, case rsc_type when 5 then 'TAB' else 'DB' end as Type,
  rsc_text as Resource, case req_mode when 3 then 'S' when 8 then 'IX' else 'X' end as Mode,
  case req_status when 1 then 'GRANT' else 'WAIT' end as Status
from master.dbo.syslockinfo
where @spid1 is null or req_spid = @spid1 or req_spid = @spid2)"},
    {"sp_tables", "@table_name=, @table_owner=, @table_qualifier=, @table_type=", nullptr, kTables},
    {"sp_columns",
     "@table_name=, @table_owner=, @table_qualifier=, @column_name=, @ODBCVer=", nullptr, kColumns},
    {"sp_pkeys", "@table_name, @table_owner=, @table_qualifier=", nullptr, kPrimaryKeys},
    {"sp_fkeys",
     "@pktable_name=, @pktable_owner=, @pktable_qualifier=, @fktable_name=, @fktable_owner=, "
     "@fktable_qualifier=",
     nullptr, kForeignKeys},
    {"sp_statistics",
     "@table_name, @table_owner=, @table_qualifier=, @index_name=, @is_unique=, @accuracy=",
     nullptr, kStatistics},
    {"sp_special_columns",
     "@table_name, @table_owner=, @table_qualifier=, @col_type=, @scope=, @nullable=, @ODBCVer=",
     nullptr, kSpecialColumns},
    {"sp_stored_procedures", "@sp_name=, @sp_owner=, @sp_qualifier=", nullptr, kStoredProcedures},
    {"sp_datatype_info", "@data_type=, @ODBCVer=", nullptr, kTypes},
    {"sp_server_info", "@attribute_id=", nullptr, kServerInfo},
};

}  // namespace

std::span<const ProcedureRow> MetadataProcedures() { return kProcedures; }

}  // namespace dbkeeper::server
