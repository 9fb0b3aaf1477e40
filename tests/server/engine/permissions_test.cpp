// What is granted and denied to users and roles, and what holds then for those who log in.
#include <map>

#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {
namespace {

// "kato" and "mori" are users of the database 権限, which has the table t, its view v and the
// procedure p; kato is in the role 課, and the role 課 is in the role 部.
class PermissionsTest : public EngineTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Do("sa", "create database 権限 use 権限"), "now 権限");
    Do("sa", R"(
create table t (a int, b int) insert t values (1, 2)
exec sp_addlogin kato, 'Kato#1', 権限 exec sp_addlogin mori, 'Mori#1', 権限
exec sp_grantdbaccess kato exec sp_grantdbaccess mori
exec sp_addrole 課 exec sp_addrole 部
exec sp_addrolemember 課, kato exec sp_addrolemember 部, 課)");
    Do("sa", "create view v as select a from t");
    Do("sa", "create procedure p as select a from t");
  }
  void TearDown() override {
    clients_.clear();
    Client owner = Operator();
    EXPECT_EQ(owner.Run("drop database 権限 exec sp_droplogin kato exec sp_droplogin mori"),
              "message 15479\nmessage 15479");
  }

  // Runs it as that login, each of which stays connected; "sa" is the operator.
  std::string Do(const std::string& who, const std::string& batch) {
    auto client = clients_.find(who);
    if (client == clients_.end()) {
      client = clients_
                   .emplace(who, who == "sa" ? Operator()
                                             : LogIn(who, who == "kato" ? "Kato#1" : "Mori#1"))
                   .first;
    }
    return client->second.Run(batch);
  }

  struct Step {
    const char* who;
    const char* batch;
    const char* answer;
  };
  void Follow(std::span<const Step> steps) {
    for (const Step& step : steps) {
      EXPECT_EQ(Do(step.who, step.batch), step.answer) << step.who << ": " << step.batch;
    }
  }

 private:
  std::map<std::string, Client> clients_;
};

TEST_F(PermissionsTest, ARightComesFromTheUserItsRolesAndTheirRolesAndADenialBeatsAll) {
  constexpr Step kSteps[] = {
      {"kato", "select a from t", "error 229"},
      {"sa", "grant select on t to kato", ""},
      {"kato", "select a from t", "1"},
      {"sa", "deny select on t to 部", ""},
      {"kato", "select a from t", "error 229"},
      {"sa", "revoke select on t to 部", ""},
      {"kato", "select a from t", "1"},
      {"sa", "revoke select on t to kato", ""},
      {"kato", "select a from t", "error 229"},
      {"sa", "grant select on t to 部", ""},
      {"kato", "select a from t", "1"},
      {"mori", "select a from t", "error 229"},
      {"sa", "grant select on t to public", ""},
      {"mori", "select a from t", "1"},
      {"sa", "deny select on t to mori", ""},
      {"mori", "select a from t", "error 229"},
      {"sa", "grant select on t to mori", ""},
      {"mori", "select a from t", "1"},
      {"sa", "exec sp_droprolemember 課, kato revoke select on t to public", "message 15489"},
      {"kato", "select a from t", "error 229"},
  };
  Follow(kSteps);
}

TEST_F(PermissionsTest, WhoChangesRowsAndReadsThemOnTheWayNeedsBothRights) {
  constexpr Step kSteps[] = {
      {"sa", "grant insert, update, delete on t to kato", ""},
      {"kato", "insert t values (3, 4)", "(1)"},
      {"kato", "update t set b = 5", "(2)"},
      {"kato", "update t set b = 6 where a = 1", "error 229"},
      {"kato", "update t set b = a", "error 229"},
      {"kato", "delete t where a = 1", "error 229"},
      {"kato", "insert t select 1, 1 from v", "error 229"},
      {"sa", "grant select on t to kato", ""},
      {"kato", "update t set b = a + 5 where a = 1", "(1)"},
      {"kato", "delete t where b = 6", "(1)"},
      {"kato", "delete t", "(1)"},
      {"kato", "truncate table t", "error 262"},
  };
  Follow(kSteps);
}

TEST_F(PermissionsTest, ACursorAndAnExpressionReadNoMoreThanASelect) {
  Client kato = LogIn("kato", "Kato#1");
  const auto open = [&](const char* text) {
    RecordingSink sink;
    const bool opened = kato.session().OpenCursor(text, sink) != nullptr;
    return sink.text + (opened ? "open" : "");
  };
  EXPECT_EQ(open("select a, b from t"), "error 229");
  EXPECT_EQ(open("select count(*) from t"), "error 229");
  EXPECT_EQ(kato.Run("print (select b from t)"), "error 229");
  Do("sa", "grant select on t to kato");
  EXPECT_EQ(open("select a, b from t"), "open");
  EXPECT_EQ(open("select count(*) from t"), "open");
}

TEST_F(PermissionsTest, ViewsAndProceduresHaveRightsOfTheirOwn) {
  constexpr Step kSteps[] = {
      {"sa", "grant select on v to kato", ""},
      {"kato", "select a from v", "1"},
      {"kato", "select a from t", "error 229"},
      {"kato", "exec p", "error 229"},
      {"sa", "grant execute on p to kato", ""},
      {"kato", "exec p", "error 50012"},
      {"sa", "grant execute on v to kato", "error 4606"},
      {"sa", "grant select on p to kato", "error 4606"},
  };
  Follow(kSteps);
}

TEST_F(PermissionsTest, FixedRolesReadWriteAndOwnUnlessTheyAreDenied) {
  constexpr Step kSteps[] = {
      {"sa", "exec sp_addrolemember db_datareader, kato", "message 15488"},
      {"kato", "select a from t", "1"},
      {"kato", "exec p", "error 229"},
      {"sa", "deny select on t to db_datareader", ""},
      {"kato", "select a from t", "error 229"},
      {"sa", "revoke select on t to db_datareader exec sp_addrolemember db_denydatareader, kato",
       "message 15488"},
      {"kato", "select a from t", "error 229"},
      {"sa", "exec sp_droprolemember db_denydatareader, kato exec sp_addrolemember db_owner, kato",
       "message 15489\nmessage 15488"},
      {"kato", "update t set b = a", "(1)"},
      {"sa", "deny update on t to kato", ""},
      {"kato", "update t set b = a", "error 229"},
      {"kato", "grant select on t to mori", ""},
      {"mori", "select a from t", "1"},
  };
  Follow(kSteps);
}

TEST_F(PermissionsTest, WhoMayGive) {
  constexpr Step kSteps[] = {
      {"sa", "grant select on t to kato", ""},
      {"kato", "grant select on t to mori", "error 4613"},
      {"sa", "grant select on t to kato with grant option", ""},
      {"kato", "grant select on t to mori", ""},
      {"kato", "grant select, insert on t to mori", "error 4613"},
      {"mori", "select a from t", "1"},
      {"mori", "exec sp_addrole 係", "error 15247"},
      {"sa", "exec sp_addrolemember db_securityadmin, mori", "message 15488"},
      {"mori", "exec sp_addrole 係 exec sp_addrolemember 係, kato", "message 15424\nmessage 15488"},
      {"mori", "exec sp_addrolemember db_owner, mori", "error 15247"},
      {"mori", "grant insert on t to 係", ""},
      {"kato", "insert t values (7, 7)", "(1)"},
      {"mori", "insert t values (7, 7)", "error 229"},
      {"mori", "exec sp_revokedbaccess kato", "error 15247"},
      {"sa", "grant select on t to nobody", "error 4604"},
  };
  Follow(kSteps);
}

TEST_F(PermissionsTest, OneBatchWithABlockRunsAsItIsSentOrNamesWhatFails) {
  EXPECT_EQ(Do("sa",
               "use [権限]\r\nbegin \r\n revoke select on [t] to [kato]\r\n deny select on [t] to "
               "[kato]\r\n grant insert on [t] to [kato]\r\n deny update on [t] to [kato]\r\nend;"),
            "now 権限");
  constexpr const char* kRows =
      "select u.name, p.action, p.protecttype from sysprotects p join sysusers u on u.uid = p.uid "
      "where p.id = object_id('t') order by 1, 2";
  EXPECT_EQ(Do("sa", kRows), "kato|193|206\nkato|195|205\nkato|197|206");
  EXPECT_EQ(Do("sa", "use [権限]\r\nbegin \r\n grant execute on [t] to [kato]\r\nend;"),
            "now 権限\nerror 4606");
  EXPECT_EQ(Do("sa", "use [権限]\r\nbegin \r\n grant select on [a]b] to [kato]\r\nend;"),
            "error 170");
  Do("sa", "grant all on t to mori with grant option");
  EXPECT_EQ(Do("sa",
               "select p.action, p.protecttype from sysprotects p join sysusers u on u.uid = "
               "p.uid where u.name = 'mori' order by 1"),
            "26|204\n193|204\n195|204\n196|204\n197|204");
}

TEST_F(PermissionsTest, WhatAUserOwnsIsItsOwnAndKeepsItInTheDatabase) {
  constexpr Step kSteps[] = {
      {"sa", "exec sp_changeobjectowner t, nobody", "error 15410"},
      {"sa", "exec sp_changeobjectowner t, kato", "message 15477"},
      {"sa", "select a from t", "error 208"},
      {"sa", "select a from dbo.t", "error 208"},
      {"sa", "select a from kato.t", "1"},
      {"kato", "select a from t", "1"},
      {"kato", "grant select on t to mori", ""},
      {"mori", "select kato.t.a from kato.t", "1"},
      {"mori", "select a from t", "error 208"},
      {"mori", "delete kato.t", "error 229"},
      {"sa", "deny select on kato.t to kato", ""},
      {"kato", "select a from t", "1"},
      {"sa", "exec sp_revokedbaccess kato", "error 15183"},
      {"sa", "select user_name(uid) from sysobjects where name = 't'", "kato"},
      {"sa", "exec sp_changeobjectowner 'kato.t', dbo", "message 15477"},
      {"kato", "select a from t", "error 229"},
      {"sa", "exec sp_addrole 係, kato exec sp_revokedbaccess kato", "message 15424\nerror 15421"},
      {"sa", "exec sp_droprole 係 exec sp_revokedbaccess kato", "message 15425\nmessage 15342"},
      {"kato", "select a from t", "error 229"},
  };
  Follow(kSteps);
  EXPECT_EQ(RefusalOf("kato", "Kato#1"), 4064);
}

TEST_F(PermissionsTest, WhoIsLetInAgainHasTheNumberOfBefore) {
  constexpr const char* kUsers =
      "select uid, name from sysusers where uid between 5 and 16383 or uid > 16399 order by uid";
  const std::string before = Do("sa", kUsers);
  EXPECT_EQ(before, "5|kato\n6|mori\n16400|課\n16401|部");
  Do("sa", "exec sp_revokedbaccess kato exec sp_grantdbaccess kato");
  Do("sa", "exec sp_droprolemember 部, 課 exec sp_droprole 課 exec sp_addrole 課");
  EXPECT_EQ(Do("sa", kUsers), before);
  // What was granted before is gone with the user.
  EXPECT_EQ(Do("kato", "select a from t"), "error 229");
}

TEST_F(PermissionsTest, APasswordHoldsFromTheMomentItIsChanged) {
  EXPECT_EQ(Do("kato", "exec sp_password 'wrong', 'Kato#2'"), "error 15211");
  EXPECT_EQ(Do("mori", "exec sp_password null, 'Kato#2', kato"), "error 15247");
  EXPECT_EQ(RefusalOf("kato", "Kato#1"), 0);
  EXPECT_EQ(Do("sa", "EXEC sp_password NULL,'Kato#2', [kato]"), "message 15478");
  EXPECT_EQ(RefusalOf("kato", "Kato#1"), 18456);
  EXPECT_EQ(RefusalOf("kato", "Kato#2"), 0);
  EXPECT_EQ(Do("kato", "exec sp_password 'Kato#2', 'Kato#3'"), "message 15478");
  EXPECT_EQ(RefusalOf("kato", "Kato#2"), 18456);
  EXPECT_EQ(RefusalOf("kato", "Kato#3"), 0);
}

TEST_F(PermissionsTest, RolesAndLoginsThatMustStay) {
  constexpr Step kSteps[] = {
      {"sa", "exec sp_addrolemember 課, 部", "error 15413"},
      {"sa", "exec sp_addrolemember 課, 課", "error 15414"},
      {"sa", "exec sp_droprole 課", "error 15144"},
      {"sa", "exec sp_droprole 係", "error 15014"},
      {"sa", "exec sp_addrole 係, nobody", "error 15410"},
      {"sa", "exec sp_addsrvrolemember 課, sysadmin", "error 15007"},
      {"sa", "exec sp_droplogin mori", "error 15175"},
      {"mori", "exec sp_addsrvrolemember mori, dbcreator", "error 15247"},
      {"sa", "exec sp_droplogin mori", "error 15434"},
      {"sa", "exec sp_droplogin sa", "error 15405"},
      {"sa", "exec sp_grantlogin [DOMAIN\\mori]", "error 15401"},
      {"sa", "exec sp_grantlogin [LOCALTEST\\no such account]", "error 15401"},
      {"sa", "exec sp_grantlogin [BUILTIN\\Others]", "error 15401"},
      {"sa", "exec sp_grantlogin mori", "error 15407"},
      {"sa",
       "exec sp_grantlogin [localtest\\ROOT] exec sp_grantlogin [BUILTIN\\Users] select name, "
       "isntuser, isntgroup from master..syslogins where isntname = 1 order by name",
       "message 15485\nmessage 15485\nBUILTIN\\Administrators|0|1\nBUILTIN\\Users|0|1\n"
       "localtest\\ROOT|1|0"},
      {"sa", "exec sp_revokelogin [localtest\\ROOT] exec sp_revokelogin [BUILTIN\\Users]",
       "message 15486\nmessage 15486"},
  };
  Follow(kSteps);
  Client creator = LogIn("tanaka", "Tanaka#2000", "master");
  EXPECT_EQ(creator.Run("create database 所有"), "");
  creator = Operator();
  EXPECT_EQ(creator.Run("exec sp_droplogin tanaka"), "error 15174");
  EXPECT_EQ(creator.Run("drop database 所有"), "");
}

}  // namespace
}  // namespace dbkeeper::server
