#include "server/sql/translator.h"

#include <gtest/gtest.h>

#include "server/types/type_rules.h"
#include "tests/server/sql/sql_fixture.h"
#include "tests/server/sql/statements.h"

namespace dbkeeper::server {
namespace {

void ExpectCases(std::span<const StatementCase> cases) {
  for (const StatementCase& test : cases) {
    TestInstance instance;
    ASSERT_EQ(instance.Run(kSetup).error.text, "");
    const Outcome outcome = instance.Run(test.batch);
    EXPECT_EQ(outcome.rows, test.rows) << test.batch << "\n" << outcome.error.text;
  }
}

TEST(Translator, QueriesGiveWhatTheServerGives) { ExpectCases(QueryCases()); }
TEST(Translator, ExpressionsFollowTheTypesOfTheirOperands) { ExpectCases(ExpressionCases()); }
TEST(Translator, FunctionsComputeAsTheServerDoes) { ExpectCases(FunctionCases()); }
TEST(Translator, ChangesConvertAndCheckTheirValues) { ExpectCases(ChangeCases()); }
TEST(Translator, FaultsCarryTheServersNumbers) { ExpectCases(ErrorCases()); }

struct TypeCase {
  std::string_view select;
  std::string_view columns;
};

TEST(Translator, TypesOfResultColumnsAreKnownBeforeTheFirstRow) {
  constexpr TypeCase kCases[] = {
      {"select 1, 'abc', N'abc', 1.50, 1e0, $1, 0x0102, null",
       " int,  varchar(3),  nvarchar(3),  numeric(3,2),  float,  money,  varbinary(2),  int"},
      {"select id, name, price, kind, born from items",
       "id int, name varchar(20), price decimal(10,2), kind char(2), born datetime"},
      {"select price + 1, price * price, price / 2, -price from items",
       " numeric(11,2),  numeric(21,4),  numeric(14,6),  decimal(10,2)"},
      {"select name + kind, name + N'x', upper(name), substring(kind, 1, 1) from items",
       " varchar(22),  nvarchar(21),  varchar(20),  varchar(2)"},
      {"select count(*), sum(id), avg(price), sum(price), max(kind) from items",
       " int,  int,  decimal(38,6),  decimal(38,2),  char(2)"},
      {"select getdate(), @@version, db_name(), newid(), serverproperty('x'), @@identity",
       " datetime,  nvarchar(300),  nvarchar(128),  uniqueidentifier,  sql_variant,  "
       "numeric(38,0)"},
      {"select case when 1 = 1 then 1 else 2.5 end x, isnull(name, 'a very long replacement') y "
       "from items",
       "x numeric(2,1), y varchar(20)"},
      {"select 'a' x union select N'abc'", "x nvarchar(3)"},
  };
  TestInstance instance;
  instance.Run(kSetup);
  for (const TypeCase& test : kCases) {
    const Outcome outcome = instance.Run(test.select);
    EXPECT_EQ(outcome.columns, test.columns) << test.select << "\n" << outcome.error.text;
  }
}

TEST(Translator, LiteralsBeyondTheLongestTextAreLarge) {
  TestInstance instance;
  const std::string letters(8001, 'x');
  EXPECT_EQ(instance.Run("select '" + letters + "', N'" + letters + "'").columns, " text,  ntext");
  EXPECT_EQ(instance
                .Run("create table big (x text) insert big values ('" + letters +
                     "') select datalength(x) from big")
                .rows,
            "8001");
}

TEST(Translator, ErrorsTellTheLineOfTheirPlaceInTheBatch) {
  TestInstance instance;
  instance.Run(kSetup);
  EXPECT_EQ(instance.Run("select id\n  from items\n where nothing = 1").error.line, 3);
  EXPECT_EQ(instance.Run("select 1\nselect * from\n nothing").error.line, 3);
  const ServerMessage message = instance.Run("select 1\n\n select , 2").error;
  EXPECT_EQ(message.text, "Line 3: Incorrect syntax near ','.");
  EXPECT_EQ(message.severity, 15);
}

TEST(Translator, ViewsReadAsTheirQueriesAndKeepTheirTypes) {
  TestInstance instance;
  instance.Run(kSetup);
  EXPECT_EQ(instance
                .Run("create view dear (number, cost) as\nselect id, price from items "
                     "where price > 2")
                .rows,
            "");
  EXPECT_EQ(instance.Run("select d.cost, d.number from dear d order by cost").rows,
            "3.25|3;20.00|2");
  EXPECT_EQ(instance.Run("update dear set cost = 1").rows, "error 50001");
}

TEST(Translator, ParametersAreBoundByNameWithTheirTypes) {
  TestInstance instance;
  instance.Run(kSetup);
  const Parameters parameters = {{"@P1", SqlType{TypeId::kNVarChar, 20, 0, 0, true}},
                                 {"@P2", SqlType{TypeId::kDecimal, 0, 5, 1, true}}};
  EXPECT_EQ(
      instance.Run("select id, @p2 + 1 from items where name = @P1", parameters, {"BANANA", "2.5"})
          .rows,
      "2|3.5");
}

TEST(Translator, ParametersOfTopAreIntegers) {
  TestInstance instance;
  instance.Run(kSetup);
  const auto top = [&](const SqlType& type, const char* value) {
    return instance.Run("select top @P1 id from items order by 1", {{"@P1", type}}, {value}).rows;
  };
  EXPECT_EQ(top(SqlType{TypeId::kInt, 4, 10, 0, true}, "2"), "1;2");
  EXPECT_EQ(top(SqlType{TypeId::kNVarChar, 20, 0, 0, true}, "two"), "error 1060");
  EXPECT_EQ(top(SqlType{TypeId::kDecimal, 0, 5, 1, true}, "2.5"), "error 1060");
}

TEST(Translator, RowIdsComeWithQueriesThatReadOneTableRowByRow) {
  TestInstance instance;
  instance.Run(kSetup);
  Translator translator(instance);
  const auto has_row_id = [&](std::string_view text) {
    const std::vector<Statement> statements = ParseBatch(text);
    return translator.Select(std::get<SelectStatement>(statements[0].node), {true}).has_row_id;
  };
  EXPECT_TRUE(has_row_id("select name from items where id > 1 order by name"));
  EXPECT_FALSE(has_row_id("select distinct name from items"));
  EXPECT_FALSE(has_row_id("select count(*) from items"));
  EXPECT_FALSE(has_row_id("select i.name from items i, orders o"));
  EXPECT_FALSE(has_row_id("select name from items union select 'x'"));
}

TEST(Translator, BoundRowsAreInsertedChangedAndDeleted) {
  TestInstance instance;
  instance.Run(kSetup);
  Translator translator(instance);
  const ObjectInfo table = *instance.ResolveObject({"", "", "", "orders"});
  const Parameters columns = {{"item", SqlType{TypeId::kInt, 4, 10, 0, true}},
                              {"note", SqlType{TypeId::kVarChar, 5, 0, 0, true}}};
  EXPECT_EQ(translator.InsertBound(table, columns).sqlite_sql,
            "INSERT INTO \"orders\" (\"item\", \"note\", \"id\", \"amount\") VALUES (?1, ?2, "
            "next_identity('orders'), ms_assign(1, " +
                std::to_string(EncodeType(SqlType{TypeId::kInt, 4, 1, 0, true})) + ", " +
                std::to_string(EncodeType(SqlType{TypeId::kSmallInt, 2, 5, 0, true})) + "))");
  EXPECT_EQ(translator.UpdateRow(table, columns).sqlite_sql,
            "UPDATE \"orders\" SET \"item\" = ?1, \"note\" = ?2 WHERE _rowid_ = ?3");
  EXPECT_THROW(translator.UpdateRow(table, {{"id", SqlType{}}}), SqlError);
}

}  // namespace
}  // namespace dbkeeper::server
