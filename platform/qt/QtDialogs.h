// Message boxes and choosers.
#pragma once

#include "app/support/Host.h"

class QString;

namespace dbkeeper::qt {

class QtDialogs : public Dialogs {
 public:
  void ShowMessage(const std::string& text) override;
  void ShowError(const std::string& text, const std::string& details) override;
  Answer Ask(const Question& question) override;
  std::optional<std::string> OpenFile(const FileChoice& choice) override;
  std::optional<std::string> SaveFile(const FileChoice& choice) override;
  std::optional<std::string> ChooseFolder() override;
};

// "caption|pattern|caption|pattern;pattern" in the toolkit's form.
QString ToQtFilter(const std::string& filter);

}  // namespace dbkeeper::qt
