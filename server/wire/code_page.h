// Character sets of the wire. Inside, every text is UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dbkeeper::server {

// Little-endian UTF-16, as nchar, nvarchar, ntext and all names have it. A broken sequence becomes
// U+FFFD.
void AppendUtf16(std::string_view utf8, std::string& out);

// The bytes of char, varchar and text: code page 932, the one of Japanese_CI_AS.
//
// A character is encoded only when it comes back as itself; all others become '?', as the server
// does it. So U+00A5 is '?' and not a backslash. Holds two tables, made from the C library's
// converter.
class CodePage932 {
 public:
  // Throws std::runtime_error when the C library has no converter for it.
  CodePage932();

  // The one that all connections share; made at the first call.
  static const CodePage932& Shared();

  void Append(std::string_view utf8, std::string& out) const;
  std::string ToUtf8(std::string_view bytes) const;

 private:
  std::vector<std::uint16_t> to_bytes_;       // by UTF-16 unit; 0: none
  std::vector<std::uint16_t> to_characters_;  // by one byte, or lead and trail byte; 0: none
};

}  // namespace dbkeeper::server
