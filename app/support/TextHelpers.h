// Small text helpers that many commands share.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper {

// The text from just after the first `start` up to the next `end`; empty when either is not found.
std::string TextBetween(std::string_view text, std::string_view start, std::string_view end);

// Replaces the first occurrence and searches again from the beginning until none is left, so that
// replacing two blanks by one collapses a run of them. The replacement must not hold `search`, and
// `search` must not be empty; both throw std::invalid_argument, for the loop would not end.
std::string ReplaceAll(std::string text, std::string_view search, std::string_view replacement);

// The parts between delimiters. Empty middle parts are kept, an empty last part is not.
std::vector<std::string> Split(std::string_view text, char delimiter);

// Latin letters compare without case.
bool EqualsIgnoringCase(std::string_view left, std::string_view right);

// The text with the Latin letters in lower case.
std::string LowerCase(std::string_view text);

// The text without blanks and control characters at both ends.
std::string Trim(std::string_view text);

// The text without the blanks that fill a column of fixed length.
std::string_view WithoutTrailingBlanks(std::string_view text);

// The database that a text beginning with a "use" statement switches to.
std::optional<std::string> LeadingUseStatement(std::string_view sql);

}  // namespace dbkeeper
