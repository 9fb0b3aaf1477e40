// Values brought from one type to another; where both are stored alike nothing is written.
#include "server/sql/binder.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

bool IsFixed(TypeId id) {
  return id == TypeId::kChar || id == TypeId::kNChar || id == TypeId::kBinary;
}

// Whether every value of `from` is stored as the same value of `to` is.
bool StoredAlike(const SqlType& from, const SqlType& to) {
  if (FamilyOf(from.id) != FamilyOf(to.id)) return false;
  switch (FamilyOf(to.id)) {
    case TypeFamily::kInteger:
    case TypeFamily::kReal:
      return from.id <= to.id;
    case TypeFamily::kDecimal:
      return from.scale == to.scale && from.precision <= to.precision;
    case TypeFamily::kMoney:
      return from.id == to.id || to.id == TypeId::kMoney;
    case TypeFamily::kDateTime:
      return from.id == to.id || to.id == TypeId::kDateTime;
    case TypeFamily::kText:
      if (IsFixed(to.id)) return from.id == to.id && from.length == to.length;
      // A national text may hold twice as many bytes in the other form.
      if (IsNationalText(from.id) && !IsNationalText(to.id)) {
        return to.id == TypeId::kText;
      }
      return IsLargeObject(to.id) || from.length <= to.length;
    case TypeFamily::kBinary:
      if (to.id == TypeId::kTimestamp || from.id == TypeId::kTimestamp) return from.id == to.id;
      if (IsFixed(to.id)) return from.id == to.id && from.length == to.length;
      return IsLargeObject(to.id) || from.length <= to.length;
    case TypeFamily::kGuid:
    case TypeFamily::kVariant:
      return true;
  }
  return false;
}

std::string Call(const char* function, const Bound& value, const SqlType& type) {
  return std::string(function) + '(' + value.sql + ", " + std::to_string(EncodeType(value.type)) +
         ", " + std::to_string(EncodeType(type)) + ')';
}

}  // namespace

std::string Binder::ConvertTo(const Bound& value, const SqlType& type) const {
  if (value.is_null || StoredAlike(value.type, type)) return value.sql;
  return Call("ms_convert", value, type);
}

std::string Binder::AssignTo(const Bound& value, const SqlType& type) const {
  if (value.is_null || StoredAlike(value.type, type)) return value.sql;
  return Call("ms_assign", value, type);
}

}  // namespace dbkeeper::server
