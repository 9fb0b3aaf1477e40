#include "app/support/TextLines.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/Messages.h"
#include "app/support/Utf16.h"
#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kLongestText = std::size_t{32} << 20;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";

// `low` is the place of the lower byte in each pair. Absence for half a character.
std::optional<std::string> FromUtf16(std::string_view bytes, std::size_t low) {
  if (bytes.size() % 2 != 0) return std::nullopt;
  const auto byte = [bytes](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t at = 0; at < bytes.size(); at += 2) {
    units += static_cast<char16_t>(byte(at + low) | byte(at + 1 - low) << 8);
  }
  if (HasHalfCharacter(units)) return std::nullopt;
  return Utf16ToUtf8(units);
}

// The longest character of a UTF-8 text in bytes, or 0 when it is none.
std::size_t LongestUtf8Character(std::string_view text) {
  std::size_t longest = 1;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = Utf8Length(text, at);
    if (length == 1 && static_cast<unsigned char>(text[at]) >= 0x80) return 0;
    longest = std::max(longest, length);
    at += length;
  }
  return longest;
}

// Without a mark the bytes decide. Japanese in UTF-8 has characters of three bytes, which the code
// page gives by accident hardly ever; of two bytes it gives them easily, from half-width kana.
std::optional<std::string> FromUnmarked(std::string_view bytes, CodePage& code_page) {
  const std::size_t longest = LongestUtf8Character(bytes);
  if (longest == 1 || longest >= 3) return std::string(bytes);
  if (auto text = code_page.ToUtf8(bytes)) return text;
  if (longest == 2) return std::string(bytes);
  return std::nullopt;
}

std::optional<std::string> Decode(std::string_view bytes, CodePage& code_page) {
  if (bytes.starts_with(kUtf8Mark)) {
    bytes.remove_prefix(kUtf8Mark.size());
    if (LongestUtf8Character(bytes) == 0) return std::nullopt;
    return std::string(bytes);
  }
  if (bytes.starts_with(kUtf16LittleMark)) return FromUtf16(bytes.substr(2), 0);
  if (bytes.starts_with(kUtf16BigMark)) return FromUtf16(bytes.substr(2), 1);
  return FromUnmarked(bytes, code_page);
}

}  // namespace

std::vector<std::string> ReadTextLines(const std::filesystem::path& file, CodePage& code_page) {
  const auto text = Decode(ReadFile(file, kLongestText), code_page);
  // A zero in it: some other kind of file, or UTF-16 without a mark.
  if (!text || text->find('\0') != std::string::npos) {
    throw FileError(messages::Fill(messages::kNotText, PathText(file)));
  }
  return SplitLines(*text);
}

}  // namespace dbkeeper
