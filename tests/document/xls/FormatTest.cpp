// The worked example of docs/xls-format.md.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>

#include "document/xls/Writer.h"
#include "tests/document/xls/ReadBack.h"

namespace dbkeeper::xls {
namespace {

Style Heading() {
  Style style;
  style.font.bold = true;
  style.fill = Rgb{0xDD, 0xE6, 0xF0};
  style.borders = {Line::kThin, Line::kThin, Line::kThin, Line::kThin, {0x80, 0x80, 0x80}};
  style.across = Across::kCenter;
  return style;
}

std::string Example() {
  Style normal;
  normal.font.points = 11;
  Writer writer(normal);
  const StyleId heading = writer.AddStyle(Heading());
  Style linked;
  linked.font.underlined = true;
  linked.font.color = {0, 0, 0xC0};
  const StyleId link = writer.AddStyle(linked);
  Style dated;
  dated.number_format = "yyyy/mm/dd";
  dated.across = Across::kLeft;
  const StyleId date = writer.AddStyle(dated);
  Sheet list;
  list.name = writer.AddName("Table一覧");
  const std::string name = writer.AddName("受注 明細");
  list.frozen_rows = 1;
  list.print.repeated = RowRange{0, 0};
  list.RowAt(0).height = 24;
  list.RowAt(0).cells = {{0, heading, "No", 1, {}}, {1, heading, "名前", 2, {}}};
  list.RowAt(1).cells = {{1, link, "受注 明細", 1, PlaceIn(name, "A1")},
                         {2, date, SerialDate(2004, 4, 1), 1, {}}};
  list.RowAt(2).cells = {{0, 0, 1.5, 1, {}}, {1, 0, {}, 1, {}}, {2, 0, {}, 1, {}}};
  writer.AddSheet(list);
  Sheet table;
  table.name = name;
  table.RowAt(0).cells = {{0, link, "Table一覧へ", 1, "Table一覧!A1"}, {1, 0, "a", 1, {}}};
  writer.AddSheet(table);
  return testing::BytesOf(writer);
}

// The bytes at the beginning of an indented line of the page; empty for a line of another kind.
std::string BytesOfLine(const std::string& line) {
  static const std::regex form("    ((?:[0-9a-f]{2} ?)+)(?:  .*)?");
  std::smatch match;
  if (!std::regex_match(line, match, form)) return {};
  std::istringstream digits(match[1]);
  std::string bytes;
  for (int byte = 0; digits >> std::hex >> byte;) bytes += static_cast<char>(byte);
  return bytes;
}

TEST(XlsFormat, TheBytesOfThePageAreWritten) {
  const std::string written = Example();
  std::ifstream page(std::string(DBKEEPER_SOURCE_DIR) + "/docs/xls-format.md");
  int lines = 0;
  for (std::string line; std::getline(page, line);) {
    const std::string bytes = BytesOfLine(line);
    if (bytes.empty()) continue;
    ++lines;
    EXPECT_NE(written.find(bytes), std::string::npos) << line;
  }
  EXPECT_EQ(lines, 31);
}

}  // namespace
}  // namespace dbkeeper::xls
