#include "platform/qt/QtWindows.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QStatusBar>

#include "platform/qt/QtText.h"

namespace dbkeeper::qt {

QtWindows::QtWindows() = default;

QtWindows::~QtWindows() { Clear(); }

void QtWindows::Clear() {
  // The toolkit would let the main window destroy the dialogs that it owns: they go first.
  for (auto& [form, entry] : entries_) {
    if (entry.window.get() != main_window_) entry.window.reset();
  }
  entries_.clear();
  main_window_ = nullptr;
}

void QtWindows::Register(Form& form, Factory factory) {
  entries_[&form] = {std::move(factory), nullptr};
}

QWidget& QtWindows::WindowOf(Form& form) {
  Entry& entry = entries_.at(&form);
  if (!entry.window) entry.window = entry.factory(main_window_);
  if (main_window_ == nullptr) main_window_ = entry.window.get();
  return *entry.window;
}

void QtWindows::Show(Form& form) {
  QWidget& window = WindowOf(form);
  form.Open();
  window.raise();
  window.activateWindow();
}

void QtWindows::ShowModal(Form& form) {
  QWidget& window = WindowOf(form);
  const QPointer<QWidget> before = QApplication::activeWindow();
  window.setWindowModality(Qt::ApplicationModal);
  form.Open();
  QEventLoop loop;
  const Subscription closed = form.Visible.Observe([&loop](bool visible) {
    if (!visible) loop.quit();
  });
  if (form.Visible()) loop.exec();
  if (before != nullptr) before->activateWindow();
}

void QtWindows::SetApplicationTitle(const std::string& title) {
  QCoreApplication::setApplicationName(ToQt(title));
  // What a task bar shows.
  if (main_window_ != nullptr) main_window_->setWindowIconText(ToQt(title));
}

bool QtWindows::AppendSystemMenu(const std::string& caption, int id) {
  system_menu_.push_back({caption, id});
  return true;
}

void QtWindows::BeginBusy() {
  busy_input_.Begin();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  // The statement that follows keeps the event loop from painting.
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (!window->isVisible()) continue;
    for (auto* bar : window->findChildren<QStatusBar*>()) bar->repaint();
  }
}

void QtWindows::EndBusy() {
  QApplication::restoreOverrideCursor();
  busy_input_.End();
}

}  // namespace dbkeeper::qt
