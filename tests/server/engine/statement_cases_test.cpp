// Statements with results and error numbers as SQL Server 2000 documents them. Each table is one
// conversation in a database of its own: later rows see what earlier ones did.
#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {

namespace {

struct Case {
  const char* batch;
  const char* expected;
};

using StatementTest = EngineTest;

template <std::size_t Count>
void Converse(Client client, const Case (&cases)[Count]) {
  client.Run("create database 作業");
  client.Run("use 作業");
  for (const Case& c : cases) EXPECT_EQ(client.Run(c.batch), c.expected) << c.batch;
  client.Run("use master");
  EXPECT_EQ(client.Run("drop database 作業"), "");
}

}  // namespace

TEST_F(StatementTest, TablesAreMadeFilledChangedAndDropped) {
  constexpr Case kCases[] = {
      {"create table t (a int not null, b varchar(5) null, c money)", ""},
      {"create table T (x int)", "error 2714"},
      {"insert t values (1, 'x', 2.5)", "(1)"},
      {"insert into t (a, c) values (2, $3)", "(1)"},
      {"insert t (b) values ('y')", "error 515\nmessage 3621"},
      {"insert t values (3, 'longer', 0)", "error 8152\nmessage 3621"},
      {"insert t values (3, 'z')", "error 213"},
      {"select a, b, c from t order by a", "1|x|2.5000\n2|NULL|3.0000"},
      {"update t set b = 'q' where a = 2", "(1)"},
      {"update t set b = 'q' where a = 99", "(0)"},
      {"update t set a = null", "error 515\nmessage 3621"},
      {"select count(*) from t where b = 'Q  '", "1"},
      {"select nothing from t", "error 207"},
      {"select * from missing", "error 208"},
      {"select * from 作業.dbo.t where a = 1", "1|x|2.5000"},
      {"select * from 作業..t where a = 1", "1|x|2.5000"},
      {"select * from 不明..t", "error 911"},
      {"select a into u from t where a = 1", "(1)"},
      {"select a into u from t", "error 2714"},
      {"select * from u", "1"},
      {"truncate table u", ""},
      {"select count(*) from u", "0"},
      {"truncate table v", "error 4701"},
      {"create table s (id int primary key, up int references s(id)) insert s values (1, 1)",
       "(1)"},
      {"truncate table s select count(*) from s drop table s", "0"},
      {"delete t where a = 1", "(1)"},
      {"delete from t", "(1)"},
      {"drop table u, t", ""},
      {"drop table t", "error 3701"},
      {"drop view sysobjects", "error 3705"},
      {"drop table sysobjects", "error 3708"},
      {"update sysobjects set name = 'x'", "error 259"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, ConstraintsAreCheckedAndNamed) {
  constexpr Case kCases[] = {
      {"create table p (k int constraint PK_p primary key, u varchar(4) constraint UQ_p unique)",
       ""},
      {"create table c (k int not null constraint FK_c references p(k), n int constraint CK_c "
       "check (n between 1 and 9), d int constraint DF_c default (7))",
       ""},
      {"insert p values (1, 'a') insert p values (2, 'b')", "(1)\n(1)"},
      {"insert p values (1, 'c')", "error 2627\nmessage 3621"},
      {"insert p values (3, 'B')", "error 2627\nmessage 3621"},
      {"insert c (k, n) values (1, 5)", "(1)"},
      {"select * from c", "1|5|7"},
      {"insert c (k, n) values (9, 5)", "error 547\nmessage 3621"},
      {"insert c (k, n) values (1, 10)", "error 547\nmessage 3621"},
      {"delete p where k = 1", "error 547\nmessage 3621"},
      {"update p set k = 5 where k = 1", "error 547\nmessage 3621"},
      {"delete p where k = 2", "(1)"},
      {"drop table p", "error 3726"},
      {"truncate table p", "error 4712"},
      {"create unique index ix on c (n)", ""},
      {"insert c (k, n) values (1, 5)", "error 2601\nmessage 3621"},
      {"create index ix on c (d)", "error 1913"},
      {"create index iy on c (nothing)", "error 1911"},
      {"drop index c.ix", ""},
      {"drop index c.ix", "error 3701"},
      {"drop index p.PK_p", "error 3723"},
      {"create index PK_p on p (k) with drop_existing", "error 1907"},
      {"create unique index PK_p on p (u) with drop_existing", "error 1907"},
      {"create unique clustered index PK_p on p (k) with drop_existing", ""},
      {"drop index p.PK_p", "error 3723"},
      {"insert c (k, n) values (1, 5)", "(1)"},
      {"create unique index ix on c (n)", "error 1505\nmessage 3621"},
      {"create clustered index i1 on c (n) create clustered index i2 on c (d)", "error 1902"},
      {"alter table c drop constraint FK_c", ""},
      {"insert c (k, n) values (9, 5)", "(1)"},
      {"alter table c add constraint FK_c foreign key (k) references p(k)",
       "error 547\nmessage 3621"},
      {"alter table c with nocheck add constraint FK_c foreign key (k) references p(k)", ""},
      {"insert c (k, n) values (9, 5)", "error 547\nmessage 3621"},
      {"alter table c nocheck constraint FK_c insert c (k, n) values (9, 5)", "(1)"},
      {"alter table c add constraint X check (n < 3)", "error 547\nmessage 3621"},
      {"alter table c drop constraint nothing", "error 3728"},
      {"alter table c drop constraint p", "error 3728"},
      {"alter table p drop constraint PK_p", "error 3725"},
      {"alter table c drop constraint CK_c insert c (k, n) values (1, 99)", "(1)"},
      {"alter table c add primary key (n)", "error 8111"},
      {"create table x (a int primary key, b int, primary key (b))", "error 8110"},
      {"create table x (d datetime check (d <= getdate())) waitfor delay '0:00:00.02'", ""},
      {"insert x values (getdate()) insert x values (getdate() + 1)",
       "(1)\nerror 547\nmessage 3621"},
      {"drop table x", ""},
      {"create table x (a int references nothing(b))", "error 1767"},
      {"create table x (a int references c(n))", "error 1776"},
      {"create table x (a varchar(3) references p(k))", "error 1778"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, FailuresOfKeysSayWhetherOneColumnIsMeant) {
  Client client = Operator();
  client.Run("create database 作業");
  client.Run("use 作業");
  client.Run("create table p (a int, b int, constraint PK_p primary key (a, b))");
  client.Run("create table c (a int, b int, constraint FK_c foreign key (a, b) references p)");
  client.Run(
      "create table d (a int constraint PK_d primary key, up int constraint FK_d "
      "references d)");
  client.Run("insert c values (1, 2)");
  EXPECT_EQ(client.FirstMessage(),
            "INSERT statement conflicted with TABLE FOREIGN KEY constraint 'FK_c'. The conflict "
            "occurred in database '作業', table 'p'.");
  client.Run("insert p values (1, 2) insert c values (1, 2)");
  client.Run("delete p");
  EXPECT_EQ(client.FirstMessage(),
            "DELETE statement conflicted with TABLE REFERENCE constraint 'FK_c'. The conflict "
            "occurred in database '作業', table 'c'.");
  client.Run("insert d values (1, 2)");
  EXPECT_EQ(client.FirstMessage(),
            "INSERT statement conflicted with COLUMN FOREIGN KEY constraint 'FK_d'. The conflict "
            "occurred in database '作業', table 'd', column 'a'.");
  client.Run("use master drop database 作業");
}

TEST_F(StatementTest, PropertiesOfAnIndexGoWithIt) {
  constexpr Case kCases[] = {
      {"create table t (a int, b int) create index i on t (a)", ""},
      {"exec sp_addextendedproperty 'n', 'x', 'user', 'dbo', 'table', 't', 'index', 'i'", ""},
      {"select objname from ::fn_listextendedproperty(null, 'user', 'dbo', 'table', 't', 'index', "
       "null)",
       "i"},
      {"drop index t.i create index j on t (b)", ""},
      {"select objname from ::fn_listextendedproperty(null, 'user', 'dbo', 'table', 't', 'index', "
       "null)",
       ""},
  };
  Converse(Operator(), kCases);
}

// Only what a statement leaves behind must be unique and refer to rows that are there.
TEST_F(StatementTest, KeysMayPassThroughEachOther) {
  constexpr Case kCases[] = {
      {"create table p (a int not null, b varchar(4) not null, n int constraint UQ_n unique "
       "constraint CK_n check (n < 100), constraint PK_p primary key (a, b))",
       ""},
      {"create table c (a int, b varchar(4), constraint FK_c foreign key (a, b) references p(a, b) "
       "on update cascade)",
       ""},
      {"insert p select 1, 'x', 10 union all select 2, 'x', 20 union all select 3, 'x', null",
       "(3)"},
      {"insert c select a, b from p", "(3)"},
      {"update p set a = a + 1", "(3)"},
      {"select a, n from p order by a", "2|10\n3|20\n4|NULL"},
      {"select a from c order by a", "2\n3\n4"},
      {"update p set n = 30 - n where n is not null", "(2)"},
      {"select a, n from p order by a", "2|20\n3|10\n4|NULL"},
      {"update q set n = o.n from p q, p o where q.a = 5 - o.a", "(2)"},
      {"select a, n from p order by a", "2|10\n3|20\n4|NULL"},
      {"update p set a = 2", "error 2627\nmessage 3621"},
      {"update p set n = n * 2 + 60, a = a + 1", "error 547\nmessage 3621"},
      {"select a, n from p order by a", "2|10\n3|20\n4|NULL"},
      {"alter table c drop constraint FK_c", ""},
      {"alter table c add constraint FK_c foreign key (a, b) references p(a, b)", ""},
      {"update p set a = a + 1", "error 547\nmessage 3621"},
      {"delete c where a = 2", "(1)"},
      {"update p set a = 7 - a where a > 2", "(2)"},
      {"select a, n from p order by a", "2|10\n3|NULL\n4|20"},
      {"begin tran update p set a = 7 - a where a > 2 rollback", "(2)"},
      {"create table b (x binary(6) primary key)", ""},
      {"insert b values (0x6B6579203200) insert b values (0x6B6579203100)", "(1)\n(1)"},
      {"update b set x = case x when 0x6B6579203200 then 0x6B6579203100 else 0x6B6579203200 end",
       "(2)"},
      {"select a, n from p order by a", "2|10\n3|NULL\n4|20"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, NullsAreEqualInUniqueKeys) {
  constexpr Case kCases[] = {
      {"create table t (a int, b varchar(4), c binary(2), constraint UQ_t unique (a, b))", ""},
      {"insert t values (null, 'x', 0x01) insert t values (null, 'y', null)", "(1)\n(1)"},
      {"insert t values (null, 'X ', 0x02)", "error 2627\nmessage 3621"},
      {"insert t values (1, null, 0x03) insert t values (null, null, 0x04)", "(1)\n(1)"},
      {"insert t values (null, null, null)", "error 2627\nmessage 3621"},
      {"update t set a = 1, b = null where b = 'y'", "error 2627\nmessage 3621"},
      {"create unique index ic on t (c)", ""},
      {"insert t values (2, 'z', null)", "error 2601\nmessage 3621"},
      {"drop index t.ic insert t values (2, 'z', null)", "(1)"},
      {"create unique index ic on t (c)", "error 1505\nmessage 3621"},
      {"alter table t drop constraint UQ_t insert t values (null, null, null)", "(1)"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, ColumnsAreAddedChangedAndDropped) {
  constexpr Case kCases[] = {
      {"create table t (a int not null, b int) insert t values (1, 10) insert t values (2, 20)",
       "(1)\n(1)"},
      {"alter table t add c varchar(10) null", ""},
      {"alter table t add d int not null", "error 4901"},
      {"alter table t add d int not null default (5)", ""},
      {"alter table t add e int identity(100,10)", ""},
      {"select * from t", "1|10|NULL|5|100\n2|20|NULL|5|110"},
      {"insert t (a) values (3) select e from t where a = 3", "(1)\n120"},
      {"alter table t add A int", "error 2705"},
      {"alter table t alter column b varchar(5) not null", "error 515\nmessage 3621"},
      {"update t set b = 30 where a = 3", "(1)"},
      {"alter table t alter column b varchar(5) not null", ""},
      {"select b + 'x' from t where a = 1", "10x"},
      {"update t set b = 'word' where a = 1", "(1)"},
      {"alter table t alter column b int", "error 245"},
      {"alter table t alter column b varchar(2)", "error 8152\nmessage 3621"},
      {"select b from t where a = 1", "word"},
      {"alter table t alter column nothing int", "error 4924"},
      {"alter table t drop column nothing", "error 4924"},
      {"alter table t drop column d", "error 5074\nerror 4922"},
      {"create index ix on t (c)", ""},
      {"alter table t drop column c", "error 5074\nerror 4922"},
      {"alter table t alter column c int", "error 5074\nerror 4922"},
      {"alter table t alter column c varchar(20)", ""},
      {"drop index t.ix alter table t drop column c", ""},
      {"select * from t where a = 2", "2|20|5|110"},
      {"alter table nothing add a int", "error 4902"},
      {"sp_rename 't.b', 'bb', 'COLUMN'", "message 15477"},
      {"select bb from t where a = 2", "20"},
      {"sp_rename 't', '表'", "message 15477"},
      {"select count(*) from 表", "3"},
      {"sp_rename '表', '表'", "error 15335"},
      {"sp_rename 'nothing', 'x'", "error 15009"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, TheTableDesignersStatementsRun) {
  constexpr Case kCases[] = {
      {"create table [社員](\r\n"
       "    [社員番号                        ] int               not null  identity(1,1),\r\n"
       "    [名                              ] varchar          (20) null      default ('x'),\r\n"
       "    [給与                            ] decimal          (10,2) null     )",
       ""},
      {"select name + '|' from syscolumns where id = object_id('社員') order by colid",
       "社員番号|\n名|\n給与|"},
      {"create table [ ] ([ ] int) drop table [ ]", ""},
      {"create table [誤](\r\n)", "error 170"},
      {"create table [誤](\r\n    [a] money            (10,2) null     )", "error 2716"},
      {"insert 社員 (給与) values (12345.67) insert 社員 (名) values ('12:x')", "(1)\n(1)"},
      {"alter table [社員]  add 部 nvarchar\r\n(20\r\n)\r\n not null ", "error 4901"},
      {"alter table [社員]  add 部 nvarchar\r\n(20\r\n)\r\n not null \r\n default N'人事' ", ""},
      {"alter table [社員]  add 率 decimal\r\n(10\r\n,2\r\n)\r\n null \r\n default (nosuch) ",
       "error 207"},
      {"alter table [社員]  add 連番 int\r\n not null \r\n identity(100,1)", "error 2744"},
      // A column with a default may become longer or shorter, but no other type.
      {"alter table [社員] alter column 名 varchar(30) null", ""},
      {"alter table [社員] alter column 名 varchar(2) null", "error 8152\nmessage 3621"},
      {"alter table [社員] alter column 名 int null", "error 5074\nerror 4922"},
      {"alter table [社員] alter column 給与 decimal(4,2) null", "error 8115\nmessage 3621"},
      {"alter table [社員] alter column 給与 tinyint null", "error 8115\nmessage 3621"},
      {"alter table [社員] alter column 給与 datetime null", ""},
      {"alter table [社員] alter column 給与 decimal(10,2) null", "error 257"},
      {"alter table [社員] add 記 text null, 文 varchar(9) null", ""},
      {"update 社員 set 記 = 'a', 文 = 'b'", "(2)"},
      {"alter table [社員] alter column 記 varchar(20)", "error 4928"},
      {"alter table [社員] alter column 文 decimal(5,1)", "error 8114"},
      {"alter table [社員] alter column 文 int", "error 245"},
      {"select 社員番号, 名, 部, 文 from 社員", "1|x|人事|b\n2|12:x|人事|b"},
      {"alter table [社員] alter column 社員番号 bigint not null", ""},
      {"insert 社員 (名) values ('y') select max(社員番号) from 社員", "(1)\n3"},
      {"alter table 社員  add constraint PK_社員      primary key(社員番号  )", ""},
      {"create clustered unique index 一    on [社員](名  , 社員番号  desc )", "error 1902"},
      {"create unique index 一    on [社員](名  , 社員番号  desc )", ""},
      {"create unique index 二    on [社員](部 )", "error 1505\nmessage 3621"},
      {"create clustered  index 二    on [社員](部 )", "error 1902"},
      {"create index 二    on [社員](部 )", ""},
      {"create index 三    on [社員](記 )", "error 1919"},
      {"sp_helpindex '社員'",
       "PK_社員|clustered, unique, primary key located on PRIMARY|社員番号\n"
       "一|nonclustered, unique located on PRIMARY|名, 社員番号(-)\n"
       "二|nonclustered located on PRIMARY|部"},
      {"select sum(sysindexes.keycnt) as Idx_Sum  from sysobjects       inner join sysindexes      "
       "         on sysobjects.id = sysindexes.id where sysobjects.name = '社員'",
       "4"},
      {"drop index [社員].一", ""},
      {"drop index 社員.一", "error 3701"},
      {"drop index 社員.PK_社員", "error 3723"},
      {"alter table [社員] drop constraint PK_社員", ""},
      {"alter table [社員] drop constraint PK_社員", "error 3728"},
      {"alter table [社員]\r\n  add constraint 検\r\n check(\r\n社員番号 > 0 and 名 <> 部\r\n )",
       ""},
      {"alter table [社員]\r\n  add constraint 検2\r\n check(\r\n社員番号 > 1\r\n )",
       "error 547\nmessage 3621"},
      {"alter table [社員]\r\n  add constraint 検2\r\n check(\r\n社員番号 > \r\n )", "error 170"},
      {"alter table [社員] drop column 社員番号", "error 5074\nerror 4922"},
      {"alter table [社員] alter column 社員番号 smallint", "error 5074\nerror 4922"},
      {"alter table [社員] alter column 名 varchar(40) null", ""},
      {"alter table [社員] drop constraint 検", ""},
      {"alter table [社員] drop column 社員番号 select count(*) from 社員", "3"},
      {"create table 空 (a int) exec sp_helpindex '空'", "message 15472"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, TriggersAreKeptAsTexts) {
  constexpr Case kCases[] = {
      {"create table t (a int)", ""},
      {"create trigger [Name] on t\r\nfor insert, update, delete\r\nas\r\n", "error 156"},
      {"create trigger [Name] on t\r\nfor insert, update, delete\r\nas\r\nprint 'x'",
       "message 50011"},
      {"create trigger [Name] on t for insert as print 'y'", "error 2714"},
      {"alter trigger [Name] on t for insert as print 'y'", "message 50011"},
      {"alter trigger [nosuch] on t for insert as print 'y'", "error 208"},
      {"create trigger [other] on nosuch for insert as print 'y'", "error 208"},
      {"select c.text from sysobjects o join syscomments c on c.id = o.id where o.xtype = 'TR' and "
       "o.parent_obj = object_id('t')",
       "alter trigger [Name] on t for insert as print 'y'"},
      {"insert t values (1)", "(1)"},
      {"execute sp_addextendedproperty 'Note', 'x','user', 'dbo', 'table','t', 'trigger', 'Name'",
       ""},
      {"execute sp_addextendedproperty 'Note', 'x','user', 'dbo', 'table','t', 'trigger', 'Name'",
       "error 15233"},
      {"drop trigger Name", ""},
      {"drop trigger Name", "error 3701"},
      {"select count(*) from sysproperties", "0"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, IdentityColumnsCount) {
  constexpr Case kCases[] = {
      {"create table t (i int identity(5,5), a int)", ""},
      {"insert t values (1) insert t (a) values (2)", "(1)\n(1)"},
      {"select i, @@identity from t", "5|10\n10|10"},
      {"create table u (a int) insert u values (1) select @@identity, scope_identity() drop table "
       "u",
       "(1)\nNULL|10"},
      {"insert t (i, a) values (1, 1)", "error 544"},
      {"set identity_insert t on insert t (i, a) values (100, 3) set identity_insert t off", "(1)"},
      {"insert t (a) select a from t", "(3)"},
      {"select max(i), ident_current('t'), ident_seed('t'), ident_incr('t') from t", "115|115|5|5"},
      {"begin tran insert t values (9) rollback tran insert t values (9) select count(*) from t",
       "(1)\n(1)\n7"},
      {"truncate table t insert t values (1) select i from t", "(1)\n5"},
      {"insert t values (2) delete t where i = 10", "(1)\n(1)"},
      {"set identity_insert t on insert t (i, a) values (6, 3) set identity_insert t off", "(1)"},
      {"insert t values (3) select max(i) from t delete t where i > 5", "(1)\n15\n(2)"},
      {"set identity_insert nothing on", "error 1088"},
      {"create table u (a int) set identity_insert u on", "error 8106"},
      {"create table v (a int identity, b int identity)", "error 2744"},
      {"create table v (a varchar(3) identity)", "error 2749"},
      {"create table x (i tinyint identity(254,1), a int) insert x values (1) insert x values (1)",
       "(1)\n(1)"},
      {"insert x values (1)", "error 8115\nmessage 3621"},
      {"insert x select a from x", "error 8115\nmessage 3621"},
      {"alter table x alter column i smallint insert x values (1) select max(i) from x",
       "(1)\n256"},
      {"alter table x alter column i varchar(5)", "error 2749"},
      {"create table x2 (i int identity(2147483647,1), a int) insert x2 values (1)", "(1)"},
      {"insert x2 values (1)", "error 8115\nmessage 3621"},
      {"create table x3 (i bigint identity(-9223372036854775807,-1), a int) insert x3 values (1) "
       "insert x3 values (1)",
       "(1)\n(1)"},
      {"insert x3 values (1)", "error 8115\nmessage 3621"},
      {"create table x4 (i decimal(2) identity(99,1), a int) insert x4 values (1)", "(1)"},
      {"insert x4 values (1)", "error 8115\nmessage 3621"},
      {"create table x5 (i tinyint identity(256,1))", "error 8115\nmessage 3621"},
      {"create table x5 (i int identity(12345678901234567890,1))", "error 8115\nmessage 3621"},
      {"create table x5 (i bigint identity(1,12345678901234567890))", "error 8115\nmessage 3621"},
      {"create table x5 (i decimal(38) identity(12345678901234567890,1))",
       "error 8115\nmessage 3621"},
      {"select i, a into w from t insert w values (2) select * from w", "(1)\n(1)\n5|1\n6|2"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, TransactionsNestAndErrorsUndoTheirStatementOnly) {
  constexpr Case kCases[] = {
      {"create table t (a int not null primary key)", ""},
      {"begin tran insert t values (1) begin tran insert t values (2) select @@trancount",
       "(1)\n(1)\n2"},
      {"commit select @@trancount commit select @@trancount", "1\n0"},
      {"begin tran insert t values (3) rollback select count(*) from t", "(1)\n2"},
      {"begin tran insert t values (3) insert t select 4 union all select 1 commit",
       "(1)\nerror 2627\nmessage 3621"},
      {"select a from t order by a", "1\n2\n3"},
      {"begin tran create table u (a int) rollback select * from u", "error 208"},
      {"begin tran drop table t rollback select count(*) from t", "3"},
      {"begin tran insert t values (5) select * from missing", "(1)\nerror 208"},
      {"select @@trancount rollback", "1"},
      {"begin tran insert t values (5) insert t values ('x')", "(1)\nerror 245"},
      {"select @@trancount, count(*) from t", "0|3"},
      {"commit", "error 3902"},
      {"rollback", "error 3903"},
      {"begin tran create database d commit", "error 226"},
      {"set nocount on insert t values (9) set nocount off delete t where a = 9", "(1)"},
      {"create table #t (a int) insert #t values (1) select * from #t", "(1)\n1"},
      {"create table #t (a int)", "error 2714"},
      {"select * into #u from t select count(*) from #u drop table #u", "(3)\n3"},
      {"select * from #u", "error 208"},
      {"begin tran insert #t values (2) rollback select count(*) from #t", "(1)\n1"},
      {"set rowcount 2 select a from t order by a set rowcount 0", "1\n2"},
      {"set rowcount 2 select a into #n from t insert #n select a + 10 from t", "(2)\n(2)"},
      {"update #n set a = 0 where a > 0 delete #n where a > 0", "(2)\n(2)"},
      {"insert #n values (5) set rowcount 0 select * from #n drop table #n", "(1)\n0\n0\n5"},
      {"set fmtonly on select a from t set fmtonly off", ""},
      {"set fmtonly on insert t values (7) select a into #v from t set fmtonly off", ""},
      {"select count(*) from t where a = 7 select * from #v", "0\nerror 208"},
      {"set transaction isolation level read uncommitted", ""},
      {"set transaction isolation level serializable", "error 50001"},
      {"save tran x", "error 50001"},
  };
  Converse(Operator(), kCases);
}

TEST_F(StatementTest, TextsAreKeptAndWhatIsNotSupportedIsRefusedByName) {
  constexpr Case kCases[] = {
      {"create table t (a int) insert t values (1)", "(1)"},
      {"create view v as select a, a + 1 as b from t", ""},
      {"create view v as select a from t", "error 2714"},
      {"create view w as select top 100 percent a from t order by a", ""},
      {"select * from w select top 99 percent a from t", "error 50001"},
      {"select * from w drop view w", "1"},
      {"create database x collate Latin1_General_BIN", "error 50001"},
      {"select * from v", "1|2"},
      {"alter view v as select a * 2 as c from t", ""},
      {"select * from v", "2"},
      {"alter view nothing as select 1 as a", "error 208"},
      {"create view w as select x from t", "error 207"},
      {"sp_helptext v", "alter view v as select a * 2 as c from t"},
      {"create procedure p @a int as select @a", "message 50011"},
      {"exec p 1", "error 50012"},
      {"exec nothing", "error 2812"},
      {"sp_helptext p", "create procedure p @a int as select @a"},
      {"create trigger tr on t for insert as print 'x'", "message 50011"},
      {"select name, instrig - id from sysobjects where xtype = 'TR'", "tr|0"},
      {"drop procedure v", "error 3705"},
      {"drop procedure p drop view v drop trigger tr", ""},
      {"drop view v", "error 3701"},
      {"print 'a' + 'b'", "says ab"},
      {"print convert(datetime, '20040229 13:05')", "says Feb 29 2004  1:05PM"},
      {"print $1234.567", "says 1234.57"},
      {"print 1 + 1.50", "says 2.50"},
      {"raiserror ('bad %s %d', 16, 1, 'thing', 5)", "error 50000"},
      {"raiserror ('only a word', 10, 1)", "message 50000"},
      {"raiserror (50123, 16, 1)", "error 2758"},
      {"raiserror ('%d', 16, 1, 'a')", "error 2786"},
      {"raiserror ('x', 19, 1) with log", "error 50001"},
      {"set ansi_nulls, concat_null_yields_null on set dateformat MDY set datefirst 7", ""},
      {"set ansi_warnings off", "error 50001"},
      {"set dateformat dmy", "error 50001"},
      {"set datefirst 1", "error 50001"},
      {"create table ##t (a int)", "error 50001"},
      {"execute ('select 1' + '2')", "12"},
      {"exec sp_executesql N'select @x + @y', N'@x int, @y int', 3, @y = 4", "7"},
      {"exec sp_executesql N'select @x + 1', N'@x int', '3'", "4"},
      {"exec sp_executesql N'select @x', N'@x int output', 3", "error 50001"},
      {"exec sp_executesql N'select @x', N'@x int'", "error 8178"},
      {"exec sp_helptext 'v' output", "error 50001"},
      {"revoke grant option for select on t from public", "error 50001"},
      {"declare @a int", "error 50001"},
      {"if 1 = 1 select 1", "error 50001"},
      {"backup log x to disk = 'y'", "error 50001"},
      {"select 1 select syntax error here from", "error 170"},
      {"select 1/0 select 2", "error 8134\n2"},
      {"insert t select a/0 from t select 2", "error 8134\nmessage 3621\n2"},
      {"select 2147483647 + a from t", "error 8115"},
      {"select convert(int, 'x') select 2", "error 245"},
      {"use nothing", "error 911"},
      {"create table dbo.q (a int) drop table dbo.q", ""},
      {"create table other.q (a int)", "error 50001"},
      {"waitfor delay '0:00:00.01'", ""},
      {"waitfor delay '999999999:00'", "error 148"},
      {"waitfor delay '0:00:1e300'", "error 148"},
  };
  Converse(Operator(), kCases);
}

}  // namespace dbkeeper::server
