#include "document/xls/Writer.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "document/xls/Bytes.h"
#include "document/xls/Format.h"
#include "document/xls/SheetRecords.h"
#include "document/xls/Text.h"

namespace dbkeeper::xls {

namespace {

// The rows repeated in print as far as the sheet can have them.
std::optional<RowRange> Repeated(const Sheet& sheet) {
  const std::optional<RowRange>& rows = sheet.print.repeated;
  const bool sound = rows && rows->first <= rows->last && rows->last < kMaxRows;
  return sound ? rows : std::nullopt;
}

std::vector<Row> RepeatedRows(const Sheet& sheet) {
  const std::optional<RowRange> range = Repeated(sheet);
  // A sheet needs most of its rows for what goes on.
  if (!range || range->last >= std::min(sheet.rows.size(), kMaxRows / 2)) return {};
  const auto begin = sheet.rows.begin();
  return {begin + static_cast<std::ptrdiff_t>(range->first),
          begin + static_cast<std::ptrdiff_t>(range->last) + 1};
}

void AddRepeatedName(Bytes& out, std::uint16_t reference, std::uint16_t sheet,
                     const RowRange& rows) {
  constexpr std::uint16_t kBuiltIn = 0x0020;
  constexpr std::uint8_t kRepeatedRows = 7;
  constexpr std::uint8_t kArea = 0x3B;
  constexpr std::uint16_t kFormulaSize = 11;
  const Record record(out, RecordId::kName);
  // No key; a name of one character; sheets count from 1; no texts for menus.
  out.U16(kBuiltIn);
  out.U8(0);
  out.U8(1);
  out.U16s({kFormulaSize, 0, static_cast<std::uint16_t>(sheet + 1), 0, 0});
  out.U8(0);
  out.U8(kRepeatedRows);
  out.U8(kArea);
  out.U16s({reference, static_cast<std::uint16_t>(rows.first),
            static_cast<std::uint16_t>(rows.last), 0, kMaxColumns - 1});
}

}  // namespace

Writer::Writer(const Style& normal) : styles_(normal) {}

void Writer::AddSheet(Sheet sheet) {
  const std::string name = sheet.name;
  const std::vector<Row> repeated = RepeatedRows(sheet);
  for (;;) {
    std::vector<Row> rest;
    if (sheet.rows.size() > kMaxRows) {
      const auto cut = sheet.rows.begin() + static_cast<std::ptrdiff_t>(kMaxRows);
      rest.assign(std::move_iterator(cut), std::move_iterator(sheet.rows.end()));
      sheet.rows.resize(kMaxRows);
    }
    AddPart(sheet);
    if (rest.empty()) return;
    sheet.name = names_.Add(name);
    sheet.rows = repeated;
    sheet.rows.insert(sheet.rows.end(), std::move_iterator(rest.begin()),
                      std::move_iterator(rest.end()));
    sheet.print.repeated.reset();
    if (!repeated.empty()) sheet.print.repeated = RowRange{0, repeated.size() - 1};
    sheet.frozen_rows =
        static_cast<std::uint16_t>(std::min<std::size_t>(repeated.size(), sheet.frozen_rows));
  }
}

void Writer::AddPart(const Sheet& sheet) {
  if (sheets_.size() >= kMaxSheets) throw std::length_error("sheets");
  const Place place = sheets_.empty() ? Place::kFront : Place::kBehind;
  sheets_.push_back({sheet.name, Repeated(sheet), SheetRecords(sheet, place, texts_, styles_)});
}

void Writer::Write(const ByteSink& sink) {
  // A workbook without any sheet cannot be opened.
  if (sheets_.empty()) AddSheet({AddName("Sheet1"), {}, {}, 0, 0, true, {}});
  Bytes globals = Globals();
  std::vector<std::string_view> pieces = {{}};
  std::size_t position = globals.Size();
  for (std::size_t i = 0; i < sheets_.size(); ++i) {
    globals.PutU32(sheets_[i].position_at, static_cast<std::uint32_t>(position));
    pieces.emplace_back(sheets_[i].records);
    position += sheets_[i].records.size();
  }
  pieces[0] = globals.View();
  WriteCompoundFile(pieces, sink);
}

Bytes Writer::Globals() {
  constexpr std::uint16_t kWorkbook = 0x0005;
  constexpr std::uint16_t kUnicode = 1200;
  constexpr std::uint16_t kJapan = 81;
  Bytes out;
  AddBeginning(out, kWorkbook);
  AddRecord(out, RecordId::kCodePage, {kUnicode});
  // A window's place and size, its bars, the sheet in front, the width of the tabs' bar.
  AddRecord(out, RecordId::kWindow1, {0, 0, 24000, 14000, 0x0038, 0, 0, 1, 600});
  AddRecord(out, RecordId::kDateMode, {0});
  styles_.Write(out);
  for (SheetEntry& sheet : sheets_) {
    const Record record(out, RecordId::kBoundSheet);
    sheet.position_at = out.Size();
    out.U32(0);
    out.U16(0);
    AddShortText(out, ToUnits(sheet.name, kMaxSheetName));
  }
  AddRecord(out, RecordId::kCountry, {kJapan, kJapan});
  AddRepeatedRows(out);
  texts_.Write(out);
  AddRecord(out, RecordId::kEof, {});
  return out;
}

// The repeated rows are a formula with a built-in name, and a formula names a sheet by its number
// in a table of references.
void Writer::AddRepeatedRows(Bytes& out) const {
  std::vector<std::uint16_t> sheets;
  for (std::size_t i = 0; i < sheets_.size(); ++i) {
    if (sheets_[i].repeated) sheets.push_back(static_cast<std::uint16_t>(i));
  }
  if (sheets.empty()) return;
  constexpr std::uint16_t kThisWorkbook = 0x0401;
  AddRecord(out, RecordId::kSupBook, {static_cast<std::uint16_t>(sheets_.size()), kThisWorkbook});
  {
    constexpr std::size_t kReferenceSize = 6;
    ContinuedRecord record(out, RecordId::kExternSheet);
    out.U16(static_cast<std::uint16_t>(sheets.size()));
    for (const std::uint16_t sheet : sheets) {
      if (record.Room() < kReferenceSize) record.Continue();
      out.U16s({0, sheet, sheet});
    }
  }
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    AddRepeatedName(out, static_cast<std::uint16_t>(i), sheets[i], *sheets_[sheets[i]].repeated);
  }
}

}  // namespace dbkeeper::xls
