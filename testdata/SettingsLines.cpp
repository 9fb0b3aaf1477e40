#include "testdata/SettingsLines.h"

namespace dbkeeper {

namespace {

// Takes the text before the first tab off the line, together with the tab; nothing where there is
// no tab.
std::string_view TakeField(std::string_view& line) {
  const std::size_t tab = line.find('\t');
  if (tab == std::string_view::npos) return {};
  const std::string_view field = line.substr(0, tab);
  line.remove_prefix(tab + 1);
  return field;
}

}  // namespace

std::string SettingsLine(const ListItem& column) {
  std::string line(column.Caption());
  for (std::size_t cell = kPatternCell; cell <= kParameterBCell; ++cell) {
    line += '\t';
    line += column.SubItem(cell);
  }
  return line;
}

void ApplySettingsLine(std::string_view line, ListView& columns) {
  for (std::size_t row = 0; row < columns.Items().size(); ++row) {
    // What a match has used up is deliberately gone for the columns behind it, which are compared
    // with what is left of the line.
    std::string_view rest = line;
    if (TakeField(rest) != columns.Items()[row].Caption()) continue;
    for (std::size_t cell = kPatternCell; cell < kParameterBCell; ++cell) {
      columns.SetSubItem(row, cell, TakeField(rest));
    }
    columns.SetSubItem(row, kParameterBCell, rest);
    line = rest;
  }
}

}  // namespace dbkeeper
