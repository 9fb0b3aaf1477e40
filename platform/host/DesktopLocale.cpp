#include "platform/host/DesktopLocale.h"

#include <QLocale>
#include <algorithm>

namespace dbkeeper::host {

namespace {

constexpr const char* kJapaneseDate = "yyyy/mm/dd";

// The toolkit's pattern in the program's letters: months are "m", and years always have four digits
// so that a date can be told from every other.
std::string ToProgramPattern(const QString& pattern) {
  std::string result = pattern.toLower().toStdString();
  if (result.find("yyyy") == std::string::npos) {
    const std::size_t year = result.find("yy");
    if (year != std::string::npos) result.insert(year, "yy");
  }
  return result;
}

}  // namespace

char DesktopLocale::DecimalSeparator() {
  const QString separator = QLocale::system().decimalPoint();
  // A separator of another script has no place in a single byte.
  return separator.size() == 1 && separator[0].unicode() < 128 ? separator[0].toLatin1() : '.';
}

std::string DesktopLocale::ShortDateFormat() {
  if (short_date_format_.empty()) {
    const QLocale locale = QLocale::system();
    // The user interface is Japanese, and so is the date where the machine has no language at all.
    const bool japanese = locale.language() == QLocale::C || locale.language() == QLocale::Japanese;
    short_date_format_ =
        japanese ? kJapaneseDate : ToProgramPattern(locale.dateFormat(QLocale::ShortFormat));
  }
  return short_date_format_;
}

}  // namespace dbkeeper::host
