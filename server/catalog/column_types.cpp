#include "server/catalog/column_types.h"

#include <algorithm>

#include "server/catalog/system_tables.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {

namespace {

bool HasDeclaredLength(TypeId id) {
  const TypeFamily family = FamilyOf(id);
  return (family == TypeFamily::kText || family == TypeFamily::kBinary) && !IsLargeObject(id) &&
         id != TypeId::kTimestamp;
}

}  // namespace

StoredType StoredTypeOf(const SqlType& type, bool is_sysname) {
  const std::string_view name = is_sysname ? "sysname" : NameOf(type.id);
  const auto& row = *std::ranges::find(SystemTypes(), name, &SystemType::name);
  StoredType stored{
      .xtype = row.xtype,
      .xusertype = row.xusertype,
      .length = row.length,
      .xprec = row.scale < 0 && FamilyOf(type.id) != TypeFamily::kReal ? 0 : row.precision,
      .xscale = std::max(row.scale, 0),
      .type = row.type,
      .usertype = row.usertype,
      .prec = static_cast<std::int64_t>(row.precision),
      .scale = {}};
  if (row.scale >= 0) stored.scale = static_cast<std::int64_t>(row.scale);
  if (FamilyOf(type.id) == TypeFamily::kDecimal) {
    stored.length = DecimalBytes(type.precision);
    stored.xprec = type.precision;
    stored.xscale = type.scale;
    stored.prec = static_cast<std::int64_t>(type.precision);
    stored.scale = static_cast<std::int64_t>(type.scale);
  } else if (HasDeclaredLength(type.id)) {
    stored.length = type.length * (IsNationalText(type.id) ? 2 : 1);
    stored.prec = static_cast<std::int64_t>(type.length);
  } else if (IsLargeObject(type.id)) {
    stored.prec = static_cast<std::int64_t>(IsNationalText(type.id) ? 1073741823 : 2147483647);
  }
  return stored;
}

SqlType TypeOfStored(int xtype, int length, int xprec, int xscale) {
  const auto& row = *std::ranges::find_if(SystemTypes(), [&](const SystemType& candidate) {
    return candidate.xtype == xtype && candidate.xusertype != kSysnameType;
  });
  SqlType type = TypeByName(row.name, {}).value_or(SqlType{});
  if (FamilyOf(type.id) == TypeFamily::kDecimal) {
    type.precision = xprec;
    type.scale = xscale;
  } else if (HasDeclaredLength(type.id)) {
    type.length = IsNationalText(type.id) ? length / 2 : length;
  }
  return type;
}

}  // namespace dbkeeper::server
