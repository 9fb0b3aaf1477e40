// The machine and the operator of a test: everything asked of them is recorded, answers are set
// beforehand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/support/Host.h"

namespace dbkeeper::testing {

class FakeShell : public Shell {
 public:
  std::vector<std::string> opened;
  std::vector<std::string> commands;
  std::string computer = "PC01";
  std::string user = "tanaka";
  std::string temporary_folder = "/tmp/";
  std::optional<std::string> version;
  std::filesystem::path executable = "DBKEEPER.exe";

  void Open(const std::string& target) override { opened.push_back(target); }
  void Run(const std::string& command, const std::string& arguments, WindowState) override {
    commands.push_back(command + " " + arguments);
  }
  std::string ComputerName() override { return computer; }
  std::string UserName() override { return user; }
  std::string TemporaryFolder() override { return temporary_folder; }
  std::optional<std::string> FileVersion(const std::filesystem::path&) override { return version; }
  std::filesystem::path Executable() override { return executable; }
};

class FakeDialogs : public Dialogs {
 public:
  std::vector<std::string> messages;
  std::vector<std::string> errors;
  std::vector<std::string> error_details;
  std::vector<Question> questions;
  std::vector<FileChoice> choices;
  // Answers in the order of asking; the default answer, or a cancel, once they are used up.
  std::deque<Answer> answers;
  std::deque<std::optional<std::string>> paths;

  void ShowMessage(const std::string& text) override { messages.push_back(text); }
  void ShowError(const std::string& text, const std::string& details) override {
    errors.push_back(text);
    error_details.push_back(details);
  }
  Answer Ask(const Question& question) override {
    questions.push_back(question);
    if (answers.empty()) return question.default_answer;
    return Take(answers);
  }
  std::optional<std::string> OpenFile(const FileChoice& choice) override { return Choose(choice); }
  std::optional<std::string> SaveFile(const FileChoice& choice) override { return Choose(choice); }
  std::optional<std::string> ChooseFolder() override { return Choose({}); }

 private:
  template <class T>
  static T Take(std::deque<T>& queue) {
    T value = std::move(queue.front());
    queue.pop_front();
    return value;
  }
  std::optional<std::string> Choose(const FileChoice& choice) {
    choices.push_back(choice);
    if (paths.empty()) return std::nullopt;
    return Take(paths);
  }
};

class FakeClock : public Clock {
 public:
  DateTimeValue now{2005, 3, 8, 14, 5, 9};
  DateTimeValue Now() override { return now; }
};

class FakeRandom : public RandomSource {
 public:
  // Taken in turn, each brought below the limit.
  std::deque<std::int64_t> numbers;
  // What was asked for, 0 where the numbers were seeded anew.
  std::vector<std::int64_t> limits;
  void Seed() override { limits.push_back(0); }
  std::int64_t Below(std::int64_t limit) override {
    limits.push_back(limit);
    if (numbers.empty()) return 0;
    const std::int64_t number = numbers.front();
    numbers.pop_front();
    return number % limit;
  }
};

// ASCII and the characters of `table`: enough to tell text that a code page holds from text that it
// lacks.
class FakeCodePage : public CodePage {
 public:
  std::vector<std::pair<std::string, std::string>> table = {
      {"あ", "\x82\xa0"}, {"日", "\x93\xfa"}, {"本", "\x96\x7b"}};

  bool holds_everything = false;  // the bytes are UTF-8 then

  std::optional<std::string> FromUtf8(std::string_view text) override {
    if (holds_everything) return std::string(text);
    return Map(text, [](const auto& pair) { return std::pair(pair.first, pair.second); });
  }
  std::optional<std::string> ToUtf8(std::string_view bytes) override {
    if (holds_everything) return std::string(bytes);
    return Map(bytes, [](const auto& pair) { return std::pair(pair.second, pair.first); });
  }

 private:
  template <class Direction>
  std::optional<std::string> Map(std::string_view text, Direction direction) const {
    std::string mapped;
    while (!text.empty()) {
      if (static_cast<unsigned char>(text.front()) < 0x80) {
        mapped += text.front();
        text.remove_prefix(1);
        continue;
      }
      bool found = false;
      for (const auto& entry : table) {
        const auto [from, to] = direction(entry);
        if (!text.starts_with(from)) continue;
        mapped += to;
        text.remove_prefix(from.size());
        found = true;
        break;
      }
      if (!found) return std::nullopt;
    }
    return mapped;
  }
};

class FakeLocale : public HostLocale {
 public:
  char separator = '.';
  std::string short_date = "yyyy/mm/dd";
  char DecimalSeparator() override { return separator; }
  std::string ShortDateFormat() override { return short_date; }
};

class FakeWindows : public Windows {
 public:
  std::vector<std::string> titles;
  std::vector<std::pair<int, std::string>> system_menu;
  bool system_menu_fails = false;
  // What the operator does in the next modal window; without one the window is closed at once.
  std::deque<std::function<void(Form&)>> modal;
  int busy = 0;
  // Told at the beginning of every busy scope, when a real window paints itself.
  std::function<void()> painted;

  void Show(Form& form) override { form.Open(); }
  void ShowModal(Form& form) override {
    form.Open();
    if (!modal.empty()) {
      const auto act = std::move(modal.front());
      modal.pop_front();
      act(form);
    }
    form.Close();
  }
  void SetApplicationTitle(const std::string& title) override { titles.push_back(title); }
  bool AppendSystemMenu(const std::string& caption, int id) override {
    system_menu.emplace_back(id, caption);
    return !system_menu_fails;
  }
  void BeginBusy() override {
    ++busy;
    if (painted) painted();
  }
  void EndBusy() override { --busy; }
};

// The machine's disk, on which the bytes that still have a place can be counted.
class FakeDisk : public Disk {
 public:
  // What may still be written before the disk is full; without it there is no end.
  std::optional<std::size_t> room;
  int synced = 0;

  std::unique_ptr<OutputFile> CreateFresh(const std::filesystem::path& folder,
                                          std::filesystem::perms permissions) override;
  std::unique_ptr<OutputFile> Overwrite(const std::filesystem::path& file) override;

 private:
  class File;

  int files_ = 0;
};

class FakeProgress : public Progress {
 public:
  std::vector<std::string> works;
  std::vector<std::pair<std::int64_t, std::int64_t>> steps;
  bool running = false;
  // The operator stops the work at this step.
  std::optional<std::int64_t> stop_at;

  void Begin(const std::string& what) override {
    works.push_back(what);
    running = true;
  }
  bool GoOn(std::int64_t done, std::int64_t total) override {
    steps.emplace_back(done, total);
    return !stop_at || done < *stop_at;
  }
  void End() override { running = false; }
};

// All of them, joined.
struct FakeHost {
  FakeShell shell;
  FakeDialogs dialogs;
  FakeClock clock;
  FakeRandom random;
  FakeCodePage code_page;
  FakeLocale locale;
  FakeWindows windows;
  FakeDisk disk;
  FakeProgress progress;
  Host host{shell, dialogs, clock, random, code_page, locale, windows, disk, progress};
};

// A folder of its own for a test, removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();
  const std::filesystem::path& Path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// The whole content of a file; empty where there is none.
std::string FileBytes(const std::filesystem::path& file);
void PutFile(const std::filesystem::path& file, std::string_view bytes);

}  // namespace dbkeeper::testing
