// A text file of the program: lines in the ANSI code page, ended by CR LF, written one after the
// other.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "app/support/Disk.h"
#include "app/support/Host.h"

namespace dbkeeper {

enum class Writing {
  kWhole,     // the old file is the new one only once that is whole
  kAsItGoes,  // the file itself is written; what an error or a stop leaves of it stays
};

class AnsiTextFile {
 public:
  // Throws FileError when the file cannot be written.
  AnsiTextFile(const Host& host, std::filesystem::path file, Writing writing);
  AnsiTextFile(const AnsiTextFile&) = delete;
  AnsiTextFile& operator=(const AnsiTextFile&) = delete;
  // Without a Finish the old file stays, or else the lines so far are in the file.
  ~AnsiTextFile();

  // Appends to the present line. Throws FileError, which names the first character that the code
  // page lacks, and then appends nothing.
  void Add(std::string_view text);
  // Appends a line that is in the code page already. Throws FileError.
  void AnsiLine(std::string_view bytes);
  // Ends the present line. Throws FileError.
  void EndLine();
  void Line(std::string_view text) {
    Add(text);
    EndLine();
  }
  // Nothing comes any more. Throws FileError.
  void Finish();

 private:
  class Target;
  class Replaced;
  class Overwritten;

  void WriteBytes();

  CodePage& code_page_;
  std::unique_ptr<Target> target_;
  std::string bytes_;  // not yet written
};

}  // namespace dbkeeper
