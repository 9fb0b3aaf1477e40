// Descriptions and notes, which the server keeps as extended properties of a table or column.
#pragma once

#include <string>
#include <string_view>

namespace dbkeeper {

inline constexpr std::string_view kDescriptionProperty = "MS_Description";
inline constexpr std::string_view kNoteProperty = "Note";

// What a property belongs to, as the last arguments of the server's procedures.
struct ExtendedObject {
  std::string arguments;
};

// A table of dbo. Deliberately the name in quotes here, and in brackets where a column follows.
ExtendedObject TableProperties(const std::string& table);
ExtendedObject ColumnProperties(const std::string& table, const std::string& column);

// The statement that adds a property. Nothing is escaped.
std::string AddPropertyText(std::string_view property, const std::string& text,
                            const ExtendedObject& object);

// The statement that brings a property to `text`: adds it where there was none, drops it where the
// text is empty; empty where there is nothing to do.
std::string ChangePropertyText(std::string_view property, bool exists, const std::string& text,
                               const ExtendedObject& object);

}  // namespace dbkeeper
