// Facts about the data types: one row each, which the catalog and the wire read too, and the rules
// that follow from them.
#pragma once

#include <array>
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

struct TypeFacts {
  TypeId id;
  std::string_view name;  // as the server writes it
  TypeFamily family;
  int precedence;  // the higher one wins when two types meet
  int maximum;     // of the length, or of the precision, that a declaration tells; 0: it tells none
  int length;      // bytes of a fixed type
  int precision;
  int scale;
  int display;         // characters of the widest value; 0: by length or precision
  int xtype;           // the number in systypes
  int type;            // and the older one there, of columns that allow nulls
  int usertype;        // and the oldest
  std::uint8_t token;  // announces the type on the wire, for values that may be null

  bool TakesLength() const { return maximum > 0 && family >= TypeFamily::kText; }
  bool TakesPrecision() const { return family == TypeFamily::kDecimal; }
};

constexpr std::size_t kTypeCount = 25;
// In order of TypeId.
extern const std::array<TypeFacts, kTypeCount> kTypes;

inline const TypeFacts& FactsOf(TypeId id) { return kTypes[static_cast<std::size_t>(id)]; }
inline TypeFamily FamilyOf(TypeId id) { return FactsOf(id).family; }
// Decimals and money.
inline bool IsExact(TypeId id) {
  return FamilyOf(id) == TypeFamily::kDecimal || FamilyOf(id) == TypeFamily::kMoney;
}
inline std::string_view NameOf(TypeId id) { return FactsOf(id).name; }

// "decimal(10,2)", "nvarchar(20)", "int".
std::string DeclarationOf(const SqlType& type);

// The type of a declaration: "int", "varchar" with {20}, "decimal" with {10, 2}; synonyms
// (integer, dec, character varying, ...) and sysname too. None for a name that is no type. Throws
// SqlError for wrong measures (131, 192, 1001, 2716, 2750).
std::optional<SqlType> TypeByName(std::string_view name, const std::vector<int>& measures);

// Whether the type's cells are blobs.
inline bool IsStoredAsBytes(TypeId id) {
  return FamilyOf(id) == TypeFamily::kBinary || FamilyOf(id) == TypeFamily::kGuid;
}

// How a column of the type is declared in SQLite: "TEXT COLLATE MSTEXT".
std::string SqliteDeclaration(const SqlType& type);

// The collation of the type's cells: "MSTEXT", "MSDECIMAL", or empty for binary comparison.
std::string_view CollationOf(TypeId id);

// The one by which this server compares.
inline constexpr const char* kDefaultCollation = "Japanese_CI_AS";

constexpr bool IsNationalText(TypeId id) {
  return id == TypeId::kNChar || id == TypeId::kNVarChar || id == TypeId::kNText;
}
constexpr bool IsLargeObject(TypeId id) {
  return id == TypeId::kText || id == TypeId::kNText || id == TypeId::kImage;
}
// Bytes of a length's unit.
constexpr int UnitOf(TypeId id) { return IsNationalText(id) ? 2 : 1; }

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
