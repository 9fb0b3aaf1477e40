#include "catalog/ExtendedProperty.h"

namespace dbkeeper {

namespace {

std::string Place(const PropertyOwner& owner) {
  if (owner.column.empty()) return "'user', 'dbo', 'table','" + owner.table + "'";
  return "'user', 'dbo', 'table',[" + owner.table + "], 'column', '" + owner.column + "'";
}

std::string WriteStatement(std::string_view procedure, std::string_view property,
                           const PropertyOwner& owner, std::string_view value) {
  return "execute " + std::string(procedure) + " '" + std::string(property) + "', '" +
         std::string(value) + "'," + Place(owner);
}

}  // namespace

std::string PropertyStatement(std::string_view property, const PropertyOwner& owner, bool stands,
                              std::string_view value) {
  if (!value.empty()) {
    return WriteStatement(stands ? "sp_updateextendedproperty" : "sp_addextendedproperty", property,
                          owner, value);
  }
  if (!stands) return {};
  return "execute sp_dropextendedproperty '" + std::string(property) + "', " + Place(owner);
}

std::string AddPropertyStatement(std::string_view property, const PropertyOwner& owner,
                                 std::string_view value) {
  return WriteStatement("sp_addextendedproperty", property, owner, value);
}

}  // namespace dbkeeper
