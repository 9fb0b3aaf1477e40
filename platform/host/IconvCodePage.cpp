#include "platform/host/IconvCodePage.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace dbkeeper::host {

namespace {

constexpr const char* kCodePage = "CP932";
constexpr const char* kUtf8 = "UTF-8";
constexpr std::array<std::string_view, 2> kChangedSilently = {"\u00A5", "\u203E"};

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

  std::optional<std::string> Convert(std::string_view text) {
    std::string source(text);
    char* in = source.data();
    std::size_t in_left = source.size();
    std::string result;
    std::array<char, 4096> buffer;
    while (in_left > 0) {
      char* out = buffer.data();
      std::size_t out_left = buffer.size();
      const std::size_t converted = iconv(handle_, &in, &in_left, &out, &out_left);
      result.append(buffer.data(), out);
      if (converted == static_cast<std::size_t>(-1) && errno != E2BIG) return std::nullopt;
    }
    return result;
  }

 private:
  iconv_t handle_;
};

}  // namespace

std::optional<std::string> IconvCodePage::FromUtf8(std::string_view text) {
  for (const std::string_view changed : kChangedSilently) {
    if (text.find(changed) != std::string_view::npos) return std::nullopt;
  }
  return Converter(kCodePage, kUtf8).Convert(text);
}

std::optional<std::string> IconvCodePage::ToUtf8(std::string_view bytes) {
  return Converter(kUtf8, kCodePage).Convert(bytes);
}

}  // namespace dbkeeper::host
