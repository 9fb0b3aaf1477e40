// Random texts that follow a format: "#" is a digit, "@" a capital letter, "?" a letter, "*" a
// letter or digit; every other character stands for itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper {

// A pattern made ready to be expanded many times.
class PatternString {
 public:
  // The texts between the special characters are kept in the ANSI code page. Throws FileError,
  // which names a character that the code page lacks.
  PatternString(std::string_view pattern, CodePage& code_page);

  // Appends one expansion. The random numbers are seeded anew each time.
  void Expand(RandomSource& random, std::string& text) const;

 private:
  // A special character and the plain text behind it; the first piece's character is 0.
  struct Piece {
    char special;
    std::string plain;
  };
  std::vector<Piece> pieces_;
};

}  // namespace dbkeeper
