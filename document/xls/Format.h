// The numbers of the file format: records, limits, sizes. docs/xls-format.md explains them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dbkeeper::xls {

enum class RecordId : std::uint16_t {
  kEof = 0x000A,
  kHeader = 0x0014,
  kFooter = 0x0015,
  kExternSheet = 0x0017,
  kName = 0x0018,
  kSelection = 0x001D,
  kDateMode = 0x0022,
  kLeftMargin = 0x0026,
  kRightMargin = 0x0027,
  kTopMargin = 0x0028,
  kBottomMargin = 0x0029,
  kPrintHeaders = 0x002A,
  kPrintGridLines = 0x002B,
  kFont = 0x0031,
  kContinue = 0x003C,
  kWindow1 = 0x003D,
  kPane = 0x0041,
  kCodePage = 0x0042,
  kDefaultColumnWidth = 0x0055,
  kColumnInfo = 0x007D,
  kGuts = 0x0080,
  kSheetOptions = 0x0081,
  kGridSet = 0x0082,
  kCenterAcross = 0x0083,
  kCenterDown = 0x0084,
  kBoundSheet = 0x0085,
  kCountry = 0x008C,
  kPalette = 0x0092,
  kSetup = 0x00A1,
  kMultipleBlanks = 0x00BE,
  kCellFormat = 0x00E0,
  kMergedCells = 0x00E5,
  kSharedStrings = 0x00FC,
  kSharedTextCell = 0x00FD,
  kSharedStringIndex = 0x00FF,
  kSupBook = 0x01AE,
  kHyperlink = 0x01B8,
  kDimensions = 0x0200,
  kBlankCell = 0x0201,
  kNumberCell = 0x0203,
  kRow = 0x0208,
  kDefaultRowHeight = 0x0225,
  kWindow2 = 0x023E,
  kShortNumberCell = 0x027E,
  kStyle = 0x0293,
  kNumberFormat = 0x041E,
  kBeginning = 0x0809,
};

// The most bytes of a record, without the four of its head.
inline constexpr std::size_t kMaxRecord = 8224;

inline constexpr std::size_t kMaxRows = 65536;
inline constexpr std::size_t kMaxColumns = 256;
// Lengths of texts are in units of UTF-16.
inline constexpr std::size_t kMaxCellText = 32767;
inline constexpr std::size_t kMaxSheetName = 31;
inline constexpr std::size_t kMaxFontName = 31;
inline constexpr std::size_t kMaxPrintedText = 255;
inline constexpr std::size_t kMaxPlace = 255;
// What the format's numbers of 16 bits can name, and a margin.
inline constexpr std::size_t kMaxSheets = 65000;

inline constexpr std::size_t kMaxCellFormats = 4000;
inline constexpr std::size_t kMaxFonts = 500;
inline constexpr std::size_t kMaxNumberFormats = 200;
inline constexpr std::size_t kMaxMergedInRecord = 1026;
inline constexpr std::size_t kMaxHyperlinks = 65530;
inline constexpr double kMaxRowHeight = 409.5;
inline constexpr double kMaxColumnWidth = 255;

// The formats before the first one for cells belong to styles that programs expect to be there.
inline constexpr std::uint16_t kFirstCellFormat = 15;

// What stands where something had to be left out.
inline constexpr char16_t kCutMark = u'…';

}  // namespace dbkeeper::xls
