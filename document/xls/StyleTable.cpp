#include "document/xls/StyleTable.h"

#include <algorithm>
#include <iterator>

#include "document/xls/Text.h"

namespace dbkeeper::xls {

namespace {

constexpr std::uint16_t kFirstColor = 8;
constexpr std::uint16_t kAutomaticText = 0x7FFF;
constexpr std::uint16_t kAutomaticFill = 65;
// The first number format that is not built in.
constexpr std::uint16_t kFirstNumberFormat = 164;

// The colours that spreadsheet programs offer. Those for charts, from the 17th on, come twice; they
// make way first.
constexpr std::array<std::uint32_t, 56> kPalette = {
    0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0xFFFF00, 0xFF00FF, 0x00FFFF,
    0x800000, 0x008000, 0x000080, 0x808000, 0x800080, 0x008080, 0xC0C0C0, 0x808080,
    0x9999FF, 0x993366, 0xFFFFCC, 0xCCFFFF, 0x660066, 0xFF8080, 0x0066CC, 0xCCCCFF,
    0x000080, 0xFF00FF, 0xFFFF00, 0x00FFFF, 0x800080, 0x800000, 0x008080, 0x0000FF,
    0x00CCFF, 0xCCFFFF, 0xCCFFCC, 0xFFFF99, 0x99CCFF, 0xFF99CC, 0xCC99FF, 0xFFCC99,
    0x3366FF, 0x33CCCC, 0x99CC00, 0xFFCC00, 0xFF9900, 0xFF6600, 0x666699, 0x969696,
    0x003366, 0x339966, 0x003300, 0x333300, 0x993300, 0x993366, 0x333399, 0x333333,
};
constexpr std::size_t kFirstToMakeWay = 16;

Rgb FromNumber(std::uint32_t number) {
  return {static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
          static_cast<std::uint8_t>(number)};
}

int Distance(const Rgb& a, const Rgb& b) {
  const auto square = [](int difference) { return difference * difference; };
  return square(a.red - b.red) + square(a.green - b.green) + square(a.blue - b.blue);
}

void WriteFont(Bytes& out, const Font& font, std::uint16_t color) {
  constexpr std::uint8_t kJapanese = 128;
  constexpr std::uint16_t kTwipsPerPoint = 20;
  const Record record(out, RecordId::kFont);
  out.U16(static_cast<std::uint16_t>(font.points * kTwipsPerPoint));
  out.U16s({0, color, static_cast<std::uint16_t>(font.bold ? 700 : 400), 0});
  out.U8(font.underlined ? 1 : 0);
  out.U8(0);
  out.U8(kJapanese);
  out.U8(0);
  AddShortText(out, ToUnits(font.name, kMaxFontName));
}

// The formats that styles by name are based on. Only the normal one has a name.
void WriteStyleFormats(Bytes& out) {
  constexpr std::uint16_t kIsStyle = 0xFFF5;
  constexpr std::uint16_t kNothingOwn = 0xF400;
  for (std::uint16_t i = 0; i < kFirstCellFormat; ++i) {
    const std::uint16_t own = i == 0 ? std::uint16_t{0} : kNothingOwn;
    AddRecord(out, RecordId::kCellFormat, {0, 0, kIsStyle, 0x0020, own, 0, 0, 0, 0, 0x20C0});
  }
}

void WriteNormalStyle(Bytes& out) {
  constexpr std::uint16_t kBuiltIn = 0x8000;
  AddRecord(out, RecordId::kStyle, {kBuiltIn, 0xFF00});
}

}  // namespace

StyleTable::StyleTable(const Style& normal) {
  std::transform(kPalette.begin(), kPalette.end(), palette_.begin(), FromNumber);
  Add(normal);
}

StyleId StyleTable::Add(const Style& style) {
  const auto found = std::find(styles_.begin(), styles_.end(), style);
  if (found != styles_.end()) return static_cast<StyleId>(found - styles_.begin());
  if (kFirstCellFormat + formats_.size() >= kMaxCellFormats) return 0;
  const auto id = static_cast<StyleId>(formats_.size());
  formats_.push_back(RowOf(style));
  styles_.push_back(style);
  return id;
}

StyleTable::CellFormatRow StyleTable::RowOf(const Style& style) {
  CellFormatRow row;
  row.font = FontNumber(style.font);
  row.number_format = NumberFormatNumber(style.number_format);
  row.align = static_cast<std::uint8_t>(static_cast<unsigned>(style.across) |
                                        (style.wrap == Wrap::kYes ? 0x08U : 0U) |
                                        (static_cast<unsigned>(style.down) << 4));
  const Borders& borders = style.borders;
  const auto color = [&](Line line) -> std::uint32_t {
    return line == Line::kNone ? 0 : ColorNumber(borders.color);
  };
  row.sides = static_cast<std::uint32_t>(borders.left) |
              static_cast<std::uint32_t>(borders.right) << 4 |
              static_cast<std::uint32_t>(borders.top) << 8 |
              static_cast<std::uint32_t>(borders.bottom) << 12 | color(borders.left) << 16 |
              color(borders.right) << 23;
  row.ends = color(borders.top) | color(borders.bottom) << 7;
  constexpr std::uint32_t kSolid = 1U << 26;
  if (style.fill) row.ends |= kSolid;
  const std::uint16_t fill = style.fill ? ColorNumber(*style.fill) : std::uint16_t{64};
  row.fill = static_cast<std::uint16_t>(fill | kAutomaticFill << 7);
  return row;
}

std::uint16_t StyleTable::FontNumber(Font font) {
  font.points = std::clamp(font.points, 1, 409);
  const auto found = std::find_if(fonts_.begin(), fonts_.end(),
                                  [&font](const FontRow& row) { return row.font == font; });
  const auto place = found - fonts_.begin();
  if (found == fonts_.end()) {
    if (fonts_.size() >= kMaxFonts) return 0;
    fonts_.push_back({font, font.color == Rgb{} ? kAutomaticText : ColorNumber(font.color)});
  }
  // The number 4 is never given.
  return static_cast<std::uint16_t>(place < 4 ? place : place + 1);
}

std::uint16_t StyleTable::NumberFormatNumber(const std::string& format) {
  constexpr std::uint16_t kGeneral = 0;
  const bool fits = ToUnits(format, kMaxPrintedText + 1).size() <= kMaxPrintedText;
  if (format.empty() || !fits || format == "General") return kGeneral;
  const auto found = std::find(number_formats_.begin(), number_formats_.end(), format);
  const auto place = found - number_formats_.begin();
  if (found == number_formats_.end()) {
    if (number_formats_.size() >= kMaxNumberFormats) return kGeneral;
    number_formats_.push_back(format);
  }
  return static_cast<std::uint16_t>(kFirstNumberFormat + place);
}

std::uint16_t StyleTable::ColorNumber(const Rgb& color) {
  std::size_t place = NearestColor(color);
  if (palette_[place] != color && !used_.all()) {
    place = kFirstToMakeWay;
    while (used_[place]) place = (place + 1) % kColors;
    palette_[place] = color;
  }
  used_.set(place);
  return static_cast<std::uint16_t>(kFirstColor + place);
}

std::size_t StyleTable::NearestColor(const Rgb& color) const {
  const auto* const nearest = std::min_element(
      palette_.begin(), palette_.end(),
      [&color](const Rgb& a, const Rgb& b) { return Distance(a, color) < Distance(b, color); });
  return static_cast<std::size_t>(std::distance(palette_.begin(), nearest));
}

void StyleTable::Write(Bytes& out) const {
  for (const FontRow& row : fonts_) WriteFont(out, row.font, row.color);
  // The four fonts before the number that is never given have to be there.
  for (std::size_t i = fonts_.size(); i < 4; ++i) {
    WriteFont(out, fonts_[0].font, fonts_[0].color);
  }
  for (std::size_t i = 0; i < number_formats_.size(); ++i) {
    const Record record(out, RecordId::kNumberFormat);
    out.U16(static_cast<std::uint16_t>(kFirstNumberFormat + i));
    AddText(out, ToUnits(number_formats_[i], kMaxPrintedText));
  }
  WriteStyleFormats(out);
  for (const CellFormatRow& row : formats_) {
    constexpr std::uint16_t kLocked = 1;
    constexpr std::uint16_t kEverythingOwn = 0xFC00;
    const Record record(out, RecordId::kCellFormat);
    out.U16s({row.font, row.number_format, kLocked, row.align, kEverythingOwn});
    out.U32(row.sides);
    out.U32(row.ends);
    out.U16(row.fill);
  }
  WriteNormalStyle(out);
  const Record record(out, RecordId::kPalette);
  out.U16(kColors);
  for (const Rgb& color : palette_) {
    out.U8(color.red);
    out.U8(color.green);
    out.U8(color.blue);
    out.U8(0);
  }
}

}  // namespace dbkeeper::xls
