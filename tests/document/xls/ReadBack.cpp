#include "tests/document/xls/ReadBack.h"

#include <freexl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace dbkeeper::testing {

namespace {

void Check(int result, const char* step) {
  if (result != FREEXL_OK) {
    throw std::runtime_error(std::string(step) + ": " + std::to_string(result));
  }
}

ReadSheet ReadActive(const void* book) {
  ReadSheet sheet;
  unsigned short columns = 0;
  Check(freexl_worksheet_dimensions(book, &sheet.rows, &columns), "dimensions");
  for (unsigned row = 0; row < sheet.rows; ++row) {
    for (unsigned short column = 0; column < columns; ++column) {
      FreeXL_CellValue value{};
      Check(freexl_get_cell_value(book, row, column, &value), "cell");
      const std::pair<unsigned, unsigned> place(row, column);
      if (value.type == FREEXL_CELL_INT) {
        sheet.cells.emplace(place, static_cast<double>(value.value.int_value));
      } else if (value.type == FREEXL_CELL_DOUBLE) {
        sheet.cells.emplace(place, value.value.double_value);
      } else if (value.type != FREEXL_CELL_NULL) {
        sheet.cells.emplace(place, std::string(value.value.text_value));
      }
    }
  }
  return sheet;
}

std::vector<ReadSheet> ReadFile(const std::filesystem::path& file) {
  const void* book = nullptr;
  Check(freexl_open(file.c_str(), &book), "open");
  // What it cannot read it may leave without saying so.
  if (book == nullptr) throw std::runtime_error("nothing opened");
  const std::unique_ptr<const void, int (*)(const void*)> owner(book, freexl_close);
  unsigned count = 0;
  Check(freexl_get_info(book, FREEXL_BIFF_SHEET_COUNT, &count), "count");
  std::vector<ReadSheet> sheets;
  for (unsigned short i = 0; i < count; ++i) {
    const char* name = nullptr;
    Check(freexl_get_worksheet_name(book, i, &name), "name");
    Check(freexl_select_active_worksheet(book, i), "select");
    sheets.push_back(ReadActive(book));
    sheets.back().name = name;
  }
  return sheets;
}

}  // namespace

std::string ReadSheet::Text(unsigned row, unsigned column) const {
  const auto found = cells.find({row, column});
  if (found == cells.end()) return {};
  if (const auto* const text = std::get_if<std::string>(&found->second)) return *text;
  char number[32];
  std::snprintf(number, sizeof number, "%.15g", std::get<double>(found->second));
  return number;
}

std::vector<ReadSheet> ReadBack(const std::string& bytes) {
  namespace fs = std::filesystem;
  const fs::path file =
      fs::temp_directory_path() / ("dbkeeper_xls_" + std::to_string(::getpid()) + ".xls");
  std::ofstream(file, std::ios::binary) << bytes;
  struct Remover {
    const fs::path& file;
    ~Remover() { fs::remove(file); }
  } const remover{file};
  return ReadFile(file);
}

std::string BytesOf(xls::Writer& writer) {
  std::string bytes;
  writer.Write([&bytes](std::string_view piece) { bytes += piece; });
  return bytes;
}

}  // namespace dbkeeper::testing
