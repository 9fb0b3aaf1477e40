// The ANSI code page of the text files, by the C library's converter.
#pragma once

#include <string>

#include "app/support/Host.h"

namespace dbkeeper::host {

// Code page 932. U+00A5 (yen) and U+203E (overline) have no place of their own in it: the converter
// would turn them into a backslash and a tilde, so they are refused on the way out.
class IconvCodePage : public CodePage {
 public:
  std::optional<std::string> FromUtf8(std::string_view text) override;
  std::optional<std::string> ToUtf8(std::string_view bytes) override;
};

}  // namespace dbkeeper::host
