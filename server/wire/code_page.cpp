#include "server/wire/code_page.h"

#include <iconv.h>

#include <stdexcept>

#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kUnits = 0x10000;

// Takes the next character off `text`.
char32_t NextCharacter(std::string_view& text) {
  const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 1) {
    text.remove_prefix(1);
    return lead;
  }
  char32_t character = length == 0 ? 0 : lead & (0xFFu >> (length + 1));
  std::size_t used = 1;
  while (used < length && used < text.size() && (byte(used) & 0xC0) == 0x80) {
    character = character << 6 | (byte(used) & 0x3Fu);
    ++used;
  }
  text.remove_prefix(used);
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool whole = length != 0 && used == length && character >= kLeast[length] &&
                     character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
  return whole ? character : kReplacement;
}

void AppendUnit(char32_t unit, std::string& out) {
  const char bytes[] = {static_cast<char>(unit), static_cast<char>(unit >> 8)};
  out.append(bytes, 2);
}

bool IsLead(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

// One character of one or two bytes as one UTF-16 unit; 0 when there is none.
std::uint16_t Decode(iconv_t converter, std::uint16_t code) {
  char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
  char* in = code < 0x100 ? bytes + 1 : bytes;
  std::size_t in_left = code < 0x100 ? 1 : 2;
  unsigned char unit[4] = {};
  char* out = reinterpret_cast<char*>(unit);
  std::size_t out_left = 2;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  const bool done =
      iconv(converter, &in, &in_left, &out, &out_left) != static_cast<std::size_t>(-1);
  return done && in_left == 0 ? static_cast<std::uint16_t>(unit[0] | unit[1] << 8) : 0;
}

// The code of one UTF-16 unit; 0 when there is none.
std::uint16_t Encode(iconv_t converter, std::uint16_t unit) {
  char bytes[] = {static_cast<char>(unit), static_cast<char>(unit >> 8)};
  char* in = bytes;
  std::size_t in_left = 2;
  unsigned char code[4] = {};
  char* out = reinterpret_cast<char*>(code);
  std::size_t out_left = 2;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  if (iconv(converter, &in, &in_left, &out, &out_left) == static_cast<std::size_t>(-1)) return 0;
  return static_cast<std::uint16_t>(out_left == 1 ? code[0] : code[0] << 8 | code[1]);
}

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (handle_ == iconv_t(-1)) throw std::runtime_error("no converter for code page 932");
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  iconv_t handle() const { return handle_; }

 private:
  iconv_t handle_;
};

}  // namespace

void AppendUtf16(std::string_view utf8, std::string& out) {
  while (!utf8.empty()) {
    const char32_t character = NextCharacter(utf8);
    if (character < 0x10000) {
      AppendUnit(character, out);
    } else {
      AppendUnit(0xD800 + ((character - 0x10000) >> 10), out);
      AppendUnit(0xDC00 + ((character - 0x10000) & 0x3FF), out);
    }
  }
}

std::string Utf16ToUtf8(std::string_view utf16) {
  const auto unit = [utf16](std::size_t i) -> char32_t {
    return static_cast<unsigned char>(utf16[i]) | char32_t{static_cast<unsigned char>(utf16[i + 1])}
                                                      << 8;
  };
  std::string out;
  out.reserve(utf16.size() / 2);
  for (std::size_t i = 0; i + 1 < utf16.size(); i += 2) {
    char32_t character = unit(i);
    const bool pair = character >= 0xD800 && character < 0xDC00 && i + 3 < utf16.size() &&
                      unit(i + 2) >= 0xDC00 && unit(i + 2) < 0xE000;
    if (pair) {
      character = 0x10000 + ((character - 0xD800) << 10) + (unit(i + 2) - 0xDC00);
      i += 2;
    } else if (character >= 0xD800 && character < 0xE000) {
      character = kReplacement;
    }
    AppendUtf8(character, out);
  }
  return out;
}

CodePage932::CodePage932() : to_bytes_(kUnits), to_characters_(kUnits) {
  const Converter decoder("UTF-16LE", "CP932");
  const Converter encoder("CP932", "UTF-16LE");
  for (std::size_t code = 1; code < kUnits; ++code) {
    const auto lead = static_cast<unsigned char>(code >> 8);
    if (lead == 0 ? IsLead(static_cast<unsigned char>(code)) : !IsLead(lead)) continue;
    to_characters_[code] = Decode(decoder.handle(), static_cast<std::uint16_t>(code));
  }
  for (std::size_t unit = 1; unit < kUnits; ++unit) {
    const std::uint16_t code = Encode(encoder.handle(), static_cast<std::uint16_t>(unit));
    if (to_characters_[code] == unit) to_bytes_[unit] = code;
  }
}

void CodePage932::Append(std::string_view utf8, std::string& out) const {
  while (!utf8.empty()) {
    const char32_t character = NextCharacter(utf8);
    if (character < 0x80) {
      out.push_back(static_cast<char>(character));
      continue;
    }
    const std::uint16_t code = character < kUnits ? to_bytes_[character] : 0;
    if (code == 0) {
      // Two for what is two characters to the server.
      out.append(character < kUnits ? 1 : 2, '?');
    } else {
      if (code >= 0x100) out.push_back(static_cast<char>(code >> 8));
      out.push_back(static_cast<char>(code));
    }
  }
}

std::string CodePage932::ToUtf8(std::string_view bytes) const {
  std::string out;
  out.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte < 0x80) {
      out.push_back(static_cast<char>(byte));
      continue;
    }
    std::uint16_t code = byte;
    if (IsLead(byte) && i + 1 < bytes.size()) {
      code = static_cast<std::uint16_t>(byte << 8 | static_cast<unsigned char>(bytes[++i]));
    }
    const char32_t character = to_characters_[code];
    AppendUtf8(character == 0 ? kReplacement : character, out);
  }
  return out;
}

}  // namespace dbkeeper::server
