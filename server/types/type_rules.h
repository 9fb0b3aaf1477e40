// Facts about the data types: names, families, precedence, measures, SQLite declarations.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/types/sql_type.h"

namespace dbkeeper::server {

// What operators and conversions tell apart.
enum class TypeFamily {
  kInteger,  // bit to bigint
  kReal,
  kDecimal,
  kMoney,
  kDateTime,
  kText,    // char to ntext
  kBinary,  // binary, varbinary, image, timestamp
  kGuid,
  kVariant,
};

TypeFamily FamilyOf(TypeId id);

// The name as the server writes it ("nvarchar").
std::string_view NameOf(TypeId id);

// "decimal(10,2)", "nvarchar(20)", "int".
std::string DeclarationOf(const SqlType& type);

// The type of a declaration: "int", "varchar" with {20}, "decimal" with {10, 2}; synonyms
// (integer, dec, character varying, ...) and sysname too. None for a name that is no type. Throws
// SqlError for wrong measures (131, 192, 1001, 2716, 2750).
std::optional<SqlType> TypeByName(std::string_view name, const std::vector<int>& measures);

// How a column of the type is declared in SQLite: "TEXT COLLATE MSTEXT".
std::string SqliteDeclaration(const SqlType& type);

// The collation of the type's cells: "MSTEXT", "MSDECIMAL", or empty for binary comparison.
std::string_view CollationOf(TypeId id);

bool IsNationalText(TypeId id);
bool IsLargeObject(TypeId id);  // text, ntext, image

// The type to which both operands of an operator (case branches, union columns) are brought.
SqlType CommonType(const SqlType& left, const SqlType& right);

// A type as one number, as translated statements hand it to functions, and back.
std::int64_t EncodeType(const SqlType& type);
SqlType DecodeType(std::int64_t code);

// Bytes that a decimal of the precision takes on the server's disk and on the wire: sign and
// number.
int DecimalBytes(int precision);

// The display length in characters of the type's values, for conversions to text.
int DisplayLength(const SqlType& type);

}  // namespace dbkeeper::server
