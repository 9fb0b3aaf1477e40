#include "query/TemplateStore.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "app/support/AnsiTextFile.h"
#include "app/support/Files.h"
#include "app/support/TextLines.h"

namespace dbkeeper {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kEnd = ".txt";
// What a file name may have in bytes.
constexpr std::size_t kLongestFileName = 255;

std::string Prefix(const std::string& database) { return "TMP_" + database + "_"; }

std::string FileName(const std::string& database, const std::string& name) {
  return Prefix(database) + name + std::string(kEnd);
}

}  // namespace

TemplateStore::TemplateStore(const fs::path& program_folder, const Host& host)
    : folder_(program_folder / "template"), host_(host) {}

bool TemplateStore::CanName(const std::string& database, const std::string& name) {
  const std::string file = FileName(database, name);
  const bool plain = std::all_of(file.begin(), file.end(), [](char c) {
    constexpr std::string_view kReserved = "/\\:*?\"<>|\x7F";
    return static_cast<unsigned char>(c) >= ' ' && kReserved.find(c) == std::string_view::npos;
  });
  return plain && name.find("..") == std::string::npos && file.size() <= kLongestFileName;
}

fs::path TemplateStore::PathOfTemplate(const std::string& database, const std::string& name) const {
  return folder_ / PathOf(FileName(database, name));
}

bool TemplateStore::Exists(const std::string& database, const std::string& name) const {
  std::error_code problem;
  return fs::exists(PathOfTemplate(database, name), problem);
}

void TemplateStore::Save(const std::string& database, const std::string& name,
                         const std::string& text) const {
  AnsiTextFile file(host_, PathOfTemplate(database, name), Writing::kWhole);
  if (!text.empty()) file.Line(text);
  file.Finish();
}

std::vector<std::string> TemplateStore::Load(const std::string& database,
                                             const std::string& name) const {
  return ReadTextLines(PathOfTemplate(database, name), host_.code_page);
}

std::vector<std::string> TemplateStore::Names(const std::string& database) const {
  const std::string prefix = Prefix(database);
  std::vector<std::string> names;
  std::error_code problem;
  for (fs::directory_iterator entry(folder_, problem), end; !problem && entry != end;
       entry.increment(problem)) {
    const std::string file = PathText(entry->path().filename());
    if (file.size() < prefix.size() + kEnd.size()) continue;
    if (!file.starts_with(prefix) || !file.ends_with(kEnd)) continue;
    names.push_back(file.substr(prefix.size(), file.size() - prefix.size() - kEnd.size()));
  }
  return names;
}

}  // namespace dbkeeper
