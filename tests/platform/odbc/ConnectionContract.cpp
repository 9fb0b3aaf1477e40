#include "tests/platform/odbc/ConnectionContract.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace dbkeeper {

namespace {

constexpr const char* kNull = "<null>";

std::vector<std::string> Row(const RowReader& reader) {
  std::vector<std::string> cells;
  for (std::size_t field = 0; field < reader.Fields().size(); ++field) {
    cells.emplace_back(reader.IsNull(field) ? kNull : reader.Text(field));
  }
  return cells;
}

std::vector<std::string> FirstColumn(RowReader& reader) {
  std::vector<std::string> cells;
  while (reader.Next()) cells.push_back(Row(reader).front());
  return cells;
}

std::string SingleValue(Connection& connection, const std::string& sql) {
  const auto reader = connection.Query(sql);
  if (reader == nullptr || !reader->Next()) return "<no row>";
  return Row(*reader).front();
}

struct ValueCase {
  std::string expression;
  std::string text;
  FieldKind kind;
  std::string type_name;
};

void ExpectValues(Connection& connection) {
  const std::vector<ValueCase> table = {
      {"cast(255 as tinyint)", "255", FieldKind::kInteger, "tinyint"},
      {"cast(-32768 as smallint)", "-32768", FieldKind::kInteger, "smallint"},
      {"cast(-2147483648 as int)", "-2147483648", FieldKind::kInteger, "int"},
      {"cast('-9223372036854775808' as bigint)", "-9223372036854775808", FieldKind::kInteger,
       "bigint"},
      {"cast(1 as bit)", "1", FieldKind::kBit, "bit"},
      {"cast(0 as bit)", "0", FieldKind::kBit, "bit"},
      {"cast('-12345678901234567890.1234567890' as decimal(38, 10))",
       "-12345678901234567890.1234567890", FieldKind::kDecimal, "decimal"},
      {"cast('0.5' as decimal(3, 2))", "0.50", FieldKind::kDecimal, "decimal"},
      {"cast('922337203685477.5807' as money)", "922337203685477.5807", FieldKind::kDecimal,
       "money"},
      {"cast('-1.5' as smallmoney)", "-1.5000", FieldKind::kDecimal, "smallmoney"},
      {"cast(0.1 as float)", "0.1", FieldKind::kReal, "float"},
      {"cast(0.1 as real)", "0.1", FieldKind::kReal, "real"},
      {"cast(-3 as float)", "-3", FieldKind::kReal, "float"},
      {"cast('2004-02-29 23:59:59.997' as datetime)", "2004-02-29 23:59:59.997",
       FieldKind::kDateTime, "datetime"},
      {"cast('17530101' as datetime)", "1753-01-01 00:00:00.000", FieldKind::kDateTime, "datetime"},
      {"cast('2004-02-29 12:30:00' as smalldatetime)", "2004-02-29 12:30:00.000",
       FieldKind::kDateTime, "smalldatetime"},
      {"cast('abc' as varchar(10))", "abc", FieldKind::kText, "varchar"},
      {"cast('' as varchar(10))", "", FieldKind::kText, "varchar"},
      {"cast('ab' as char(4))", "ab  ", FieldKind::kText, "char"},
      {"cast(N'日本語𠮷' as nvarchar(10))", "日本語𠮷", FieldKind::kText, "nvarchar"},
      {"cast('日本語ｶﾅ①髙\\' as varchar(40))", "日本語ｶﾅ①髙\\", FieldKind::kText, "varchar"},
      {"cast('[{fn x}] ? :p' as varchar(40))", "[{fn x}] ? :p", FieldKind::kText, "varchar"},
      {"cast(0x00ffAB as varbinary(10))", "00FFAB", FieldKind::kBinary, "varbinary"},
      {"cast('' as varbinary(10))", "", FieldKind::kBinary, "varbinary"},
      {"cast('6f9619ff-8b86-d011-b42d-00c04fc964ff' as uniqueidentifier)",
       "6F9619FF-8B86-D011-B42D-00C04FC964FF", FieldKind::kGuid, "uniqueidentifier"},
  };
  for (const ValueCase& row : table) {
    SCOPED_TRACE(row.expression);
    const auto reader = connection.Query("select " + row.expression + " as 値");
    ASSERT_NE(reader, nullptr);
    ASSERT_TRUE(reader->Next());
    EXPECT_FALSE(reader->IsNull(0));
    EXPECT_EQ(reader->Text(0), row.text);
    EXPECT_EQ(reader->Fields()[0].name, "値");
    EXPECT_EQ(reader->Fields()[0].kind, row.kind);
    EXPECT_EQ(reader->Fields()[0].type_name, row.type_name);
    EXPECT_FALSE(reader->Next());
  }
}

void ExpectNullsApartFromEmpty(Connection& connection) {
  const auto reader = connection.Query(
      "select cast(null as int), cast(null as varchar(5)), cast('' as varchar(5)), "
      "cast(null as datetime), cast(null as varbinary(5)), cast(N'' as nvarchar(5))");
  ASSERT_TRUE(reader->Next());
  EXPECT_EQ(Row(*reader), (std::vector<std::string>{kNull, kNull, "", kNull, kNull, ""}));
}

void ExpectLongValues(Connection& connection) {
  connection.Execute(
      "create table #long (id int, t text, n ntext, i image)\r\n"
      "insert into #long values (0, null, null, null)\r\n"
      "insert into #long values (-1, '', N'', 0x)");
  // Around the size in which the driver is asked for pieces, and far beyond it.
  for (const std::size_t size : {1, 65534, 65535, 65536, 131070, 131071, 300000}) {
    const std::string number = std::to_string(size);
    const std::string t(size, 'x');
    std::string n;
    std::string i;
    for (std::size_t k = 0; k < size / 3 + 1; ++k) n += k % 2 == 0 ? "長" : "z";
    for (std::size_t k = 0; k < size; ++k) i += "5A";
    connection.Execute("insert into #long values (" + number + ", '" + t + "', N'" + n + "', 0x" +
                       i + ")");
    const auto reader = connection.Query("select t, id, n, i, id from #long where id = " + number);
    ASSERT_TRUE(reader->Next()) << size;
    EXPECT_TRUE(reader->Text(0) == t) << size << " got " << reader->Text(0).size();
    EXPECT_EQ(reader->Text(1), number);
    EXPECT_TRUE(reader->Text(2) == n) << size << " got " << reader->Text(2).size();
    EXPECT_TRUE(reader->Text(3) == i) << size << " got " << reader->Text(3).size();
    EXPECT_TRUE(reader->Fields()[0].long_value);
    EXPECT_EQ(reader->Fields()[3].kind, FieldKind::kBinary);
  }
  const auto reader = connection.Query("select t, n, i from #long where id < 1 order by id desc");
  ASSERT_TRUE(reader->Next());
  const auto first = Row(*reader);
  ASSERT_TRUE(reader->Next());
  EXPECT_EQ(first, (std::vector<std::string>{kNull, kNull, kNull}));
  EXPECT_EQ(Row(*reader), (std::vector<std::string>{"", "", ""}));
  connection.Execute("drop table #long");
}

void MakeNumbers(Connection& connection, int count) {
  connection.Execute("create table #numbers (n int not null primary key, t varchar(20) not null)");
  std::string sql;
  for (int n = 1; n <= count; ++n) {
    const std::string number = std::to_string(n);
    sql += "insert into #numbers values (" + number + ", 'row " + number + "')\r\n";
  }
  connection.Execute(sql);
}

std::vector<std::string> NumbersTo(int last, int first = 1) {
  std::vector<std::string> numbers;
  for (int n = first; n <= last; ++n) numbers.push_back(std::to_string(n));
  return numbers;
}

void ExpectReadersDoNotDisturbEachOther(Connection& connection) {
  MakeNumbers(connection, 450);
  const auto outer = connection.Query("select n, t from #numbers order by n\r\nselect 'second'");
  ASSERT_TRUE(outer->Next());
  const std::string_view seen = outer->Text(1);
  const auto inner = connection.Query("select n from #numbers order by n desc");
  ASSERT_TRUE(inner->Next());
  EXPECT_EQ(inner->Text(0), "450");
  connection.Execute("delete from #numbers where n > 400");
  EXPECT_EQ(seen, "row 1") << "the present row must stay where it was";
  EXPECT_EQ(outer->Text(1), "row 1");
  EXPECT_EQ(FirstColumn(*outer), NumbersTo(450, 2));
  EXPECT_EQ(FirstColumn(*inner).size(), 449U);
  ASSERT_TRUE(outer->NextResult());
  EXPECT_EQ(FirstColumn(*outer), std::vector<std::string>{"second"});
  EXPECT_FALSE(outer->NextResult());
  EXPECT_EQ(SingleValue(connection, "select count(*) from #numbers"), "400");
  connection.Execute("drop table #numbers");
}

void ExpectAReaderCanBeLeftEarly(Connection& connection) {
  MakeNumbers(connection, 1000);
  for (int i = 0; i < 3; ++i) {
    const auto reader = connection.Query("select a.n from #numbers a, #numbers b where b.n <= 200");
    ASSERT_TRUE(reader->Next());
  }
  EXPECT_EQ(SingleValue(connection, "select count(*) from #numbers"), "1000");
  connection.Execute("drop table #numbers");
}

void ExpectBatches(Connection& connection) {
  EXPECT_EQ(connection.Query("print 'nothing'"), nullptr);
  connection.Execute("create table #batch (n int primary key)");
  EXPECT_EQ(connection.Execute("insert into #batch values (1)"), 1);
  EXPECT_EQ(connection.Execute("update #batch set n = n where n = 99"), 0);
  EXPECT_EQ(connection.Execute("insert into #batch values (2)\r\nupdate #batch set n = n"), 2);
  const auto reader = connection.Query("insert into #batch values (3)\r\nselect n from #batch");
  ASSERT_NE(reader, nullptr);
  EXPECT_EQ(FirstColumn(*reader), NumbersTo(3));

  constexpr int kDuplicateKey = 2627;
  try {
    connection.Execute(
        "insert into #batch values (4)\r\ninsert into #batch values (1)\r\n"
        "insert into #batch values (5)");
    ADD_FAILURE() << "the second insert must fail";
  } catch (const ServerError& error) {
    EXPECT_EQ(error.Number(), kDuplicateKey);
    EXPECT_EQ(error.Messages().front().line, 2);
  }
  EXPECT_EQ(SingleValue(connection, "select count(*) from #batch"), "5");
  connection.Execute("drop table #batch");
}

void ExpectErrors(Connection& connection) {
  constexpr int kInvalidObject = 208;
  try {
    connection.Execute("print '1'\r\nselect * from 存在しない表");
    ADD_FAILURE();
  } catch (const ServerError& error) {
    EXPECT_EQ(error.Number(), kInvalidObject);
    EXPECT_EQ(error.Messages().front().severity, 16);
    EXPECT_EQ(error.Messages().front().line, 2);
    EXPECT_EQ(std::string(error.what()).substr(0, 7), "Invalid");
    EXPECT_NE(std::string(error.what()).find("存在しない表"), std::string::npos);
  }
  // A failure behind the rows is told to whoever reads to their end.
  const auto reader = connection.Query("select 1\r\nraiserror('だめ', 16, 3)");
  ASSERT_TRUE(reader->Next());
  EXPECT_THROW(reader->Next(), ServerError);
  EXPECT_FALSE(reader->Next());
  EXPECT_EQ(SingleValue(connection, "select 1"), "1");
}

void ExpectMessages(Connection& connection) {
  connection.TakeMessages();
  connection.Execute("print '一'\r\nraiserror('二', 10, 1)\r\nprint '三'");
  std::vector<std::string> texts;
  for (const ServerMessage& message : connection.TakeMessages()) texts.push_back(message.text);
  EXPECT_EQ(texts, (std::vector<std::string>{"一", "二", "三"}));
  connection.Execute("use tempdb");
  EXPECT_TRUE(connection.TakeMessages().empty());
  EXPECT_EQ(SingleValue(connection, "select db_name()"), "tempdb");
}

void ExpectBigThings(Connection& connection) {
  const std::string comment(1 << 20, 'c');
  EXPECT_EQ(SingleValue(connection, "/*" + comment + "*/ select 'あ'"), "あ");

  std::string columns;
  for (int i = 0; i < 1000; ++i) columns += (i > 0 ? ", " : "") + std::to_string(i);
  const auto reader = connection.Query("select " + columns);
  ASSERT_TRUE(reader->Next());
  EXPECT_EQ(reader->Fields().size(), 1000U);
  EXPECT_EQ(reader->Text(999), "999");

  // Half-width kana: one byte at the server, three in UTF-8.
  EXPECT_EQ(SingleValue(connection, "select cast(replicate('ｱ', 8000) as varchar(8000))").size(),
            24000U);
  EXPECT_EQ(SingleValue(connection, "select cast(replicate(N'漢', 4000) as nvarchar(4000))").size(),
            12000U);
}

// The first column of a cursor's rows from `first` on, nulls as "-".
std::vector<std::string> Fetched(PageCursor& cursor, std::int64_t first, std::size_t count) {
  RowBlock block;
  const std::size_t fetched = cursor.Fetch(first, count, block);
  EXPECT_EQ(fetched, block.Rows());
  std::vector<std::string> texts;
  for (std::size_t row = 0; row < block.Rows(); ++row) {
    texts.emplace_back(block.Cell(row, 0).value_or("-"));
  }
  return texts;
}

void ExpectCursors(Connection& connection) {
  using Texts = std::vector<std::string>;
  MakeNumbers(connection, 1000);
  const auto cursor = connection.OpenCursor("select n, t from #numbers order by n").cursor;
  ASSERT_NE(cursor, nullptr);
  RowBlock block;
  EXPECT_EQ(cursor->Fetch(0, 250, block), 250U);
  EXPECT_EQ(block.Cell(0, 1), "row 1");
  EXPECT_EQ(block.Cell(249, 0), "250");
  EXPECT_EQ(SingleValue(connection, "select count(*) from #numbers"), "1000");
  EXPECT_EQ(Fetched(*cursor, 0, 2), (Texts{"1", "2"}));
  EXPECT_EQ(cursor->CountRows(), 1000);
  EXPECT_EQ(Fetched(*cursor, 0, 1), Texts{"1"});
  EXPECT_EQ(Fetched(*cursor, 998, 3), (Texts{"999", "1000"}));
  EXPECT_EQ(Fetched(*cursor, 2000, 10), Texts{});
  EXPECT_EQ(Fetched(*cursor, 10, 1), Texts{"11"});

  const auto few = connection.OpenCursor("select n from #numbers where n > 995 order by n").cursor;
  EXPECT_EQ(Fetched(*few, 0, 2), (Texts{"996", "997"})) << "fewer than were fetched at the opening";
  EXPECT_EQ(Fetched(*few, 0, 100).size(), 5U);
  const auto none = connection.OpenCursor("select n from #numbers where n > 2000").cursor;
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none->CountRows(), 0);
  EXPECT_EQ(Fetched(*none, 0, 100), Texts{});

  // An open cursor makes no difference to other statements.
  const auto nothing = connection.OpenCursor("print 'nothing'");
  EXPECT_TRUE(nothing.cursor == nullptr && nothing.reader == nullptr);
  EXPECT_EQ(connection.Query("use tempdb"), nullptr);
  EXPECT_EQ(connection.Execute("update #numbers set t = t where n <= 3"), 3);
  EXPECT_EQ(Fetched(*cursor, 20, 1), Texts{"21"});
  EXPECT_EQ(connection.Execute("update #numbers set t = t where n < 0"), 0);
  EXPECT_THROW(connection.OpenCursor("select * from 存在しない表"), ServerError);
  const auto batch =
      connection.OpenCursor("print 'first'\r\nselect n from #numbers where n > 5 order by n");
  ASSERT_EQ(batch.cursor, nullptr);
  ASSERT_NE(batch.reader, nullptr);
  for (int n = 6; n < 16; ++n) {
    ASSERT_TRUE(batch.reader->Next());
    EXPECT_EQ(batch.reader->Text(0), std::to_string(n));
  }
  EXPECT_EQ(SingleValue(connection, "select 1"), "1");
  RowBlock rest;
  EXPECT_EQ(batch.reader->Fill(rest, std::size_t{1} << 20), 985U);
  EXPECT_EQ(rest.Cell(0, 0), "16");
  EXPECT_EQ(batch.reader->Fill(rest, std::size_t{2} << 20), 0U);

  connection.Execute("delete #numbers where n = 12");
  EXPECT_EQ(Fetched(*cursor, 10, 3), (Texts{"11", "-", "13"})) << "a deleted row keeps its place";
  connection.Execute("drop table #numbers");
}

}  // namespace

void ExpectConnectionContract(Connection& connection) {
  using Expectation = void (*)(Connection&);
  const std::vector<std::pair<const char*, Expectation>> expectations = {
      {"values", ExpectValues},
      {"nulls apart from empty texts", ExpectNullsApartFromEmpty},
      {"long values", ExpectLongValues},
      {"readers do not disturb each other", ExpectReadersDoNotDisturbEachOther},
      {"a reader can be left early", ExpectAReaderCanBeLeftEarly},
      {"batches", ExpectBatches},
      {"errors", ExpectErrors},
      {"messages", ExpectMessages},
      {"big things", ExpectBigThings},
      {"cursors", ExpectCursors},
  };
  for (const auto& [name, expect] : expectations) {
    SCOPED_TRACE(name);
    try {
      expect(connection);
    } catch (const Error& error) {
      ADD_FAILURE() << error.ClassName() << ": " << error.what();
    }
    ASSERT_TRUE(connection.IsOpen());
  }
}

}  // namespace dbkeeper
