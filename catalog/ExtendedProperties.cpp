#include "catalog/ExtendedProperties.h"

namespace dbkeeper {

namespace {

std::string WriteText(std::string_view procedure, std::string_view property,
                      const std::string& text, const ExtendedObject& object) {
  return "execute " + std::string(procedure) + " '" + std::string(property) + "', '" + text + "'," +
         object.arguments;
}

}  // namespace

ExtendedObject TableProperties(const std::string& table) {
  return {"'user', 'dbo', 'table','" + table + "'"};
}

ExtendedObject ColumnProperties(const std::string& table, const std::string& column) {
  return {"'user', 'dbo', 'table',[" + table + "], 'column', '" + column + "'"};
}

std::string AddPropertyText(std::string_view property, const std::string& text,
                            const ExtendedObject& object) {
  return WriteText("sp_addextendedproperty", property, text, object);
}

std::string ChangePropertyText(std::string_view property, bool exists, const std::string& text,
                               const ExtendedObject& object) {
  if (!exists && text.empty()) return {};
  if (!exists) return AddPropertyText(property, text, object);
  if (!text.empty()) return WriteText("sp_updateextendedproperty", property, text, object);
  return "execute sp_dropextendedproperty '" + std::string(property) + "', " + object.arguments;
}

}  // namespace dbkeeper
