#include "server/catalog/system_tables.h"

#include <algorithm>

#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

constexpr int kSysnameUserType = 18;
constexpr int kTextPointer = 16;  // of a large object's bytes only this stands in the row

int StoredLength(const SqlType& type) {
  const TypeFacts& facts = FactsOf(type.id);
  if (facts.TakesPrecision()) return DecimalBytes(type.precision);
  if (facts.TakesLength()) return type.length * UnitOf(type.id);
  return IsLargeObject(type.id) ? kTextPointer : facts.length;
}

bool HasScale(const TypeFacts& facts) {
  return facts.family <= TypeFamily::kDateTime && facts.family != TypeFamily::kReal &&
         facts.id != TypeId::kBit;
}

}  // namespace

StoredType StoredTypeOf(const SqlType& type, bool is_sysname) {
  const TypeFacts& facts = FactsOf(type.id);
  const bool precise = facts.TakesPrecision();
  StoredType stored{.xtype = facts.xtype,
                    .xusertype = is_sysname ? kSysnameType : facts.xtype,
                    .length = StoredLength(type),
                    .xprec = precise                    ? type.precision
                             : facts.id == TypeId::kBit ? 0
                                                        : facts.precision,
                    .xscale = precise ? type.scale : facts.scale,
                    .type = facts.type,
                    .usertype = is_sysname ? kSysnameUserType : facts.usertype,
                    .prec = {},
                    .scale = {}};
  stored.prec = std::int64_t{facts.TakesLength()      ? type.length
                             : IsLargeObject(type.id) ? facts.length
                             : precise                ? type.precision
                                                      : facts.precision};
  if (HasScale(facts)) stored.scale = std::int64_t{stored.xscale};
  return stored;
}

SqlType TypeOfStored(int xtype, int length, int xprec, int xscale) {
  const TypeFacts& facts = *std::ranges::find(kTypes, xtype, &TypeFacts::xtype);
  const bool precise = facts.TakesPrecision();
  return {facts.id, facts.TakesLength() ? length / UnitOf(facts.id) : facts.length,
          precise ? xprec : facts.precision, precise ? xscale : facts.scale, true};
}

std::string_view DatabaseSystemTables() {
  return R"(
create table sysobjects (name sysname not null, id int not null, xtype char(2) not null,
  uid smallint not null, info smallint not null, status int not null,
  base_schema_ver int not null, replinfo int not null, parent_obj int not null,
  crdate datetime not null, ftcatid smallint not null, schema_ver int not null,
  stats_schema_ver int not null, type char(2), userstat smallint, sysstat smallint,
  indexdel smallint, refdate datetime, version int, deltrig int, instrig int, updtrig int,
  seltrig int, category int, cache smallint)
create table sysindexes (id int not null, status int not null, first binary(6),
  indid smallint not null, root binary(6), minlen smallint not null, keycnt smallint not null,
  groupid smallint not null, dpages int not null, reserved int not null, used int not null,
  rowcnt bigint not null, rowmodctr int not null, reserved3 tinyint not null,
  reserved4 tinyint not null, xmaxlen smallint not null, maxirow smallint not null,
  OrigFillFactor tinyint not null, StatVersion tinyint not null, reserved2 int not null,
  FirstIAM binary(6), impid smallint not null, lockflags smallint not null,
  pgmodctr int not null, keys varbinary(1088), name sysname null, statblob image, maxlen int, rows int)
create table syscolumns (name sysname null, id int not null, xtype tinyint not null,
  typestat tinyint not null, xusertype smallint not null, length smallint not null,
  xprec tinyint not null, xscale tinyint not null, colid smallint not null,
  xoffset smallint not null, bitpos tinyint not null, reserved tinyint not null,
  colstat smallint not null, cdefault int not null, domain int not null,
  number smallint not null, colorder smallint not null, autoval varbinary(8000),
  offset smallint not null, collationid int, language int, status tinyint, type tinyint not null,
  usertype smallint, printfmt varchar(255), prec smallint, scale int, iscomputed int,
  isoutparam int, isnullable int, collation sysname null, tdscollation binary(5))
create table systypes (name sysname not null, xtype tinyint not null, status tinyint not null,
  xusertype smallint not null, length smallint not null, xprec tinyint not null,
  xscale tinyint not null, tdefault int not null, domain int not null, uid smallint not null,
  reserved smallint not null, collationid int, usertype smallint, variable bit, allownulls bit,
  type tinyint not null, printfmt varchar(255), prec smallint, scale tinyint, collation sysname null)
create table syscomments (id int not null, number smallint not null, colid smallint not null,
  status smallint not null, ctext varbinary(8000), texttype smallint, language smallint,
  encrypted bit not null, compressed bit not null, text nvarchar(4000))
create table sysfiles (fileid smallint not null, groupid smallint not null, size int not null,
  maxsize int not null, growth int not null, status int not null, perf int not null,
  name nchar(128) not null, filename nchar(260) not null)
create table sysusers (uid smallint not null, status smallint not null, name sysname not null,
  sid varbinary(85), roles varbinary(2048), createdate datetime not null,
  updatedate datetime not null, altuid smallint, password varbinary(256), gid smallint,
  environ varchar(255), hasdbaccess int, islogin int, isntname int, isntgroup int, isntuser int,
  issqluser int, isaliased int, issqlrole int, isapprole int)
create table sysproperties (id int not null, smallid smallint not null, type tinyint not null,
  name sysname not null, value sql_variant)
create table sysreferences (constid int not null, fkeyid int not null, rkeyid int not null,
  rkeyindid smallint not null, keycnt smallint not null, forkeys varbinary(32),
  refkeys varbinary(32), fkeydbid smallint not null, rkeydbid smallint not null, fkey1 smallint,
  fkey2 smallint, fkey3 smallint, fkey4 smallint, fkey5 smallint, fkey6 smallint, fkey7 smallint,
  fkey8 smallint, fkey9 smallint, fkey10 smallint, fkey11 smallint, fkey12 smallint,
  fkey13 smallint, fkey14 smallint, fkey15 smallint, fkey16 smallint, rkey1 smallint,
  rkey2 smallint, rkey3 smallint, rkey4 smallint, rkey5 smallint, rkey6 smallint, rkey7 smallint,
  rkey8 smallint, rkey9 smallint, rkey10 smallint, rkey11 smallint, rkey12 smallint,
  rkey13 smallint, rkey14 smallint, rkey15 smallint, rkey16 smallint)
create table sysindexkeys (id int not null, indid smallint not null, colid smallint not null,
  keyno smallint not null)
create table sysforeignkeys (constid int not null, fkeyid int not null, rkeyid int not null,
  fkey smallint not null, rkey smallint not null, keyno smallint not null)
create table sysmembers (memberuid smallint not null, groupuid smallint not null)
create table sysprotects (id int not null, uid smallint not null, action tinyint not null,
  protecttype tinyint not null, columns varbinary(4000), grantor smallint not null)
create table sysconstraints (constid int not null, id int not null, colid smallint,
  spare1 tinyint, status int, actions int, error int)
)";
}

std::string_view MasterSystemTables() {
  return R"(
create table sysdatabases (name sysname not null, dbid smallint not null, sid varbinary(85),
  mode smallint not null, status int not null, status2 int not null, crdate datetime not null,
  reserved datetime not null, category int not null, cmptlevel tinyint not null,
  filename nvarchar(260), version smallint)
create table syslogins (sid varbinary(85), status smallint not null, createdate datetime not null,
  updatedate datetime not null, accdate datetime not null, totcpu int not null,
  totio int not null, spacelimit int not null, timelimit int not null, resultlimit int not null,
  name sysname not null, dbname sysname null, password sysname null, language sysname null, denylogin int,
  hasaccess int, isntname int, isntgroup int, isntuser int, sysadmin int, securityadmin int,
  serveradmin int, setupadmin int, processadmin int, diskadmin int, dbcreator int, bulkadmin int,
  loginname sysname not null)
create table sysdevices (name sysname not null, size int not null, low int not null,
  high int not null, status smallint not null, cntrltype smallint not null,
  phyname nvarchar(260) not null)
create table sysprocesses (spid smallint not null, kpid smallint not null,
  blocked smallint not null, waittype binary(2) not null, waittime int not null,
  lastwaittype nchar(32) not null, waitresource nchar(256) not null, dbid smallint not null,
  uid smallint not null, cpu int not null, physical_io bigint not null, memusage int not null,
  login_time datetime not null, last_batch datetime not null, ecid smallint not null,
  open_tran smallint not null, status nchar(30) not null, sid binary(86) not null,
  hostname nchar(128) not null, program_name nchar(128) not null, hostprocess nchar(8) not null,
  cmd nchar(16) not null, nt_domain nchar(128) not null, nt_username nchar(128) not null,
  net_address nchar(12) not null, net_library nchar(12) not null, loginame nchar(128) not null,
  context_info binary(128) not null)
create table syslockinfo (rsc_text nchar(32) not null, rsc_bin binary(16) not null,
  rsc_valblk binary(16) not null, rsc_dbid smallint not null, rsc_indid smallint not null,
  rsc_objid int not null, rsc_type tinyint not null, rsc_flag tinyint not null,
  req_mode tinyint not null, req_status tinyint not null, req_refcnt smallint not null,
  req_cryrefcnt smallint not null, req_lifetime int not null, req_spid int not null,
  req_ecid int not null, req_ownertype smallint not null, req_transactionID bigint,
  req_transactionUOW uniqueidentifier)
create table sysservers (srvid smallint not null, srvstatus smallint not null,
  srvname sysname not null, srvproduct nvarchar(128) not null, providername nvarchar(128) not null,
  datasource nvarchar(4000), location nvarchar(4000), providerstring nvarchar(4000),
  schemadate datetime not null, topologyx int not null, topologyy int not null, catalog sysname null,
  srvcollation sysname null, connecttimeout int, querytimeout int, srvnetname char(30))
create table syslanguages (langid smallint not null, dateformat nchar(3) not null,
  datefirst tinyint not null, upgrade int, name sysname not null, alias sysname null,
  months nvarchar(372), shortmonths nvarchar(132), days nvarchar(217), lcid int not null,
  msglangid smallint not null)
)";
}

std::string_view MsdbTables() {
  return R"(
create table backupmediaset (media_set_id int identity(1,1) not null primary key,
  media_uuid uniqueidentifier, media_family_count tinyint, name nvarchar(128),
  description nvarchar(255), software_name nvarchar(128), software_vendor_id int,
  MTF_major_version tinyint)
create table backupmediafamily (media_set_id int not null references backupmediaset(media_set_id),
  family_sequence_number tinyint not null, media_family_id uniqueidentifier, media_count int,
  logical_device_name nvarchar(128), physical_device_name nvarchar(260), device_type tinyint,
  physical_block_size int, primary key (media_set_id, family_sequence_number))
create table backupset (backup_set_id int identity(1,1) not null primary key,
  backup_set_uuid uniqueidentifier not null,
  media_set_id int not null references backupmediaset(media_set_id), first_family_number tinyint,
  first_media_number smallint, last_family_number tinyint, last_media_number smallint,
  catalog_family_number tinyint, catalog_media_number smallint, position int,
  expiration_date datetime, software_vendor_id int, name nvarchar(128),
  description nvarchar(255), user_name nvarchar(128), software_major_version tinyint,
  software_minor_version tinyint, software_build_version smallint, time_zone smallint,
  mtf_minor_version tinyint, first_lsn numeric(25,0), last_lsn numeric(25,0),
  checkpoint_lsn numeric(25,0), database_backup_lsn numeric(25,0), database_creation_date datetime,
  backup_start_date datetime, backup_finish_date datetime, type char(1), sort_order smallint,
  code_page smallint, compatibility_level tinyint, database_version int,
  backup_size numeric(20,0), database_name nvarchar(128), server_name nvarchar(128),
  machine_name nvarchar(128), flags int, unicode_locale int, unicode_compare_style int,
  collation_name nvarchar(128))
create table backupfile (backup_set_id int not null references backupset(backup_set_id),
  first_family_number tinyint, first_media_number smallint, filegroup_name nvarchar(128),
  page_size int, file_number numeric(10,0) not null, backed_up_page_count numeric(10,0),
  file_type char(1), source_file_block_size numeric(10,0), file_size numeric(20,0),
  logical_name nvarchar(128), physical_drive varchar(260), physical_name varchar(260),
  primary key (backup_set_id, file_number))
create table sysjobs (job_id uniqueidentifier not null primary key,
  originating_server nvarchar(30) not null, name sysname not null, enabled tinyint not null,
  description nvarchar(512), start_step_id int not null, category_id int not null,
  owner_sid varbinary(85) not null, notify_level_eventlog int not null,
  notify_level_email int not null, notify_level_netsend int not null,
  notify_level_page int not null, notify_email_operator_id int not null,
  notify_netsend_operator_id int not null, notify_page_operator_id int not null,
  delete_level int not null, date_created datetime not null, date_modified datetime not null,
  version_number int not null)
create table sysjobservers (job_id uniqueidentifier not null, server_id int not null,
  last_run_outcome tinyint not null, last_outcome_message nvarchar(1024),
  last_run_date int not null, last_run_time int not null, last_run_duration int not null)
create table sysjobsteps (job_id uniqueidentifier not null, step_id int not null,
  step_name sysname not null, subsystem nvarchar(40) not null, command nvarchar(3200),
  flags int not null, additional_parameters ntext, cmdexec_success_code int not null,
  on_success_action tinyint not null, on_success_step_id int not null,
  on_fail_action tinyint not null, on_fail_step_id int not null, server sysname null,
  database_name sysname null, database_user_name sysname null, retry_attempts int not null,
  retry_interval int not null, os_run_priority int not null, output_file_name nvarchar(200),
  last_run_outcome int not null, last_run_duration int not null, last_run_retries int not null,
  last_run_date int not null, last_run_time int not null)
create table sysjobschedules (schedule_id int identity(1,1) not null primary key,
  job_id uniqueidentifier not null, name sysname not null, enabled int not null,
  freq_type int not null, freq_interval int not null, freq_subday_type int not null,
  freq_subday_interval int not null, freq_relative_interval int not null,
  freq_recurrence_factor int not null, active_start_date int not null,
  active_end_date int not null, active_start_time int not null, active_end_time int not null,
  next_run_date int not null, next_run_time int not null, date_created datetime not null)
create table sysjobhistory (instance_id int identity(1,1) not null primary key,
  job_id uniqueidentifier not null, step_id int not null, step_name sysname not null,
  sql_message_id int not null, sql_severity int not null, message nvarchar(1024),
  run_status int not null, run_date int not null, run_time int not null,
  run_duration int not null, operator_id_emailed int not null, operator_id_netsent int not null,
  operator_id_paged int not null, retries_attempted int not null, server nvarchar(30) not null)
create table syscategories (category_id int identity(1,1) not null primary key,
  category_class int not null, category_type tinyint not null, name sysname not null)
)";
}

}  // namespace dbkeeper::server
