// The ports to the outside: what the program needs of the machine it runs on. main.cpp joins them
// to the real platform; tests use fakes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/support/DateTimeValue.h"
#include "app/support/Disk.h"
#include "app/support/Progress.h"
#include "controls/Form.h"

namespace dbkeeper {

enum class WindowState { kNormal, kHidden };

// The desktop and the machine. Starting something never waits for it and reports nothing.
class Shell {
 public:
  virtual ~Shell() = default;
  // Opens a file by its whole path, or an address, with the desktop's program for it; a bare name
  // is that of a program to start.
  virtual void Open(const std::string& target) = 0;
  // Runs a command of the operating system.
  virtual void Run(const std::string& command, const std::string& arguments,
                   WindowState window) = 0;
  // Empty when the machine does not tell.
  virtual std::string ComputerName() = 0;
  virtual std::string UserName() = 0;
  // With one separator at its end.
  virtual std::string TemporaryFolder() = 0;
  // Absence when the file carries no version.
  virtual std::optional<std::string> FileVersion(const std::filesystem::path& file) = 0;
  // The program's own file.
  virtual std::filesystem::path Executable() = 0;
};

enum class Buttons { kOk, kOkCancel, kYesNo };
enum class Icon { kNone, kStop };
enum class Answer { kOk, kCancel, kYes, kNo };

struct Question {
  std::string text;
  std::string caption;
  Buttons buttons = Buttons::kOkCancel;
  Icon icon = Icon::kStop;
  Answer default_answer = Answer::kCancel;
};

// Which file a chooser offers first, and what it lists. The filter has the form
// "caption|pattern|caption|pattern".
struct FileChoice {
  std::string filter = {};
  std::string initial_name = {};
  std::string default_extension = {};
  std::string folder = {};  // shown first; empty: the chooser's own
};

// Modal boxes. A chooser gives nothing when the operator cancels.
class Dialogs {
 public:
  virtual ~Dialogs() = default;
  virtual void ShowMessage(const std::string& text) = 0;
  // The standard box of an unhandled error; the details, which may be empty, stand below the text.
  virtual void ShowError(const std::string& text, const std::string& details) = 0;
  virtual Answer Ask(const Question& question) = 0;
  virtual std::optional<std::string> OpenFile(const FileChoice& choice) = 0;
  virtual std::optional<std::string> SaveFile(const FileChoice& choice) = 0;
  virtual std::optional<std::string> ChooseFolder() = 0;
};

class Clock {
 public:
  virtual ~Clock() = default;
  // The local time.
  virtual DateTimeValue Now() = 0;
};

class RandomSource {
 public:
  virtual ~RandomSource() = default;
  // Begins another row of numbers, by the clock.
  virtual void Seed() = 0;
  // A number from 0 to below `limit`, which is at least 1.
  virtual std::int64_t Below(std::int64_t limit) = 0;
};

// UTF-8 inside, the ANSI code page in text files.
class CodePage {
 public:
  virtual ~CodePage() = default;
  // Absence when a character has no place in the code page.
  virtual std::optional<std::string> FromUtf8(std::string_view text) = 0;
  // Absence when the bytes are no text of the code page.
  virtual std::optional<std::string> ToUtf8(std::string_view bytes) = 0;
};

class HostLocale {
 public:
  virtual ~HostLocale() = default;
  virtual char DecimalSeparator() = 0;
  // A pattern of y, m, d and separators, such as "yyyy/mm/dd".
  virtual std::string ShortDateFormat() = 0;
};

// Shows forms. A busy scope shows the waiting cursor and paints what has changed so far.
class Windows {
 public:
  virtual ~Windows() = default;
  virtual void Show(Form& form) = 0;
  // Returns when the form has been closed.
  virtual void ShowModal(Form& form) = 0;
  virtual void SetApplicationTitle(const std::string& title) = 0;
  // Adds an item to the main window's system menu, a separator where the caption is empty; false
  // when that fails. The choice of an item reaches the main form by its id.
  virtual bool AppendSystemMenu(const std::string& caption, int id) = 0;
  virtual void BeginBusy() = 0;
  virtual void EndBusy() = 0;
};

// Everything outside, as one.
struct Host {
  Shell& shell;
  Dialogs& dialogs;
  Clock& clock;
  RandomSource& random;
  CodePage& code_page;
  HostLocale& locale;
  Windows& windows;
  Disk& disk;
  Progress& progress;
};

// The waiting cursor for a scope.
class BusyScope {
 public:
  explicit BusyScope(Windows& windows) : windows_(windows) { windows_.BeginBusy(); }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;
  ~BusyScope() { windows_.EndBusy(); }

 private:
  Windows& windows_;
};

}  // namespace dbkeeper
