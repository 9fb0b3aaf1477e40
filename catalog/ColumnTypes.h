// The data types that a column may be given, in the order in which they are offered, with what else
// may be said of a column of each.
#pragma once

#include <array>
#include <string_view>

namespace dbkeeper {

enum class TypeRule {
  kNothing,       // neither size nor identity
  kSize,          // a number of characters
  kIdentity,      // no size, but an identity
  kSizeAndScale,  // digits
  kEverything,
};

struct ColumnType {
  std::string_view name;
  TypeRule rule;
};

// Deliberately binary and varbinary get no size and so the server's own one, and the money types a
// size that the server ignores.
inline constexpr std::array<ColumnType, 26> kColumnTypes = {{
    {"bigint", TypeRule::kIdentity},      {"binary", TypeRule::kNothing},
    {"bit", TypeRule::kNothing},          {"char", TypeRule::kSize},
    {"datetime", TypeRule::kNothing},     {"decimal", TypeRule::kSizeAndScale},
    {"float", TypeRule::kNothing},        {"image", TypeRule::kNothing},
    {"int", TypeRule::kIdentity},         {"money", TypeRule::kSizeAndScale},
    {"nchar", TypeRule::kSize},           {"ntext", TypeRule::kNothing},
    {"numeric", TypeRule::kSizeAndScale}, {"nvarchar", TypeRule::kSize},
    {"real", TypeRule::kNothing},         {"smalldatetime", TypeRule::kNothing},
    {"smallint", TypeRule::kIdentity},    {"smallmoney", TypeRule::kSizeAndScale},
    {"sql_variant", TypeRule::kNothing},  {"sysname", TypeRule::kEverything},
    {"text", TypeRule::kNothing},         {"timestamp", TypeRule::kNothing},
    {"tinyint", TypeRule::kIdentity},     {"uniqueidentifier", TypeRule::kNothing},
    {"varbinary", TypeRule::kNothing},    {"varchar", TypeRule::kSize},
}};

// A type that is not offered, such as one that users have defined, may be given everything.
constexpr TypeRule RuleOf(std::string_view type) {
  for (const ColumnType& row : kColumnTypes) {
    if (row.name == type) return row.rule;
  }
  return TypeRule::kEverything;
}

}  // namespace dbkeeper
