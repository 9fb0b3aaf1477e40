// The data types of the server's dialect and how their values are kept in SQLite.
#pragma once

#include <cstdint>
#include <string>

namespace dbkeeper::server {

// The type names that a column, a parameter or an expression can have. sysname is an
// nvarchar of 128.
enum class TypeId : std::uint8_t {
  kBit,
  kTinyInt,
  kSmallInt,
  kInt,
  kBigInt,
  kReal,
  kFloat,
  kDecimal,
  kNumeric,
  kMoney,
  kSmallMoney,
  kDateTime,
  kSmallDateTime,
  kChar,
  kVarChar,
  kText,
  kNChar,
  kNVarChar,
  kNText,
  kBinary,
  kVarBinary,
  kImage,
  kTimestamp,
  kUniqueIdentifier,
  kSqlVariant,
};

// A type with its measures.
//
// How a value of the type stands in an SQLite cell (a null is an SQLite null everywhere):
//   bit, tinyint .. bigint     INTEGER
//   real, float                REAL
//   decimal, numeric           TEXT "-123.4500" with exactly `scale` decimals, no leading zeros
//                              other than one before the point; compared by collation MSDECIMAL
//   money, smallmoney          TEXT as decimal with four decimals; compared by MSDECIMAL
//   datetime, smalldatetime    INTEGER: days since 1900-01-01 times 25,920,000 plus 1/300 s ticks
//   char .. ntext              TEXT in UTF-8 (char and nchar padded); compared by collation MSTEXT
//   binary .. timestamp        BLOB
//   uniqueidentifier           BLOB of 16 bytes in the order they have on the wire
//   sql_variant                the cell of its base type; the wire sends its text
struct SqlType {
  TypeId id = TypeId::kInt;
  // Declared length: bytes for char, varchar, binary, varbinary; characters for nchar, nvarchar.
  int length = 0;
  int precision = 0;
  int scale = 0;
  bool nullable = true;
};

// The types that expressions have of themselves.
inline constexpr SqlType kIntType{TypeId::kInt, 4, 10, 0, true};
inline constexpr SqlType kBigIntType{TypeId::kBigInt, 8, 19, 0, true};
inline constexpr SqlType kFloatType{TypeId::kFloat, 8, 53, 0, true};
inline constexpr SqlType kMoneyType{TypeId::kMoney, 8, 19, 4, true};
inline constexpr SqlType kDateTimeType{TypeId::kDateTime, 8, 23, 3, true};
inline constexpr SqlType kIdentityType{TypeId::kNumeric, 0, 38, 0, true};
inline constexpr SqlType kNameType{TypeId::kNVarChar, 128, 0, 0, true};

constexpr SqlType VarChar(int length) { return {TypeId::kVarChar, length, 0, 0, true}; }
constexpr SqlType NVarChar(int length) { return {TypeId::kNVarChar, length, 0, 0, true}; }

}  // namespace dbkeeper::server
