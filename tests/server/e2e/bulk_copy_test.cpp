// The bulk copy tool of others: rows go in and come out byte for byte.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tests/server/e2e/server_process.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

constexpr int kRows = 100'000;

std::string ReadFile(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

void WriteRows(const std::filesystem::path& path) {
  constexpr const char* kNames[] = {"田中 ①", "ﾔﾏﾀﾞ 髙", "plain", "表示～－", "x"};
  std::ofstream file(path, std::ios::binary);
  for (int i = 1; i <= kRows; ++i) {
    const std::string number = std::to_string(i);
    file << number << '\t' << kNames[i % 5] << number << '\t' << (i % 7 == 0 ? "" : kNames[i % 3])
         << '\t' << (i % 2 == 0 ? "-" : "") << number << ".25" << number.back() << "0\t"
         << "2004-02-29 12:34:5" << i % 10 << ".997\t" << i % 2 << "\t0" << i % 10 << "ff\n";
  }
}

TEST(BulkCopy, BringsAHundredThousandRowsInAndOut) {
  const TemporaryFolder folder;
  ServerProcess server(folder.path() / "data");
  const OdbcClient client(server.port(), "tester", "Secret_1");
  client.Execute("create database work");
  client.Execute(
      "create table work.dbo.品目 (id int not null primary key, name varchar(40) not null, "
      "remark nvarchar(40), price decimal(18,4), made datetime, flag bit, raw varbinary(10))");
  const auto in = folder.path() / "in.txt";
  const auto out = folder.path() / "out.txt";
  WriteRows(in);
  // The tool reads the client's character set from this file only.
  const auto settings = folder.path() / "freetds.conf";
  std::ofstream(settings) << "[local]\nhost = 127.0.0.1\nport = " << server.port()
                          << "\ntds version = 7.1\nclient charset = UTF-8\n";
  const auto copy = [&](const std::string& direction, const std::filesystem::path& file) {
    const ToolResult result =
        RunTool("FREETDSCONF='" + settings.string() + "' freebcp work.dbo.品目 " + direction +
                " '" + file.string() + "' -c -S local -U tester -P Secret_1");
    EXPECT_EQ(result.status, 0) << result.output.substr(0, 2000);
  };
  copy("in", in);
  EXPECT_EQ(client.Query("select count(*) from work.dbo.品目")[0][0], std::to_string(kRows));
  copy("out", out);
  const std::string sent = ReadFile(in);
  const std::string got = ReadFile(out);
  EXPECT_EQ(got.size(), sent.size());
  EXPECT_TRUE(got == sent) << got.substr(0, 500);
  RecordProperty("peak_memory_kib", static_cast<int>(server.PeakMemory()));
}

}  // namespace
}  // namespace dbkeeper::server
