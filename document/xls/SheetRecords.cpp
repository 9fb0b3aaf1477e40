#include "document/xls/SheetRecords.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "document/xls/Bytes.h"
#include "document/xls/Format.h"
#include "document/xls/Text.h"

namespace dbkeeper::xls {

namespace {

constexpr std::uint16_t kTwipsPerPoint = 20;
constexpr std::uint16_t kDefaultHeight = 270;

// Cells of one row and of so many columns.
struct CellRange {
  std::uint16_t row;
  std::uint16_t first;
  std::uint16_t last;
};

struct Link {
  CellRange at;
  std::u16string place;
};

void AddRange(Bytes& out, const CellRange& range) {
  out.U16s({range.row, range.row, range.first, range.last});
}

std::uint16_t LastColumn(const Cell& cell) {
  const std::size_t columns = std::clamp<std::size_t>(cell.columns, 1, kMaxColumns - cell.column);
  return static_cast<std::uint16_t>(cell.column + columns - 1);
}

// The row's cells from left to right, without those that others cover or replace: cells in two
// places at once are what programs call a damaged file.
std::vector<const Cell*> Arranged(const Row& row) {
  std::vector<const Cell*> cells;
  cells.reserve(row.cells.size());
  for (const Cell& cell : row.cells) cells.push_back(&cell);
  const auto by_column = [](const Cell* a, const Cell* b) { return a->column < b->column; };
  if (!std::is_sorted(cells.begin(), cells.end(), by_column)) {
    std::stable_sort(cells.begin(), cells.end(), by_column);
  }
  std::vector<const Cell*> kept;
  kept.reserve(cells.size());
  for (const Cell* cell : cells) {
    if (!kept.empty() && kept.back()->column == cell->column) kept.pop_back();
    if (kept.empty() || LastColumn(*kept.back()) < cell->column) kept.push_back(cell);
  }
  return kept;
}

// Whole numbers of up to 30 bits have a shorter form.
bool IsShort(double number) {
  constexpr double kLimit = 1 << 29;
  return number >= -kLimit && number < kLimit && number == std::trunc(number) &&
         !(number == 0 && std::signbit(number));
}

// Writes the cells of a sheet row by row, and remembers what stands after them.
class CellWriter {
 public:
  CellWriter(Bytes& out, SharedStrings& texts, const StyleTable& styles)
      : out_(out), texts_(texts), styles_(styles) {}

  void AddRow(std::uint16_t row, std::span<const Cell* const> cells) {
    row_ = row;
    for (const Cell* cell : cells) AddCell(*cell);
    EndBlanks();
  }

  const std::vector<CellRange>& Merged() const { return merged_; }
  const std::vector<Link>& Links() const { return links_; }

 private:
  void AddCell(const Cell& cell) {
    const CellRange range = {row_, cell.column, LastColumn(cell)};
    const std::uint16_t format = styles_.CellFormat(cell.style);
    if (const auto* const text = std::get_if<std::string>(&cell.value)) {
      AddText(cell.column, format, *text);
    } else if (const auto* const number = std::get_if<double>(&cell.value)) {
      AddNumber(cell.column, format, *number);
    } else {
      AddBlank(cell.column, format);
    }
    for (auto column = range.first; column < range.last; ++column) {
      AddBlank(static_cast<std::uint16_t>(column + 1), format);
    }
    if (range.last > range.first) merged_.push_back(range);
    if (!cell.link.empty()) AddLink(range, cell.link);
  }

  void AddText(std::uint16_t column, std::uint16_t format, std::string_view text) {
    if (text.empty()) return AddBlank(column, format);
    EndBlanks();
    const Record record(out_, RecordId::kSharedTextCell);
    out_.U16s({row_, column, format});
    out_.U32(texts_.Use(text));
  }

  void AddNumber(std::uint16_t column, std::uint16_t format, double number) {
    // No number, or an infinite one, has no form in a file.
    if (!std::isfinite(number)) return AddText(column, format, ToUtf8({&kCutMark, 1}));
    EndBlanks();
    const bool is_short = IsShort(number);
    const Record record(out_, is_short ? RecordId::kShortNumberCell : RecordId::kNumberCell);
    out_.U16s({row_, column, format});
    if (is_short) {
      constexpr std::uint32_t kWhole = 2;
      const auto bits = static_cast<std::uint32_t>(static_cast<std::int32_t>(number));
      out_.U32(bits << 2 | kWhole);
    } else {
      out_.F64(number);
    }
  }

  // Blank cells side by side share a record.
  void AddBlank(std::uint16_t column, std::uint16_t format) {
    if (first_blank_ + blanks_.size() != column) EndBlanks();
    if (blanks_.empty()) first_blank_ = column;
    blanks_.push_back(format);
  }

  void EndBlanks() {
    if (blanks_.empty()) return;
    const bool single = blanks_.size() == 1;
    const Record record(out_, single ? RecordId::kBlankCell : RecordId::kMultipleBlanks);
    out_.U16s({row_, first_blank_});
    for (const std::uint16_t format : blanks_) out_.U16(format);
    if (!single) out_.U16(static_cast<std::uint16_t>(first_blank_ + blanks_.size() - 1));
    blanks_.clear();
  }

  void AddLink(const CellRange& range, std::string_view place) {
    std::u16string units = ToUnits(place, kMaxPlace + 1);
    if (units.size() <= kMaxPlace && links_.size() < kMaxHyperlinks) {
      links_.push_back({range, std::move(units)});
    }
  }

  Bytes& out_;
  SharedStrings& texts_;
  const StyleTable& styles_;
  std::uint16_t row_ = 0;
  std::uint16_t first_blank_ = 0;
  std::vector<std::uint16_t> blanks_;
  std::vector<CellRange> merged_;
  std::vector<Link> links_;
};

std::uint16_t Twips(double points) {
  const double height = std::isfinite(points) ? std::clamp(points, 0.0, kMaxRowHeight) : 0;
  return static_cast<std::uint16_t>(std::lround(height * kTwipsPerPoint));
}

void AddRowHead(Bytes& out, std::uint16_t number, const Row& row,
                std::span<const Cell* const> cells) {
  constexpr std::uint16_t kAlways = 0x0100;
  constexpr std::uint16_t kOwnHeight = 0x0040;
  const auto end = static_cast<std::uint16_t>(cells.empty() ? 0 : LastColumn(*cells.back()) + 1);
  const std::uint16_t first = cells.empty() ? std::uint16_t{0} : cells.front()->column;
  AddRecord(
      out, RecordId::kRow,
      {number, first, end, row.height ? Twips(*row.height) : kDefaultHeight, 0, 0,
       static_cast<std::uint16_t>(kAlways | (row.height ? kOwnHeight : 0)), kFirstCellFormat});
}

// Rows stand in blocks: the heads of up to 32 rows, then their cells.
void AddRows(Bytes& out, std::span<const Row> rows, CellWriter& writer) {
  constexpr std::size_t kBlock = 32;
  for (std::size_t first = 0; first < rows.size(); first += kBlock) {
    const std::size_t end = std::min(first + kBlock, rows.size());
    std::vector<std::vector<const Cell*>> cells;
    for (std::size_t i = first; i < end; ++i) {
      cells.push_back(Arranged(rows[i]));
      if (rows[i].cells.empty() && !rows[i].height) continue;
      AddRowHead(out, static_cast<std::uint16_t>(i), rows[i], cells.back());
    }
    for (std::size_t i = first; i < end; ++i) {
      writer.AddRow(static_cast<std::uint16_t>(i), cells[i - first]);
    }
  }
}

void AddDimensions(Bytes& out, std::span<const Row> rows) {
  std::uint16_t end = 0;
  for (const Row& row : rows) {
    for (const Cell& cell : row.cells) {
      end = std::max(end, static_cast<std::uint16_t>(LastColumn(cell) + 1));
    }
  }
  const Record record(out, RecordId::kDimensions);
  out.U32(0);
  out.U32(static_cast<std::uint32_t>(rows.size()));
  out.U16s({0, end, 0});
}

void AddPrintedText(Bytes& out, RecordId id, const std::string& text) {
  const Record record(out, id);
  if (!text.empty()) AddText(out, ToUnits(text, kMaxPrintedText));
}

void AddMargin(Bytes& out, RecordId id, double inches) {
  const Record record(out, id);
  out.F64(inches);
}

void AddPrintSetup(Bytes& out, const PrintSetup& print) {
  constexpr double kSide = 0.45;
  constexpr double kEnd = 0.7;
  constexpr double kEdge = 0.35;
  AddPrintedText(out, RecordId::kHeader, print.header);
  AddPrintedText(out, RecordId::kFooter, print.footer);
  AddRecord(out, RecordId::kCenterAcross, {0});
  AddRecord(out, RecordId::kCenterDown, {0});
  AddMargin(out, RecordId::kLeftMargin, kSide);
  AddMargin(out, RecordId::kRightMargin, kSide);
  AddMargin(out, RecordId::kTopMargin, kEnd);
  AddMargin(out, RecordId::kBottomMargin, kEnd);
  constexpr std::uint16_t kA4 = 9;
  constexpr std::uint16_t kWholeScale = 100;
  constexpr std::uint16_t kResolution = 600;
  const Record record(out, RecordId::kSetup);
  // One page wide and as many high as it takes.
  const bool portrait = print.paper == PrintSetup::Paper::kPortrait;
  out.U16s({kA4, kWholeScale, 1, 1, 0, static_cast<std::uint16_t>(portrait ? 0x0002 : 0x0000),
            kResolution, kResolution});
  out.F64(kEdge);
  out.F64(kEdge);
  out.U16(1);
}

void AddColumns(Bytes& out, std::span<const double> widths) {
  constexpr double kUnits = 256;
  AddRecord(out, RecordId::kDefaultColumnWidth, {8});
  for (std::size_t i = 0; i < std::min(widths.size(), kMaxColumns); ++i) {
    const double width = std::isfinite(widths[i]) ? std::clamp(widths[i], 0.0, kMaxColumnWidth) : 0;
    const auto column = static_cast<std::uint16_t>(i);
    AddRecord(out, RecordId::kColumnInfo,
              {column, column, static_cast<std::uint16_t>(std::lround(width * kUnits)),
               kFirstCellFormat, 0, 0});
  }
}

void AddOptions(Bytes& out) {
  AddRecord(out, RecordId::kPrintHeaders, {0});
  AddRecord(out, RecordId::kPrintGridLines, {0});
  AddRecord(out, RecordId::kGridSet, {1});
  AddRecord(out, RecordId::kGuts, {0, 0, 0, 0});
  AddRecord(out, RecordId::kDefaultRowHeight, {0, kDefaultHeight});
  constexpr std::uint16_t kUsual = 0x04C1;
  constexpr std::uint16_t kFitToPage = 0x0100;
  AddRecord(out, RecordId::kSheetOptions, {kUsual | kFitToPage});
}

void AddPane(Bytes& out, std::uint16_t rows, std::uint8_t columns, std::uint8_t active) {
  AddRecord(out, RecordId::kPane, {columns, rows, rows, columns, active});
}

void AddWindow(Bytes& out, const Sheet& sheet, Place place) {
  constexpr std::uint16_t kUsual = 0x00B6;
  constexpr std::uint16_t kGridLines = 0x0002;
  constexpr std::uint16_t kFrozen = 0x0108;
  constexpr std::uint16_t kInFront = 0x0600;
  constexpr std::uint16_t kAutomaticColor = 64;
  const bool frozen = sheet.frozen_rows > 0 || sheet.frozen_columns > 0;
  unsigned flags = kUsual & ~kGridLines;
  if (sheet.grid_lines) flags |= kGridLines;
  if (frozen) flags |= kFrozen;
  if (place == Place::kFront) flags |= kInFront;
  AddRecord(out, RecordId::kWindow2,
            {static_cast<std::uint16_t>(flags), 0, 0, kAutomaticColor, 0, 0, 0, 0, 0});
  // The active part: 3 above left, 2 below left, 1 above right, 0 below right.
  const auto active = static_cast<std::uint8_t>(3 - (sheet.frozen_rows > 0 ? 1 : 0) -
                                                (sheet.frozen_columns > 0 ? 2 : 0));
  if (frozen) AddPane(out, sheet.frozen_rows, sheet.frozen_columns, active);
  const Record record(out, RecordId::kSelection);
  out.U8(active);
  out.U16s({sheet.frozen_rows, sheet.frozen_columns, 0, 1, sheet.frozen_rows, sheet.frozen_rows});
  out.U8(sheet.frozen_columns);
  out.U8(sheet.frozen_columns);
}

void AddMerged(Bytes& out, std::span<const CellRange> merged) {
  while (!merged.empty()) {
    const std::size_t count = std::min(merged.size(), kMaxMergedInRecord);
    const Record record(out, RecordId::kMergedCells);
    out.U16(static_cast<std::uint16_t>(count));
    for (const CellRange& range : merged.first(count)) AddRange(out, range);
    merged = merged.subspan(count);
  }
}

void AddLinkRecord(Bytes& out, const Link& link) {
  constexpr std::string_view kStandardLink(
      "\xD0\xC9\xEA\x79\xF9\xBA\xCE\x11\x8C\x82\x00\xAA\x00\x4B\xA9\x0B", 16);
  constexpr std::uint32_t kVersion = 2;
  constexpr std::uint32_t kPlaceInFile = 8;
  const Record record(out, RecordId::kHyperlink);
  AddRange(out, link.at);
  out.Raw(kStandardLink);
  out.U32(kVersion);
  out.U32(kPlaceInFile);
  out.U32(static_cast<std::uint32_t>(link.place.size() + 1));
  AddUnits(out, link.place, false);
  out.U16(0);
}

}  // namespace

std::string SheetRecords(const Sheet& sheet, Place place, SharedStrings& texts,
                         const StyleTable& styles) {
  constexpr std::uint16_t kSheet = 0x0010;
  Bytes out;
  AddBeginning(out, kSheet);
  AddOptions(out);
  AddPrintSetup(out, sheet.print);
  AddColumns(out, sheet.column_widths);
  AddDimensions(out, sheet.rows);
  CellWriter cells(out, texts, styles);
  AddRows(out, sheet.rows, cells);
  AddWindow(out, sheet, place);
  AddMerged(out, cells.Merged());
  for (const Link& link : cells.Links()) AddLinkRecord(out, link);
  AddRecord(out, RecordId::kEof, {});
  return out.Take();
}

}  // namespace dbkeeper::xls
