#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

QString ToQtLines(std::string_view text) {
  return ToQt(text).replace(QLatin1String("\r\n"), QLatin1String("\n")).replace('\r', '\n');
}

std::string FromQtLines(QString text) { return FromQt(text.replace('\n', QLatin1String("\r\n"))); }

QString ToQtCaption(std::string_view text) { return ToQt(text).replace('&', QLatin1String("&&")); }

}  // namespace dbkeeper::qt
