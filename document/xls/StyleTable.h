// The looks of a workbook's cells: fonts, number formats, colours and the cell formats made of
// them, each once.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "document/xls/Bytes.h"
#include "document/xls/Workbook.h"

namespace dbkeeper::xls {

class StyleTable {
 public:
  explicit StyleTable(const Style& normal);

  // The style's number. What the format has no room for any more falls back: a style to the normal
  // one, a font to the normal font, a number format to the general one, a colour to its neighbour.
  StyleId Add(const Style& style);

  // The number of a style's cell format; of the normal one's where there is no such style.
  std::uint16_t CellFormat(StyleId style) const {
    return static_cast<std::uint16_t>(kFirstCellFormat + (style < formats_.size() ? style : 0));
  }

  void Write(Bytes& out) const;

 private:
  static constexpr std::size_t kColors = 56;

  // A style with its parts as the numbers under which the file knows them.
  struct CellFormatRow {
    std::uint16_t font = 0;
    std::uint16_t number_format = 0;
    std::uint8_t align = 0;
    // Line and colour numbers as two numbers of 32 bits hold them.
    std::uint32_t sides = 0;
    std::uint32_t ends = 0;
    std::uint16_t fill = 0;
  };

  struct FontRow {
    Font font;
    std::uint16_t color = 0;
  };

  CellFormatRow RowOf(const Style& style);
  std::uint16_t FontNumber(Font font);
  std::uint16_t NumberFormatNumber(const std::string& format);
  std::uint16_t ColorNumber(const Rgb& color);
  std::size_t NearestColor(const Rgb& color) const;

  // The styles and, side by side with them, their cell formats.
  std::vector<Style> styles_;
  std::vector<CellFormatRow> formats_;
  std::vector<FontRow> fonts_;
  std::vector<std::string> number_formats_;
  std::array<Rgb, kColors> palette_;
  std::bitset<kColors> used_;
};

}  // namespace dbkeeper::xls
