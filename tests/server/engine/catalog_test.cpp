// The system tables and the procedures that read them.
#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {

namespace {

struct Case {
  const char* batch;
  const char* expected;
};

using CatalogTest = EngineTest;

template <std::size_t Count>
void Answers(Client client, const Case (&cases)[Count]) {
  for (const Case& c : cases) EXPECT_EQ(client.Run(c.batch), c.expected) << c.batch;
}

}  // namespace

TEST_F(CatalogTest, DatabasesAndTheirStates) {
  constexpr Case kCases[] = {
      {"select name, dbid, status, cmptlevel, version from master.dbo.sysdatabases order by dbid",
       "master|1|24|80|539\ntempdb|2|8|80|539\nmodel|3|1073741840|80|539\nmsdb|4|24|80|539\n"
       "販売管理|5|24|80|539\n郵便番号|6|1048|80|539\n旧販売管理|7|536|80|539"},
      {"use 旧販売管理", "error 942"},
      {"select * from 旧販売管理..売上", "error 942"},
      {"use 郵便番号 select count(*) from 郵便番号", "now 郵便番号\n5"},
      {"delete 郵便番号", "error 3906"},
      {"create table t (a int)", "error 3906"},
      {"select db_name(), db_id(), db_name(5), db_id('MSDB'), db_id('nothing')",
       "郵便番号|6|販売管理|4|NULL"},
      {"select databasepropertyex('旧販売管理', 'Status'), databaseproperty('郵便番号', "
       "'IsReadOnly')",
       "OFFLINE|1"},
      {"use master alter database 旧販売管理 set ONLINE,MULTI_USER,READ_WRITE use 旧販売管理 "
       "select "
       "金額 from 売上",
       "now master\nnow 旧販売管理\n12345678.9000"},
      {"use master alter database 旧販売管理 set OFFLINE", "now master"},
      {"alter database nothing set OFFLINE", "error 5011"},
      {"alter database master set READ_ONLY", "error 5058"},
      {"alter database tempdb modify name = other", "error 5016"},
      {"exec sp_rename 'tempdb', 'other', 'DATABASE'", "error 5016"},
      {"begin tran alter database 旧販売管理 modify name = 昔 rollback tran", "error 226"},
      {"alter database 旧販売管理 modify name = 昔", ""},
      {"alter database 昔 modify name = 旧販売管理", ""},
      {"alter database 販売管理 set SOMETHING", "error 50001"},
      {"drop database msdb", "error 3708"},
      {"drop database nothing", "error 3701"},
      {"create database 販売管理", "error 1801"},
      {"sp_dboption '郵便番号', 'read only', 'false'", ""},
      {"delete 郵便番号..郵便番号 where 番号 = '1000001'", "(1)"},
      {"exec sp_dboption '郵便番号', 'read only', 'true' update 郵便番号..郵便番号 set 番号 = '1'",
       "error 3906"},
      {"sp_helpdb nothing", "error 15010"},
      {"select serverproperty('ProductVersion'), serverproperty('ServerName'), "
       "serverproperty('IsSingleUser')",
       "8.00.2039|LOCALTEST|0"},
  };
  Answers(Operator(), kCases);
}

TEST_F(CatalogTest, DefinitionsAreFoundInTheSystemTables) {
  Client client = Operator();
  client.Run("create database 目録");
  client.Run("use 目録");
  ASSERT_EQ(client.Run("create table p (k int constraint PK_p primary key)"
                       "create table t (i int identity(3,2), n nvarchar(20) null, d decimal(9,3) "
                       "not null constraint DF_t default (1.5), c char(4) constraint CK_t check (c "
                       "<> 'x'), r int constraint FK_t references p on delete cascade)"
                       "create unique clustered index ix on t (n desc, i)"),
            "");
  constexpr Case kCases[] = {
      {"select name, xtype, type from sysobjects where id > 1000 order by name",
       "CK_t|C |C \nDF_t|D |D \nFK_t|F |F \np|U |U \nPK_p|PK|K \nt|U |U "},
      {"select name, xtype, length, xprec, xscale, prec, scale, isnullable, colstat, collation "
       "from "
       "syscolumns where id = object_id('t') order by colid",
       "i|56|4|10|0|10|0|0|1|NULL\nn|231|40|0|0|20|NULL|1|0|Japanese_CI_AS\n"
       "d|106|5|9|3|9|3|0|0|NULL\nc|175|4|0|0|4|NULL|1|0|Japanese_CI_AS\nr|56|4|10|0|10|0|1|0|"
       "NULL"},
      {"select name, indid, status, keycnt from sysindexes where id in (object_id('t'), "
       "object_id('p')) order by name",
       "ix|1|18|2\nPK_p|1|2066|1"},
      {"select colid, keyno from sysindexkeys where id = object_id('t') order by keyno",
       "2|1\n1|2"},
      {"select text from syscomments where id = object_id('CK_t')", "(c <> 'x')"},
      {"select object_name(constid), object_name(rkeyid), fkey1, rkey1, keycnt from sysreferences",
       "FK_t|p|5|1|1"},
      {"select fkey, rkey, keyno from sysforeignkeys", "5|1|1"},
      {"select object_name(constid), colid from sysconstraints where id = object_id('t') order by "
       "1",
       "CK_t|4\nDF_t|3\nFK_t|5"},
      {"sp_helpindex t", "ix|clustered, unique located on PRIMARY|n(-), i"},
      {"sp_helpindex p", "PK_p|clustered, unique, primary key located on PRIMARY|k"},
      {"sp_helpindex nothing", "error 15009"},
      {"select columnproperty(object_id('t'), 'i', 'IsIdentity'), columnproperty(object_id('t'), "
       "'n', 'AllowsNull'), objectproperty(object_id('t'), 'IsUserTable'), "
       "col_name(object_id('t'), "
       "3), col_length('t', 'n')",
       "1|1|1|d|40"},
      {"select objectproperty(object_id('t'), 'TableHasForeignKey'), "
       "objectproperty(object_id('p'), 'TableHasForeignRef'), objectproperty(object_id('t'), "
       "'TableHasPrimaryKey'), objectproperty(object_id('t'), 'IsView'), "
       "objectproperty(object_id('t'), 'nothing')",
       "1|1|0|0|NULL"},
      {"select indexproperty(object_id('t'), 'ix', 'IsUnique'), index_col('t', 1, 2), "
       "indexkey_property(object_id('t'), 1, 1, 'IsDescending'), "
       "indexkey_property(object_id('t'), 1, 2, 'ColumnId')",
       "1|i|1|1"},
      {"select type_id('NVARCHAR'), type_name(56), type_name(256), type_id('nothing')",
       "231|int|sysname|NULL"},
      {"select user_name(), user_name(1), user_id('guest'), suser_sname(), suser_sname(0x01)",
       "dbo|dbo|2|HOST\\operator|sa"},
      {"insert p values (1) insert t (n, r) values ('a', 1) select rows from sysindexes where name "
       "= 'ix'",
       "(1)\n(1)\n1"},
      {"sp_pkeys p", "目録|dbo|p|k|1|PK_p"},
      {"sp_tables p", "目録|dbo|p|TABLE|NULL"},
      {"select TABLE_NAME, DATA_TYPE from INFORMATION_SCHEMA.COLUMNS where TABLE_NAME = 'p'",
       "p|int"},
      {"sp_datatype_info 12",
       "varchar|12|8000|'|'|max length|1|0|3|NULL|0|NULL|varchar|NULL|NULL|12|NULL|NULL|NULL|0"},
      {"sp_datatype_info 93, 3",
       "datetime|93|23|'|'|NULL|1|0|3|NULL|0|NULL|datetime|NULL|NULL|9|3|NULL|NULL|0\n"
       "smalldatetime|93|16|'|'|NULL|1|0|3|NULL|0|NULL|smalldatetime|NULL|NULL|9|3|NULL|NULL|0"},
      {"drop table t drop table p select count(*) from sysobjects where id > 1000 select count(*) "
       "from syscolumns where id > 1000 select count(*) from sysindexes where id > 1000",
       "0\n0\n0"},
  };
  Answers(std::move(client), kCases);
}

TEST_F(CatalogTest, ExtendedPropertiesAreAddedChangedAndListed) {
  constexpr Case kCases[] = {
      {"use 販売管理", "now 販売管理"},
      {"select objname, name, value from ::fn_listextendedproperty(default, 'user', 'dbo', "
       "'table', "
       "default, default, default) where objname = '得意先' order by name",
       "得意先|MS_Description|得意先マスタ\n得意先|Note|経理部が登録する"},
      {"select objtype, objname, value from ::fn_listextendedproperty(null, 'user', 'dbo', "
       "'table', "
       "'得意先', 'column', default) where name = 'Note'",
       "COLUMN|与信限度額|年に一度見直す"},
      {"execute sp_addextendedproperty 'MS_Description', 'x','user', 'dbo', 'table',[得意先], "
       "'column', '住所'",
       ""},
      {"execute sp_addextendedproperty 'MS_Description', 'x','user', 'dbo', 'table',[得意先], "
       "'column', '住所'",
       "error 15233"},
      {"execute sp_updateextendedproperty 'MS_Description', 'y','user', 'dbo', 'table',[得意先], "
       "'column', '住所'",
       ""},
      {"select value from ::fn_listextendedproperty('MS_Description', 'user', 'dbo', 'table', "
       "'得意先', 'column', '住所')",
       "y"},
      {"execute sp_dropextendedproperty 'MS_Description', 'user', 'dbo', 'table',[得意先], "
       "'column', "
       "'住所'",
       ""},
      {"execute sp_dropextendedproperty 'MS_Description', 'user', 'dbo', 'table',[得意先], "
       "'column', "
       "'住所'",
       "error 15217"},
      {"execute sp_addextendedproperty 'a', 'x', 'user', 'dbo', 'table', nothing", "error 15135"},
      {"execute sp_addextendedproperty 'a', 'x', 'planet', 'dbo'", "error 15600"},
      {"execute sp_addextendedproperty 'a', 'x' select name, value from "
       "::fn_listextendedproperty(default, default, default, default, default, default, default)",
       "a|x"},
      {"execute sp_dropextendedproperty 'a'", ""},
  };
  Answers(Operator(), kCases);
}

TEST_F(CatalogTest, LoginsUsersAndRoles) {
  constexpr Case kCases[] = {
      {"select name, hasaccess, isntname, sysadmin, dbcreator from master.dbo.syslogins order by "
       "name",
       "BUILTIN\\Administrators|1|1|1|0\nreport|1|0|0|0\nsa|1|0|1|0\ntanaka|1|0|0|1"},
      {"exec sp_addlogin [yamada], 'pw', '販売管理'", "message 15298"},
      {"exec sp_addlogin [YAMADA], 'pw'", "error 15025"},
      {"exec sp_addlogin x, 'pw', 'nothing'", "error 15010"},
      {"exec sp_password null, 'new', [yamada]", "message 15478"},
      {"exec sp_password 'wrong', 'new', [yamada]", "error 15211"},
      {"exec sp_grantlogin @loginame = [LOCALTEST\\root]", "message 15485"},
      {"exec sp_grantlogin @loginame = [kato]", "error 15407"},
      {"exec sp_defaultdb 'yamada', 'msdb' exec sp_defaultlanguage 'yamada', 'Japanese' select "
       "dbname, language from master..syslogins where name = 'yamada'",
       "message 15461\nmessage 15462\nmsdb|Japanese"},
      {"use 販売管理 exec sp_grantdbaccess [yamada], [yamada]", "now 販売管理\nmessage 15341"},
      {"exec sp_grantdbaccess [yamada], [other]", "error 15063"},
      {"exec sp_grantdbaccess [nobody]", "error 15007"},
      {"select name from sysusers where(issqlrole <> 1)and(hasdbaccess = 1)",
       "dbo\ntanaka\nreport\nyamada"},
      {"exec sp_droplogin [yamada]", "error 15175"},
      {"exec sp_addrole [集計]", "message 15424"},
      {"exec sp_addrole [集計]", "error 15023"},
      {"exec sp_addrolemember [集計], [yamada] exec sp_helprolemember [集計]",
       "message 15488\n集計|yamada|16 bytes"},
      {"exec sp_addrolemember [nothing], [yamada]", "error 15014"},
      {"exec sp_droprole [集計]", "error 15144"},
      {"exec sp_droprolemember [集計], [yamada] exec sp_droprole [集計]",
       "message 15489\nmessage 15425"},
      {"exec sp_droprole db_owner", "error 15405"},
      {"exec sp_revokedbaccess [yamada]", "message 15342"},
      {"exec sp_revokedbaccess [yamada]", "error 15008"},
      {"exec sp_addsrvrolemember [yamada], [sysadmin] exec sp_helpsrvrolemember [sysadmin]",
       "message 15488\nsysadmin|BUILTIN\\Administrators|16 bytes\nsysadmin|sa|1 bytes\n"
       "sysadmin|yamada|16 bytes"},
      {"exec sp_dropsrvrolemember [yamada], [nothing]", "error 15402"},
      {"exec sp_droplogin [yamada]", "message 15479"},
      {"exec sp_droplogin [yamada]", "error 15007"},
      {"exec sp_revokelogin @loginame = [LOCALTEST\\root]", "message 15486"},
      {"select o.name, u.name, p.action, p.protecttype from sysprotects p join sysobjects o on "
       "o.id "
       "= p.id join sysusers u on u.uid = p.uid order by 1, 3",
       "受注|営業|193|205\n受注|営業|195|205\n受注|営業|196|206\n受注|営業|197|205\n"
       "得意先|閲覧|193|205"},
      {"revoke delete on 受注 to 営業 grant execute on 受注 to 営業", "error 4606"},
      {"grant select on 受注 to nobody", "error 4604"},
      {"sp_helprole '営業'", "営業|16400|0"},
      {"exec sp_addlogin", "error 201"},
      {"exec sp_addlogin @nothing = 1", "error 8145"},
      {"exec sp_droplogin a, b", "error 8144"},
  };
  Answers(Operator(), kCases);
}

TEST_F(CatalogTest, JobsDevicesAndHistory) {
  constexpr Case kCases[] = {
      {"exec sp_add_jobserver @job_name = [週次集計]", "error 2812"},
      {"exec sp_help_job", "error 2812"},
      {"exec sp_delete_backuphistory @oldest_date = '1990/01/01'", "error 2812"},
      {"exec msdb..sp_delete_backuphistory @oldest_date = '1990/01/01'", "(0)\n(0)\n(0)\n(0)"},
      {"use msdb", "now msdb"},
      {"exec sp_add_jobserver @job_name = [週次集計]", ""},
      {"exec sp_add_jobserver @job_name = [週次集計]", "error 14269"},
      {"exec sp_delete_jobserver @job_name = [週次集計],@server_name = '(local)'", ""},
      {"exec sp_delete_jobserver @job_name = [週次集計],@server_name = '(local)'", "error 14270"},
      {"EXEC sp_delete_job @job_name = [nothing]", "error 14262"},
      {"EXEC sp_delete_job", "error 14294"},
      {"EXEC sp_delete_job @job_name = [週次集計] select name from sysjobs", "夜間バックアップ"},
      {"exec sp_addumpdevice 'disk', 'dev', 'C:\\x.bak'", "says 'Disk' device added."},
      {"exec sp_addumpdevice 'disk', 'dev', 'C:\\y.bak'", "error 15026"},
      {"exec sp_addumpdevice 'disk', 'dev2', 'C:\\x.bak'", "error 15061"},
      {"select name, phyname from master.dbo.sysdevices where status=16 order by name",
       "BK_master|C:\\BACKUP\\BK_master.bak\nBK_販売管理|C:\\BACKUP\\BK_販売管理.bak\ndev|C:\\x."
       "bak"},
      {"EXEC sp_dropdevice [dev]", "message 15463"},
      {"EXEC sp_dropdevice [dev]", "error 15012"},
      {"select backup_set_id,media_set_id,name,type,backup_size from backupset where database_name "
       "= '販売管理' order by media_set_id,backup_set_id desc",
       "3|1|BK_DAY_販売管理|D|1574400\n2|1|BK_DAY_販売管理|D|1573376\n1|1|BK_DAY_販売管理|D|"
       "1572864\n"
       "5|2|手動|D|1574912\n4|2|手動|D|1573888"},
  };
  Answers(Operator(), kCases);
}

TEST_F(CatalogTest, SizesComeFromThePages) {
  Client client = Operator();
  client.Run("use 販売管理");
  const std::string before = client.Run("exec sp_spaceused [受注明細]");
  EXPECT_TRUE(before.starts_with("受注明細|3000 ")) << before;
  EXPECT_EQ(client.last().columns.size(), 6U);
  EXPECT_NE(before.find(" KB|"), std::string::npos);
  client.Run("create table 大 (a char(8000)) insert 大 values ('x') insert 大 values ('y')");
  EXPECT_EQ(client.Run("exec [販売管理].dbo.sp_spaceused  [大]"),
            "大|2          |20 KB|20 KB|0 KB|0 KB");
  client.Run("drop table 大");
  const std::string whole = client.Run("EXEC sp_spaceused");
  EXPECT_TRUE(whole.starts_with("販売管理|")) << whole;
  EXPECT_NE(whole.find(" MB|"), std::string::npos);
  EXPECT_EQ(client.Run("exec sp_spaceused nothing"), "error 15009");
  // What is offline is told of only where it is asked for.
  const std::string all = client.Run("sp_helpdb");
  EXPECT_NE(all.find("\n販売管理|"), std::string::npos) << all;
  EXPECT_EQ(all.find("旧販売管理|"), std::string::npos) << all;
  EXPECT_TRUE(all.ends_with("message 15622")) << all;
  EXPECT_NE(client.Run("sp_helpdb [旧販売管理]").find("Status=OFFLINE"), std::string::npos);
  const std::string status = client.Run("sp_helpdb [郵便番号]");
  EXPECT_NE(status.find("Status=ONLINE, Updateability=READ_ONLY, UserAccess=MULTI_USER, "
                        "Recovery=SIMPLE, Version=539, Collation=Japanese_CI_AS, SQLSortOrder=0, "
                        "IsTornPageDetectionEnabled, IsAutoCreateStatistics, "
                        "IsAutoUpdateStatistics"),
            std::string::npos)
      << status;
}

}  // namespace dbkeeper::server
