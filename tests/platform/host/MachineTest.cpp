#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/host/DesktopLocale.h"
#include "platform/host/DesktopShell.h"
#include "platform/host/SessionSettings.h"
#include "platform/host/SystemRandom.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper::host {
namespace {

TEST(DesktopShell, TheTemporaryFolderEndsInOneSeparator) {
  DesktopShell shell("/opt/dbkeeper/DBKEEPER.exe", "1.2.3");
  const std::string folder = shell.TemporaryFolder();
  ASSERT_GE(folder.size(), 2U);
  EXPECT_EQ(folder.back(), '/');
  EXPECT_NE(folder[folder.size() - 2], '/');
}

TEST(DesktopShell, OnlyTheProgramsOwnFileHasAVersion) {
  DesktopShell shell("/opt/dbkeeper/DBKEEPER.exe", "1.2.3");
  EXPECT_EQ(shell.FileVersion(shell.Executable()), "1.2.3");
  EXPECT_EQ(shell.FileVersion("/bin/sh"), std::nullopt);
}

TEST(DesktopShell, WhatCannotBeStartedReportsNothing) {
  DesktopShell shell("/opt/dbkeeper/DBKEEPER.exe", "1.2.3");
  EXPECT_NO_THROW(shell.Run("no-such-program", "pause mssqlserver", WindowState::kHidden));
  EXPECT_NO_THROW(shell.Open("no-such-program.exe"));
}

TEST(DesktopShell, ABareNameIsAProgramAndNoAddress) {
  const testing::TemporaryFolder folder;
  const std::string sign = (folder / "started").string();
  testing::PutFile(folder / "dbkeeper-tool.exe", "#!/bin/sh\ntouch '" + sign + "'\n");
  std::filesystem::permissions(folder / "dbkeeper-tool.exe", std::filesystem::perms::owner_all);
  setenv("PATH", (folder.Path().string() + ":" + std::getenv("PATH")).c_str(), 1);
  DesktopShell("/opt/dbkeeper/DBKEEPER.exe", "1.2.3").Open("dbkeeper-tool.exe");
  for (int i = 0; i < 500 && !std::filesystem::exists(sign); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_TRUE(std::filesystem::exists(sign));
}

TEST(DesktopLocale, DatesHaveFourDigitsOfYear) {
  EXPECT_NE(DesktopLocale().ShortDateFormat().find("yyyy"), std::string::npos);
}

TEST(SystemRandom, NumbersStayBelowTheLimit) {
  SystemRandom random;
  EXPECT_EQ(random.Below(1), 0);
  for (int i = 0; i < 1000; ++i) EXPECT_LT(random.Below(3), 3);
}

struct OdbcCase {
  std::string settings;
  OdbcOptions wanted;
};

TEST(SessionSettings, OdbcOptionsComeFromTheSettingsFileOrAreTheDefaults) {
  const OdbcCase cases[] = {
      {"", {}},
      {"[ODBC]\r\nDriver=/usr/lib/libtdsodbc.so\r\nTDSVersion=7.4\r\nLoginTimeout=3\r\n",
       {.driver = "/usr/lib/libtdsodbc.so", .tds_version = "7.4", .login_timeout_seconds = 3}},
      {"[ODBC]\r\nLoginTimeout=soon\r\n", {}},
      {"[ODBC]\r\nLoginTimeout=-5\r\n", {}},
      {std::string("\0\1garbage", 9), {}},
  };
  for (const OdbcCase& c : cases) {
    const testing::TemporaryFolder folder;
    testing::FakeHost fake;
    testing::PutFile(folder / "DBKEEPER.ini", c.settings);
    const OdbcOptions read = ReadOdbcOptions(SettingsFile(folder / "DBKEEPER.ini", fake.host));
    EXPECT_EQ(read.driver, c.wanted.driver) << c.settings;
    EXPECT_EQ(read.tds_version, c.wanted.tds_version) << c.settings;
    EXPECT_EQ(read.login_timeout_seconds, c.wanted.login_timeout_seconds) << c.settings;
  }
}

class StartedServer : public LocalEndpoint {
 public:
  LocalTarget Locate() override { return {"127.0.0.1,4711", "tanaka", "secret"}; }
};

TEST(SessionSettings, LocalIsTheConfiguredServerOrTheStartedOne) {
  const testing::TemporaryFolder folder;
  testing::FakeHost fake;
  const SettingsFile settings(folder / "DBKEEPER.ini", fake.host);
  StartedServer started;
  LocalServerChoice local(settings, started);
  EXPECT_EQ(local.Locate().data_source, "127.0.0.1,4711");
  // The file is read at each use.
  testing::PutFile(folder / "DBKEEPER.ini", "[ODBC]\r\nLocal=pc02\\MSDE\r\n");
  EXPECT_EQ(local.Locate().data_source, "pc02\\MSDE");
  EXPECT_EQ(local.Locate().user, "");
}

}  // namespace
}  // namespace dbkeeper::host
