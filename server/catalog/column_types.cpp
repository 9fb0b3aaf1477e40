#include "server/catalog/column_types.h"

#include <algorithm>

#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

constexpr int kSysnameUserType = 18;
constexpr int kTextPointer = 16;  // of a large object's bytes only this stands in the row

int StoredLength(const SqlType& type) {
  const TypeFacts& facts = FactsOf(type.id);
  if (facts.TakesPrecision()) return DecimalBytes(type.precision);
  if (facts.TakesLength()) return type.length * UnitOf(type.id);
  return IsLargeObject(type.id) ? kTextPointer : facts.length;
}

bool HasScale(const TypeFacts& facts) {
  return facts.family <= TypeFamily::kDateTime && facts.family != TypeFamily::kReal &&
         facts.id != TypeId::kBit;
}

}  // namespace

StoredType StoredTypeOf(const SqlType& type, bool is_sysname) {
  const TypeFacts& facts = FactsOf(type.id);
  const bool precise = facts.TakesPrecision();
  StoredType stored{.xtype = facts.xtype,
                    .xusertype = is_sysname ? kSysnameType : facts.xtype,
                    .length = StoredLength(type),
                    .xprec = precise                    ? type.precision
                             : facts.id == TypeId::kBit ? 0
                                                        : facts.precision,
                    .xscale = precise ? type.scale : facts.scale,
                    .type = facts.type,
                    .usertype = is_sysname ? kSysnameUserType : facts.usertype,
                    .prec = {},
                    .scale = {}};
  stored.prec = std::int64_t{facts.TakesLength()      ? type.length
                             : IsLargeObject(type.id) ? facts.length
                             : precise                ? type.precision
                                                      : facts.precision};
  if (HasScale(facts)) stored.scale = std::int64_t{stored.xscale};
  return stored;
}

SqlType TypeOfStored(int xtype, int length, int xprec, int xscale) {
  const TypeFacts& facts = *std::ranges::find(kTypes, xtype, &TypeFacts::xtype);
  const bool precise = facts.TakesPrecision();
  return {facts.id, facts.TakesLength() ? length / UnitOf(facts.id) : facts.length,
          precise ? xprec : facts.precision, precise ? xscale : facts.scale, true};
}

}  // namespace dbkeeper::server
