#include "platform/odbc/ConnectionString.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/support/Errors.h"

namespace dbkeeper {
namespace {

struct Translation {
  std::string given;
  std::string sent;
};

// The translation with the default settings; a local data source is 127.0.0.1,5000.
std::string Translate(const std::string& text) {
  ConnectionRequest request = ParseConnectionString(text);
  if (IsLocalDefault(request.data_source)) request.data_source = "127.0.0.1,5000";
  return OdbcConnectionString(request, ParseDataSource(request.data_source),
                              {.driver = "FreeTDS", .tds_version = "7.1"});
}

TEST(ConnectionString, IsTranslatedForTheDriver) {
  const std::string tail = ";DATABASE={master};APP=DB Keeper;TDS_Version=7.1;ClientCharset=UTF-8";
  const std::vector<Translation> table = {
      {"Provider=SQLOLEDB;Database=master;Integrated Security=SSPI;",
       "DRIVER={FreeTDS};SERVER=127.0.0.1;PORT=5000;Trusted_Connection=Yes" + tail},
      {"Provider=SQLOLEDB;Database=master;Integrated Security=SSPI;Data Source=db1",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1433;Trusted_Connection=Yes" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=pw;",
       "DRIVER={FreeTDS};SERVER=127.0.0.1;PORT=5000;UID={sa};PWD={pw}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=;Data Source=db1",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1433;UID={sa};PWD={}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=a;b=c;;Data Source=db1",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1433;UID={sa};PWD={a;b=c;}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=a;b;;",
       "DRIVER={FreeTDS};SERVER=127.0.0.1;PORT=5000;UID={sa};PWD={a;b;}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=x;Data Source=y;Data Source=db1",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1433;UID={sa};PWD={x;Data Source=y}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=;Password=1;Data Source=db1",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1433;UID={sa};PWD={;Password=1}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=管理者;Password={ひみつ};Data Source=支店\\本番",
       "DRIVER={FreeTDS};SERVER=支店\\本番;UID={管理者};PWD={{ひみつ}}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=p;Data Source=db1,1434",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1434;UID={sa};PWD={p}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=p;Data Source=tcp:db1\\inst, 1434",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1434;UID={sa};PWD={p}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=p;Data Source=.\\inst",
       "DRIVER={FreeTDS};SERVER=localhost\\inst;UID={sa};PWD={p}" + tail},
      {"Provider=SQLOLEDB;Database=master;User ID=sa;Password=p;Data Source=(LOCAL)",
       "DRIVER={FreeTDS};SERVER=127.0.0.1;PORT=5000;UID={sa};PWD={p}" + tail},
      {"provider=sqloledb.1;initial catalog=売上;integrated security=sspi;data source=db1",
       "DRIVER={FreeTDS};SERVER=db1;PORT=1433;Trusted_Connection=Yes;DATABASE={売上};APP=DB Keeper;"
       "TDS_Version=7.1;ClientCharset=UTF-8"},
  };
  for (const Translation& row : table) EXPECT_EQ(Translate(row.given), row.sent) << row.given;
}

TEST(ConnectionString, IsRefusedWhenTheDriverCouldMistakeIt) {
  const std::string sql_login = "Provider=SQLOLEDB;Database=master;User ID=sa;Password=secret";
  const std::vector<std::string> table = {
      "master",
      "Provider=MSDASQL;Database=master;Integrated Security=SSPI;",
      "Provider=SQLOLEDB;Database=master;Integrated Security=Basic;",
      "Provider=SQLOLEDB;Datenbank=master;Integrated Security=SSPI;",
      "Provider=SQLOLEDB;Database=master;User ID=a};b;Password=secret;Data Source=db1",
      sql_login + "};DATABASE=x;Data Source=db1",
      sql_login + ";Data Source=db1 db2",
      sql_login + ";Data Source={db1}",
      sql_login + ";Data Source=db1=2",
      sql_login + ";Data Source=\\inst",
      sql_login + ";Data Source=\\\\db1\\pipe\\sql\\query",
      sql_login + ";Data Source=db1\\",
      sql_login + ";Data Source=,1433",
      sql_login + ";Data Source=db1,",
      sql_login + ";Data Source=db1,0",
      sql_login + ";Data Source=db1,65536",
      sql_login + ";Data Source=db1,14x3",
      sql_login + ";Data Source=db1,-1",
      sql_login + ";Data Source=db1,99999999999999999999",
      sql_login + ";Data Source=np:db1",
      sql_login + ";Data Source=lpc:.",
      sql_login + ";Data Source=tcp:",
  };
  for (const std::string& text : table) {
    try {
      Translate(text);
      ADD_FAILURE() << text;
    } catch (const SessionError& refusal) {
      EXPECT_EQ(std::string(refusal.what()).find("secret"), std::string::npos) << refusal.what();
    }
  }
}

TEST(ConnectionString, ProtocolVersionsThatGarbleTextAreRefused) {
  for (const char* version : {"7.1", "7.2", "7.3", "7.4"}) {
    EXPECT_NO_THROW(RequireUsableTdsVersion(version)) << version;
  }
  for (const char* version : {"7.0", "5.0", "4.2", "8.0", "auto", "", "7.1;UID=sa"}) {
    EXPECT_THROW(RequireUsableTdsVersion(version), SessionError) << version;
  }
}

}  // namespace
}  // namespace dbkeeper
