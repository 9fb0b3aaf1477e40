// Named SQL texts, each a text file of its own, kept per database.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper {

class TemplateStore {
 public:
  // `host` outlives this.
  TemplateStore(const std::filesystem::path& program_folder, const Host& host);

  // Whether a file can be named so: no part of a path, no character that file systems keep for
  // themselves, not too long. The others must be called with such names only.
  static bool CanName(const std::string& database, const std::string& name);

  bool Exists(const std::string& database, const std::string& name) const;
  // Lines ended by CR LF, in the ANSI code page. Throws FileError, also for a character that it
  // lacks.
  void Save(const std::string& database, const std::string& name, const std::string& text) const;
  // Throws FileError.
  std::vector<std::string> Load(const std::string& database, const std::string& name) const;
  // In the order that the file system gives. The templates of a database A_B are among those of A:
  // that is the nature of the file names.
  std::vector<std::string> Names(const std::string& database) const;

 private:
  std::filesystem::path PathOfTemplate(const std::string& database, const std::string& name) const;

  std::filesystem::path folder_;
  const Host& host_;
};

}  // namespace dbkeeper
