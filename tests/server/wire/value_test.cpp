// Every type on its way through the real driver, out of the server and into it.
#include <gtest/gtest.h>

#include "server/wire/server.h"
#include "tests/server/wire/fake_engine.h"
#include "tests/server/wire/odbc_client.h"

namespace dbkeeper::server {
namespace {

constexpr std::int64_t kDay = 25'920'000;
constexpr std::int64_t kMinute = 18'000;

SqlType Sized(TypeId id, int length) {
  SqlType type;
  type.id = id;
  type.length = length;
  return type;
}

SqlType Exact(TypeId id, int precision, int scale) {
  SqlType type;
  type.id = id;
  type.precision = precision;
  type.scale = scale;
  return type;
}

Cell Integer(std::int64_t value) { return value; }
Cell Text(std::string text) { return text; }
Cell Bytes(std::string bytes) { return Blob{std::move(bytes)}; }

struct ValueCase {
  const char* what;
  SqlType type;
  Cell cell;
  std::string seen;
};

std::vector<ValueCase> ValueCases() {
  const std::string long_text(100'000, 'x');
  return {
      {"bit", {TypeId::kBit}, Integer(1), "1"},
      {"tinyint", {TypeId::kTinyInt}, Integer(255), "255"},
      {"smallint", {TypeId::kSmallInt}, Integer(-32768), "-32768"},
      {"int", {TypeId::kInt}, Integer(-2147483648), "-2147483648"},
      {"bigint", {TypeId::kBigInt}, Integer(INT64_MIN), "-9223372036854775808"},
      {"real", {TypeId::kReal}, 1.5, "1.5"},
      {"float", {TypeId::kFloat}, -0.1, "-0.10000000000000001"},
      {"decimal of five bytes", Exact(TypeId::kDecimal, 9, 2), Text("-1234567.89"), "-1234567.89"},
      {"numeric without decimals", Exact(TypeId::kNumeric, 18, 0), Text("123456789012345678"),
       "123456789012345678"},
      {"decimal of 38 digits", Exact(TypeId::kDecimal, 38, 0),
       Text("99999999999999999999999999999999999999"), "99999999999999999999999999999999999999"},
      {"decimal of 38 decimals", Exact(TypeId::kDecimal, 38, 38),
       Text("-0.00000000000000000000000000000000000001"),
       "-0.00000000000000000000000000000000000001"},
      {"decimal with fewer decimals than declared", Exact(TypeId::kDecimal, 10, 4), Text("1.5"),
       "1.5000"},
      {"money", {TypeId::kMoney}, Text("-922337203685477.5808"), "-922337203685477.5808"},
      {"smallmoney", {TypeId::kSmallMoney}, Text("214748.3647"), "214748.3647"},
      {"datetime",
       {TypeId::kDateTime},
       Integer(36524 * kDay + kDay - 1),
       "2000-01-01 23:59:59.997"},
      {"the first datetime",
       {TypeId::kDateTime},
       Integer(-53690 * kDay),
       "1753-01-01 00:00:00.000"},
      {"smalldatetime",
       {TypeId::kSmallDateTime},
       Integer(65535 * kDay + 61 * kMinute),
       "2079-06-06 01:01:00"},
      {"char", Sized(TypeId::kChar, 6), Text("日本  "), "日本  "},
      {"varchar", Sized(TypeId::kVarChar, 20), Text("①髙ｱ～"), "①髙ｱ～"},
      {"empty varchar", Sized(TypeId::kVarChar, 20), Text(""), ""},
      {"varchar without a character of the code page", Sized(TypeId::kVarChar, 20), Text("é한"),
       "??"},
      {"nchar", Sized(TypeId::kNChar, 4), Text("한é  "), "한é  "},
      {"nvarchar", Sized(TypeId::kNVarChar, 4000), Text("한é日本"), "한é日本"},
      {"text", {TypeId::kText}, Text(long_text + "日本"), long_text + "日本"},
      {"ntext", {TypeId::kNText}, Text(long_text + "한"), long_text + "한"},
      {"empty text", {TypeId::kText}, Text(""), ""},
      {"binary", Sized(TypeId::kBinary, 3), Text(std::string("\x00\x01\xFF", 3)), "0001ff"},
      {"varbinary", Sized(TypeId::kVarBinary, 8000), Text("\x12"), "12"},
      {"image", {TypeId::kImage}, Text(std::string("\x00\xAB", 2)), "00ab"},
      {"timestamp",
       {TypeId::kTimestamp},
       Text(std::string("\0\0\0\0\0\0\x01\x02", 8)),
       "0000000000000102"},
      {"uniqueidentifier",
       {TypeId::kUniqueIdentifier},
       Text("\x33\x22\x11\x10\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF"),
       "10112233-4455-6677-8899-AABBCCDDEEFF"},
      {"sql_variant", {TypeId::kSqlVariant}, Text("説明"), "説明"},
  };
}

TEST(Value, ComesOutOfTheServerAsItIs) {
  FakeEngine engine;
  FakeResult result;
  engine.answer = [&result](const FakeCall& call, ResultSink& sink) {
    if (call.text == "values") return Send(result, sink);
    sink.OnStatementEnd({});
  };
  Server server(engine, {});
  const OdbcClient client(server.port(), "tester", "Secret_1");
  for (const ValueCase& each : ValueCases()) {
    SCOPED_TRACE(each.what);
    result.columns = {Column("v", each.type), Column("after", {TypeId::kInt})};
    result.rows = {{each.cell, Integer(7)}, {Cell(), Integer(8)}};
    const std::vector<OdbcRow> rows = client.Query("values");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0][0], each.seen);
    EXPECT_EQ(rows[0][1], "7");
    EXPECT_EQ(rows[1][0], std::nullopt);
    EXPECT_EQ(rows[1][1], "8");
  }
}

struct ParameterCase {
  const char* what;
  SQLSMALLINT sql_type;
  SQLULEN size;
  SQLSMALLINT digits;
  std::string text;
  TypeId id;
  Cell cell;
};

std::vector<ParameterCase> ParameterCases() {
  const std::string long_text(200'000, 'y');
  return {
      {"bit", SQL_BIT, 1, 0, "1", TypeId::kBit, Integer(1)},
      {"tinyint", SQL_TINYINT, 3, 0, "200", TypeId::kTinyInt, Integer(200)},
      {"smallint", SQL_SMALLINT, 5, 0, "-2", TypeId::kSmallInt, Integer(-2)},
      {"int", SQL_INTEGER, 10, 0, "-2147483648", TypeId::kInt, Integer(INT32_MIN)},
      {"bigint", SQL_BIGINT, 19, 0, "-9223372036854775807", TypeId::kBigInt,
       Integer(INT64_MIN + 1)},
      {"real", SQL_REAL, 7, 0, "1.5", TypeId::kReal, 1.5},
      {"float", SQL_DOUBLE, 15, 0, "-0.1", TypeId::kFloat, -0.1},
      {"numeric", SQL_NUMERIC, 38, 3, "-12345678901234567890123456789012345.678", TypeId::kNumeric,
       Text("-12345678901234567890123456789012345.678")},
      {"varchar", SQL_VARCHAR, 30, 0, "日本①", TypeId::kVarChar, Text("日本①")},
      {"empty varchar", SQL_VARCHAR, 30, 0, "", TypeId::kVarChar, Text("")},
      {"nvarchar", SQL_WVARCHAR, 30, 0, "한é", TypeId::kNVarChar, Text("한é")},
      {"text", SQL_LONGVARCHAR, 1'000'000, 0, long_text, TypeId::kText, Text(long_text)},
      {"ntext", SQL_WLONGVARCHAR, 1'000'000, 0, long_text, TypeId::kNText, Text(long_text)},
      {"varbinary", SQL_VARBINARY, 30, 0, "00FF10", TypeId::kVarBinary,
       Bytes(std::string("\x00\xFF\x10", 3))},
      {"datetime", SQL_TYPE_TIMESTAMP, 23, 3, "2000-01-01 23:59:59.997", TypeId::kDateTime,
       Integer(36524 * kDay + kDay - 1)},
      {"uniqueidentifier", SQL_GUID, 16, 0, "10112233-4455-6677-8899-AABBCCDDEEFF",
       TypeId::kUniqueIdentifier,
       Bytes("\x33\x22\x11\x10\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF")},
  };
}

TEST(Parameter, ArrivesAsTheDriverWasGivenIt) {
  FakeEngine engine;
  Server server(engine, {});
  const OdbcClient client(server.port(), "tester", "Secret_1");
  for (ParameterCase each : ParameterCases()) {
    SCOPED_TRACE(each.what);
    auto length = static_cast<SQLLEN>(each.text.size());
    SQLLEN null = SQL_NULL_DATA;
    SQLFreeStmt(client.statement(), SQL_RESET_PARAMS);
    for (SQLUSMALLINT i : {1, 2}) {
      client.Check(SQLBindParameter(client.statement(), i, SQL_PARAM_INPUT, SQL_C_CHAR,
                                    each.sql_type, each.size, each.digits, each.text.data(), length,
                                    i == 1 ? &length : &null));
    }
    client.Execute("insert into " + std::string(each.what) + " values (?, ?)");
    const std::vector<FakeCall> calls = engine.CallsWith(std::string("into ") + each.what + " ");
    ASSERT_EQ(calls.size(), 1u);
    ASSERT_EQ(calls[0].kind, "parameterized");
    ASSERT_EQ(calls[0].parameters.size(), 2u);
    EXPECT_EQ(calls[0].parameters[0].name, "@P1");
    EXPECT_EQ(calls[0].parameters[0].type.id, each.id);
    EXPECT_EQ(calls[0].parameters[0].value, each.cell);
    EXPECT_TRUE(IsNullCell(calls[0].parameters[1].value));
  }
}

}  // namespace
}  // namespace dbkeeper::server
