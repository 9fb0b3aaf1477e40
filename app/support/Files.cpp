#include "app/support/Files.h"

#include <cstdio>
#include <fstream>
#include <system_error>

#include "app/support/Errors.h"
#include "app/support/FileReplacement.h"
#include "app/support/Messages.h"
#include "app/support/Utf8.h"

namespace dbkeeper {

namespace fs = std::filesystem;

namespace {

FileError Failure(std::string_view message, const fs::path& file) {
  return FileError(messages::Fill(message, PathText(file)));
}

// Characters one by one: the whole as one piece would not say which character has no place.
template <class Missing>
std::string EncodeEach(CodePage& code_page, std::string_view text, Missing missing) {
  if (auto whole = code_page.FromUtf8(text)) return *std::move(whole);
  std::string bytes;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view character = text.substr(at, Utf8Length(text, at));
    const auto encoded = code_page.FromUtf8(character);
    bytes += encoded ? *encoded : missing(character);
    at += character.size();
  }
  return bytes;
}

}  // namespace

std::string ReadFile(const fs::path& file, std::size_t limit) {
  std::error_code problem;
  if (!fs::is_regular_file(file, problem)) throw Failure(messages::kCannotRead, file);
  const std::uintmax_t size = fs::file_size(file, problem);
  if (problem) throw Failure(messages::kCannotRead, file);
  if (size > limit) throw Failure(messages::kTooLong, file);
  std::ifstream stream(file, std::ios::binary);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (!stream.read(bytes.data(), static_cast<std::streamsize>(size))) {
    throw Failure(messages::kCannotRead, file);
  }
  return bytes;
}

void ReplaceFile(Disk& disk, const fs::path& file, std::string_view bytes) {
  FileReplacement replacement(disk, file);
  replacement.Write(bytes);
  replacement.Commit();
}

std::string ToAnsi(CodePage& code_page, std::string_view text) {
  return EncodeEach(code_page, text, [](std::string_view character) -> std::string {
    throw FileError(messages::Fill(messages::kNotInCodePage, character));
  });
}

std::string ToAnsiWithNumbers(CodePage& code_page, std::string_view text) {
  return EncodeEach(code_page, text, [](std::string_view character) {
    char number[16];
    std::snprintf(number, sizeof number, "<U+%04X>", static_cast<unsigned>(Utf8Decode(character)));
    return std::string(number);
  });
}

std::vector<std::string> SplitLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (end != std::string_view::npos && line.ends_with('\r')) line.remove_suffix(1);
    lines.emplace_back(line);
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::string PathText(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

fs::path PathOf(std::string_view text) { return {std::u8string(text.begin(), text.end())}; }

}  // namespace dbkeeper
