#include "app/session/SelectSource.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace {

struct Token {
  enum class Kind { kWord, kName, kOther, kEnd };
  Kind kind = Kind::kEnd;
  std::string text;  // a word in lower case; a bracketed or quoted name without its marks
  std::string name;  // a word as it was written
};

bool IsWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '#' || c == '@' ||
         c == '$' || static_cast<unsigned char>(c) >= 0x80;
}

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  Token Next() {
    SkipBlanks();
    if (at_ >= text_.size()) return {};
    const char c = text_[at_];
    if (c == '[') return Enclosed(']', Token::Kind::kName);
    if (c == '"') return Enclosed('"', Token::Kind::kName);
    if (c == '\'') return Enclosed('\'', Token::Kind::kOther);
    if (!IsWordCharacter(c)) {
      ++at_;
      return {Token::Kind::kOther, std::string(1, c), ""};
    }
    const std::size_t start = at_;
    while (at_ < text_.size() && IsWordCharacter(text_[at_])) ++at_;
    const std::string_view word = text_.substr(start, at_ - start);
    const bool number = std::isdigit(static_cast<unsigned char>(word[0])) != 0;
    return {number ? Token::Kind::kOther : Token::Kind::kWord, LowerCase(word), std::string(word)};
  }

 private:
  void SkipBlanks() {
    for (;;) {
      while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) != 0) ++at_;
      const std::string_view rest = text_.substr(std::min(at_, text_.size()));
      if (rest.starts_with("--")) {
        at_ = std::min(text_.find('\n', at_), text_.size());
      } else if (rest.starts_with("/*")) {
        const std::size_t end = text_.find("*/", at_ + 2);
        at_ = end == std::string_view::npos ? text_.size() : end + 2;
      } else {
        return;
      }
    }
  }

  Token Enclosed(char close, Token::Kind kind) {
    Token token{kind, "", ""};
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] == close) {
        if (at_ + 1 >= text_.size() || text_[at_ + 1] != close) break;
        ++at_;
      }
      token.text += text_[at_];
    }
    ++at_;
    token.name = token.text;
    return token;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// What may not stand in the text outside of parentheses: it makes rows of something else, or is
// another statement.
constexpr std::array<std::string_view, 36> kForeign = {
    "distinct", "into",   "join",        "inner",    "left",    "right", "full",    "cross",
    "outer",    "group",  "having",      "union",    "compute", "for",   "select",  "insert",
    "update",   "delete", "exec",        "execute",  "use",     "set",   "declare", "create",
    "alter",    "drop",   "truncate",    "if",       "while",   "begin", "go",      "print",
    "except",   "with",   "tablesample", "intersect"};

bool IsName(const Token& token) {
  return token.kind == Token::Kind::kName ||
         (token.kind == Token::Kind::kWord && token.text[0] != '@');
}

using Tokens = std::vector<Token>;

bool Is(const Token& token, std::string_view text) {
  return token.kind != Token::Kind::kName && token.text == text;
}

// The tokens outside of parentheses, which are left as "()". Absence when a foreign word is there
// or the parentheses do not close.
std::optional<Tokens> TopLevel(std::string_view sql) {
  Scanner scanner(sql);
  Tokens tokens;
  int depth = 0;
  for (Token token = scanner.Next(); token.kind != Token::Kind::kEnd; token = scanner.Next()) {
    if (Is(token, "(") && depth++ == 0) tokens.push_back({Token::Kind::kOther, "()", ""});
    const bool closes = Is(token, ")");
    if (closes && --depth < 0) return std::nullopt;
    if (depth > 0 || closes) continue;
    const bool foreign = token.kind == Token::Kind::kWord && !tokens.empty() &&
                         std::find(kForeign.begin(), kForeign.end(), token.text) != kForeign.end();
    if (foreign) return std::nullopt;
    tokens.push_back(std::move(token));
  }
  while (!tokens.empty() && Is(tokens.back(), ";")) tokens.pop_back();
  if (depth != 0 || std::any_of(tokens.begin(), tokens.end(),
                                [](const Token& token) { return Is(token, ";"); })) {
    return std::nullopt;
  }
  return tokens;
}

// name.name.name from `at` on, which moves behind it; names between two dots may be left out.
std::vector<std::string> TakeName(const Tokens& tokens, std::size_t& at) {
  std::vector<std::string> parts;
  if (at >= tokens.size() || !IsName(tokens[at])) return parts;
  parts.push_back(tokens[at++].name);
  while (at < tokens.size() && Is(tokens[at], ".")) {
    ++at;
    const bool named = at < tokens.size() && IsName(tokens[at]);
    parts.push_back(named ? tokens[at++].name : std::string());
  }
  return parts;
}

// The column that one expression of the list is: [table.]column [[as] alias].
std::optional<std::string> ColumnOfExpression(const Tokens& expression) {
  std::size_t at = 0;
  const auto parts = TakeName(expression, at);
  if (parts.empty() || parts.back().empty()) return std::nullopt;
  if (at < expression.size() && Is(expression[at], "as")) ++at;
  if (at < expression.size() && IsName(expression[at])) ++at;
  if (at != expression.size()) return std::nullopt;
  return parts.back();
}

bool IsAllColumns(const Tokens& expression) {
  return !expression.empty() && Is(expression.back(), "*") &&
         (expression.size() == 1 || Is(expression[expression.size() - 2], "."));
}

std::vector<Tokens> SplitAtCommas(const Tokens& tokens, std::size_t from, std::size_t to) {
  std::vector<Tokens> parts(1);
  for (std::size_t i = from; i < to; ++i) {
    if (Is(tokens[i], ",")) {
      parts.emplace_back();
    } else {
      parts.back().push_back(tokens[i]);
    }
  }
  return parts;
}

// Behind "select": "all", "top n", "top (n)", "percent".
std::size_t SkipListPrefix(const Tokens& tokens) {
  std::size_t at = 1;
  if (at < tokens.size() && Is(tokens[at], "all")) ++at;
  if (at < tokens.size() && Is(tokens[at], "top")) at += 2;
  if (at < tokens.size() && Is(tokens[at], "percent")) ++at;
  return at;
}

// Behind the table: an alias, hints in parentheses, then nothing but a condition and an order.
bool EndsAsOneTable(const Tokens& tokens, std::size_t at) {
  if (at < tokens.size() && Is(tokens[at], "as")) ++at;
  const auto ends = [&] {
    return at >= tokens.size() || Is(tokens[at], "where") || Is(tokens[at], "order");
  };
  if (!ends() && IsName(tokens[at])) ++at;
  if (!ends() && Is(tokens[at], "()")) ++at;
  return ends();
}

}  // namespace

std::optional<SelectSource> SingleTableOf(std::string_view sql) {
  const auto tokens = TopLevel(sql);
  if (!tokens || tokens->empty() || !Is(tokens->front(), "select")) return std::nullopt;
  const auto from = std::find_if(tokens->begin(), tokens->end(),
                                 [](const Token& token) { return Is(token, "from"); });
  if (from == tokens->end()) return std::nullopt;
  const auto list_end = static_cast<std::size_t>(from - tokens->begin());
  const std::size_t list_begin = SkipListPrefix(*tokens);
  if (list_begin >= list_end) return std::nullopt;

  SelectSource source;
  std::size_t at = list_end + 1;
  source.table = TakeName(*tokens, at);
  if (source.table.empty() || source.table.size() > 3 || source.table.back().empty()) {
    return std::nullopt;
  }
  if (!EndsAsOneTable(*tokens, at)) return std::nullopt;

  const auto expressions = SplitAtCommas(*tokens, list_begin, list_end);
  if (expressions.size() == 1 && IsAllColumns(expressions.front())) return source;
  for (const Tokens& expression : expressions) {
    // Among others the star stands for an unknown number of columns.
    if (IsAllColumns(expression)) return std::nullopt;
    source.columns.push_back(ColumnOfExpression(expression));
  }
  return source;
}

}  // namespace dbkeeper
