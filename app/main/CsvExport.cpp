#include "app/main/CsvExport.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "app/support/Errors.h"

namespace dbkeeper {

namespace {

// A double quote inside is deliberately left as it is: the programs that read these files expect
// the values as they stand.
std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string Place(const ListView& list, std::size_t line, std::size_t column) {
  const std::string where = line == 0 ? "見出し" : std::to_string(line) + "行目";
  const bool named = column < list.Columns().size();
  return " (" + where + "、" + std::to_string(column + 1) + "列目" +
         (named ? "「" + list.Columns()[column].Caption + "」" : std::string()) + ")";
}

}  // namespace

void WriteCsv(const ListView& list, AnsiTextFile& file) {
  const auto add = [&](std::string_view text, std::size_t line, std::size_t column) {
    if (column > 0) file.Add(",");
    try {
      file.Add(Quoted(text));
    } catch (const FileError& error) {
      throw FileError(error.what() + Place(list, line, column));
    }
  };
  for (std::size_t column = 0; column < list.Columns().size(); ++column) {
    add(list.Columns()[column].Caption, 0, column);
  }
  file.EndLine();
  for (std::size_t row = 0; row < list.Items().size(); ++row) {
    const ListItem& item = list.Items()[row];
    for (std::size_t column = 0; column < item.CellCount(); ++column) {
      add(item.Cell(column), row + 1, column);
    }
    file.EndLine();
  }
}

}  // namespace dbkeeper
