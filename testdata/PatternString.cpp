#include "testdata/PatternString.h"

#include <algorithm>

#include "app/support/Files.h"

namespace dbkeeper {

namespace {

constexpr int kLetters = 26;

// The bounds are deliberately such that "@" never gives a Z, and "?" and "*" neither an a nor a z:
// data that was made before follows them.
char RandomCharacter(char special, RandomSource& random) {
  switch (special) {
    case '#':
      return static_cast<char>('0' + random.Below(10));
    case '@':
      return static_cast<char>('A' + random.Below(25));
    case '?': {
      const auto number = static_cast<int>(random.Below(50));
      return static_cast<char>(number < kLetters ? 'A' + number : number + 72);
    }
    default: {
      const auto number = static_cast<int>(random.Below(60));
      if (number < 10) return static_cast<char>('0' + number);
      return static_cast<char>(number < 10 + kLetters ? 'A' + number - 10 : number + 62);
    }
  }
}

}  // namespace

PatternString::PatternString(std::string_view pattern, CodePage& code_page) {
  char special = '\0';
  for (;;) {
    const std::size_t end = std::min(pattern.find_first_of("#@?*"), pattern.size());
    pieces_.push_back({special, ToAnsi(code_page, pattern.substr(0, end))});
    if (end == pattern.size()) return;
    special = pattern[end];
    pattern.remove_prefix(end + 1);
  }
}

void PatternString::Expand(RandomSource& random, std::string& text) const {
  random.Seed();
  for (const Piece& piece : pieces_) {
    if (piece.special != '\0') text += RandomCharacter(piece.special, random);
    text += piece.plain;
  }
}

}  // namespace dbkeeper
