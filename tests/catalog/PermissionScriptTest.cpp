#include "catalog/PermissionScript.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/support/Errors.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

using testing::FakeConnection;
using testing::FakeRow;
using testing::TextFields;
using Texts = std::vector<std::string>;

constexpr const char* kUsersSql =
    "select * from sysusers where (issqlrole   <> 1    )and       (hasdbaccess =  1    )and       "
    "(name        <> 'dbo')";
constexpr const char* kRightsSql =
    "select sysobjects.name,\r\n       sysusers.name as usersname,\r\n"
    "       sysprotects.action,\r\n       sysprotects.protecttype\r\n  from sysprotects\r\n"
    "       left join sysobjects on(sysprotects.id  = sysobjects.id)\r\n"
    "       left join sysusers   on(sysprotects.uid = sysusers.uid )\r\n"
    " where (sysusers.name   <> 'public')and\r\n       (sysobjects.name is not null)";

class PermissionScriptTest : public ::testing::Test {
 protected:
  PermissionScriptTest() { Databases({"master", "tempdb", "model", "msdb", "sales"}); }

  void Databases(const Texts& names) {
    std::vector<FakeRow> rows;
    for (const std::string& name : names) rows.push_back({name, "  10.00 MB"});
    connection.Answer("sp_helpdb", {TextFields({"name", "db_size"}), rows});
  }
  void Users(std::vector<FakeRow> rows) {
    connection.Answer("sysusers where", {TextFields({"uid", "name"}), std::move(rows)});
  }
  void Members(std::vector<FakeRow> rows) {
    connection.Answer("sp_helprolemember",
                      {TextFields({"DbRole", "MemberName", "MemberSID"}), std::move(rows)});
  }
  void Rights(std::vector<FakeRow> rows) {
    connection.Answer("sysprotects", {TextFields({"name", "usersname", "action", "protecttype"}),
                                      std::move(rows)});
  }
  void Write() { WritePermissionScript(query, fake.host, file); }
  std::string Written() const { return testing::FileBytes(file); }

  FakeConnection connection;
  testing::FakeHost fake;
  Query query{connection, fake.locale, {}};
  testing::TemporaryFolder folder;
  std::filesystem::path file = folder / "permissions.sql";
};

TEST_F(PermissionScriptTest, AUserWithARoleAndARightMakesTheseLines) {
  Users({{"5", "kato"}});
  Members({{"db_owner", "dbo", "1"}, {"db_datareader", "kato", "2"}});
  Rights({{"items", "kato", "193", "205"}});
  testing::PutFile(file, "what was there before, and was longer than what comes now");
  Write();
  EXPECT_EQ(Written(),
            "use sales\r\ngo\r\nEXEC sp_revokedbaccess 'kato'\r\ngo\r\n"
            "EXEC sp_grantdbaccess 'kato','kato'\r\ngo\r\n"
            "exec sp_addrolemember 'db_datareader','kato'\r\ngo\r\n"
            "grant SELECT  on items to kato\r\ngo\r\n\r\n");
  EXPECT_EQ(connection.statements, (Texts{"use master", "exec sp_helpdb", "use [sales]", kUsersSql,
                                          "exec sp_helprolemember", kRightsSql}));
}

TEST_F(PermissionScriptTest, EveryRightHasItsWordsAndOthersAreLeftOut) {
  const struct {
    const char* action;
    const char* type;
    const char* line;
  } cases[] = {
      {"193", "205", "grant SELECT  on items to kato\r\ngo\r\n"},
      {"195", "205", "grant INSERT  on items to kato\r\ngo\r\n"},
      {"196", "206", "deny DELETE  on items to kato\r\ngo\r\n"},
      {"197", "206", "deny UPDATE  on items to kato\r\ngo\r\n"},
      {"224", "205", "grant EXECUTE on items to kato\r\ngo\r\n"},
      {"26", "205", ""},   // references
      {"193", "204", ""},  // with grant option
      {"198", "206", ""},  // a statement's
  };
  for (const auto& each : cases) {
    Rights({{" items ", "kato  ", each.action, each.type}});
    Write();
    EXPECT_EQ(Written(), "use sales\r\ngo\r\n" + std::string(each.line) + "\r\n")
        << each.action << " " << each.type;
  }
}

TEST_F(PermissionScriptTest, OnlyTheSystemDatabasesAreLeftOutAndTheyInTheirOwnSpelling) {
  Databases({"master", "tempdb", "model", "msdb"});
  Write();
  EXPECT_TRUE(std::filesystem::exists(file));
  EXPECT_EQ(Written(), "");
  Databases({"Master", "msdb ", " a b "});
  Write();
  EXPECT_EQ(Written(), "use Master\r\ngo\r\n\r\nuse msdb\r\ngo\r\n\r\nuse a b\r\ngo\r\n\r\n");
}

TEST_F(PermissionScriptTest, NamesAreTrimmedAndNothingInThemIsQuotedOrDoubled) {
  Users({{"5", "o'hara "}, {"6", "日本"}});
  Members({{"r]", "role in role", "1"}, {"db_owner", "dbo  ", "2"}, {"x", "Dbo", "3"}});
  Write();
  EXPECT_EQ(Written(),
            "use sales\r\ngo\r\nEXEC sp_revokedbaccess 'o'hara'\r\ngo\r\n"
            "EXEC sp_grantdbaccess 'o'hara','o'hara'\r\ngo\r\n"
            "EXEC sp_revokedbaccess '\x93\xfa\x96\x7b'\r\ngo\r\n"
            "EXEC sp_grantdbaccess '\x93\xfa\x96\x7b','\x93\xfa\x96\x7b'\r\ngo\r\n"
            "exec sp_addrolemember 'r]','role in role'\r\ngo\r\n"
            "exec sp_addrolemember 'x','Dbo'\r\ngo\r\n\r\n");
}

TEST_F(PermissionScriptTest, AServersErrorAtAnyStatementEndsItAndTheFileKeepsWhatWasWritten) {
  Databases({"sales"});
  const struct {
    const char* failing;
    const char* kept;
  } cases[] = {
      {"use master", ""},
      {"sp_helpdb", ""},
      {"use [sales]", "use sales\r\ngo\r\n"},
      {"sysusers where", "use sales\r\ngo\r\n"},
      {"sp_helprolemember",
       "use sales\r\ngo\r\nEXEC sp_revokedbaccess 'kato'\r\ngo\r\n"
       "EXEC sp_grantdbaccess 'kato','kato'\r\ngo\r\n"},
      {"sysprotects",
       "use sales\r\ngo\r\nEXEC sp_revokedbaccess 'kato'\r\ngo\r\n"
       "EXEC sp_grantdbaccess 'kato','kato'\r\ngo\r\n"
       "exec sp_addrolemember 'r','kato'\r\ngo\r\n"},
  };
  for (const auto& each : cases) {
    connection = FakeConnection();
    Databases({"sales"});
    Users({{"5", "kato"}});
    Members({{"r", "kato", "1"}});
    connection.Fail(each.failing, "broken");
    EXPECT_THROW(Write(), ServerError) << each.failing;
    EXPECT_EQ(Written(), each.kept) << each.failing;
  }
}

TEST_F(PermissionScriptTest, AFileThatCannotBeWrittenAndALackingCharacterAreTold) {
  file = folder / "no folder/x.sql";
  EXPECT_THROW(Write(), FileError);
  EXPECT_EQ(connection.statements, Texts{});
  file = folder.Path();
  EXPECT_THROW(Write(), FileError);
  file = "/dev/full";
  EXPECT_THROW(Write(), FileError);
  file = folder / "lacking.sql";
  Users({{"5", "kato"}, {"6", "\xF0\x9F\x98\x80"}});
  EXPECT_THROW(Write(), FileError);
  EXPECT_EQ(Written(),
            "use sales\r\ngo\r\nEXEC sp_revokedbaccess 'kato'\r\ngo\r\n"
            "EXEC sp_grantdbaccess 'kato','kato'\r\ngo\r\n");
}

}  // namespace
}  // namespace dbkeeper
