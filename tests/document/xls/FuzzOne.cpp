#include "tests/document/xls/FuzzOne.h"

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <string>
#include <vector>

#include "document/xls/Text.h"
#include "document/xls/Writer.h"
#include "tests/document/xls/ReadBack.h"

namespace dbkeeper::xls {

namespace {

using testing::ReadSheet;

// Takes what a model consists of from the bytes; zeros once they are used up.
class Source {
 public:
  Source(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool Empty() const { return at_ >= size_; }
  std::uint8_t Byte() { return Empty() ? std::uint8_t{0} : data_[at_++]; }
  std::size_t Below(std::size_t limit) { return (Byte() | std::size_t{Byte()} << 8) % limit; }
  bool Flag() { return (Byte() & 1) != 0; }

  std::string Text() {
    std::string text;
    for (std::size_t i = Below(20); i > 0; --i) text += static_cast<char>(Byte());
    // Some reach over the end of a record; the reader cannot follow them over two.
    for (std::size_t i = Byte() % 12; i > 0 && text.size() < 2000; --i) text += text;
    return text;
  }
  double Number() {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) bits = bits << 8 | Byte();
    return Flag() ? std::bit_cast<double>(bits) : static_cast<std::int16_t>(bits);
  }

  Cell::Value Value() {
    switch (Below(4)) {
      case 0:
        return {};
      case 1:
        return Number();
      default:
        return Text();
    }
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

Style AnyStyle(Source& source) {
  Style style;
  style.font = {source.Text(),
                static_cast<int>(source.Below(1000)) - 100,
                source.Flag(),
                source.Flag(),
                {source.Byte(), source.Byte(), source.Byte()}};
  // Of the number formats only those that show numbers as numbers, to compare what is read.
  style.number_format = "0." + std::string(source.Below(30), '0');
  if (source.Flag()) style.fill = Rgb{source.Byte(), source.Byte(), source.Byte()};
  style.borders.left = static_cast<Line>(source.Below(8));
  style.borders.bottom = static_cast<Line>(source.Below(8));
  style.borders.color = {source.Byte(), source.Byte(), source.Byte()};
  style.across = static_cast<Across>(source.Below(4));
  style.down = static_cast<Down>(source.Below(3));
  style.wrap = source.Flag() ? Wrap::kYes : Wrap::kNo;
  return style;
}

Sheet AnySheet(Source& source, Writer& writer) {
  Sheet sheet;
  sheet.name = writer.AddName(source.Text());
  for (std::size_t i = source.Below(300); i > 0; --i) {
    sheet.column_widths.push_back(source.Flag() ? source.Number() : 10);
  }
  for (std::size_t i = source.Below(60); i > 0; --i) {
    Row& row = sheet.RowAt(source.Below(source.Byte() != 0 ? 60 : 4000));
    if (source.Flag()) row.height = source.Number();
    for (std::size_t j = source.Below(10); j > 0; --j) {
      row.cells.push_back({source.Byte(), static_cast<StyleId>(source.Below(10)), source.Value(),
                           source.Below(4) == 0 ? source.Below(300) : 1,
                           source.Below(5) == 0 ? source.Text() : ""});
    }
  }
  sheet.frozen_rows = static_cast<std::uint16_t>(source.Below(65536));
  sheet.frozen_columns = source.Byte();
  sheet.grid_lines = source.Flag();
  if (source.Flag()) sheet.print.repeated = RowRange{source.Below(70000), source.Below(70000)};
  sheet.print.header = source.Text();
  sheet.print.footer = source.Text();
  return sheet;
}

// What a reader that takes texts as far as their first NUL must find; texts have none.
std::string Shown(const Cell::Value& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) {
    return ToUtf8(ToUnits(*text, kMaxCellText));
  }
  return {};
}

void Compare(const Sheet& written, const ReadSheet& read) {
  if (read.name != written.name) throw std::runtime_error("name " + written.name);
  for (unsigned i = 0; i < written.rows.size(); ++i) {
    std::size_t covered = 0;
    for (std::size_t column = 0; column < kMaxColumns; ++column) {
      const auto& cells = written.rows[i].cells;
      const auto cell = std::find_if(cells.rbegin(), cells.rend(),
                                     [column](const Cell& c) { return c.column == column; });
      if (cell == cells.rend() || column < covered) continue;
      covered = column + std::max<std::size_t>(cell->columns, 1);
      if (!std::holds_alternative<std::string>(cell->value)) continue;
      if (read.Text(i, static_cast<unsigned>(column)) != Shown(cell->value)) {
        throw std::runtime_error("cell " + std::to_string(i) + ',' + std::to_string(column));
      }
    }
  }
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
  Source source(data, size);
  Writer writer(AnyStyle(source));
  for (std::size_t i = source.Below(8); i > 0; --i) writer.AddStyle(AnyStyle(source));
  std::vector<Sheet> sheets;
  for (std::size_t i = source.Below(6) + 1; i > 0; --i) {
    sheets.push_back(AnySheet(source, writer));
    writer.AddSheet(sheets.back());
  }
  const std::vector<ReadSheet> read = testing::ReadBack(testing::BytesOf(writer));
  if (read.size() != sheets.size()) throw std::runtime_error("number of sheets");
  for (std::size_t i = 0; i < sheets.size(); ++i) Compare(sheets[i], read[i]);
}

}  // namespace dbkeeper::xls
