// Numbers and dates that operators and servers write, read back.
#include <gtest/gtest.h>

#include "app/support/DateText.h"
#include "app/support/Errors.h"
#include "app/support/NumberText.h"

namespace dbkeeper {
namespace {

TEST(NumberText, ReadsWholeNumbersAndRefusesWhatIsNone) {
  EXPECT_EQ(ParseInteger("-42"), -42);
  EXPECT_EQ(ParseInteger("9223372036854775807"), 9223372036854775807);
  for (const char* text : {"", " 1", "1 ", "1.0", "１", "9223372036854775808", "abc"}) {
    EXPECT_THROW(ParseInteger(text), ConvertError) << text;
  }
}

TEST(NumberText, ReadsAndWritesDecimalsInTheirShortestForm) {
  const std::pair<double, const char*> cases[] = {
      {10, "10"}, {2.5, "2.5"}, {0, "0"}, {-0.1, "-0.1"}, {1e15, "1000000000000000"}};
  for (const auto& [number, text] : cases) {
    EXPECT_EQ(DecimalText(number), text);
    EXPECT_EQ(ParseDecimal(text), number);
  }
  for (const char* text : {"", "1,5", "x", "nan", "inf"}) {
    EXPECT_THROW(ParseDecimal(text), ConvertError) << text;
  }
}

TEST(HostDate, IsReadInTheHostsShortFormOrYearFirst) {
  struct Case {
    const char* text;
    const char* form;
    std::optional<DateTimeValue> date;
  };
  const Case cases[] = {
      {"2005/03/08", "yyyy/mm/dd", DateTimeValue{2005, 3, 8}},
      {"2005/3/8", "yyyy/mm/dd", DateTimeValue{2005, 3, 8}},
      {"2005/03/08", "dd.mm.yyyy", DateTimeValue{2005, 3, 8}},
      {"8.3.2005", "dd.mm.yyyy", DateTimeValue{2005, 3, 8}},
      {"3/8/05", "m/d/yy", DateTimeValue{2005, 3, 8}},
      {"3/8/65", "m/d/yy", DateTimeValue{1965, 3, 8}},
      {"2004/02/29", "yyyy/mm/dd", DateTimeValue{2004, 2, 29}},
      {"2005/02/29", "yyyy/mm/dd", std::nullopt},
      {"2005/13/01", "yyyy/mm/dd", std::nullopt},
      {"2005/03", "yyyy/mm/dd", std::nullopt},
      {"2005/03/08 ", "yyyy/mm/dd", std::nullopt},
      {"2005-03-08", "yyyy/mm/dd", std::nullopt},
      {"", "yyyy/mm/dd", std::nullopt},
      {"20050308", "yyyy/mm/dd", std::nullopt},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(ParseHostDate(each.text, each.form), each.date) << each.text << " as " << each.form;
  }
}

}  // namespace
}  // namespace dbkeeper
