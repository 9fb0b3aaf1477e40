#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/support/DateText.h"
#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/SettingsFile.h"
#include "app/support/TextFilling.h"
#include "app/support/TextHelpers.h"
#include "app/support/Utf8.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

namespace fs = std::filesystem;
using testing::FakeCodePage;
using testing::FakeHost;
using testing::FileBytes;
using testing::PutFile;
using testing::TemporaryFolder;

TEST(SettingsFile, ReadsValuesInQuotesAndKeepsAByteOrderMark) {
  const TemporaryFolder folder;
  testing::FakeHost fake;
  const auto file = folder / "a.ini";
  PutFile(file, "\xef\xbb\xbf[SYSTEM]\r\nAdvanced=\"True\"\r\nName='\u8868'\r\n");
  SettingsFile settings(file, fake.host);
  EXPECT_EQ(settings.Read("SYSTEM", "Advanced", ""), "True");
  EXPECT_EQ(settings.Read("SYSTEM", "Name", ""), "\u8868");
  settings.Write("SYSTEM", "Advanced", "False");
  EXPECT_EQ(FileBytes(file), "\xef\xbb\xbf[SYSTEM]\r\nAdvanced=False\r\nName='\u8868'\r\n");
}

TEST(FillText, PutsTheValuesIntoTheirPlacesInOnePass) {
  struct Case {
    const char *text, *expected;
  };
  const Case cases[] = {
      {"drop [%D].dbo.[%N]", "drop [%N].dbo.[a%D]"},
      {"100% of %N%", "100% of a%D%"},
      {"%%N", "%a%D"},
      {"%X %n %-N %-4", "%X %n %-N %-4"},
      {"[%-5N]=[%-2N]", "[a%D  ]=[a%D]"},
      {"[%-4J] %-12X", "[日本  ] %-12X"},
      {"", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FillText(c.text, {{'N', "a%D"}, {'D', "%N"}, {'J', "日本"}}), c.expected) << c.text;
  }
}

TEST(TextBetween, GivesTheFirstPieceBetweenItsMarkers) {
  struct Case {
    const char *text, *start, *end, *expected;
  };
  const Case cases[] = {
      {"a, Collation=Japanese_CI_AS, b", "Collation=", ",", "Japanese_CI_AS"},
      {"Collation=x", "Collation=", ",", ""},
      {"no marker, here", "Collation=", ",", ""},
      {"", "a", "b", ""},
      {"[]", "[", "]", ""},
      {",Collation=x,", "Collation=", ",", "x"},
      {"aXXb", "X", "X", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(TextBetween(c.text, c.start, c.end), c.expected) << c.text;
}

TEST(ReplaceAll, SearchesAgainFromTheBeginningUntilNoneIsLeft) {
  struct Case {
    const char *text, *search, *replacement, *expected;
  };
  const Case cases[] = {
      {"a     b", "  ", " ", "a b"}, {"aabb", "ab", "", ""},      {"ababab", "ab", "x", "xxx"},
      {"none", "q", "r", "none"},    {"AbaB", "ab", "x", "AbaB"}, {"xyyz", "xy", "", "yz"},
  };
  for (const Case& c : cases) EXPECT_EQ(ReplaceAll(c.text, c.search, c.replacement), c.expected);
  EXPECT_THROW(ReplaceAll("db", "db", "db2"), std::invalid_argument);
}

TEST(Split, KeepsEmptyMiddlePartsAndDropsAnEmptyLastOne) {
  using Parts = std::vector<std::string>;
  EXPECT_EQ(Split("a,,b,", ','), (Parts{"a", "", "b"}));
  EXPECT_EQ(Split("", ','), Parts{});
  EXPECT_EQ(Split(",", ','), (Parts{""}));
  EXPECT_EQ(Split("a", ','), (Parts{"a"}));
}

TEST(LeadingUseStatement, FindsTheDatabaseOfATextThatBeginsWithUse) {
  struct Case {
    const char* sql;
    std::optional<std::string> database;
  };
  const Case cases[] = {
      {"use [sales]", "sales"},
      {"USE master\r\nexec sp_who", "master"},
      {"  use msdb;select 1", "msdb"},
      {"use [a b]\r\nselect 1", "a b"},
      {"use[x]", "x"},
      {"user_proc", std::nullopt},
      {"select 'use x'", std::nullopt},
      {"use", std::nullopt},
      {"use [broken", std::nullopt},
  };
  for (const Case& c : cases) EXPECT_EQ(LeadingUseStatement(c.sql), c.database) << c.sql;
}

TEST(DateText, FormatsByPattern) {
  const DateTimeValue afternoon{2005, 3, 8, 14, 5, 9};
  const DateTimeValue midnight{2005, 12, 31, 0, 0, 0};
  EXPECT_EQ(FormatDateTime(afternoon, "hh:nn am/pm"), "02:05 pm");
  EXPECT_EQ(FormatDateTime(midnight, "hh:nn am/pm"), "12:00 am");
  EXPECT_EQ(FormatDateTime(afternoon, "mm/dd/yy"), "03/08/05");
  EXPECT_EQ(FormatDateTime(afternoon, "yyyymmdd"), "20050308");
}

TEST(DateText, ShowsServerDatesInTheHostsShortForm) {
  struct Case {
    const char *server, *format, *shown;
  };
  const Case cases[] = {
      {"2005-03-08 09:05:07.123", "yyyy/mm/dd", "2005/03/08 9:05:07"},
      {"2005-03-08 00:00:00.000", "yyyy/mm/dd", "2005/03/08"},
      {"2005-03-08", "d.m.yyyy", "8.3.2005"},
      {"not a date", "yyyy/mm/dd", "not a date"},
  };
  for (const Case& c : cases) EXPECT_EQ(ServerDateToHostText(c.server, c.format), c.shown);
}

TEST(DateText, AddsDaysAcrossMonthsAndYears) {
  EXPECT_EQ(AddDays({2005, 3, 8, 1, 2, 3}, -7), (DateTimeValue{2005, 3, 1, 1, 2, 3}));
  EXPECT_EQ(AddDays({2004, 3, 1}, -1), (DateTimeValue{2004, 2, 29}));
  EXPECT_EQ(AddDays({2005, 12, 31}, 1), (DateTimeValue{2006, 1, 1}));
}

TEST(Utf8, TakesCharactersNotBytes) {
  EXPECT_EQ(Utf8Right("0000あいう", 4), "0あいう");
  EXPECT_EQ(Utf8Right("ab", 10), "ab");
  EXPECT_EQ(Utf8Count("a日本\xFF"), 4U);
  EXPECT_EQ(FoldCase("ABCz ＡＺａ日"), "abcz ａｚａ日");
}

TEST(SettingsPath, CutsTheNameAtItsFirstPoint) {
  EXPECT_EQ(SettingsPath("/p/DBKEEPER.exe"), fs::path("/p/DBKEEPER.ini"));
  EXPECT_EQ(SettingsPath("/p/a.b.exe"), fs::path("/p/a.ini"));
  EXPECT_EQ(SettingsPath("/p.q/dbkeeper"), fs::path("/p.q/dbkeeper.ini"));
}

class SettingsFileTest : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  FakeHost fake;
  fs::path path = folder / "DBKEEPER.ini";
  SettingsFile settings{path, fake.host};
};

TEST_F(SettingsFileTest, ReadsWithDefaultsAndKeepsEveryOtherLineWhenWriting) {
  EXPECT_EQ(settings.Read("SYSTEM", "Advanced", "False"), "False");
  PutFile(path, "; kept\r\n[system]\r\nadvanced = true\r\n\r\n[Other]\r\nx=\x93\xfa\x96\x7b\r\n");
  EXPECT_EQ(settings.Read("SYSTEM", "Advanced", "False"), "true");
  EXPECT_EQ(settings.Read("Other", "x", ""), "日本");
  settings.Write("SYSTEM", "DspSysTbl", "False");
  settings.Write("SYSTEM", "Advanced", "True");
  settings.Write("SQLServer", "host\\inst", "Connected");
  settings.Write("SQLServer", "host2", "Connected");
  EXPECT_EQ(FileBytes(path),
            "; kept\r\n[system]\r\nAdvanced=True\r\nDspSysTbl=False\r\n\r\n"
            "[Other]\r\nx=\x93\xfa\x96\x7b\r\n"
            "[SQLServer]\r\nhost\\inst=Connected\r\nhost2=Connected\r\n");
  EXPECT_EQ(settings.Keys("SQLServer"), (std::vector<std::string>{"host\\inst", "host2"}));
}

TEST_F(SettingsFileTest, OfSectionsOfOneNameTheFirstCounts) {
  PutFile(path, "[SQLServer]\r\na=1\r\n[SYSTEM]\r\n[sqlserver]\r\na=2\r\nb=2\r\n");
  EXPECT_EQ(settings.Read("SQLServer", "a", ""), "1");
  EXPECT_EQ(settings.Read("SQLServer", "b", ""), "");
  EXPECT_EQ(settings.Keys("SQLServer"), (std::vector<std::string>{"a"}));
}

TEST_F(SettingsFileTest, FileThatCannotBeUnderstoodIsReportedAndNeverOverwritten) {
  const std::string bad[] = {
      std::string("[SYSTEM]\r\n\xff\xfe\x80", 13),
      std::string("\0\0\0\0", 4),
      std::string(10 << 20, 'x'),
  };
  for (const std::string& bytes : bad) {
    PutFile(path, bytes);
    EXPECT_THROW(settings.Read("SYSTEM", "Advanced", "False"), FileError);
    EXPECT_THROW(settings.Write("SYSTEM", "Advanced", "True"), FileError);
    EXPECT_EQ(FileBytes(path), bytes);
  }
}

TEST_F(SettingsFileTest, FolderInItsPlaceAndAReadOnlyFileAreReported) {
  fs::create_directory(path);
  EXPECT_THROW(settings.Read("SYSTEM", "Advanced", "False"), FileError);
  EXPECT_THROW(settings.Write("SYSTEM", "Advanced", "True"), FileError);
  fs::remove(path);
  PutFile(path, "[SYSTEM]\r\n");
  fs::permissions(path, fs::perms::owner_read);
  EXPECT_EQ(settings.Read("SYSTEM", "Advanced", "False"), "False");
  EXPECT_THROW(settings.Write("SYSTEM", "Advanced", "True"), FileError);
  EXPECT_EQ(FileBytes(path), "[SYSTEM]\r\n");
}

TEST_F(SettingsFileTest, TextThatTheCodePageLacksIsRefusedByName) {
  PutFile(path, "[SYSTEM]\r\n");
  try {
    settings.Write("SQLServer", "host😀", "Connected");
    FAIL() << "written";
  } catch (const FileError& error) {
    EXPECT_NE(std::string(error.what()).find("😀"), std::string::npos);
  }
  EXPECT_EQ(FileBytes(path), "[SYSTEM]\r\n");
}

// Random bytes and random line mixes: reading must answer or refuse, never fall over.
TEST_F(SettingsFileTest, AnyBytesAreReadOrRefused) {
  std::uint32_t state = 12345;
  const auto next = [&state] { return state = state * 1664525U + 1013904223U; };
  const std::string pieces[] = {"[",      "]",        "=", "\r\n", "\n",
                                "SYSTEM", "Advanced", ";", " ",    "\x93"};
  for (int round = 0; round < 300; ++round) {
    std::string bytes;
    for (int i = 0; i < 40; ++i) bytes += pieces[(next() >> 16) % std::size(pieces)];
    PutFile(path, bytes);
    try {
      settings.Write("SYSTEM", "Advanced", "True");
      EXPECT_EQ(settings.Read("SYSTEM", "Advanced", ""), "True") << bytes;
    } catch (const FileError&) {
      EXPECT_EQ(FileBytes(path), bytes);
    }
  }
}

TEST(ToAnsiWithNumbers, WritesWhatTheCodePageLacksByItsNumber) {
  FakeCodePage code_page;
  EXPECT_EQ(ToAnsiWithNumbers(code_page, "日a😀"),
            "\x93\xfa"
            "a<U+1F600>");
}

}  // namespace
}  // namespace dbkeeper
