#include "server/wire/code_page.h"

#include <iconv.h>

#include <bit>
#include <stdexcept>
#include <utility>

#include "server/types/text.h"

namespace dbkeeper::server {
namespace {

constexpr std::size_t kUnits = 0x10000;

// Takes the ASCII characters off that come: most of them do so in rows.
std::string_view TakeAscii(std::string_view text, std::size_t& position) {
  const std::size_t begin = position;
  while (position < text.size() && static_cast<unsigned char>(text[position]) < 0x80) ++position;
  return text.substr(begin, position - begin);
}

// The character at `position`; what the first byte of a broken one promised is replaced together.
char32_t NextWhole(std::string_view text, std::size_t& position) {
  const char32_t character = NextCharacter(text, position);
  if (character < 0xD800 || (character > 0xDFFF && character < kBroken)) return character;
  const auto lead = static_cast<unsigned char>(character - kBroken);
  int promised = character > kBroken + 0xC1 && lead < 0xF5 ? std::countl_one(lead) - 1 : 0;
  for (; promised > 0 && position < text.size() && (text[position] & 0xC0) == 0x80; --promised) {
    ++position;
  }
  return kReplacement;
}

bool IsLead(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

char ByteOf(std::size_t number) { return static_cast<char>(number & 0xFF); }

std::uint16_t UnitOf(char low, char high) {
  return static_cast<std::uint16_t>(static_cast<unsigned char>(low) |
                                    static_cast<unsigned char>(high) << 8);
}

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    if (handle_ == iconv_t(-1)) throw std::runtime_error("no converter for code page 932");
  }
  ~Converter() { iconv_close(handle_); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // One character in at most two bytes; empty when there is none.
  std::string Convert(std::string bytes) const {
    std::string converted(2, '\0');
    char* in = bytes.data();
    char* out = converted.data();
    std::size_t in_left = bytes.size();
    std::size_t out_left = converted.size();
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    const bool done = iconv(handle_, &in, &in_left, &out, &out_left) != std::size_t(-1);
    converted.resize(done ? converted.size() - out_left : 0);
    return converted;
  }

 private:
  iconv_t handle_;
};

}  // namespace

void AppendUtf16(std::string_view utf8, std::string& out) {
  for (std::size_t i = 0; i < utf8.size();) {
    const std::string_view ascii = TakeAscii(utf8, i);
    std::size_t end = out.size();
    out.resize(end + 2 * ascii.size());
    for (const char c : ascii) out[std::exchange(end, end + 2)] = c;
    if (i < utf8.size()) AppendUtf16(NextWhole(utf8, i), out);
  }
}

CodePage932::CodePage932() : to_bytes_(kUnits), to_characters_(kUnits) {
  const Converter decoder("UTF-16LE", "CP932");
  const Converter encoder("CP932", "UTF-16LE");
  for (std::size_t code = 1; code < kUnits; ++code) {
    const auto lead = static_cast<unsigned char>(code >> 8);
    if (lead == 0 ? IsLead(static_cast<unsigned char>(code)) : !IsLead(lead)) continue;
    const std::string unit = decoder.Convert(lead == 0 ? std::string{ByteOf(code)}
                                                       : std::string{ByteOf(lead), ByteOf(code)});
    if (unit.size() == 2) to_characters_[code] = UnitOf(unit[0], unit[1]);
  }
  for (std::size_t unit = 1; unit < kUnits; ++unit) {
    const std::string bytes = encoder.Convert({ByteOf(unit), ByteOf(unit >> 8)});
    if (bytes.empty()) continue;
    const std::uint16_t code = UnitOf(bytes.back(), bytes.size() == 1 ? '\0' : bytes.front());
    if (to_characters_[code] == unit) to_bytes_[unit] = code;
  }
}

const CodePage932& CodePage932::Shared() {
  static const CodePage932 code_page;
  return code_page;
}

void CodePage932::Append(std::string_view utf8, std::string& out) const {
  for (std::size_t i = 0; i < utf8.size();) {
    out.append(TakeAscii(utf8, i));
    if (i == utf8.size()) return;
    const char32_t character = NextWhole(utf8, i);
    const std::uint16_t code = character < kUnits ? to_bytes_[character] : 0;
    if (code == 0) {
      // Two for what is two characters to the server.
      out.append(character < kUnits ? 1 : 2, '?');
    } else {
      if (code >= 0x100) out.push_back(ByteOf(code >> 8));
      out.push_back(ByteOf(code));
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
