// Texts on their way between the program (UTF-8) and the toolkit.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace dbkeeper::qt {

inline QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string FromQt(const QString& text) { return text.toStdString(); }

// A text of several lines as the toolkit wants it: CR LF and a bare CR become a line feed.
QString ToQtLines(std::string_view text);

// The lines of an editor, joined by CR LF.
std::string FromQtLines(QString text);

// A caption whose "&" is a letter like any other and no mnemonic.
QString ToQtCaption(std::string_view text);

}  // namespace dbkeeper::qt
