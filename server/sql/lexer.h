// The words of a batch.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper::server {

// Whether "x" is a name (as drivers set it) or a string.
enum class QuotedIdentifiers { kOn, kOff };

enum class TokenKind {
  kWord,        // a name or a keyword
  kQuotedName,  // [x] or "x"
  kVariable,    // @x, @@x
  kString,
  kNationalString,
  kInteger,
  kDecimal,
  kFloat,
  kMoney,
  kBinary,
  kSymbol,  // one operator or punctuation mark
  kEnd,
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  // The content: of a quoted name or a string without quotes, doubled quotes made single; of a
  // binary the bytes; of money the digits; of everything else as written.
  std::string text;
  std::size_t begin = 0;
  std::size_t end = 0;
  int line = 1;
};

// Cuts a batch into tokens; comments (nested ones too) and blanks are left out, an end token closes
// the list. Throws SqlError: 103, 105, 113, 170.
std::vector<Token> Tokenize(std::string_view text, QuotedIdentifiers quoted);

// Whether `word` is one of the server's reserved words, in any case.
bool IsReservedWord(std::string_view word);

// Compares ASCII letters without case; `upper` is in capitals.
bool EqualsKeyword(std::string_view word, std::string_view upper);

}  // namespace dbkeeper::server
