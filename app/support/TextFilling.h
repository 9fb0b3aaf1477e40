// Texts with places for values, and texts of a fixed width.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

namespace dbkeeper {

// What stands in a text for "%" and the mark, such as {'N', name} for "%N".
struct PlaceValue {
  char mark;
  std::string_view value;
};

// The text with the values in their places. "%-16N" is the place of a value that takes at least
// sixteen characters. One pass, because a value may hold what looks like a place; a "%" before
// anything else stands for itself. Nothing is escaped.
std::string FillText(std::string_view text, std::initializer_list<PlaceValue> places);

// The text with blanks behind it up to `width` characters; a longer one is not cut.
std::string PadRight(std::string_view text, std::size_t width);

}  // namespace dbkeeper
