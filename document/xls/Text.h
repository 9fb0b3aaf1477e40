// Texts as they stand in the file: units of UTF-16, one byte each where all are below 256.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "document/xls/Bytes.h"

namespace dbkeeper::xls {

// The units of a UTF-8 text. A line ends in LF; other control characters become their visible
// pictures; bytes that are no UTF-8 become U+FFFD. A text of more than `limit` units is cut and
// ends in kCutMark.
std::u16string ToUnits(std::string_view utf8, std::size_t limit);

std::string ToUtf8(std::u16string_view units);

// Whether every unit fits in one byte.
bool IsNarrow(std::u16string_view units);

// The units, in one or two bytes each.
void AddUnits(Bytes& out, std::u16string_view units, bool narrow);

// Length in one byte, width, units.
void AddShortText(Bytes& out, std::u16string_view units);
// Length in two bytes, width, units.
void AddText(Bytes& out, std::u16string_view units);

}  // namespace dbkeeper::xls
