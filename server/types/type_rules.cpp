#include "server/types/type_rules.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "server/types/messages.h"

namespace dbkeeper::server {
namespace {

// How a declaration of the type takes measures.
enum class Measures { kNone, kLength, kPrecision, kFloat };

struct TypeRow {
  TypeId id;
  std::string_view name;
  TypeFamily family;
  int precedence;  // the higher one wins when two types meet
  Measures measures;
  int maximum;  // of length, or of precision
  int length;   // bytes of a fixed type
  int precision;
  int scale;
  int display;  // characters of the widest value; 0: by length or precision
};

// In order of TypeId.
constexpr std::array<TypeRow, 25> kTypes = {{
    {TypeId::kBit, "bit", TypeFamily::kInteger, 11, Measures::kNone, 0, 1, 1, 0, 1},
    {TypeId::kTinyInt, "tinyint", TypeFamily::kInteger, 12, Measures::kNone, 0, 1, 3, 0, 3},
    {TypeId::kSmallInt, "smallint", TypeFamily::kInteger, 13, Measures::kNone, 0, 2, 5, 0, 6},
    {TypeId::kInt, "int", TypeFamily::kInteger, 14, Measures::kNone, 0, 4, 10, 0, 12},
    {TypeId::kBigInt, "bigint", TypeFamily::kInteger, 15, Measures::kNone, 0, 8, 19, 0, 24},
    {TypeId::kReal, "real", TypeFamily::kReal, 19, Measures::kNone, 0, 4, 24, 0, 24},
    {TypeId::kFloat, "float", TypeFamily::kReal, 20, Measures::kFloat, 53, 8, 53, 0, 24},
    {TypeId::kDecimal, "decimal", TypeFamily::kDecimal, 18, Measures::kPrecision, 38, 0, 18, 0, 0},
    {TypeId::kNumeric, "numeric", TypeFamily::kDecimal, 18, Measures::kPrecision, 38, 0, 18, 0, 0},
    {TypeId::kMoney, "money", TypeFamily::kMoney, 17, Measures::kNone, 0, 8, 19, 4, 24},
    {TypeId::kSmallMoney, "smallmoney", TypeFamily::kMoney, 16, Measures::kNone, 0, 4, 10, 4, 12},
    {TypeId::kDateTime, "datetime", TypeFamily::kDateTime, 22, Measures::kNone, 0, 8, 23, 3, 30},
    {TypeId::kSmallDateTime, "smalldatetime", TypeFamily::kDateTime, 21, Measures::kNone, 0, 4, 16,
     0, 30},
    {TypeId::kChar, "char", TypeFamily::kText, 3, Measures::kLength, 8000, 0, 0, 0, 0},
    {TypeId::kVarChar, "varchar", TypeFamily::kText, 4, Measures::kLength, 8000, 0, 0, 0, 0},
    {TypeId::kText, "text", TypeFamily::kText, 9, Measures::kNone, 0, 2147483647, 0, 0, 0},
    {TypeId::kNChar, "nchar", TypeFamily::kText, 5, Measures::kLength, 4000, 0, 0, 0, 0},
    {TypeId::kNVarChar, "nvarchar", TypeFamily::kText, 6, Measures::kLength, 4000, 0, 0, 0, 0},
    {TypeId::kNText, "ntext", TypeFamily::kText, 10, Measures::kNone, 0, 1073741823, 0, 0, 0},
    {TypeId::kBinary, "binary", TypeFamily::kBinary, 1, Measures::kLength, 8000, 0, 0, 0, 0},
    {TypeId::kVarBinary, "varbinary", TypeFamily::kBinary, 2, Measures::kLength, 8000, 0, 0, 0, 0},
    {TypeId::kImage, "image", TypeFamily::kBinary, 8, Measures::kNone, 0, 2147483647, 0, 0, 0},
    {TypeId::kTimestamp, "timestamp", TypeFamily::kBinary, 7, Measures::kNone, 0, 8, 0, 0, 0},
    {TypeId::kUniqueIdentifier, "uniqueidentifier", TypeFamily::kGuid, 7, Measures::kNone, 0, 16, 0,
     0, 36},
    {TypeId::kSqlVariant, "sql_variant", TypeFamily::kVariant, 23, Measures::kNone, 0, 8016, 0, 0,
     0},
}};

struct Synonym {
  std::string_view name;
  TypeId id;
};

constexpr Synonym kSynonyms[] = {
    {"integer", TypeId::kInt},
    {"dec", TypeId::kDecimal},
    {"double precision", TypeId::kFloat},
    {"character", TypeId::kChar},
    {"character varying", TypeId::kVarChar},
    {"char varying", TypeId::kVarChar},
    {"national character", TypeId::kNChar},
    {"national char", TypeId::kNChar},
    {"national character varying", TypeId::kNVarChar},
    {"national char varying", TypeId::kNVarChar},
    {"national text", TypeId::kNText},
    {"binary varying", TypeId::kVarBinary},
    {"rowversion", TypeId::kTimestamp},
};

const TypeRow& RowOf(TypeId id) { return kTypes[static_cast<std::size_t>(id)]; }

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

void CheckMeasures(const TypeRow& row, const std::vector<int>& measures) {
  const std::size_t allowed = row.measures == Measures::kNone        ? 0
                              : row.measures == Measures::kPrecision ? 2
                                                                     : 1;
  if (measures.size() > allowed) throw MakeError(2716, {"1", row.name});
  if (measures.empty()) return;
  const std::string size = std::to_string(measures[0]);
  if (measures[0] < 1) throw MakeError(1001, {size, "1"});
  if (measures[0] <= row.maximum) {
    if (measures.size() == 2 && (measures[1] < 0 || measures[1] > measures[0])) {
      throw MakeError(192, {});
    }
    return;
  }
  const std::string maximum = std::to_string(row.maximum);
  if (row.measures == Measures::kLength) throw MakeError(131, {size, row.name, maximum});
  throw MakeError(2750, {"1", size, maximum});
}

// Decimals and integers as precision and scale, for the union of two number types.
void WidenTo(SqlType& type, int integer_digits, int scale) {
  type.scale = scale;
  type.precision = integer_digits + scale;
  if (type.precision <= 38) return;
  type.precision = 38;
  type.scale = std::max(0, std::min(scale, 38 - integer_digits));
}

}  // namespace

TypeFamily FamilyOf(TypeId id) { return RowOf(id).family; }

std::string_view NameOf(TypeId id) { return RowOf(id).name; }

std::string DeclarationOf(const SqlType& type) {
  const TypeRow& row = RowOf(type.id);
  std::string text(row.name);
  if (row.measures == Measures::kLength) text += '(' + std::to_string(type.length) + ')';
  if (row.measures == Measures::kPrecision) {
    text += '(' + std::to_string(type.precision) + ',' + std::to_string(type.scale) + ')';
  }
  return text;
}

std::optional<SqlType> TypeByName(std::string_view name, const std::vector<int>& measures) {
  const std::string lower = Lower(name);
  SqlType type;
  if (lower == "sysname") {
    if (!measures.empty()) throw MakeError(2716, {"1", "sysname"});
    return SqlType{TypeId::kNVarChar, 128, 0, 0, true};
  }
  const auto row = std::find_if(kTypes.begin(), kTypes.end(),
                                [&](const TypeRow& candidate) { return candidate.name == lower; });
  if (row != kTypes.end()) {
    type.id = row->id;
  } else {
    const auto* const synonym =
        std::find_if(std::begin(kSynonyms), std::end(kSynonyms),
                     [&](const Synonym& candidate) { return candidate.name == lower; });
    if (synonym == std::end(kSynonyms)) return std::nullopt;
    type.id = synonym->id;
  }
  const TypeRow& found = RowOf(type.id);
  CheckMeasures(found, measures);
  type.length = found.length;
  type.precision = found.precision;
  type.scale = found.scale;
  if (found.measures == Measures::kLength) type.length = measures.empty() ? 1 : measures[0];
  if (found.measures == Measures::kPrecision && !measures.empty()) {
    type.precision = measures[0];
    type.scale = measures.size() == 2 ? measures[1] : 0;
  }
  // float(24) and below is a real.
  if (found.measures == Measures::kFloat && !measures.empty() && measures[0] <= 24) {
    type = SqlType{TypeId::kReal, 4, 24, 0, true};
  }
  return type;
}

std::string SqliteDeclaration(const SqlType& type) {
  switch (FamilyOf(type.id)) {
    case TypeFamily::kInteger:
    case TypeFamily::kDateTime:
      return "INTEGER";
    case TypeFamily::kReal:
      return "REAL";
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return "TEXT COLLATE MSDECIMAL";
    case TypeFamily::kText:
      return "TEXT COLLATE MSTEXT";
    case TypeFamily::kBinary:
    case TypeFamily::kGuid:
      return "BLOB";
    case TypeFamily::kVariant:
      // No affinity, so that each cell keeps its own base type.
      return "BLOB COLLATE MSTEXT";
  }
  return "BLOB";
}

std::string_view CollationOf(TypeId id) {
  switch (FamilyOf(id)) {
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      return "MSDECIMAL";
    case TypeFamily::kText:
    case TypeFamily::kVariant:
      return "MSTEXT";
    default:
      return "";
  }
}

bool IsNationalText(TypeId id) {
  return id == TypeId::kNChar || id == TypeId::kNVarChar || id == TypeId::kNText;
}

bool IsLargeObject(TypeId id) {
  return id == TypeId::kText || id == TypeId::kNText || id == TypeId::kImage;
}

SqlType CommonType(const SqlType& left, const SqlType& right) {
  const TypeRow& left_row = RowOf(left.id);
  const TypeRow& right_row = RowOf(right.id);
  const bool left_wins = left_row.precedence >= right_row.precedence;
  SqlType common = left_wins ? left : right;
  const SqlType& other = left_wins ? right : left;
  common.nullable = left.nullable || right.nullable;
  const TypeFamily family = FamilyOf(common.id);
  if (family == TypeFamily::kDecimal) {
    if (other.precision > 0 && FamilyOf(other.id) != TypeFamily::kText) {
      WidenTo(common, std::max(left.precision - left.scale, right.precision - right.scale),
              std::max(left.scale, right.scale));
    }
    return common;
  }
  if (family == TypeFamily::kText && !IsLargeObject(common.id)) {
    // A fixed length meets a variable one: the variable one, national if either is.
    const bool variable = common.id == TypeId::kVarChar || common.id == TypeId::kNVarChar ||
                          other.id == TypeId::kVarChar || other.id == TypeId::kNVarChar;
    const bool national = IsNationalText(common.id) || IsNationalText(other.id);
    if (FamilyOf(other.id) == TypeFamily::kText) {
      common.id = national ? (variable ? TypeId::kNVarChar : TypeId::kNChar)
                           : (variable ? TypeId::kVarChar : TypeId::kChar);
    }
    common.length = std::min(national ? 4000 : 8000, std::max(left.length, right.length));
    return common;
  }
  if (family == TypeFamily::kBinary && !IsLargeObject(common.id) &&
      FamilyOf(other.id) == TypeFamily::kBinary) {
    common.length = std::max(left.length, right.length);
  }
  return common;
}

// 6 bits of id, 31 of length, 8 of precision, 8 of scale.
std::int64_t EncodeType(const SqlType& type) {
  return static_cast<std::int64_t>(type.id) | static_cast<std::int64_t>(type.precision) << 6 |
         static_cast<std::int64_t>(type.scale) << 14 | static_cast<std::int64_t>(type.length) << 22;
}

SqlType DecodeType(std::int64_t code) {
  SqlType type;
  type.id = static_cast<TypeId>(std::min<std::int64_t>(code & 0x3f, kTypes.size() - 1));
  type.precision = static_cast<int>(code >> 6 & 0xff);
  type.scale = static_cast<int>(code >> 14 & 0xff);
  type.length = static_cast<int>(code >> 22 & 0x7fffffff);
  return type;
}

int DecimalBytes(int precision) {
  return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

int DisplayLength(const SqlType& type) {
  const TypeRow& row = RowOf(type.id);
  if (row.display > 0) return row.display;
  if (row.measures == Measures::kPrecision) return type.precision + (type.scale > 0 ? 3 : 2);
  return type.length;
}

}  // namespace dbkeeper::server
