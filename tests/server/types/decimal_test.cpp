#include "server/types/decimal.h"

#include <gtest/gtest.h>

#include <random>

namespace dbkeeper::server {
namespace {

std::string Text(const std::optional<Decimal>& number) {
  return number ? FormatDecimal(*number) : "none";
}

Decimal Of(std::string_view text) { return ParseDecimal(text).value(); }

TEST(Decimal, TextsOfUpToThirtyEightDigitsComeBackAsTheyWere) {
  for (const std::string_view text :
       {"0", "-1", "0.50", "-0.001", "12345678901234567890123456789012345678",
        "-0.12345678901234567890123456789012345678", "99999999999999999999999999999999999999"}) {
    EXPECT_EQ(Text(ParseDecimal(text)), text);
  }
  EXPECT_EQ(Text(ParseDecimal("+007.50")), "7.50");
  EXPECT_EQ(Text(ParseDecimal(".5")), "0.5");
  EXPECT_EQ(Text(ParseDecimal("-0.0")), "0.0");
  for (const std::string_view text :
       {"", "-", ".", "1e5", "1.2.3", " 1", "123456789012345678901234567890123456789"}) {
    EXPECT_EQ(Text(ParseDecimal(text)), "none") << text;
  }
}

struct OperationCase {
  std::string_view left;
  char op;
  std::string_view right;
  int scale;
  std::string_view result;
};

TEST(Decimal, ResultsAreExactAtEveryMagnitude) {
  constexpr std::string_view kMost = "99999999999999999999999999999999999999";
  constexpr OperationCase kCases[] = {
      {"1.5", '+', "2.25", 2, "3.75"},
      {"1.5", '+', "-1.55", 1, "-0.1"},
      {kMost, '+', "1", 0, "none"},
      {kMost, '+', kMost, 0, "none"},
      {"-99999999999999999999999999999999999999", '+', "1", 0,
       "-99999999999999999999999999999999999998"},
      {"1.05", '*', "2.5", 2, "2.63"},
      {"-1.05", '*', "2.5", 2, "-2.63"},
      {"9999999999999999999", '*', "9999999999999999999", 0,
       "99999999999999999980000000000000000001"},
      {kMost, '*', "10", 0, "none"},
      {"0.00000000000000000001", '*', "0.00000000000000000001", 38,
       "0.00000000000000000000000000000000000000"},
      {"2", '/', "3", 6, "0.666666"},
      {"-2", '/', "3", 6, "-0.666666"},
      {kMost, '/', "3", 0, "33333333333333333333333333333333333333"},
      {"1", '/', kMost, 38, "0.00000000000000000000000000000000000001"},
      {"1", '/', "0.00000000000000000000000000000000000001", 6, "none"},
      {"7.5", '%', "2", 1, "1.5"},
      {"-7.5", '%', "2", 1, "-1.5"},
  };
  for (const OperationCase& test : kCases) {
    const Decimal left = Of(test.left);
    const Decimal right = Of(test.right);
    std::optional<Decimal> result;
    if (test.op == '+') result = Add(left, right, test.scale);
    if (test.op == '*') result = Multiply(left, right, test.scale);
    if (test.op == '/') result = Divide(left, right, test.scale);
    if (test.op == '%') result = Remainder(left, right, test.scale);
    EXPECT_EQ(Text(result), test.result) << test.left << test.op << test.right;
  }
}

TEST(Decimal, OrderOfTextsIsThatOfTheirNumbers) {
  constexpr std::string_view kAscending[] = {"-100", "-99.5", "-0.01", "0.00", "0.009",
                                             "0.01", "2",     "10",    "10.5", "100"};
  for (std::size_t i = 0; i < std::size(kAscending); ++i) {
    for (std::size_t j = 0; j < std::size(kAscending); ++j) {
      const int order = CompareDecimalText(kAscending[i], kAscending[j]);
      EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j)) << kAscending[i] << kAscending[j];
    }
  }
  EXPECT_EQ(CompareDecimalText("12", "12.000"), 0);
  EXPECT_EQ(CompareDecimalText("0", "-0.0"), 0);
}

TEST(Decimal, FloatsBecomeTheNumbersTheyPrint) {
  EXPECT_EQ(Text(FromDouble(0.1, 4)), "0.1000");
  EXPECT_EQ(Text(FromDouble(-2.5, 0)), "-3");
  EXPECT_EQ(Text(FromDouble(1e37, 0)), "10000000000000000000000000000000000000");
  EXPECT_EQ(Text(FromDouble(1e-300, 4)), "0.0000");
  EXPECT_EQ(Text(FromDouble(1e39, 0)), "none");
  EXPECT_EQ(Text(FromDouble(1e20, 30)), "none");
}

// Small numbers, whose results a machine integer holds exactly.
TEST(Decimal, AgreesWithMachineArithmetic) {
  std::mt19937 random(7);
  std::uniform_int_distribution<std::int64_t> numbers(-1000000, 1000000);
  for (int i = 0; i < 2000; ++i) {
    const std::int64_t left = numbers(random);
    const std::int64_t right = numbers(random);
    if (right == 0) continue;
    EXPECT_EQ(Text(Multiply({left, 0}, {right, 0}, 0)), std::to_string(left * right));
    EXPECT_EQ(Text(Divide({left, 0}, {right, 0}, 0)), std::to_string(left / right));
    EXPECT_EQ(Text(Remainder({left, 0}, {right, 0}, 0)), std::to_string(left % right));
  }
}

}  // namespace
}  // namespace dbkeeper::server
