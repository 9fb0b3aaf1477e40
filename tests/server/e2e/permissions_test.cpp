// Logins, users, roles and rights over the wire, with clients that others wrote.
#include <gtest/gtest.h>

#include "tests/server/e2e/server_process.h"

namespace dbkeeper::server {
namespace {

class Permissions : public testing::Test {
 protected:
  // What tsql prints when that login sends the batch.
  std::string Send(const std::string& user, const std::string& password, const std::string& batch) {
    return RunTool("TDSVER=7.1 tsql -H 127.0.0.1 -p " + std::to_string(server_.port()) + " -U '" +
                       user + "' -P '" + password + "' -o q 2>&1",
                   batch + "\ngo\nexit\n")
        .output;
  }
  std::string Manage(const std::string& batch) { return Send("tester", "Secret_1", batch); }

  static bool Has(const std::string& output, const std::string& part) {
    return output.find(part) != std::string::npos;
  }
  static std::string Number(int number) { return "Msg " + std::to_string(number) + " "; }

  TemporaryFolder folder_;
  ServerProcess server_{folder_.path() / "data"};
};

TEST_F(Permissions, ALoginMadeHereDoesWhatItMayAndNoMore) {
  Manage("create database work");
  Manage("use work create table 品目 (番号 int, 単価 int) insert 品目 values (1, 250)");
  Manage("EXEC sp_addlogin [鈴木], 'Suzuki#1'");
  Manage("use [work] EXEC sp_grantdbaccess [鈴木], [鈴木]");
  Manage(
      "use [work]\nbegin \n grant select on [品目] to [鈴木]\n deny update on [品目] to "
      "[鈴木]\nend;");
  EXPECT_TRUE(Has(Send("鈴木", "Suzuki#1", "select 単価 from work..品目"), "250\n"));
  const std::string denied = Send("鈴木", "Suzuki#1", "update work..品目 set 単価 = 1");
  EXPECT_TRUE(Has(denied, Number(229))) << denied;
  EXPECT_TRUE(
      Has(denied, "UPDATE permission denied on object '品目', database 'work', owner 'dbo'."))
      << denied;
  Manage("use work exec sp_addrole 営業 exec sp_addrolemember 営業, 鈴木");
  Manage("use work deny select on 品目 to 営業");
  EXPECT_TRUE(Has(Send("鈴木", "Suzuki#1", "select 単価 from work..品目"), Number(229)));
}

TEST_F(Permissions, AChangedPasswordHoldsAtOnce) {
  Manage("EXEC sp_addlogin [kato], 'Kato#1'");
  EXPECT_TRUE(Has(Send("kato", "Kato#1", "select 'in'"), "in\n"));
  Manage("EXEC sp_password NULL,'Kato#2', [kato]");
  EXPECT_TRUE(Has(Send("kato", "Kato#1", "select 'in'"), Number(18456)));
  EXPECT_TRUE(Has(Send("kato", "Kato#2", "select 'in'"), "in\n"));
}

TEST_F(Permissions, WhatIsRefusedComesInTheServersWords) {
  Manage("EXEC sp_addlogin [kato], 'Kato#1'");
  Manage("create database work");
  Manage("use work EXEC sp_grantdbaccess [kato], [kato] exec sp_addrole [営業]");
  Manage("use work exec sp_addrolemember [営業], [kato]");
  Manage("use work create table t (a int) exec sp_changeobjectowner t, kato");
  const struct {
    const char* batch;
    int number;
  } cases[] = {
      {"EXEC sp_addlogin [a]b], 'x'", 170},
      {"EXEC sp_addlogin [x], 'it's'", 105},
      {"EXEC sp_addlogin [kato], 'x'", 15025},
      {"EXEC sp_addlogin [a\\b], 'x'", 15006},
      {"EXEC sp_password NULL,'x', [nobody]", 15007},
      {"EXEC sp_grantlogin @loginame = [NOWHERE\\nobody]", 15401},
      {"EXEC sp_grantlogin @loginame = [nobody]", 15407},
      {"EXEC sp_revokelogin @loginame = [kato]", 15407},
      {"EXEC sp_droplogin [tester]", 15434},
      {"EXEC sp_droplogin [kato]", 15175},
      {"use work EXEC sp_grantdbaccess [kato], [kato]", 15023},
      {"use work EXEC sp_grantdbaccess [nobody], [nobody]", 15007},
      {"use work EXEC sp_revokedbaccess [kato]", 15183},
      {"use work EXEC sp_revokedbaccess [nobody]", 15008},
      {"use work exec sp_addrole [営業]", 15023},
      {"use work exec sp_droprole [営業]", 15144},
      {"use work exec sp_addrolemember [nobody], [kato]", 15014},
      {"exec sp_addsrvrolemember [kato], [nothing]", 15402},
  };
  for (const auto& each : cases) {
    const std::string output = Manage(each.batch);
    EXPECT_TRUE(Has(output, Number(each.number))) << each.batch << ": " << output;
  }
  EXPECT_TRUE(Has(Send("kato", "Kato#1", "exec sp_addlogin x, 'y'"), Number(15247)));
}

}  // namespace
}  // namespace dbkeeper::server
