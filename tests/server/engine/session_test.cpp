// Several sessions at once, logins, what outlives a crash, cursors and interruption.
#include <chrono>
#include <thread>

#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {

namespace {

using SessionTest = EngineTest;
using namespace std::chrono_literals;

Parameter Text(const std::string& name, const std::string& value) {
  Parameter parameter;
  parameter.name = name;
  parameter.type = {.id = TypeId::kNVarChar, .length = 100};
  parameter.value = value;
  return parameter;
}

}  // namespace

TEST_F(SessionTest, OnlyWhoHasAPasswordOrTheSecretGetsIn) {
  EXPECT_EQ(RefusalOf("sa", ""), 18456);
  EXPECT_EQ(RefusalOf("sa", "anything"), 18456);
  EXPECT_EQ(RefusalOf("host\\OPERATOR", kSecret), 0);
  EXPECT_EQ(RefusalOf(kOperator, "one-time secrets"), 18456);
  EXPECT_EQ(RefusalOf(kOperator, ""), 18456);
  EXPECT_EQ(RefusalOf("tanaka", "Tanaka#2000"), 0);
  EXPECT_EQ(RefusalOf("TANAKA", "tanaka#2000"), 18456);
  EXPECT_EQ(RefusalOf("nobody", ""), 18456);
  EXPECT_EQ(RefusalOf("tanaka", "Tanaka#2000", "nothing"), 4060);
  EXPECT_EQ(RefusalOf("tanaka", "Tanaka#2000", "旧販売管理"), 4060);
  EXPECT_EQ(RefusalOf("tanaka", "Tanaka#2000", "郵便番号"), 4060);
  EXPECT_EQ(LogIn("tanaka", "Tanaka#2000").session().current_database(), "販売管理");
  instance().SetLoginPassword("sa", "now it has one");
  EXPECT_EQ(RefusalOf("sa", "now it has one"), 0);
  Client sa = LogIn("sa", "now it has one");
  EXPECT_EQ(sa.Run("exec sp_password null, '', sa"), "message 15478");
  EXPECT_EQ(RefusalOf("sa", "now it has one"), 18456);
}

TEST_F(SessionTest, LoginsThatAreNoAdministratorsMayNotAdminister) {
  Client report = LogIn("report", "Report#2000");
  EXPECT_EQ(report.Run("select user_name(), is_member('閲覧'), is_srvrolemember('sysadmin')"),
            "report|1|0");
  EXPECT_EQ(report.Run("exec sp_addlogin 'x', 'y'"), "error 15247");
  EXPECT_EQ(report.Run("exec sp_addrole 'x'"), "error 15247");
  EXPECT_EQ(report.Run("kill 51"), "error 15247");
  EXPECT_EQ(report.Run("create database x"), "error 262");
  EXPECT_EQ(report.Run("drop database 郵便番号"), "error 916");
  EXPECT_EQ(report.Run("use 郵便番号"), "error 916");
}

TEST_F(SessionTest, RightsOnTablesAreThoseOfUserRolesAndPublic) {
  Client owner = Operator();
  Client reader = LogIn("report", "Report#2000");
  Client seller = LogIn("tanaka", "Tanaka#2000");
  EXPECT_EQ(reader.Run("select count(*) from 商品"), "120");
  EXPECT_EQ(reader.Run("update 商品 set 単価 = 1"), "error 229");
  EXPECT_EQ(reader.Run("select a.name from sysobjects a where a.name = '商品'"), "商品");
  EXPECT_EQ(reader.Run("create table x (a int)"), "error 262");
  EXPECT_EQ(reader.Run("drop table 商品"), "error 262");
  EXPECT_EQ(reader.Run("create table #x (a int) insert #x values (1)"), "(1)");
  EXPECT_EQ(seller.Run("select count(*) from 受注"), "1200");
  EXPECT_EQ(seller.Run("select count(*) from 商品"), "error 229");
  EXPECT_EQ(seller.Run("update 受注 set 備考 = null where 受注番号 = 1"), "(1)");
  EXPECT_EQ(seller.Run("delete 受注 where 受注番号 = 1"), "error 229");
  EXPECT_EQ(seller.Run("select count(*) from 受注一覧"), "error 229");
  owner.Run("use 販売管理 grant select on 受注一覧 to 営業");
  EXPECT_EQ(seller.Run("select count(*) from 受注一覧"), "1200");
  // Who has a user of its own is no guest.
  owner.Run("grant select on 商品 to guest");
  EXPECT_EQ(seller.Run("select count(*) from 商品"), "error 229");
  owner.Run("deny select on 受注一覧 to tanaka");
  EXPECT_EQ(seller.Run("select count(*) from 受注一覧"), "error 229");
  owner.Run("revoke select on 受注一覧 to tanaka revoke select on 受注一覧 to 営業");
}

TEST_F(SessionTest, AnInsertRunAgainSeesWhatChangedInBetween) {
  Client owner = Operator();
  Client client = Operator();
  owner.Run("create database 反復 use 反復 create table t (a nvarchar(9) primary key)");
  client.Run("use 反復");
  const auto insert = [&](const std::string& value) {
    RecordingSink sink;
    client.session().RunParameterized("insert t (a) values (@a)", {Text("@a", value)}, sink);
    return sink.text;
  };
  EXPECT_EQ(insert("1"), "(1)");
  EXPECT_EQ(insert("2"), "(1)");
  EXPECT_EQ(insert("2"), "error 2627\nmessage 3621");
  EXPECT_EQ(insert("3"), "(1)");
  owner.Run("alter table t add b int not null default (7)");
  EXPECT_EQ(insert("4"), "(1)");
  EXPECT_EQ(client.Run("select a, b from t where a = '4'"), "4|7");
  client.Run("use master");
  owner.Run("alter database 反復 set READ_ONLY");
  client.Run("use 反復");
  EXPECT_EQ(insert("5"), "error 3906");
  owner.Run("drop table t alter database 反復 set READ_WRITE create table t (a nvarchar(2))");
}

TEST_F(SessionTest, WritersWaitForEachOtherAndReadersDoNot) {
  Client first = Operator();
  Client second = Operator();
  ASSERT_EQ(first.Run("create database 錠 use 錠 create table t (a int)"), "now 錠");
  second.Run("use 錠");
  ASSERT_EQ(first.Run("begin tran insert t values (1)"), "(1)");
  EXPECT_EQ(second.Run("select count(*) from t"), "0");
  EXPECT_EQ(second.Run("insert t values (2)"), "error 1222");
  EXPECT_EQ(second.Run("set lock_timeout 0 insert t values (2)"), "error 1222");
  const std::string spid = std::to_string(first.session().spid());
  EXPECT_NE(second.Run("exec sp_lock " + spid).find("|TAB|"), std::string::npos);
  std::string waited;
  std::thread waiter([&] { waited = second.Run("set lock_timeout 5000 insert t values (2)"); });
  std::string who;
  for (int i = 0; i < 100 && who.find(spid + "  ") == std::string::npos; ++i) {
    std::this_thread::sleep_for(5ms);
    who = first.Run("select convert(char(5), blocked) from master..sysprocesses where spid = " +
                    std::to_string(second.session().spid()));
  }
  EXPECT_EQ(who, spid + "   ");
  EXPECT_EQ(first.Run("commit"), "");
  waiter.join();
  EXPECT_EQ(waited, "(1)");
  EXPECT_EQ(first.Run("select count(*) from t"), "2");
  EXPECT_EQ(first.Run("select @@trancount exec sp_lock " + spid).find("TAB"), std::string::npos);
}

TEST_F(SessionTest, ATransactionChangesOneDatabaseOrIsRefusedByName) {
  Client client = Operator();
  client.Run("create database 甲 create database 乙");
  client.Run(
      "create table 甲..t (a int) create table 乙..t (a int) create table tempdb..t (a int)");
  EXPECT_EQ(
      client.Run("begin tran insert 甲..t values (1) insert tempdb..t values (1) create table "
                 "#t (a int) insert #t values (1)"),
      "(1)\n(1)\n(1)");
  EXPECT_EQ(client.Run("insert 乙..t values (1)"), "error 50001");
  EXPECT_NE(client.FirstMessage().find("'乙' beside '甲'"), std::string::npos);
  EXPECT_EQ(client.Run("select count(*) from 乙..t commit select count(*) from 甲..t"), "0\n1");
  EXPECT_EQ(client.Run("insert 乙..t select a from 甲..t"), "(1)");
  client.Run("drop table tempdb..t drop database 甲, 乙");
}

TEST_F(SessionTest, ABackupNeedsNoRightsInMsdb) {
  Client administrator = Operator();
  administrator.Run("exec sp_addlogin 'keeper', 'Secret_1' create database 控 use 控");
  administrator.Run(
      "exec sp_grantdbaccess 'keeper' exec sp_addrolemember 'db_backupoperator', 'keeper'");
  Client keeper = LogIn("keeper", "Secret_1");
  keeper.Run("backup database 控 to disk = 'C:\\控.bak'");
  for (const ServerMessage& message : keeper.last().messages) {
    EXPECT_FALSE(message.IsError()) << message.text;
  }
  EXPECT_EQ(administrator.Run("select user_name from msdb..backupset where database_name = '控'"),
            "keeper");
  EXPECT_EQ(keeper.Run("delete msdb..backupset"), "error 229");
  administrator.Run("use master drop database 控 exec sp_droplogin 'keeper'");
}

TEST_F(SessionTest, ADatabaseInUseIsNotTakenAway) {
  Client first = Operator();
  Client second = Operator();
  ASSERT_EQ(first.Run("create database 共用"), "");
  ASSERT_EQ(second.Run("use 共用 create table t (a int) insert t values (1)"), "now 共用\n(1)");
  EXPECT_EQ(first.Run("drop database 共用"), "error 3702");
  EXPECT_EQ(first.Run("alter database 共用 set OFFLINE"), "error 5070");
  EXPECT_EQ(second.Run("use master"), "now master");
  EXPECT_EQ(first.Run("alter database 共用 set SINGLE_USER use 共用"), "now 共用");
  EXPECT_EQ(second.Run("use 共用"), "error 924");
  EXPECT_EQ(first.Run("use master drop database 共用 create database 共用"), "now master");
  // The second session has had the file that is gone attached.
  EXPECT_EQ(second.Run("select * from 共用..t"), "error 208");
  EXPECT_EQ(second.Run("drop database 共用"), "");
}

TEST_F(SessionTest, MoreDatabasesThanCanBeAttachedAtOnce) {
  Client client = Operator();
  for (int i = 0; i < 14; ++i) {
    const std::string name = "db" + std::to_string(i);
    ASSERT_EQ(client.Run("create database " + name), "");
    ASSERT_EQ(client.Run("select " + std::to_string(i) + " as a into " + name + "..t"), "(1)");
  }
  for (int i = 0; i < 14; ++i) {
    EXPECT_EQ(client.Run("select a from db" + std::to_string(i) + "..t"), std::to_string(i));
  }
  EXPECT_EQ(client.Run("select x.a + y.a from db1..t x, db13..t y"), "14");
}

TEST_F(SessionTest, WhatWasCommittedOutlivesACrash) {
  Client client = Operator();
  ASSERT_EQ(client.Run("create database 耐久"), "");
  client.Run("use 耐久 create table t (a int primary key)");
  ASSERT_EQ(client.Run("insert t values (1) insert t values (2)"), "(1)\n(1)");
  ASSERT_EQ(client.Run("begin tran insert t values (3)"), "(1)");
  const TemporaryFolder copy;
  CopyTo(copy.path());
  const auto reopened = OpenInstance(OptionsFor(copy.path()));
  reopened->SetOperator(kOperator, kSecret);
  LoginRequest request;
  request.user = kOperator;
  request.password = kSecret;
  request.database = "耐久";
  Client after(reopened->Login(request));
  EXPECT_EQ(after.Run("select a from t"), "1\n2");
  EXPECT_EQ(after.Run("insert t values (2)"), "error 2627\nmessage 3621");
}

TEST_F(SessionTest, ATornSetUpIsMadeAgain) {
  const TemporaryFolder copy;
  CopyTo(copy.path());
  // As after a kill before master was moved in: files of both places, no master.
  std::filesystem::create_directories(copy.path() / "new");
  std::filesystem::rename(copy.path() / "db1.sqlite", copy.path() / "new" / "db1.sqlite");
  std::filesystem::remove(copy.path() / "db5.sqlite");
  const auto made = OpenInstance(OptionsFor(copy.path()));
  made->SetOperator(kOperator, kSecret);
  LoginRequest request;
  request.user = kOperator;
  request.password = kSecret;
  Client client(made->Login(request));
  EXPECT_EQ(client.Run("select count(*) from 販売管理..得意先"), "300");
  EXPECT_THROW(OpenInstance(OptionsFor(copy.path())), std::runtime_error);
}

TEST_F(SessionTest, KilledAndInterruptedStatementsStop) {
  Client first = Operator();
  Client second = Operator();
  int closed = 0;
  instance().OnKill([&](int spid) { closed = spid; });
  const std::string endless =
      "select count(*) from master..syscolumns a, master..syscolumns b, master..syscolumns c";
  std::string result;
  std::thread runner([&] { result = first.Run(endless); });
  std::this_thread::sleep_for(30ms);
  first.session().Interrupt();
  runner.join();
  EXPECT_EQ(result, "error 3617");
  EXPECT_EQ(first.Run("select 1"), "1");
  const std::string spid = std::to_string(first.session().spid());
  EXPECT_EQ(second.Run("kill [" + spid + "]"), "");
  EXPECT_EQ(closed, first.session().spid());
  EXPECT_EQ(second.Run("kill " + std::to_string(second.session().spid())), "error 6104");
  EXPECT_EQ(second.Run("kill 99"), "error 6106");
  EXPECT_EQ(second.Run("kill 99999"), "error 6101");
  EXPECT_EQ(second.Run("kill 1"), "error 6106");
  instance().OnKill({});
}

TEST_F(SessionTest, ShutdownTellsTheProgram) {
  bool asked = false;
  instance().OnShutdown([&] { asked = true; });
  EXPECT_EQ(LogIn("report", "Report#2000").Run("shutdown"), "error 15247");
  EXPECT_FALSE(asked);
  Operator().Run("shutdown");
  EXPECT_TRUE(asked);
  instance().OnShutdown({});
}

TEST_F(SessionTest, ProceduresAndParametersComeAsCalls) {
  Client client = Operator();
  RecordingSink sink;
  client.session().RunProcedure("販売管理..sp_pkeys", {Text("@table_name", "受注明細")}, sink);
  EXPECT_EQ(sink.text,
            "販売管理|dbo|受注明細|受注番号|1|PK_受注明細\n"
            "販売管理|dbo|受注明細|行番号|2|PK_受注明細\nstatus 0");
  sink = RecordingSink();
  client.session().RunProcedure("sp_helpdb", {Text("", "nothing")}, sink);
  EXPECT_EQ(sink.text, "error 15010\nstatus 1");
  sink = RecordingSink();
  client.session().RunParameterized("select @p + N'!' where @p like N'a%'", {Text("@p", "abc")},
                                    sink);
  EXPECT_EQ(sink.text, "abc!");
}

TEST_F(SessionTest, CursorsMoveAndChangeRows) {
  Client client = Operator();
  client.Run("create database 窓口 use 窓口 create table t (a int primary key, b varchar(10))");
  for (int i = 1; i <= 5; ++i) {
    client.Run("insert t values (" + std::to_string(i) + ", 'r" + std::to_string(i) + "')");
  }
  RecordingSink sink;
  const auto cursor = client.session().OpenCursor("select a, b from t order by a", sink);
  ASSERT_NE(cursor, nullptr);
  EXPECT_EQ(cursor->row_count(), 5);
  EXPECT_TRUE(cursor->updatable());
  struct Fetch {
    FetchKind kind;
    std::int64_t row;
    const char* expected;
  };
  constexpr Fetch kFetches[] = {
      {FetchKind::kFirst, 0, "1|r1\n2|r2"},
      {FetchKind::kNext, 0, "3|r3\n4|r4"},
      {FetchKind::kNext, 0, "5|r5"},
      {FetchKind::kNext, 0, ""},
      {FetchKind::kPrior, 0, "4|r4\n5|r5"},
      {FetchKind::kLast, 0, "4|r4\n5|r5"},
      {FetchKind::kRelative, -1, "3|r3\n4|r4"},
      {FetchKind::kAbsolute, -1, "5|r5"},
      {FetchKind::kAbsolute, 2, "2|r2\n3|r3"},
  };
  for (const Fetch& fetch : kFetches) {
    sink = RecordingSink();
    sink.columns = cursor->columns();
    cursor->Fetch(fetch.kind, fetch.row, 2, sink);
    EXPECT_EQ(sink.text, fetch.expected);
  }
  sink = RecordingSink();
  sink.columns = cursor->columns();
  cursor->Update(1, {Text("b", "changed")}, sink);
  cursor->Delete(2, sink);
  cursor->Fetch(FetchKind::kRefresh, 0, 2, sink);
  EXPECT_EQ(sink.text, "(1)\n(1)\n2|changed\nmissing");
  sink = RecordingSink();
  cursor->Update(2, {Text("b", "gone")}, sink);
  EXPECT_EQ(sink.text, "error 16947");
  const auto fixed = client.session().OpenCursor("select count(*) from t group by b", sink);
  ASSERT_NE(fixed, nullptr);
  EXPECT_EQ(fixed->row_count(), 4);
  EXPECT_FALSE(fixed->updatable());
  EXPECT_EQ(client.session().OpenCursor("print 'x'", sink), nullptr);
}

TEST_F(SessionTest, ACursorOverALongTableFindsItsRowsAsTheyAreFetched) {
  Client client = Operator();
  client.Run(
      "create database 窓 use 窓 create table t (a int) insert t select a.id from "
      "販売管理..syscolumns a, 販売管理..syscolumns b");
  RecordingSink sink;
  const auto count = client.session().OpenCursor("select count(*) from t", sink);
  sink.columns = count->columns();
  count->Fetch(FetchKind::kFirst, 0, 1, sink);
  const std::int64_t rows = std::stoll(sink.text);
  ASSERT_GT(rows, 5000);
  const auto cursor = client.session().OpenCursor("select a from t", sink);
  EXPECT_EQ(cursor->row_count(), -1);
  const auto fetch = [&](FetchKind kind, std::int64_t row) {
    sink = RecordingSink();
    sink.columns = cursor->columns();
    cursor->Fetch(kind, row, 10, sink);
    return sink.rows;
  };
  EXPECT_EQ(fetch(FetchKind::kAbsolute, rows + 1), 0);
  EXPECT_EQ(cursor->row_count(), rows);
  EXPECT_EQ(fetch(FetchKind::kAbsolute, rows - 3), 4);
  EXPECT_EQ(fetch(FetchKind::kFirst, 0), 10);
  const auto last = client.session().OpenCursor("select a from t", sink);
  client.Run("insert t values (1)");  // after both were opened: none of their rows
  EXPECT_EQ(fetch(FetchKind::kAbsolute, rows + 1), 0);
  last->Fetch(FetchKind::kLast, 0, 1, sink);
  EXPECT_EQ(last->position(), rows);
}

TEST_F(SessionTest, AClientThatWantsNoMoreRowsEndsTheStatement) {
  Client client = Operator();
  RecordingSink sink;
  sink.stop_after = 3;
  client.session().RunBatch("select a.id from 販売管理..syscolumns a, 販売管理..syscolumns b",
                            sink);
  EXPECT_EQ(sink.rows, 3);
  EXPECT_EQ(sink.messages.size(), 1U);
}

}  // namespace dbkeeper::server
