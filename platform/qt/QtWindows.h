// Shows forms in real windows.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/support/Host.h"
#include "platform/qt/BusyInput.h"

class QWidget;

namespace dbkeeper::qt {

class QtWindows : public Windows {
 public:
  // Makes a form's window; `owner` is the window that it belongs to, or null.
  using Factory = std::function<std::unique_ptr<QWidget>(QWidget* owner)>;

  struct SystemMenuItem {
    std::string caption;  // empty: a separator
    int id;
  };

  QtWindows();
  QtWindows(const QtWindows&) = delete;
  QtWindows& operator=(const QtWindows&) = delete;
  ~QtWindows() override;

  // A form's window is made when it is first shown, which keeps the start short. The form must
  // outlive this object.
  void Register(Form& form, Factory factory);
  // Destroys every window and forgets every form.
  void Clear();
  // The window of a registered form; throws std::out_of_range when it is not registered.
  QWidget& WindowOf(Form& form);
  // What the program has added to the main window's system menu, in order.
  const std::vector<SystemMenuItem>& SystemMenu() const { return system_menu_; }

  void Show(Form& form) override;
  void ShowModal(Form& form) override;
  void SetApplicationTitle(const std::string& title) override;
  bool AppendSystemMenu(const std::string& caption, int id) override;
  void BeginBusy() override;
  void EndBusy() override;

 private:
  struct Entry {
    Factory factory;
    std::unique_ptr<QWidget> window;
  };

  std::map<Form*, Entry> entries_;
  QWidget* main_window_ = nullptr;  // the first one made
  std::vector<SystemMenuItem> system_menu_;
  BusyInput busy_input_;
};

}  // namespace dbkeeper::qt
