#include "platform/odbc/FieldTypes.h"

#include <sqlucode.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "app/support/Hexadecimal.h"
#include "app/support/TextHelpers.h"
#include "app/support/Utf16.h"

namespace dbkeeper::odbc {

namespace {

struct TypeRow {
  SQLLEN sql_type;
  FieldKind kind;
  SQLSMALLINT c_type;
};

// Numbers that the driver would write inexactly or slowly are fetched as numbers.
constexpr std::array kTypes = {
    TypeRow{SQL_BIT, FieldKind::kBit, SQL_C_SBIGINT},
    TypeRow{SQL_TINYINT, FieldKind::kInteger, SQL_C_SBIGINT},
    TypeRow{SQL_SMALLINT, FieldKind::kInteger, SQL_C_SBIGINT},
    TypeRow{SQL_INTEGER, FieldKind::kInteger, SQL_C_SBIGINT},
    TypeRow{SQL_BIGINT, FieldKind::kInteger, SQL_C_SBIGINT},
    TypeRow{SQL_DECIMAL, FieldKind::kDecimal, SQL_C_CHAR},
    TypeRow{SQL_NUMERIC, FieldKind::kDecimal, SQL_C_CHAR},
    TypeRow{SQL_REAL, FieldKind::kReal, SQL_C_FLOAT},
    TypeRow{SQL_FLOAT, FieldKind::kReal, SQL_C_DOUBLE},
    TypeRow{SQL_DOUBLE, FieldKind::kReal, SQL_C_DOUBLE},
    TypeRow{SQL_TYPE_TIMESTAMP, FieldKind::kDateTime, SQL_C_TYPE_TIMESTAMP},
    TypeRow{SQL_TYPE_DATE, FieldKind::kDateTime, SQL_C_TYPE_TIMESTAMP},
    TypeRow{SQL_BINARY, FieldKind::kBinary, SQL_C_BINARY},
    TypeRow{SQL_VARBINARY, FieldKind::kBinary, SQL_C_BINARY},
    TypeRow{SQL_LONGVARBINARY, FieldKind::kBinary, SQL_C_BINARY},
    TypeRow{SQL_GUID, FieldKind::kGuid, SQL_C_CHAR},
};

constexpr TypeRow kAnyOtherType{0, FieldKind::kText, SQL_C_CHAR};

constexpr std::size_t kLargestBoundSize = 8016;

bool IsLongType(SQLLEN type) {
  return type == SQL_LONGVARCHAR || type == SQL_WLONGVARCHAR || type == SQL_LONGVARBINARY;
}

// The most bytes that a value takes in its C type.
std::size_t WidthOf(SQLSMALLINT c_type, std::size_t size) {
  switch (c_type) {
    case SQL_C_SBIGINT:
      return sizeof(std::int64_t);
    case SQL_C_FLOAT:
      return sizeof(float);
    case SQL_C_DOUBLE:
      return sizeof(double);
    case SQL_C_TYPE_TIMESTAMP:
      return sizeof(SQL_TIMESTAMP_STRUCT);
    case SQL_C_BINARY:
      return std::max<std::size_t>(size, 1);
    default:
      // A byte of a code page, like a unit of UTF-16, becomes at most three bytes of UTF-8. The
      // rest is for sign, point and the closing zero.
      return 3 * size + 4;
  }
}

std::string DriverTypeName(const Statement& statement, SQLUSMALLINT column) {
  SQLWCHAR name[160] = {};
  SQLSMALLINT bytes = 0;
  statement.Check("SQLColAttribute",
                  SQLColAttributeW(statement.Handle(), column, SQL_DESC_TYPE_NAME, name,
                                   sizeof name, &bytes, nullptr));
  const std::size_t units =
      std::min<std::size_t>(static_cast<std::size_t>(bytes) / sizeof *name, std::size(name) - 1);
  return LowerCase(Utf16ToUtf8(std::u16string(name, name + units)));
}

// The driver names the family of a type that can be null; the size tells the small ones.
std::string TypeName(const Statement& statement, SQLUSMALLINT column, std::size_t size) {
  constexpr std::size_t kSmallMoneyDigits = 10;
  constexpr std::size_t kSmallDateTimeLength = 16;
  std::string name = DriverTypeName(statement, column);
  name.erase(std::min(name.size(), name.find(" identity")));
  if (name == "money" && size == kSmallMoneyDigits) return "smallmoney";
  if (name == "datetime" && size == kSmallDateTimeLength) return "smalldatetime";
  return name;
}

ColumnType DescribeColumn(const Statement& statement, SQLUSMALLINT column) {
  SQLWCHAR name[300] = {};
  SQLSMALLINT name_length = 0;
  SQLSMALLINT sql_type = 0;
  SQLULEN size = 0;
  SQLSMALLINT scale = 0;
  SQLSMALLINT nullable = 0;
  statement.Check("SQLDescribeCol",
                  SQLDescribeColW(statement.Handle(), column, name, std::size(name), &name_length,
                                  &sql_type, &size, &scale, &nullable));
  const auto* found = std::find_if(kTypes.begin(), kTypes.end(), [sql_type](const TypeRow& row) {
    return row.sql_type == sql_type;
  });
  const TypeRow& type = found == kTypes.end() ? kAnyOtherType : *found;
  const std::size_t units =
      std::min<std::size_t>(static_cast<std::size_t>(name_length), std::size(name) - 1);
  ColumnType described;
  described.field = {.name = Utf16ToUtf8(std::u16string(name, name + units)),
                     .kind = type.kind,
                     .type_name = TypeName(statement, column, size),
                     .size = size,
                     .scale = scale,
                     .nullable = nullable != SQL_NO_NULLS,
                     .long_value = IsLongType(sql_type)};
  described.c_type = type.c_type;
  described.in_pieces = (type.c_type == SQL_C_CHAR || type.c_type == SQL_C_BINARY) &&
                        (described.field.long_value || size == 0 || size > kLargestBoundSize);
  described.width = described.in_pieces ? 0 : WidthOf(type.c_type, size);
  return described;
}

template <typename Value>
Value ValueAs(std::string_view bytes) {
  Value value;
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

template <typename Number>
void WriteNumber(Number number, std::string& text) {
  char digits[40];
  const auto [end, problem] = std::to_chars(digits, digits + sizeof digits, number);
  text.assign(digits, end);
}

void WriteDigits(int value, int count, char*& at) {
  for (int i = count - 1; i >= 0; --i) {
    at[i] = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  at += count;
}

void WriteTimestamp(const SQL_TIMESTAMP_STRUCT& time, std::string& text) {
  constexpr SQLUINTEGER kNanosecondsPerMillisecond = 1'000'000;
  const SQLUINTEGER rounded =
      (time.fraction + kNanosecondsPerMillisecond / 2) / kNanosecondsPerMillisecond;
  text = "0000-00-00 00:00:00.000";
  char* at = text.data();
  WriteDigits(time.year, 4, at);
  WriteDigits(time.month, 2, ++at);
  WriteDigits(time.day, 2, ++at);
  WriteDigits(time.hour, 2, ++at);
  WriteDigits(time.minute, 2, ++at);
  WriteDigits(time.second, 2, ++at);
  WriteDigits(static_cast<int>(std::min<SQLUINTEGER>(rounded, 999)), 3, ++at);
}

}  // namespace

std::vector<ColumnType> DescribeColumns(const Statement& statement) {
  SQLSMALLINT count = 0;
  statement.Check("SQLNumResultCols", SQLNumResultCols(statement.Handle(), &count));
  std::vector<ColumnType> columns;
  columns.reserve(static_cast<std::size_t>(count));
  for (SQLSMALLINT column = 1; column <= count; ++column) {
    columns.push_back(DescribeColumn(statement, static_cast<SQLUSMALLINT>(column)));
  }
  return columns;
}

std::string_view TextOfValue(SQLSMALLINT c_type, std::string_view value, std::string& scratch) {
  switch (c_type) {
    case SQL_C_SBIGINT:
      WriteNumber(ValueAs<std::int64_t>(value), scratch);
      return scratch;
    case SQL_C_FLOAT:
      WriteNumber(ValueAs<float>(value), scratch);
      return scratch;
    case SQL_C_DOUBLE:
      WriteNumber(ValueAs<double>(value), scratch);
      return scratch;
    case SQL_C_TYPE_TIMESTAMP:
      WriteTimestamp(ValueAs<SQL_TIMESTAMP_STRUCT>(value), scratch);
      return scratch;
    case SQL_C_BINARY:
      scratch.clear();
      AppendHexadecimal(value, scratch);
      return scratch;
    default:
      return value;
  }
}

}  // namespace dbkeeper::odbc
