#include "server/sql/lexer.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

#include "server/types/messages.h"
#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

constexpr int kMaximumNameCharacters = 128;

constexpr std::string_view kReservedWords =
    "ADD ALL ALTER AND ANY AS ASC AUTHORIZATION BACKUP BEGIN BETWEEN BREAK BROWSE BULK BY "
    "CASCADE CASE CHECK CHECKPOINT CLOSE CLUSTERED COALESCE COLLATE COLUMN COMMIT COMPUTE "
    "CONSTRAINT CONTAINS CONTAINSTABLE CONTINUE CONVERT CREATE CROSS CURRENT CURRENT_DATE "
    "CURRENT_TIME CURRENT_TIMESTAMP CURRENT_USER CURSOR DATABASE DBCC DEALLOCATE DECLARE "
    "DEFAULT DELETE DENY DESC DISK DISTINCT DISTRIBUTED DOUBLE DROP DUMMY DUMP ELSE END "
    "ERRLVL ESCAPE EXCEPT EXEC EXECUTE EXISTS EXIT FETCH FILE FILLFACTOR FOR FOREIGN "
    "FREETEXT FREETEXTTABLE FROM FULL FUNCTION GOTO GRANT GROUP HAVING HOLDLOCK IDENTITY "
    "IDENTITYCOL IDENTITY_INSERT IF IN INDEX INNER INSERT INTERSECT INTO IS JOIN KEY KILL "
    "LEFT LIKE LINENO LOAD NATIONAL NOCHECK NONCLUSTERED NOT NULL NULLIF OF OFF OFFSETS ON "
    "OPEN OPENDATASOURCE OPENQUERY OPENROWSET OPENXML OPTION OR ORDER OUTER OVER PERCENT "
    "PLAN PRECISION PRIMARY PRINT PROC PROCEDURE PUBLIC RAISERROR READ READTEXT RECONFIGURE "
    "REFERENCES REPLICATION RESTORE RESTRICT RETURN REVOKE RIGHT ROLLBACK ROWCOUNT "
    "ROWGUIDCOL RULE SAVE SCHEMA SELECT SESSION_USER SET SETUSER SHUTDOWN SOME STATISTICS "
    "SYSTEM_USER TABLE TEXTSIZE THEN TO TOP TRAN TRANSACTION TRIGGER TRUNCATE TSEQUAL UNION "
    "UNIQUE UPDATE UPDATETEXT USE USER VALUES VARYING VIEW WAITFOR WHEN WHERE WHILE WITH "
    "WRITETEXT";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Every character beyond ASCII may stand in a name.
bool IsNameStart(char c) {
  return IsLetter(c) || c == '_' || c == '#' || static_cast<unsigned char>(c) >= 0x80;
}
bool IsNamePart(char c) { return IsNameStart(c) || IsDigit(c) || c == '$' || c == '@'; }

class Lexer {
 public:
  Lexer(std::string_view text, QuotedIdentifiers quoted) : text_(text), quoted_(quoted) {}

  std::vector<Token> Run() {
    std::vector<Token> tokens;
    do {
      SkipBlanks();
      tokens.push_back(Next());
    } while (tokens.back().kind != TokenKind::kEnd);
    return tokens;
  }

 private:
  char At(std::size_t offset = 0) const {
    return position_ + offset < text_.size() ? text_[position_ + offset] : '\0';
  }
  bool AtEnd() const { return position_ >= text_.size(); }
  bool StartsWith(std::string_view word) const {
    return text_.substr(position_, word.size()) == word;
  }

  void Advance() {
    if (text_[position_] == '\n') ++line_;
    ++position_;
  }

  // True when a blank stood here; the full-width blank (U+3000) is one too.
  bool SkipBlank() {
    constexpr std::string_view kWideBlank = "\xE3\x80\x80";
    if (StartsWith(kWideBlank)) {
      position_ += kWideBlank.size();
      return true;
    }
    const char c = At();
    if (c != ' ' && (c < '\t' || c > '\r')) return false;
    Advance();
    return true;
  }

  void SkipComment() {
    const int line = line_;
    int depth = 0;
    do {
      if (AtEnd()) throw MakeError(113, {}, line);
      if (StartsWith("/*")) {
        ++depth;
        position_ += 2;
      } else if (StartsWith("*/")) {
        --depth;
        position_ += 2;
      } else {
        Advance();
      }
    } while (depth > 0);
  }

  void SkipBlanks() {
    while (!AtEnd()) {
      if (StartsWith("--")) {
        while (!AtEnd() && At() != '\n') ++position_;
      } else if (StartsWith("/*")) {
        SkipComment();
      } else if (!SkipBlank()) {
        return;
      }
    }
  }

  Token Next() {
    Token token;
    token.begin = position_;
    token.line = line_;
    if (AtEnd()) {
      token.end = position_;
      return token;
    }
    const char c = At();
    if (c == '\'') {
      token.kind = TokenKind::kString;
      token.text = Quoted('\'');
    } else if ((c == 'N' || c == 'n') && At(1) == '\'') {
      ++position_;
      token.kind = TokenKind::kNationalString;
      token.text = Quoted('\'');
    } else if (c == '"') {
      token.kind = quoted_ == QuotedIdentifiers::kOn ? TokenKind::kQuotedName : TokenKind::kString;
      token.text = Quoted('"');
      if (quoted_ == QuotedIdentifiers::kOn) token.text = WithoutEndBlanks(token.text);
    } else if (c == '[') {
      token.kind = TokenKind::kQuotedName;
      token.text = WithoutEndBlanks(Quoted(']'));
    } else if (IsDigit(c) || (c == '.' && IsDigit(At(1)))) {
      Number(token);
    } else if (c == '$' && (IsDigit(At(1)) || At(1) == '.')) {
      ++position_;
      Number(token);
      token.kind = TokenKind::kMoney;
    } else if (c == '@' || IsNameStart(c)) {
      token.kind = c == '@' ? TokenKind::kVariable : TokenKind::kWord;
      while (!AtEnd() && IsNamePart(At()) && !StartsWith("\xE3\x80\x80")) ++position_;
      token.text = text_.substr(token.begin, position_ - token.begin);
    } else {
      Symbol(token);
    }
    token.end = position_;
    CheckName(token);
    return token;
  }

  // The text up to `close`, which is doubled where it stands for itself.
  std::string Quoted(char close) {
    const int line = line_;
    Advance();
    const std::size_t begin = position_;
    std::string content;
    for (;;) {
      if (AtEnd()) throw MakeError(105, {text_.substr(begin)}, line);
      if (At() == close) {
        ++position_;
        if (At() != close) return content;
      }
      content += At();
      Advance();
    }
  }

  void Digits() {
    while (IsDigit(At())) ++position_;
  }

  void Number(Token& token) {
    const std::size_t begin = position_;
    if (At() == '0' && (At(1) == 'x' || At(1) == 'X')) {
      Binary(token);
      return;
    }
    token.kind = TokenKind::kInteger;
    Digits();
    if (At() == '.') {
      token.kind = TokenKind::kDecimal;
      ++position_;
      Digits();
    }
    const std::size_t sign = At(1) == '+' || At(1) == '-' ? 2 : 1;
    // "1e" without digits is a float too, as the server reads it.
    if (At() == 'e' || At() == 'E') {
      token.kind = TokenKind::kFloat;
      position_ += IsDigit(At(sign)) ? sign : 1;
      Digits();
    }
    token.text = std::string(text_.substr(begin, position_ - begin));
  }

  void Binary(Token& token) {
    token.kind = TokenKind::kBinary;
    position_ += 2;
    const std::size_t begin = position_;
    while (HexValue(At()) >= 0) ++position_;
    const std::string_view written = text_.substr(begin, position_ - begin);
    std::string digits(written.size() % 2, '0');
    digits += written;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
      token.text += static_cast<char>(HexValue(digits[i]) * 16 + HexValue(digits[i + 1]));
    }
  }

  void Symbol(Token& token) {
    constexpr std::string_view kPairs[] = {"<=", ">=", "<>", "!=", "!<", "!>", "::", "*="};
    token.kind = TokenKind::kSymbol;
    std::size_t length = 1;
    for (const std::string_view pair : kPairs) {
      if (StartsWith(pair)) length = pair.size();
    }
    if (length == 1 &&
        std::string_view("+-*/%&|^~=<>(),.;:{}$").find(At()) == std::string_view::npos) {
      throw MakeError(170, {text_.substr(position_, 1), std::to_string(line_)}, line_);
    }
    token.text = std::string(text_.substr(position_, length));
    position_ += length;
  }

  // As names are kept; of one of blanks alone the first stays.
  static std::string WithoutEndBlanks(const std::string& name) {
    return name.substr(0, std::max<std::size_t>(TrimRight(name).size(), 1));
  }

  static void CheckName(const Token& token) {
    if (token.kind != TokenKind::kWord && token.kind != TokenKind::kQuotedName) return;
    const std::size_t zero = token.text.find('\0');
    if (zero != std::string::npos) {
      throw MakeError(170, {token.text.substr(0, zero), std::to_string(token.line)}, token.line);
    }
    const std::string_view kept = CutText(token.text, kMaximumNameCharacters, TextUnit::kUtf16Unit);
    if (kept.size() < token.text.size()) throw MakeError(103, {kept}, token.line);
  }

  std::string_view text_;
  QuotedIdentifiers quoted_;
  std::size_t position_ = 0;
  int line_ = 1;
};

}  // namespace

std::vector<Token> Tokenize(std::string_view text, QuotedIdentifiers quoted) {
  return Lexer(text, quoted).Run();
}

bool IsReservedWord(std::string_view word) {
  static const std::set<std::string> words = [] {
    std::istringstream list{std::string(kReservedWords)};
    return std::set<std::string>(std::istream_iterator<std::string>(list), {});
  }();
  return words.contains(ToUpperAscii(word));
}

bool EqualsKeyword(std::string_view word, std::string_view upper) {
  return std::ranges::equal(word, upper, [](char letter, char capital) {
    return letter == capital || (IsLetter(capital) && letter == capital - 'A' + 'a');
  });
}

}  // namespace dbkeeper::server
