// The settings file: sections of keys with text values, opened, read or written and closed at each
// use.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper {

// The settings file of an executable: beside it, its name up to and including the first "." and
// "ini" behind; a name without a "." takes ".ini".
std::filesystem::path SettingsPath(const std::filesystem::path& executable);

class SettingsFile {
 public:
  // `host` outlives this.
  SettingsFile(std::filesystem::path file, const Host& host);

  // A file that begins with a byte order mark is UTF-8 and stays so; quotes around a value are no
  // part of it. Section and key names compare without case; of several sections of a name the first
  // counts. The default stands for an absent key, section or file. Throws FileError when the file
  // is there and cannot be understood.
  std::string Read(std::string_view section, std::string_view key,
                   const std::string& default_value) const;
  // The key names of a section in file order. Throws like Read.
  std::vector<std::string> Keys(std::string_view section) const;
  // Changes or adds one key; every other line stays as it is. Throws FileError, and a file that
  // cannot be read is never overwritten.
  void Write(std::string_view section, std::string_view key, std::string_view value);

 private:
  struct Content {
    std::vector<std::string> lines;
    bool utf8 = false;  // with a byte order mark; otherwise in the ANSI code page
  };
  Content Load() const;

  std::filesystem::path file_;
  const Host& host_;
};

}  // namespace dbkeeper
