// Numbers as texts, without any locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dbkeeper {

// The whole number that all of the text is. Throws ConvertError.
std::int64_t ParseInteger(std::string_view text);

// The decimal number that all of the text is, with ".". Throws ConvertError.
double ParseDecimal(std::string_view text);

// The shortest decimal text that reads back as the number: 10, 2.5.
std::string DecimalText(double number);

}  // namespace dbkeeper
