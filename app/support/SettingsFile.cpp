#include "app/support/SettingsFile.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "app/support/AnsiTextFile.h"
#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/Messages.h"
#include "app/support/TextHelpers.h"

namespace dbkeeper {

namespace fs = std::filesystem;

namespace {

// Far above any honest settings file; what is longer is something else in its place.
constexpr std::size_t kLongestFile = 1 << 20;

std::optional<std::string> SectionOf(const std::string& line) {
  const std::string text = Trim(line);
  if (text.size() < 2 || text.front() != '[' || text.back() != ']') return std::nullopt;
  return text.substr(1, text.size() - 2);
}

struct Entry {
  std::string key;
  std::string value;
};

// A value may stand in quotes, which are no part of it.
std::string WithoutQuotes(std::string text) {
  const bool quoted = text.size() >= 2 && text.front() == text.back() &&
                      (text.front() == '"' || text.front() == '\'');
  return quoted ? text.substr(1, text.size() - 2) : text;
}

std::optional<Entry> EntryOf(const std::string& line) {
  const std::string text = Trim(line);
  const std::size_t equals = text.find('=');
  if (text.empty() || text.front() == ';' || equals == std::string::npos) return std::nullopt;
  return Entry{Trim(text.substr(0, equals)), WithoutQuotes(Trim(text.substr(equals + 1)))};
}

// An editor that writes it writes UTF-8; the file stays in it.
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

// Where a key stands, or where it is to be added.
struct Place {
  bool section_found = false;
  std::optional<std::size_t> line;
  std::size_t insert_at = 0;
};

Place FindKey(const std::vector<std::string>& lines, std::string_view section,
              std::string_view key) {
  Place place;
  bool inside = false;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (const auto name = SectionOf(lines[i])) {
      inside = !place.section_found && EqualsIgnoringCase(*name, section);
      place.section_found |= inside;
    }
    if (!inside || Trim(lines[i]).empty()) continue;
    place.insert_at = i + 1;
    const auto entry = EntryOf(lines[i]);
    if (entry && EqualsIgnoringCase(entry->key, key)) {
      place.line = i;
      return place;
    }
  }
  return place;
}

}  // namespace

fs::path SettingsPath(const fs::path& executable) {
  const std::string name = PathText(executable.filename());
  return executable.parent_path() / PathOf(name.substr(0, name.find('.')) + ".ini");
}

SettingsFile::SettingsFile(fs::path file, const Host& host) : file_(std::move(file)), host_(host) {}

SettingsFile::Content SettingsFile::Load() const {
  std::error_code problem;
  if (!fs::exists(file_, problem) && !problem) return {};
  const std::string bytes = ReadFile(file_, kLongestFile);
  const bool utf8 = bytes.starts_with(kByteOrderMark);
  const auto text =
      utf8 ? std::optional(bytes.substr(kByteOrderMark.size())) : host_.code_page.ToUtf8(bytes);
  if (!text || text->find('\0') != std::string::npos) {
    throw FileError(messages::Fill(messages::kNoSettingsText, PathText(file_)));
  }
  return {SplitLines(*text), utf8};
}

std::string SettingsFile::Read(std::string_view section, std::string_view key,
                               const std::string& default_value) const {
  const std::vector<std::string> lines = Load().lines;
  const Place place = FindKey(lines, section, key);
  return place.line ? EntryOf(lines[*place.line])->value : default_value;
}

std::vector<std::string> SettingsFile::Keys(std::string_view section) const {
  std::vector<std::string> keys;
  bool inside = false;
  const Content content = Load();
  for (const std::string& line : content.lines) {
    if (const auto name = SectionOf(line)) {
      if (inside) break;
      inside = EqualsIgnoringCase(*name, section);
    } else if (const auto entry = EntryOf(line); entry && inside) {
      keys.push_back(entry->key);
    }
  }
  return keys;
}

void SettingsFile::Write(std::string_view section, std::string_view key, std::string_view value) {
  Content content = Load();
  std::vector<std::string>& lines = content.lines;
  const Place place = FindKey(lines, section, key);
  const std::string entry = std::string(key) + "=" + std::string(value);
  if (place.line) {
    lines[*place.line] = entry;
  } else if (place.section_found) {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(place.insert_at), entry);
  } else {
    lines.push_back("[" + std::string(section) + "]");
    lines.push_back(entry);
  }
  if (content.utf8) {
    std::string text(kByteOrderMark);
    for (const std::string& line : lines) text += line + "\r\n";
    return ReplaceFile(host_.disk, file_, text);
  }
  AnsiTextFile text(host_, file_, Writing::kWhole);
  for (const std::string& line : lines) text.Line(line);
  text.Finish();
}

}  // namespace dbkeeper
