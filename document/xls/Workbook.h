// The model of a workbook: sheets of rows of cells, and how they look on the screen and on paper.
// Plain values; Writer.h makes a file of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace dbkeeper::xls {

struct Rgb {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool operator==(const Rgb&) const = default;
};

struct Font {
  std::string name = "ＭＳ Ｐゴシック";
  int points = 10;
  bool bold = false;
  bool underlined = false;
  Rgb color;
  bool operator==(const Font&) const = default;
};

// The numbers are those of the file.
enum class Line : std::uint8_t { kNone = 0, kThin = 1, kMedium = 2, kDotted = 4, kHair = 7 };
enum class Across : std::uint8_t { kGeneral = 0, kLeft = 1, kCenter = 2, kRight = 3 };
enum class Down : std::uint8_t { kTop = 0, kCenter = 1, kBottom = 2 };
enum class Wrap : std::uint8_t { kNo, kYes };

struct Borders {
  Line left = Line::kNone;
  Line right = Line::kNone;
  Line top = Line::kNone;
  Line bottom = Line::kNone;
  Rgb color;
  bool operator==(const Borders&) const = default;
};

// How a cell looks. Two equal styles are one in the file.
struct Style {
  Font font;
  std::string number_format = "General";
  std::optional<Rgb> fill;
  Borders borders;
  Across across = Across::kGeneral;
  Down down = Down::kCenter;
  Wrap wrap = Wrap::kNo;
  bool operator==(const Style&) const = default;
};

// What Writer::AddStyle gives; 0 is the workbook's normal style.
using StyleId = std::uint16_t;

struct Cell {
  // A date is a number of days, see SerialDate; texts are UTF-8.
  using Value = std::variant<std::monostate, double, std::string>;

  std::uint8_t column = 0;
  StyleId style = 0;
  Value value;
  // How many columns are merged into this cell.
  std::size_t columns = 1;
  // A place in the workbook, such as "Sheet1!A1"; see PlaceIn.
  std::string link;
};

struct Row {
  // In points; what the program reading the file takes for right when it is absent.
  std::optional<double> height;
  // Of two cells in one place the later one stays.
  std::vector<Cell> cells;
};

// Rows `first` to `last`, both included.
struct RowRange {
  std::size_t first = 0;
  std::size_t last = 0;
};

struct PrintSetup {
  // A4, the whole width on one page.
  enum class Paper { kPortrait, kLandscape } paper = Paper::kLandscape;
  // Printed at the top of every page.
  std::optional<RowRange> repeated;
  // With the codes of spreadsheet programs: "&P" page, "&N" pages, "&L", "&C", "&R" for the place.
  std::string header;
  std::string footer;
};

struct Sheet {
  // As SheetNames gives it.
  std::string name;
  // In characters, from the first column on.
  std::vector<double> column_widths;
  std::vector<Row> rows;
  // So many rows and columns stay when the rest is scrolled.
  std::uint16_t frozen_rows = 0;
  std::uint8_t frozen_columns = 0;
  // Whether the lines between cells without borders are shown.
  bool grid_lines = false;
  PrintSetup print;

  // The row, which is made when the sheet does not reach it.
  Row& RowAt(std::size_t row) {
    if (rows.size() <= row) rows.resize(row + 1);
    return rows[row];
  }
};

// The text of a link to a cell such as "A1" of a sheet.
std::string PlaceIn(const std::string& sheet, const std::string& cell);

// A text for a page header or footer, in which "&" means itself.
std::string PrintedText(const std::string& text);

// The number by which spreadsheets know a day of the years from 1900 to 9999.
double SerialDate(int year, unsigned month, unsigned day);

}  // namespace dbkeeper::xls
