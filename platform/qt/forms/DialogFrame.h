// The frame of every dialog: what it is for above, its buttons below.
#pragma once

#include <initializer_list>
#include <memory>

#include "platform/qt/FormWindow.h"
#include "platform/qt/binders/Binder.h"

class QBoxLayout;
class QLayout;

namespace dbkeeper::qt {

enum class DialogSize {
  kFixed,    // the layout decides it
  kSizable,  // a person may drag the border
};

// A window is made with one of these: controls are made and added in tab order, the buttons last.
class DialogFrame {
 public:
  // Form and guard must outlive the window; `owner` may be null. The window is named as its form.
  DialogFrame(Form& form, const ActionGuard& guard, QWidget* owner);

  FormDialog& Window() const { return *window_; }
  const Binder& Controls() const { return binder_; }

  void Add(QLayout* layout);
  void Add(QWidget* widget);
  // The row of buttons at the end: `others` at the left, then the one that Enter presses and the
  // one that Esc and the window's own close button press.
  void AddButtons(Button& ok, Button& cancel, std::initializer_list<Button*> others = {});

  std::unique_ptr<QWidget> Take(DialogSize size = DialogSize::kFixed);

 private:
  std::unique_ptr<FormDialog> window_;
  Binder binder_;
  QBoxLayout* rows_;
};

}  // namespace dbkeeper::qt
