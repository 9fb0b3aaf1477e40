// Texts in UTF-16, as the server and its driver hold them.
#pragma once

#include <string>
#include <string_view>

namespace dbkeeper {

// Throws ConvertError where the text is no UTF-8: a text is never sent with a replaced character.
std::u16string Utf8ToUtf16(std::string_view text);

// An unpaired surrogate becomes U+FFFD.
std::string Utf16ToUtf8(std::u16string_view text);

// Whether an unpaired surrogate is in it.
bool HasHalfCharacter(std::u16string_view text);

}  // namespace dbkeeper
