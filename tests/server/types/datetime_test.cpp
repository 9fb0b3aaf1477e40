#include "server/types/datetime.h"

#include <gtest/gtest.h>

namespace dbkeeper::server {
namespace {

struct DateCase {
  std::string_view text;
  std::string_view time;  // in style 121, or "syntax", "range"
};

std::string Read(std::string_view text, DateOrder order = DateOrder::kMonthDayYear) {
  const ParsedDate parsed = ParseDateTime(text, order);
  if (parsed.fault) return *parsed.fault == DateFault::kSyntax ? "syntax" : "range";
  return FormatDateTime(parsed.time, 121).value();
}

TEST(DateTime, TextsOfEveryUsualFormAreRead) {
  constexpr DateCase kCases[] = {
      {"", "1900-01-01 00:00:00.000"},
      {"2004-03-08", "2004-03-08 00:00:00.000"},
      {"2004/3/8", "2004-03-08 00:00:00.000"},
      {"2004.3.8 1:2", "2004-03-08 01:02:00.000"},
      {"3/8/2004", "2004-03-08 00:00:00.000"},
      {"3-8-49", "2049-03-08 00:00:00.000"},
      {"3-8-50", "1950-03-08 00:00:00.000"},
      {"20040308", "2004-03-08 00:00:00.000"},
      {"040308 23:59:59.997", "2004-03-08 23:59:59.997"},
      {"2004", "2004-01-01 00:00:00.000"},
      {"2004-03-08T10:20:30", "2004-03-08 10:20:30.000"},
      {"2004-03-08 10:20:30.5", "2004-03-08 10:20:30.500"},
      {"2004-03-08 10:20:30:005", "2004-03-08 10:20:30.007"},
      {"2004-03-08 23:59:59.999", "2004-03-09 00:00:00.000"},
      {"Mar 8 2004 1:05PM", "2004-03-08 13:05:00.000"},
      {"March 8, 2004", "2004-03-08 00:00:00.000"},
      {"8 mar 04", "2004-03-08 00:00:00.000"},
      {"2004 march 8", "2004-03-08 00:00:00.000"},
      {"Mar 2004", "2004-03-01 00:00:00.000"},
      {"08-Mar-2004", "2004-03-08 00:00:00.000"},
      {"12 am", "1900-01-01 00:00:00.000"},
      {"12:30 PM", "1900-01-01 12:30:00.000"},
      {"10:20 2004-03-08", "2004-03-08 10:20:00.000"},
      {"1753-01-01", "1753-01-01 00:00:00.000"},
      {"9999-12-31", "9999-12-31 00:00:00.000"},
      {"1752-12-31", "range"},
      {"2004-02-30", "range"},
      {"2003-02-29", "range"},
      {"2004-13-01", "range"},
      {"2004-01-01 24:00", "range"},
      {"2004-01-01 13:00 PM", "range"},
      {"9999-12-31 23:59:59.999", "range"},
      {"yesterday", "syntax"},
      {"2004-01", "syntax"},
      {"1/2/3/4", "syntax"},
      {"12345", "syntax"},
      {"Mar Apr 2004", "syntax"},
      {"2004-03-08 10:", "syntax"},
      {"2004-03-08 10:20 11:20", "syntax"},
  };
  for (const DateCase& test : kCases) EXPECT_EQ(Read(test.text), test.time) << test.text;
  EXPECT_EQ(Read("3/8/04", DateOrder::kDayMonthYear), "2004-08-03 00:00:00.000");
  EXPECT_EQ(Read("04/3/8", DateOrder::kYearMonthDay), "2004-03-08 00:00:00.000");
}

TEST(DateTime, EveryDayGoesToItsDateAndBack) {
  const std::int64_t first = FromCivil({1753, 1, 1, 0, 0, 0, 0});
  const std::int64_t last = FromCivil({9999, 12, 31, 0, 0, 0, 0});
  CivilTime before = ToCivil(first);
  for (std::int64_t time = first + kTicksPerDay; time <= last; time += kTicksPerDay) {
    const CivilTime civil = ToCivil(time);
    ASSERT_EQ(FromCivil(civil), time);
    const bool next_day = civil.day == before.day + 1 && civil.month == before.month;
    const bool next_month = civil.day == 1 && before.day == DaysInMonth(before.year, before.month);
    ASSERT_TRUE(next_day || next_month) << civil.year << ' ' << civil.month << ' ' << civil.day;
    before = civil;
  }
}

TEST(DateTime, MillisecondsAreRoundedToThreeHundredths) {
  constexpr int kCases[][2] = {{0, 0}, {1, 0}, {2, 3}, {3, 3}, {5, 7}, {8, 7}, {9, 10}, {998, 997}};
  for (const auto& [given, kept] : kCases) {
    EXPECT_EQ(Milliseconds(TicksOfMilliseconds(given)), kept) << given;
  }
}

TEST(DateTime, StylesWriteTheirForms) {
  const std::int64_t time = FromCivil({2004, 3, 8, 13, 5, 9, 37});
  constexpr std::pair<int, std::string_view> kCases[] = {{0, "Mar  8 2004  1:05PM"},
                                                         {1, "03/08/04"},
                                                         {3, "08/03/04"},
                                                         {5, "08-03-04"},
                                                         {7, "Mar 08, 04"},
                                                         {8, "13:05:09"},
                                                         {11, "04/03/08"},
                                                         {12, "040308"},
                                                         {101, "03/08/2004"},
                                                         {104, "08.03.2004"},
                                                         {106, "08 Mar 2004"},
                                                         {109, "Mar  8 2004  1:05:09:123PM"},
                                                         {113, "08 Mar 2004 13:05:09:123"},
                                                         {114, "13:05:09:123"},
                                                         {126, "2004-03-08T13:05:09.123"}};
  for (const auto& [style, text] : kCases) EXPECT_EQ(FormatDateTime(time, style), text) << style;
  EXPECT_EQ(FormatDateTime(time, 130), std::nullopt);
}

}  // namespace
}  // namespace dbkeeper::server
