// Descriptions and notes of tables and columns, which the server keeps as extended properties.
#pragma once

#include <string>
#include <string_view>

namespace dbkeeper {

// The names of the two properties.
inline constexpr std::string_view kDescriptionProperty = "MS_Description";
inline constexpr std::string_view kNoteProperty = "Note";

// Whose property it is: a column's, or with an empty column the table's own. The owner is dbo.
struct PropertyOwner {
  std::string table;
  std::string column = {};
};

// The statement that makes the property what `value` says, given whether there is one already: it
// is added, updated or, for an empty value, dropped. Empty when there is nothing to do.
// Deliberately neither value nor names are escaped, and a table is bracketed where its column's
// property is meant, quoted where its own is.
std::string PropertyStatement(std::string_view property, const PropertyOwner& owner, bool stands,
                              std::string_view value);

// The statement that adds a property, also an empty one.
std::string AddPropertyStatement(std::string_view property, const PropertyOwner& owner,
                                 std::string_view value);

}  // namespace dbkeeper
