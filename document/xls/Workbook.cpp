#include "document/xls/Workbook.h"

#include <chrono>
#include <string_view>

namespace dbkeeper::xls {

namespace {

std::string Doubled(std::string_view text, char doubled) {
  std::string result;
  for (const char c : text) {
    if (c == doubled) result += c;
    result += c;
  }
  return result;
}

}  // namespace

std::string PlaceIn(const std::string& sheet, const std::string& cell) {
  return '\'' + Doubled(sheet, '\'') + "'!" + cell;
}

std::string PrintedText(const std::string& text) { return Doubled(text, '&'); }

double SerialDate(int year, unsigned month, unsigned day) {
  namespace chrono = std::chrono;
  const chrono::sys_days date =
      chrono::year_month_day(chrono::year(year), chrono::month(month), chrono::day(day));
  // Spreadsheets count the 29th of February 1900, which never was.
  constexpr chrono::sys_days kBeforeFirst =
      chrono::year_month_day(chrono::year(1899), chrono::month(12), chrono::day(31));
  const auto days = (date - kBeforeFirst).count();
  return static_cast<double>(days > 59 ? days + 1 : days);
}

}  // namespace dbkeeper::xls
