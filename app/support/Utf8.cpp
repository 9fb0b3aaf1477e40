#include "app/support/Utf8.h"

#include <algorithm>

namespace dbkeeper {

namespace {

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::size_t LeadLength(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  if (byte >= 0xF0 && byte < 0xF8) return 4;
  if (byte >= 0xE0) return byte < 0xF0 ? 3 : 1;
  return byte >= 0xC2 ? 2 : 1;
}

}  // namespace

std::size_t Utf8Length(std::string_view text, std::size_t at) {
  const std::size_t length = LeadLength(text[at]);
  if (at + length > text.size()) return 1;
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text[at + i])) return 1;
  }
  return length;
}

std::size_t Utf8Count(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); at += Utf8Length(text, at)) ++count;
  return count;
}

std::string_view Utf8Right(std::string_view text, std::size_t count) {
  std::size_t start = text.size();
  while (start > 0 && count > 0) {
    --start;
    while (start > 0 && IsContinuation(text[start])) --start;
    --count;
  }
  return text.substr(start);
}

char32_t Utf8Decode(std::string_view character) {
  constexpr unsigned char kLeadMask[] = {0, 0xFF, 0x1F, 0x0F, 0x07};
  if (character.empty() || character.size() > 4) return 0xFFFD;
  char32_t code = static_cast<unsigned char>(character[0]) & kLeadMask[character.size()];
  for (std::size_t i = 1; i < character.size(); ++i) {
    code = (code << 6) | (static_cast<unsigned char>(character[i]) & 0x3F);
  }
  return code;
}

void Utf8Append(std::string& text, char32_t code) {
  const auto tail = [code](int shift) {
    return static_cast<char>(0x80 | ((code >> shift) & 0x3F));
  };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | (code >> 6));
    text += tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | (code >> 12));
    text += tail(6);
    text += tail(0);
  } else {
    text += static_cast<char>(0xF0 | (code >> 18));
    text += tail(12);
    text += tail(6);
    text += tail(0);
  }
}

std::string FoldCase(std::string_view text) {
  std::string folded(text);
  for (std::size_t i = 0; i < folded.size(); ++i) {
    char& c = folded[i];
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c + ('a' - 'A'));
    } else if (c == '\xEF' && i + 2 < folded.size() && folded[i + 1] == '\xBC' &&
               static_cast<unsigned char>(folded[i + 2]) >= 0xA1 &&
               static_cast<unsigned char>(folded[i + 2]) <= 0xBA) {
      // Full-width A..Z are U+FF21..U+FF3A; their lower case stands 32 places on, in the next
      // block.
      const unsigned lower = static_cast<unsigned char>(folded[i + 2]) - 0xA1U;
      folded[i + 1] = '\xBD';
      folded[i + 2] = static_cast<char>(0x81 + lower);
      i += 2;
    }
  }
  return folded;
}

}  // namespace dbkeeper
