#include "server/types/collation.h"

#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

constexpr char32_t kIdeographicSpace = 0x3000;
constexpr char32_t kVoiced = 0x309B;
constexpr char32_t kHalfVoiced = 0x309C;

struct Capitals {
  char32_t first;
  char32_t last;
  char32_t distance;  // from a capital to its small letter
};
constexpr Capitals kCapitals[] = {
    {'A', 'Z', 32},     {0xC0, 0xD6, 32},       {0xD8, 0xDE, 32},
    {0x391, 0x3A1, 32}, {0x3A3, 0x3A9, 32},     {0x401, 0x40F, 80},
    {0x410, 0x42F, 32}, {0x2160, 0x216F, 0x10}, {0xFF21, 0xFF3A, 32},
};

// What U+FF61 to U+FF9F, the half-width forms, are in full width.
constexpr std::u32string_view kHalfWidth =
    U"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホ"
    U"マミムメモ"
    U"ヤユヨラリルレロワン゛゜";

// What U+FFE0 to U+FFE6, and U+FFE8 to U+FFEE, are in the other width.
constexpr std::u32string_view kSigns = U"\u00A2\u00A3\u00AC\u00AF\u00A6\u00A5\u20A9";
constexpr std::u32string_view kHalfSigns = U"\u2502\u2190\u2191\u2192\u2193\u25A0\u25CB";

char32_t From(std::u32string_view forms, char32_t c, char32_t first) {
  return c >= first && c < first + forms.size() ? forms[c - first] : c;
}

// Without case, width and type of kana.
char32_t Fold(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
  const bool hiragana = (c >= 0x3041 && c <= 0x3096) || c == 0x309D || c == 0x309E;
  if (hiragana) return c + 0x60;
  if (c < kIdeographicSpace) return Lowered(c);
  if (c == kIdeographicSpace) return ' ';
  if (c >= 0xFF01 && c <= 0xFF5E) return Fold(c - 0xFEE0);
  if (c >= 0xFF00 && c < 0x10000) {
    return From(kHalfWidth, From(kSigns, From(kHalfSigns, c, 0xFFE8), 0xFFE0), 0xFF61);
  }
  return c;
}

// The katakana with a mark; 0 when there is none.
char32_t Voiced(char32_t kana) {
  constexpr std::u32string_view kPlain = U"カキクケコサシスセソタチツテトハヒフヘホ";
  if (kPlain.find(kana) != std::u32string_view::npos) return kana + 1;
  constexpr std::u32string_view kApart = U"ウワヰヱヲヽ";
  constexpr std::u32string_view kApartVoiced = U"ヴヷヸヹヺヾ";
  const std::size_t place = kApart.find(kana);
  return place == std::u32string_view::npos ? 0 : kApartVoiced[place];
}

char32_t HalfVoiced(char32_t kana) {
  constexpr std::u32string_view kPlain = U"ハヒフヘホ";
  return kPlain.find(kana) != std::u32string_view::npos ? kana + 2 : 0;
}

// The mark that a kana before it takes: half-width, or one that combines; 0 for what is none.
char32_t MarkOf(char32_t c) {
  if (c == 0xFF9E || c == 0x3099) return kVoiced;
  return c == 0xFF9F || c == 0x309A ? kHalfVoiced : 0;
}

// Without the blanks at its end, which do not count.
std::string_view TrimBlanks(std::string_view text) {
  constexpr std::string_view kWideBlank = "\u3000";
  for (;;) {
    text = TrimRight(text);
    if (!text.ends_with(kWideBlank)) return text;
    text.remove_suffix(kWideBlank.size());
  }
}

// A pattern character by character: as it is written, for what it may mean, and as it compares.
struct PatternSteps {
  explicit PatternSteps(std::string_view pattern) {
    for (std::size_t position = 0; position < pattern.size();) {
      std::size_t plain = position;
      written.push_back(NextCharacter(pattern, plain));
      folded.push_back(NextFolded(pattern, position));
    }
  }
  std::size_t size() const { return written.size(); }

  std::u32string written;
  std::u32string folded;
};

// The class that begins behind "[" at `position`; moves behind its "]". A class that is not closed
// matches nothing.
bool MatchesClass(char32_t c, const PatternSteps& pattern, std::size_t& position) {
  const std::u32string& written = pattern.written;
  const bool negated = position < written.size() && written[position] == '^';
  if (negated) ++position;
  bool found = false;
  const std::size_t first = position;
  while (position < written.size() && (position == first || written[position] != ']')) {
    const char32_t low = pattern.folded[position++];
    char32_t high = low;
    if (position + 1 < written.size() && written[position] == '-' && written[position + 1] != ']') {
      high = pattern.folded[position + 1];
      position += 2;
    }
    found = found || (c >= low && c <= high);
  }
  return position++ < written.size() && found != negated;
}

// One step of the pattern at `p` against `c`; moves `p` behind it.
bool MatchesOne(char32_t c, const PatternSteps& pattern, std::size_t& p, char32_t escape) {
  const char32_t written = pattern.written[p++];
  if (escape != 0 && written == escape && p < pattern.size()) return pattern.folded[p++] == c;
  if (written == '_') return true;
  if (written == '[') return MatchesClass(c, pattern, p);
  return pattern.folded[p - 1] == c;
}

// Where the piece behind the first "%" begins in `text`, 0 without one; npos: no match. Of all
// places the first is given, for what follows a later "%" has the most room behind it.
std::size_t Match(std::u32string_view text, const PatternSteps& pattern, char32_t escape) {
  constexpr std::size_t kNone = std::u32string_view::npos;
  std::size_t t = 0;
  std::size_t p = 0;
  std::size_t star = kNone;  // behind the last "%", and where in the text it was tried
  std::size_t star_text = 0;
  std::size_t stars = 0;
  std::size_t begin = 0;
  for (;;) {
    if (p < pattern.size() && pattern.written[p] == '%' && escape != '%') {
      if (++stars == 2) begin = star_text;
      star = ++p;
      star_text = t;
      if (p < pattern.size()) continue;
      t = text.size();
    }
    if (t == text.size() && p == pattern.size()) return stars == 1 ? star_text : begin;
    if (t < text.size() && p < pattern.size()) {
      std::size_t next = p;
      if (MatchesOne(text[t], pattern, next, escape)) {
        p = next;
        ++t;
        continue;
      }
    }
    if (star == kNone || star_text >= text.size()) return kNone;
    t = ++star_text;
    p = star;
  }
}

// As Match, with or without the blanks at the end of the text.
std::size_t MatchLoosely(std::u32string_view text, const PatternSteps& pattern, char32_t escape,
                         EndBlanks blanks) {
  const std::size_t found = Match(text, pattern, escape);
  const bool ends = text.ends_with(U' ') && blanks == EndBlanks::kIgnored;
  if (found != std::u32string_view::npos || !ends) return found;
  return Match(text.substr(0, text.find_last_not_of(U' ') + 1), pattern, escape);
}

}  // namespace

char32_t Lowered(char32_t c) {
  for (const Capitals& span : kCapitals) {
    if (c >= span.first && c <= span.last) return c + span.distance;
  }
  return c;
}

char32_t Raised(char32_t c) {
  for (const Capitals& span : kCapitals) {
    if (c >= span.first + span.distance && c <= span.last + span.distance) return c - span.distance;
  }
  return c;
}

char32_t NextFolded(std::string_view text, std::size_t& position) {
  const char32_t c = Fold(NextCharacter(text, position));
  if (c < 0x80 || position >= text.size() || static_cast<unsigned char>(text[position]) < 0xE3) {
    return c;
  }
  std::size_t behind = position;
  const char32_t mark = MarkOf(NextCharacter(text, behind));
  const char32_t marked = mark == 0 ? 0 : mark == kVoiced ? Voiced(c) : HalfVoiced(c);
  if (marked == 0) return c;
  position = behind;
  return marked;
}

FoldedText::FoldedText(std::string_view text) {
  std::size_t position = 0;
  while (position < text.size()) {
    places.push_back(position);
    characters.push_back(NextFolded(text, position));
  }
  places.push_back(position);
}

int CompareText(std::string_view left, std::string_view right) {
  left = TrimBlanks(left);
  right = TrimBlanks(right);
  std::size_t l = 0;
  std::size_t r = 0;
  while (l < left.size() && r < right.size()) {
    // Most characters are the same byte on both sides.
    if (left[l] == right[r] && static_cast<unsigned char>(left[l]) < 0x80) {
      ++l;
      ++r;
      continue;
    }
    const char32_t left_character = NextFolded(left, l);
    const char32_t right_character = NextFolded(right, r);
    if (left_character != right_character) return left_character < right_character ? -1 : 1;
  }
  return static_cast<int>(l < left.size()) - static_cast<int>(r < right.size());
}

bool SameName(std::string_view left, std::string_view right) {
  return CompareText(left, right) == 0;
}

bool MatchesPattern(std::string_view text, std::string_view pattern, char32_t escape,
                    EndBlanks blanks) {
  return MatchLoosely(FoldedText(text).characters, PatternSteps(pattern), escape, blanks) !=
         std::u32string_view::npos;
}

std::size_t FindPattern(std::string_view text, std::string_view pattern) {
  const FoldedText folded(text);
  const std::size_t found =
      MatchLoosely(folded.characters, PatternSteps(pattern), 0, EndBlanks::kIgnored);
  return found == std::u32string_view::npos ? found : folded.places[found];
}

}  // namespace dbkeeper::server
