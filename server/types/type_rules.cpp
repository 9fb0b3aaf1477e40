#include "server/types/type_rules.h"

#include <algorithm>
#include <utility>

#include "server/types/messages.h"
#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

using enum TypeId;
using Family = TypeFamily;

constexpr std::pair<std::string_view, TypeId> kSynonyms[] = {
    {"integer", kInt},
    {"dec", kDecimal},
    {"double precision", kFloat},
    {"character", kChar},
    {"character varying", kVarChar},
    {"char varying", kVarChar},
    {"national character", kNChar},
    {"national char", kNChar},
    {"national character varying", kNVarChar},
    {"national char varying", kNVarChar},
    {"national text", kNText},
    {"binary varying", kVarBinary},
    {"rowversion", kTimestamp},
};

// How the cells of a family are declared in SQLite, in order of TypeFamily. A variant has no
// affinity, so that each cell keeps its own base type.
constexpr std::string_view kStorage[] = {"INTEGER",
                                         "REAL",
                                         "TEXT COLLATE MSDECIMAL",
                                         "TEXT COLLATE MSDECIMAL",
                                         "INTEGER",
                                         "TEXT COLLATE MSTEXT",
                                         "BLOB",
                                         "BLOB",
                                         "BLOB COLLATE MSTEXT"};

std::string_view StorageOf(TypeId id) { return kStorage[static_cast<std::size_t>(FamilyOf(id))]; }

void CheckMeasures(const TypeFacts& row, const std::vector<int>& measures) {
  const std::size_t allowed = row.maximum == 0 ? 0 : row.TakesPrecision() ? 2 : 1;
  if (measures.size() > allowed) Fail(2716, {"1", row.name});
  if (measures.empty()) return;
  const std::string size = std::to_string(measures[0]);
  if (measures[0] < 1) Fail(1001, {size, "1"});
  if (measures[0] > row.maximum) {
    const std::string maximum = std::to_string(row.maximum);
    if (row.TakesLength()) Fail(131, {size, row.name, maximum});
    Fail(2750, {"1", size, maximum});
  }
  if (measures.size() == 2 && (measures[1] < 0 || measures[1] > measures[0])) Fail(192);
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

constexpr std::array<TypeFacts, kTypeCount> kTypes = {{
    // id, name, family, precedence, maximum, length, precision, scale, display, xtype, type,
    // usertype, token
    {kBit, "bit", Family::kInteger, 11, 0, 1, 1, 0, 1, 104, 50, 16, 104},
    {kTinyInt, "tinyint", Family::kInteger, 12, 0, 1, 3, 0, 3, 48, 38, 5, 38},
    {kSmallInt, "smallint", Family::kInteger, 13, 0, 2, 5, 0, 6, 52, 38, 6, 38},
    {kInt, "int", Family::kInteger, 14, 0, 4, 10, 0, 12, 56, 38, 7, 38},
    {kBigInt, "bigint", Family::kInteger, 15, 0, 8, 19, 0, 24, 127, 63, 0, 38},
    {kReal, "real", Family::kReal, 19, 0, 4, 24, 0, 24, 59, 109, 23, 109},
    {kFloat, "float", Family::kReal, 20, 53, 8, 53, 0, 24, 62, 109, 8, 109},
    {kDecimal, "decimal", Family::kDecimal, 18, 38, 0, 18, 0, 0, 106, 106, 24, 106},
    {kNumeric, "numeric", Family::kDecimal, 18, 38, 0, 18, 0, 0, 108, 108, 10, 108},
    {kMoney, "money", Family::kMoney, 17, 0, 8, 19, 4, 24, 60, 110, 11, 110},
    {kSmallMoney, "smallmoney", Family::kMoney, 16, 0, 4, 10, 4, 12, 122, 110, 21, 110},
    {kDateTime, "datetime", Family::kDateTime, 22, 0, 8, 23, 3, 30, 61, 111, 12, 111},
    {kSmallDateTime, "smalldatetime", Family::kDateTime, 21, 0, 4, 16, 0, 30, 58, 111, 22, 111},
    {kChar, "char", Family::kText, 3, 8000, 0, 0, 0, 0, 175, 39, 1, 175},
    {kVarChar, "varchar", Family::kText, 4, 8000, 0, 0, 0, 0, 167, 39, 2, 167},
    {kText, "text", Family::kText, 9, 0, 2147483647, 0, 0, 0, 35, 35, 19, 35},
    {kNChar, "nchar", Family::kText, 5, 4000, 0, 0, 0, 0, 239, 39, 0, 239},
    {kNVarChar, "nvarchar", Family::kText, 6, 4000, 0, 0, 0, 0, 231, 39, 0, 231},
    {kNText, "ntext", Family::kText, 10, 0, 1073741823, 0, 0, 0, 99, 35, 0, 99},
    {kBinary, "binary", Family::kBinary, 1, 8000, 0, 0, 0, 0, 173, 37, 3, 173},
    {kVarBinary, "varbinary", Family::kBinary, 2, 8000, 0, 0, 0, 0, 165, 37, 4, 165},
    {kImage, "image", Family::kBinary, 8, 0, 2147483647, 0, 0, 0, 34, 34, 20, 34},
    {kTimestamp, "timestamp", Family::kBinary, 7, 0, 8, 0, 0, 0, 189, 37, 80, 173},
    {kUniqueIdentifier, "uniqueidentifier", Family::kGuid, 7, 0, 16, 0, 0, 36, 36, 37, 0, 36},
    {kSqlVariant, "sql_variant", Family::kVariant, 23, 0, 8016, 0, 0, 0, 98, 39, 0, 98},
}};

std::string DeclarationOf(const SqlType& type) {
  const TypeFacts& row = FactsOf(type.id);
  std::string text(row.name);
  if (row.TakesLength()) text += '(' + std::to_string(type.length) + ')';
  if (row.TakesPrecision()) {
    text += '(' + std::to_string(type.precision) + ',' + std::to_string(type.scale) + ')';
  }
  return text;
}

std::optional<SqlType> TypeByName(std::string_view name, const std::vector<int>& measures) {
  const std::string lower = ToLowerAscii(name);
  if (lower == "sysname") {
    if (!measures.empty()) Fail(2716, {"1", lower});
    return SqlType{kNVarChar, 128, 0, 0, true};
  }
  const auto* row = std::ranges::find(kTypes, lower, &TypeFacts::name);
  if (row == kTypes.end()) {
    const auto* const synonym =
        std::ranges::find(kSynonyms, lower, [](const auto& each) { return each.first; });
    if (synonym == std::end(kSynonyms)) return std::nullopt;
    row = &FactsOf(synonym->second);
  }
  CheckMeasures(*row, measures);
  SqlType type{row->id, row->length, row->precision, row->scale, true};
  if (row->TakesLength()) type.length = measures.empty() ? 1 : measures[0];
  if (measures.empty()) return type;
  if (row->TakesPrecision()) {
    type.precision = measures[0];
    type.scale = measures.size() == 2 ? measures[1] : 0;
  }
  // float(24) and below is a real.
  if (row->id == kFloat && measures[0] <= 24) type = SqlType{kReal, 4, 24, 0, true};
  return type;
}

std::string SqliteDeclaration(const SqlType& type) { return std::string(StorageOf(type.id)); }

std::string_view CollationOf(TypeId id) {
  const std::string_view storage = StorageOf(id);
  return storage.substr(std::min(storage.find("MS"), storage.size()));
}

SqlType CommonType(const SqlType& left, const SqlType& right) {
  const bool left_wins = FactsOf(left.id).precedence >= FactsOf(right.id).precedence;
  SqlType common = left_wins ? left : right;
  const SqlType& other = left_wins ? right : left;
  common.nullable = left.nullable || right.nullable;
  const TypeFamily family = FamilyOf(common.id);
  const TypeFamily other_family = FamilyOf(other.id);
  if (family == Family::kDecimal) {
    if (other.precision > 0 && other_family != Family::kText) {
      WidenTo(common, std::max(left.precision - left.scale, right.precision - right.scale),
              std::max(left.scale, right.scale));
    }
  } else if (family == Family::kText && !IsLargeObject(common.id)) {
    // A fixed length meets a variable one: the variable one, national if either is.
    const auto is_variable = [](TypeId id) { return id == kVarChar || id == kNVarChar; };
    const bool variable = is_variable(common.id) || is_variable(other.id);
    const bool national = IsNationalText(common.id) || IsNationalText(other.id);
    if (other_family == Family::kText) {
      common.id = national ? (variable ? kNVarChar : kNChar) : (variable ? kVarChar : kChar);
    }
    common.length = std::min(national ? 4000 : 8000, std::max(left.length, right.length));
  } else if (family == Family::kBinary && !IsLargeObject(common.id) && other_family == family) {
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
  const TypeFacts& row = FactsOf(type.id);
  if (row.display > 0) return row.display;
  if (row.TakesPrecision()) return type.precision + (type.scale > 0 ? 3 : 2);
  return type.length;
}

}  // namespace dbkeeper::server
