#include "platform/host/IconvCodePage.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>

namespace dbkeeper::host {

namespace {

constexpr const char* kCodePage = "CP932";
constexpr const char* kUtf8 = "UTF-8";
constexpr std::array<std::string_view, 2> kChangedSilently = {"\u00A5", "\u203E"};

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the error value that the C library defines.
    if (handle_ == reinterpret_cast<iconv_t>(-1)) {
      throw std::runtime_error("The C library has no converter for code page 932");
    }
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() { iconv_close(handle_); }

  // Appends the converted text; false when it cannot be converted.
  bool Convert(std::string_view text, std::string& result) {
    char* in = const_cast<char*>(text.data());  // the library's interface; it is only read
    std::size_t in_left = text.size();
    std::array<char, 4096> buffer;
    while (in_left > 0) {
      char* out = buffer.data();
      std::size_t out_left = buffer.size();
      const std::size_t converted = iconv(handle_, &in, &in_left, &out, &out_left);
      result.append(buffer.data(), out);
      if (converted == static_cast<std::size_t>(-1) && errno != E2BIG) return false;
    }
    return true;
  }

 private:
  iconv_t handle_;
};

}  // namespace

std::optional<std::string> IconvCodePage::FromUtf8(std::string_view text) {
  for (const std::string_view changed : kChangedSilently) {
    if (text.find(changed) != std::string_view::npos) return std::nullopt;
  }
  Converter converter(kCodePage, kUtf8);
  std::string result;
  result.reserve(text.size());
  // ASCII is the same in both, and copying it is several times faster.
  while (!text.empty()) {
    const auto ascii_end = std::find_if_not(text.begin(), text.end(), &IsAscii);
    const auto run_end = std::find_if(ascii_end, text.end(), &IsAscii);
    result.append(text.begin(), ascii_end);
    if (!converter.Convert({ascii_end, run_end}, result)) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(run_end - text.begin()));
  }
  return result;
}

std::optional<std::string> IconvCodePage::ToUtf8(std::string_view bytes) {
  std::string result;
  if (!Converter(kUtf8, kCodePage).Convert(bytes, result)) return std::nullopt;
  return result;
}

}  // namespace dbkeeper::host
