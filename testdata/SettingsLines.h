// The settings of a table's columns as lines of a file: name, pattern, null rate and the two
// parameters, with a tab between.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "controls/ListView.h"

namespace dbkeeper {

// The sub-items of the column list that hold the settings.
inline constexpr std::size_t kPatternCell = 5;
inline constexpr std::size_t kNullRateCell = 6;
inline constexpr std::size_t kParameterACell = 7;
inline constexpr std::size_t kParameterBCell = 8;
inline constexpr std::size_t kCountCell = 9;

// The line of a column.
std::string SettingsLine(const ListItem& column);

// Puts what a line says into every column of its name; a line that names none changes nothing.
void ApplySettingsLine(std::string_view line, ListView& columns);

}  // namespace dbkeeper
