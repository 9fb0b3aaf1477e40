#include "document/xls/Writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "document/xls/Format.h"
#include "document/xls/Text.h"
#include "tests/document/xls/ReadBack.h"

namespace dbkeeper::xls {
namespace {

using testing::BytesOf;
using testing::ReadBack;
using testing::ReadSheet;

Cell Text(std::uint8_t column, std::string text) { return {column, 0, std::move(text), 1, {}}; }
Cell Number(std::uint8_t column, double number) { return {column, 0, number, 1, {}}; }

// The only sheet of a workbook, read back.
ReadSheet WrittenAlone(const Sheet& sheet) {
  Writer writer(Style{});
  writer.AddSheet(sheet);
  return ReadBack(BytesOf(writer)).at(0);
}

std::string Repeated(std::string_view text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

TEST(XlsWriter, CellsComeBackAsTheyWere) {
  struct Case {
    Cell::Value value;
    const char* read;
  };
  const Case cases[] = {
      {"plain", "plain"},
      {"Ärger é", "Ärger é"},
      {"受注明細 ﾒｲｻｲ ①髙", "受注明細 ﾒｲｻｲ ①髙"},
      {"𠮷野家", "𠮷野家"},
      {"two\r\nlines\rand\none", "two\nlines\nand\none"},
      {std::string("a\0b\x01", 4), "a␀b␁"},
      {"bad \xFF\xE3\x81 bytes", "bad ��� bytes"},
      {"", ""},
      {0.0, "0"},
      {1.0, "1"},
      {-7.0, "-7"},
      {536870911.0, "536870911"},
      {536870912.0, "536870912"},
      {-536870912.0, "-536870912"},
      {-536870913.0, "-536870913"},
      {0.1, "0.1"},
      {1e300, "1e+300"},
      {std::numeric_limits<double>::infinity(), "…"},
      {std::nan(""), "…"},
      {std::monostate{}, ""},
  };
  Sheet sheet;
  sheet.name = "値";
  std::size_t row = 0;
  for (const Case& c : cases) sheet.RowAt(row++).cells.push_back({3, 0, c.value, 1, {}});
  const ReadSheet read = WrittenAlone(sheet);
  EXPECT_EQ(read.name, "値");
  for (row = 0; row < std::size(cases); ++row) {
    EXPECT_EQ(read.Text(static_cast<unsigned>(row), 3), cases[row].read) << row;
  }
}

TEST(XlsWriter, ADateIsANumberThatReadersKnowForADate) {
  struct Case {
    int year;
    unsigned month;
    unsigned day;
    double number;
    const char* read;
  };
  const Case cases[] = {
      {1900, 1, 1, 1, "1900-01-01"},       {1900, 2, 28, 59, "1900-02-28"},
      {1900, 3, 1, 61, "1900-03-01"},      {2000, 2, 29, 36585, "2000-02-29"},
      {2004, 12, 31, 38352, "2004-12-31"}, {2078, 12, 31, 65380, "2078-12-31"},
  };
  Writer writer(Style{});
  Style style;
  style.number_format = "yyyy/mm/dd";
  const StyleId date = writer.AddStyle(style);
  Sheet sheet;
  sheet.name = "日付";
  for (const Case& c : cases) {
    const double number = SerialDate(c.year, c.month, c.day);
    EXPECT_EQ(number, c.number) << c.read;
    sheet.RowAt(sheet.rows.size()).cells.push_back({0, date, number, 1, {}});
  }
  writer.AddSheet(sheet);
  const ReadSheet read = ReadBack(BytesOf(writer)).at(0);
  unsigned row = 0;
  for (const Case& c : cases) EXPECT_EQ(read.Text(row++, 0), c.read);
}

// The shared texts as the page about the format describes them. The other reader loses texts of
// more than two records.
class SharedTexts {
 public:
  explicit SharedTexts(const std::string& bytes) : bytes_(bytes) {
    constexpr std::size_t kStream = 512;
    for (at_ = kStream; Id() != 0x00FC; at_ += 4 + Length()) continue;
    Enter();
    at_ += 4;
    for (std::uint32_t left = Take(4); left > 0; --left) texts.push_back(Next());
  }

  std::vector<std::u16string> texts;

 private:
  std::uint16_t Id() const { return Number(at_, 2); }
  std::size_t Length() const { return Number(at_ + 2, 2); }
  void Enter() {
    end_ = at_ + 4 + Length();
    at_ += 4;
  }
  std::uint32_t Number(std::size_t at, std::size_t size) const {
    std::uint32_t number = 0;
    while (size-- > 0) number = number << 8 | static_cast<unsigned char>(bytes_.at(at + size));
    return number;
  }
  std::uint32_t Take(std::size_t size) {
    at_ += size;
    EXPECT_LE(at_, end_) << "a number reaches over the end of its record";
    return Number(at_ - size, size);
  }
  bool NextRecord() {
    if (at_ != end_ || Id() != 0x003C) return false;
    Enter();
    return true;
  }
  std::u16string Next() {
    NextRecord();
    std::size_t left = Take(2);
    std::size_t width = Take(1) + 1;
    std::u16string text;
    for (; left > 0; --left) {
      if (NextRecord()) width = Take(1) + 1;
      text += static_cast<char16_t>(Take(width));
    }
    return text;
  }

  const std::string& bytes_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
};

// The lengths bring the end of a record to every place in and around a text.
TEST(XlsWriter, TextsGoOnFromRecordToRecord) {
  for (const char* letter : {"a", "あ", "𠮷"}) {
    const std::size_t units = ToUnits(letter, 2).size();
    for (std::size_t first = 4080; first < 4120; ++first) {
      Sheet sheet;
      sheet.name = "S";
      const std::vector<std::string> texts = {Repeated(letter, first / units), Repeated("x", first),
                                              Repeated(letter, 2000), "短い", "end"};
      for (const std::string& text : texts) {
        sheet.RowAt(sheet.rows.size()).cells.push_back(Text(0, text));
      }
      const ReadSheet read = WrittenAlone(sheet);
      for (unsigned i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(read.Text(i, 0), texts[i]) << letter << ' ' << first << ' ' << i;
      }
    }
  }
}

TEST(XlsWriter, ManyTextsOfAllWidthsComeBack) {
  Sheet sheet;
  sheet.name = "S";
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < 5000; ++i) {
    texts.push_back(std::to_string(i) + Repeated(i % 3 == 0 ? "漢" : "k", i % 97));
    sheet.RowAt(i / 10).cells.push_back(Text(static_cast<std::uint8_t>(i % 10), texts.back()));
  }
  const ReadSheet read = WrittenAlone(sheet);
  for (unsigned i = 0; i < texts.size(); ++i) {
    ASSERT_EQ(read.Text(i / 10, i % 10), texts[i]);
  }
}

TEST(XlsWriter, ATooLongTextIsCutAndMarked) {
  struct Case {
    std::string text;
    std::string read;
  };
  const Case cases[] = {
      {Repeated("a", 20000), Repeated("a", 20000)},
      {Repeated("a", 32767), Repeated("a", 32767)},
      {Repeated("a", 32768), Repeated("a", 32766) + "…"},
      {Repeated("字", 12345), Repeated("字", 12345)},
      {Repeated("字", 40000), Repeated("字", 32766) + "…"},
      {"a" + Repeated("𠮷", 20000), "a" + Repeated("𠮷", 16382) + "…"},
  };
  Writer writer(Style{});
  Sheet sheet;
  sheet.name = "S";
  for (const Case& c : cases) {
    sheet.RowAt(sheet.rows.size()).cells.push_back(Text(0, c.text));
  }
  writer.AddSheet(sheet);
  const std::string bytes = BytesOf(writer);
  const SharedTexts read(bytes);
  ASSERT_EQ(read.texts.size(), std::size(cases));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_TRUE(ToUtf8(read.texts[i]) == cases[i].read) << i << ' ' << read.texts[i].size();
  }
}

TEST(XlsWriter, RowsThatDoNotFitGoOnInAFurtherSheetUnderTheSameHeading) {
  Writer writer(Style{});
  Sheet sheet;
  sheet.name = writer.AddName("Field一覧");
  writer.AddName("Field一覧 (2)");
  sheet.RowAt(1).cells = {Text(0, "No")};
  sheet.print.repeated = RowRange{1, 1};
  for (unsigned i = 0; i < 140000; ++i) sheet.RowAt(i + 2).cells = {Number(0, i)};
  writer.AddSheet(std::move(sheet));
  const std::vector<ReadSheet> read = ReadBack(BytesOf(writer));
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(read[0].name, "Field一覧");
  EXPECT_EQ(read[1].name, "Field一覧 (3)");
  EXPECT_EQ(read[2].name, "Field一覧 (4)");
  EXPECT_EQ(read[0].Text(65535, 0), "65533");
  EXPECT_EQ(read[1].Text(0, 0), "No");
  EXPECT_EQ(read[1].Text(1, 0), "65534");
  EXPECT_EQ(read[1].Text(65535, 0), "131068");
  EXPECT_EQ(read[2].Text(0, 0), "No");
  EXPECT_EQ(read[2].Text(1, 0), "131069");
  EXPECT_EQ(read[2].rows, 140000U - 131069U + 1U);
}

TEST(XlsWriter, CellsInOnePlaceNeverStandTwice) {
  Sheet sheet;
  sheet.name = "S";
  sheet.RowAt(0).cells = {Text(5, "five"), Text(1, "first"), Text(1, "second"), Text(254, "end")};
  sheet.RowAt(0).cells[3].columns = 100;
  sheet.RowAt(1).cells = {Text(0, "wide"), Text(1, "covered"), Text(2, "covered"), Text(3, "next")};
  sheet.RowAt(1).cells[0].columns = 3;
  const ReadSheet read = WrittenAlone(sheet);
  EXPECT_EQ(read.cells.size(), 5U);
  EXPECT_EQ(read.Text(0, 1), "second");
  EXPECT_EQ(read.Text(0, 5), "five");
  EXPECT_EQ(read.Text(0, 254), "end");
  EXPECT_EQ(read.Text(1, 0), "wide");
  EXPECT_EQ(read.Text(1, 3), "next");
}

TEST(XlsWriter, MoreLooksThanTheFormatHasFallBackToTheNormalOne) {
  Writer writer(Style{});
  Sheet sheet;
  sheet.name = "S";
  std::vector<StyleId> ids;
  for (int i = 0; i < 6000; ++i) {
    Style style;
    style.font.points = i % 700;
    style.font.color = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i / 7), 9};
    style.number_format = "0." + std::string(static_cast<std::size_t>(i) % 250, '0');
    style.fill = Rgb{1, static_cast<std::uint8_t>(i), 3};
    ids.push_back(writer.AddStyle(style));
    sheet.RowAt(static_cast<std::size_t>(i)).cells.push_back({0, ids.back(), 1.0 + i, 1, {}});
  }
  EXPECT_EQ(ids[3983], 3984);
  EXPECT_EQ(ids[3984], 0);
  EXPECT_EQ(ids[5999], 0);
  sheet.RowAt(0).cells.push_back({1, 65535, 7.0, 1, {}});
  writer.AddSheet(sheet);
  const ReadSheet read = ReadBack(BytesOf(writer)).at(0);
  EXPECT_EQ(read.Text(0, 1), "7");
  EXPECT_EQ(read.Text(5999, 0), "6000");
}

TEST(XlsWriter, EqualLooksAreOne) {
  Writer writer(Style{});
  Style bold;
  bold.font.bold = true;
  EXPECT_EQ(writer.AddStyle(Style{}), 0);
  EXPECT_EQ(writer.AddStyle(bold), 1);
  EXPECT_EQ(writer.AddStyle(bold), 1);
}

TEST(XlsWriter, ManySheetsWithLinksAndRepeatedRowsComeBack) {
  constexpr std::size_t kSheets = 1500;
  Writer writer(Style{});
  std::vector<std::string> names;
  for (std::size_t i = 0; i < kSheets; ++i)
    names.push_back(writer.AddName("表" + std::to_string(i)));
  for (std::size_t i = 0; i < kSheets; ++i) {
    Sheet sheet;
    sheet.name = names[i];
    sheet.print.repeated = RowRange{0, 2};
    sheet.frozen_rows = 3;
    sheet.RowAt(4).cells = {{0, 0, "next", 2, PlaceIn(names[(i + 1) % kSheets], "A1")}};
    sheet.RowAt(5).cells = {Text(0, Repeated("長", 3000) + names[i])};
    writer.AddSheet(sheet);
  }
  const std::string bytes = BytesOf(writer);
  // Long enough that the head of the file cannot list all that it has to.
  EXPECT_GT(bytes.size(), std::size_t{8} << 20);
  const std::vector<ReadSheet> read = ReadBack(bytes);
  ASSERT_EQ(read.size(), kSheets);
  for (std::size_t i = 0; i < kSheets; ++i) {
    EXPECT_EQ(read[i].name, names[i]);
    EXPECT_EQ(read[i].Text(4, 0), "next");
    EXPECT_EQ(read[i].Text(5, 0), Repeated("長", 3000) + names[i]);
  }
}

TEST(XlsWriter, ALinkNamesItsSheetInApostrophes) {
  EXPECT_EQ(PlaceIn("受注 明細", "A1"), "'受注 明細'!A1");
  EXPECT_EQ(PlaceIn("it's", "B2"), "'it''s'!B2");
  EXPECT_EQ(PrintedText("R&D"), "R&&D");
}

TEST(XlsWriter, AWorkbookWithoutSheetsHasAnEmptyOne) {
  Writer writer(Style{});
  const std::vector<ReadSheet> read = ReadBack(BytesOf(writer));
  ASSERT_EQ(read.size(), 1U);
  EXPECT_TRUE(read[0].cells.empty());
}

TEST(XlsWriter, WhatTheFileCannotTakeEndsTheWriting) {
  Writer writer(Style{});
  int pieces = 0;
  EXPECT_THROW(writer.Write([&pieces](std::string_view) {
    if (++pieces == 2) throw std::runtime_error("full");
  }),
               std::runtime_error);
  EXPECT_EQ(pieces, 2);
}

}  // namespace
}  // namespace dbkeeper::xls
