#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/session/Query.h"
#include "app/session/ServerSession.h"
#include "tests/support/FakeConnection.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

using testing::FakeConnection;
using testing::FakeLocale;
using testing::TextFields;

TEST(ServerSession, ComposesTheConnectionStringOfTheDialogsInputs) {
  struct Case {
    const char *server, *login, *password;
    Authentication mode;
    const char* expected;
  };
  const Case cases[] = {
      {"PC02", "sa", "p;w", Authentication::kWindows,
       "Provider=SQLOLEDB;Database=master;Integrated Security=SSPI;Data Source=PC02"},
      {"PC02\\inst", "sa", "p;w", Authentication::kSqlServer,
       "Provider=SQLOLEDB;Database=master;User ID=sa;Password=p;w;Data Source=PC02\\inst"},
      {"(local)", "tanaka", "", Authentication::kWindows,
       "Provider=SQLOLEDB;Database=master;Integrated Security=SSPI;"},
      {"(local)", "sa", "x", Authentication::kSqlServer,
       "Provider=SQLOLEDB;Database=master;User ID=sa;Password=x;"},
      {"(LOCAL)", "sa", "x", Authentication::kSqlServer,
       "Provider=SQLOLEDB;Database=master;User ID=sa;Password=x;Data Source=(LOCAL)"},
  };
  FakeConnection connection;
  FakeLocale locale;
  for (const Case& c : cases) {
    ServerSession session(connection, locale);
    session.ServerName = c.server;
    session.LoginName = c.login;
    session.Password = c.password;
    session.LoginMode = c.mode;
    session.Open();
    EXPECT_EQ(connection.opened.back(), c.expected);
    EXPECT_EQ(session.CurrentDatabase(), "master");
  }
}

class QueryTest : public ::testing::Test {
 protected:
  QueryTest() {
    session.Open();
    connection.statements.clear();
  }
  FakeConnection connection;
  FakeLocale locale;
  ServerSession session{connection, locale};
  Query& query = session.ADOQuerySystem;
};

TEST_F(QueryTest, SendsItsLinesAsOneTextAndReadsRowsInOrder) {
  connection.Answer("from t", {{{.name = "id", .kind = FieldKind::kInteger},
                                {.name = "Made", .kind = FieldKind::kDateTime},
                                {.name = "note"}},
                               {{"1", "2005-03-08 09:05:07.000", ""}, {"2", {}, {}}}});
  query.Add("select *");
  query.Add("from t");
  query.Open();
  EXPECT_EQ(connection.statements, (std::vector<std::string>{"select *\r\nfrom t"}));
  EXPECT_EQ(query.FieldByName("ID").AsInteger(), 1);
  EXPECT_EQ(query.FieldByName("made").AsString(), "2005/03/08 9:05:07");
  EXPECT_FALSE(query.FieldByName("note").IsNull());
  query.Next();
  EXPECT_TRUE(query.FieldByName("note").IsNull());
  EXPECT_EQ(query.FieldByName("made").AsString(), "");
  EXPECT_THROW(query.FieldByName("absent"), SessionError);
  query.Next();
  EXPECT_TRUE(query.Eof());
  EXPECT_EQ(query.FieldByName("id").AsString(), "");
}

TEST_F(QueryTest, GivesAFieldOfEveryRowAsTexts) {
  connection.Answer("from t", {TextFields({"id", "name"}), {{"1", "a"}, {"2", {}}, {"3", "c"}}});
  EXPECT_EQ(query.Texts("select * from t", "Name"), (std::vector<std::string>{"a", "", "c"}));
  EXPECT_FALSE(query.Active());
  EXPECT_EQ(query.Texts("delete from u", "name"), std::vector<std::string>{});
  EXPECT_THROW(query.Texts("select * from t", "absent"), SessionError);
}

TEST_F(QueryTest, TextWithoutRowsLeavesItInactive) {
  query.Open("delete from t");
  EXPECT_FALSE(query.Active());
  EXPECT_TRUE(query.Eof());
  EXPECT_THROW(query.FieldByName("x"), SessionError);
}

TEST_F(QueryTest, EveryUseIsRecordedAndAFailedOneIsNot) {
  query.UseDatabase("sales");
  EXPECT_EQ(connection.statements, (std::vector<std::string>{"use [sales]"}));
  EXPECT_EQ(session.CurrentDatabase(), "sales");
  session.ADOQuery_User.UseDatabase("msdb");
  EXPECT_EQ(session.CurrentDatabase(), "msdb");
  query.Open("use [a b]\r\nselect 1");
  EXPECT_EQ(session.CurrentDatabase(), "a b");
  connection.Fail("use [gone]", "no");
  EXPECT_THROW(query.UseDatabase("gone"), ServerError);
  EXPECT_EQ(session.CurrentDatabase(), "a b");
}

TEST_F(QueryTest, IntegersThatAreNoneAreErrorsAndEmptyOnesAreZero) {
  connection.Answer("select", {TextFields({"a", "b"}), {{"12x", ""}}});
  query.Open("select");
  EXPECT_THROW(query.FieldByName("a").AsInteger(), ConvertError);
  EXPECT_EQ(query.FieldByName("b").AsInteger(), 0);
}

TEST(ServerErrorText, KeepsAllMessagesOfOneFailureTogether) {
  const ServerError error({{.number = 3621, .text = "first"}, {.number = 2627, .text = "second"}});
  EXPECT_EQ(std::string(error.what()), "first\r\nsecond");
  EXPECT_EQ(error.Number(), 3621);
  EXPECT_EQ(error.Messages().size(), 2U);
}

}  // namespace
}  // namespace dbkeeper
