#include "app/session/CellText.h"

#include <gtest/gtest.h>

#include "app/session/SelectSource.h"
#include "app/support/Errors.h"
#include "tests/support/FakeHost.h"

namespace dbkeeper {
namespace {

Field Of(FieldKind kind, std::string type = "") {
  return {.name = "f", .kind = kind, .type_name = std::move(type)};
}

TEST(CellText, ReadsWhatAPersonTypesByTheTypeOfTheField) {
  const struct {
    FieldKind kind;
    const char* typed;
    std::optional<std::string> value;
  } kCases[] = {
      {FieldKind::kText, "", ""},
      {FieldKind::kText, "  a ", "  a "},
      {FieldKind::kInteger, "", std::nullopt},
      {FieldKind::kInteger, " +12 ", "12"},
      {FieldKind::kInteger, "-9223372036854775808", "-9223372036854775808"},
      {FieldKind::kDecimal, "-.5", "-0.5"},
      {FieldKind::kDecimal, "12345678901234567890123456789012345678",
       "12345678901234567890123456789012345678"},
      {FieldKind::kDecimal, "7.", "7"},
      {FieldKind::kReal, "1e-3", "1e-3"},
      {FieldKind::kBit, "True", "1"},
      {FieldKind::kDateTime, "2005/3/8 9:05", "2005-03-08 09:05:00.000"},
      {FieldKind::kDateTime, "2005-03-08 09:05:07.12", "2005-03-08 09:05:07.120"},
      {FieldKind::kBinary, "0xabCD", "ABCD"},
      {FieldKind::kBinary, "0x", ""},
      {FieldKind::kGuid, "{6f9619ff-8b86-d011-b42d-00c04fc964ff}",
       "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
  };
  testing::FakeLocale locale;
  for (const auto& c : kCases)
    EXPECT_EQ(TypedValue(Of(c.kind), c.typed, locale), c.value) << c.typed;
}

TEST(CellText, ReadsDatesInTheHostsOrder) {
  testing::FakeLocale locale;
  const Field date = Of(FieldKind::kDateTime);
  const struct {
    const char* pattern;
    const char* typed;
  } kCases[] = {{"dd.mm.yyyy", "08.03.2005"}, {"m/d/yyyy", "3/8/2005"}, {"m/d/yyyy", "2005/3/8"}};
  for (const auto& c : kCases) {
    locale.short_date = c.pattern;
    EXPECT_EQ(TypedValue(date, c.typed, locale), "2005-03-08 00:00:00.000") << c.typed;
  }
}

TEST(CellText, RefusesWhatIsNoValueOfTheType) {
  const struct {
    FieldKind kind;
    const char* typed;
  } kCases[] = {
      {FieldKind::kInteger, "1.5"},
      {FieldKind::kInteger, "1 or 1=1"},
      {FieldKind::kInteger, "-"},
      {FieldKind::kDecimal, "."},
      {FieldKind::kDecimal, "1e5"},
      {FieldKind::kDecimal, "1.2.3"},
      {FieldKind::kReal, "nan"},
      {FieldKind::kReal, "1;drop"},
      {FieldKind::kBit, "2"},
      {FieldKind::kDateTime, "2005/13/01"},
      {FieldKind::kDateTime, "yesterday"},
      {FieldKind::kDateTime, "2005"},
      {FieldKind::kBinary, "0xABC"},
      {FieldKind::kBinary, "0xGG"},
      {FieldKind::kGuid, "6F9619FF"},
  };
  testing::FakeLocale locale;
  for (const auto& c : kCases) {
    EXPECT_THROW(TypedValue(Of(c.kind), c.typed, locale), ConvertError) << c.typed;
  }
}

TEST(CellText, WritesLiteralsThatTheServerReadsAsTheSameValue) {
  const struct {
    Field field;
    std::optional<std::string> value;
    const char* literal;
  } kCases[] = {
      {Of(FieldKind::kText, "varchar"), std::nullopt, "null"},
      {Of(FieldKind::kText, "varchar"), "O'Brien", "'O''Brien'"},
      {Of(FieldKind::kText, "varchar"), "日本", "N'日本'"},
      {Of(FieldKind::kDecimal, "money"), "-12.3400", "-12.3400"},
      {Of(FieldKind::kReal, "float"), "1.1", "1.1e0"},
      {Of(FieldKind::kReal, "real"), "1.1", "cast(1.1e0 as real)"},
      {Of(FieldKind::kDateTime, "datetime"), "2005-03-08 09:05:07.123", "'20050308 09:05:07.123'"},
      {Of(FieldKind::kBinary, "image"), "00FF", "0x00FF"},
  };
  for (const auto& c : kCases) EXPECT_EQ(SqlLiteral(c.field, c.value), c.literal);
  EXPECT_EQ(BracketedName("a]b"), "[a]]b]");
}

TEST(CellText, ShortensLongTextsBetweenCharacters) {
  testing::FakeLocale locale;
  std::string room;
  EXPECT_EQ(ShownText(Of(FieldKind::kText), "日本", room, locale, 4), "日");
  EXPECT_EQ(ShownText(Of(FieldKind::kBinary), "00FF00FF", room, locale, 6), "0x00FF");
  EXPECT_EQ(ShownText(Of(FieldKind::kDateTime), "2005-03-08 00:00:00.000", room, locale),
            "2005/03/08");
}

TEST(SelectSource, RecognisesASelectOfOneTable) {
  using Columns = std::vector<std::optional<std::string>>;
  const struct {
    const char* sql;
    std::vector<std::string> table;
    Columns columns;
  } kCases[] = {
      {"select * from [order details]", {"order details"}, {}},
      {"SELECT *\r\nFROM t\r\n where a in (select b from u) order by 1;", {"t"}, {}},
      {"select top 10 * from sales..t", {"sales", "", "t"}, {}},
      {"select top (10) percent x.* from dbo.t as x", {"dbo", "t"}, {}},
      {"-- all\nselect a, t.b as c, a + 1, 'x' y, \"d\" from t /* one */",
       {"t"},
       Columns{"a", "b", std::nullopt, std::nullopt, "d"}},
      {"select 顧客 from 表", {"表"}, Columns{"顧客"}},
  };
  for (const auto& c : kCases) {
    const auto source = SingleTableOf(c.sql);
    ASSERT_TRUE(source) << c.sql;
    EXPECT_EQ(source->table, c.table) << c.sql;
    EXPECT_EQ(source->columns, c.columns) << c.sql;
  }
}

TEST(SelectSource, RefusesWhateverMayNotBeRowsOfOneTable) {
  for (const char* sql : {"",
                          "select 1",
                          "select * from a, b",
                          "select * from a join b on a.x = b.x",
                          "select distinct a from t",
                          "select a from t group by a",
                          "select a from t union select 1",
                          "select a into b from t",
                          "select * from t; delete from t",
                          "select * from t delete from t",
                          "update t set a = 1",
                          "use x select * from t",
                          "select * from (select 1 a) t",
                          "select * from openquery(x, 'select 1') y, t",
                          "select a, * from t",
                          "select * from f(1",
                          "select * from t for xml auto",
                          "select * from t)",
                          "exec p",
                          "select * from @t",
                          "select * from t compute sum(a)",
                          "select * from a.b.c.d"}) {
    EXPECT_FALSE(SingleTableOf(sql)) << sql;
  }
}

}  // namespace
}  // namespace dbkeeper
