// What the order of texts, Japanese_CI_AS, takes for the same character: a Latin, Greek or Cyrillic
// letter without its case, and a kana or a letter without its type and its width, so that 'Ａ' is
// 'a', 'ｱ' and 'あ' are 'ア', and 'ｶﾞ' is 'が'. The mark of a voiced kana and the small kana count:
// 'つ', 'づ' and 'っ' are three characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper::server {

// Rises when the order changes, for the indexes of a database file stand in the one it was made
// with. 0: kana type and width counted.
inline constexpr std::int64_t kTextOrder = 1;

// Takes the character at `position` as the order sees it, and moves behind it and the mark that
// belongs to it.
char32_t NextFolded(std::string_view text, std::size_t& position);

// A text as the order sees it.
struct FoldedText {
  explicit FoldedText(std::string_view text);

  std::u32string characters;
  // Where each character begins in the text, and its end, counting bytes.
  std::vector<std::size_t> places;
};

// Where the pattern's first piece behind a leading "%" begins in the text, in bytes; npos when the
// text is not like the pattern. Blanks at the end of the text need not be in the pattern.
std::size_t FindPattern(std::string_view text, std::string_view pattern);

}  // namespace dbkeeper::server
