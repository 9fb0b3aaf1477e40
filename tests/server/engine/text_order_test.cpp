// Kana type and width do not count, in every comparison and in the files of databases alike.
#include <algorithm>
#include <cstring>

#include "server/storage/sqlite.h"
#include "tests/server/engine/engine_fixture.h"

namespace dbkeeper::server {

namespace {

struct Case {
  const char* batch;
  const char* expected;
};

using TextOrderTest = EngineTest;

// As the order was in which kana type and width counted.
int CompareBytes(void* /*data*/, int left_length, const void* left, int right_length,
                 const void* right) {
  const int order =
      std::memcmp(left, right, static_cast<std::size_t>(std::min(left_length, right_length)));
  return order != 0 ? order : left_length - right_length;
}

// Makes the file one of that time; `sql` is run as it was then.
void Age(const std::filesystem::path& file, const std::string& sql) {
  SqliteConnection connection(file.string());
  RegisterServerFunctions(connection.handle());
  sqlite3_create_collation(connection.handle(), "MSTEXT", SQLITE_UTF8, nullptr, CompareBytes);
  connection.Execute("reindex mstext; pragma user_version = 0; " + sql);
}

}  // namespace

TEST_F(TextOrderTest, HoldsForKeysOrdersGroupsPatternsAndNames) {
  constexpr Case kCases[] = {
      {"create table 品目 (名 nvarchar(20) primary key, 種別 varchar(20))", ""},
      {"insert 品目 values (N'ｶﾞﾗｽ', 'ａ')", "(1)"},
      {"insert 品目 values (N'がらす', 'A')", "error 2627\nmessage 3621"},
      {"insert 品目 values (N'からす', 'A')", "(1)"},
      {"insert 品目 values (N'アメ', 'b')", "(1)"},
      {"select 名 from 品目 order by 名", "アメ\nからす\nｶﾞﾗｽ"},
      {"select 種別 from 品目 where 名 = N'ガラス'", "ａ"},
      {"select 種別 from 品目 where 名 in (N'ガラス', N'あめ') order by 種別", "ａ\nb"},
      {"select 名 from 品目 where 名 like N'ガ%'", "ｶﾞﾗｽ"},
      {"select count(*) from 品目 group by 種別 order by 種別", "2\n1"},
      {"select count(distinct 種別) from 品目", "2"},
      {"select count(*) from 品目 a join 品目 b on a.種別 = b.種別", "5"},
      {"select distinct upper(種別) from 品目 where 種別 = 'a' and 名 < N'き'", "A"},
      {"select case N'ｱ' when N'あ' then 1 else 0 end", "1"},
      {"select max(名), min(名) from 品目", "ｶﾞﾗｽ|アメ"},
      {"create table ﾋﾝﾓｸ (a int) select a from ひんもく", ""},
      {"create table ヒンモク (a int)", "error 2714"},
      {"update 品目 set 名 = N'ガラス' where 名 = N'ｶﾞﾗｽ'", "(1)"},
  };
  Client client = Operator();
  client.Run("create database 順序 use 順序");
  for (const Case& c : kCases) EXPECT_EQ(client.Run(c.batch), c.expected) << c.batch;
  client.Run("use master drop database 順序");
}

TEST_F(TextOrderTest, AnOlderFileIsBroughtIntoItOrRefusedByName) {
  Client client = Operator();
  client.Run(
      "create database 新 use 新 create table t (a nvarchar(9) primary key) "
      "insert t values (N'ア') insert t values (N'ｲ') insert t values (N'う') use master");
  client.Run(
      "create database 旧 use 旧 create table t (a nvarchar(9)) create unique index i on t(a) "
      "insert t values (N'ア') use master");
  const TemporaryFolder copy;
  CopyTo(copy.path());
  const std::filesystem::path data = copy.path() / "data";
  Age(copy.path() / "db1.sqlite", "");
  Age(data / "新.mdf", "");
  Age(data / "旧.mdf", "insert into t values ('あ')");
  const auto reopened = OpenInstance(OptionsFor(copy.path()));
  reopened->SetOperator(kOperator, kSecret);
  LoginRequest request;
  request.user = kOperator;
  request.password = kSecret;
  Client after(reopened->Login(request));
  EXPECT_EQ(after.Run("use 新 select a from t where a = N'い'"), "now 新\nｲ");
  EXPECT_EQ(after.Run("insert t values (N'ｱ')"), "error 2627\nmessage 3621");
  EXPECT_EQ(after.Run("use 旧"), "error 50013");
  EXPECT_NE(after.FirstMessage().find("'t'"), std::string::npos);
  EXPECT_EQ(after.Run("select name from master..sysdatabases where name = N'旧'"), "旧");
}

}  // namespace dbkeeper::server
