#include "app/main/Application.h"

namespace dbkeeper {

Application::Application(Connection& connection, const Host& host)
    : host_(host),
      settings_(SettingsPath(host_.shell.Executable()), host_),
      Session(connection, host_.locale),
      guard_([this](const std::exception& error) { FormMain.ApplicationException(error); }) {}

void Application::Start() {
  ForEachForm([this](Form& form) { guard_.Run([&form] { form.FormCreate(); }); });
}

}  // namespace dbkeeper
