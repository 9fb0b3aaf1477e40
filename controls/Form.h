// A window: a plain class whose members are its controls and whose methods are its event handlers.
#pragma once

#include <string>
#include <utility>

#include "controls/Control.h"

namespace dbkeeper {

class Form {
 public:
  // `name` is the class's name without its T.
  explicit Form(std::string name = "") : Name(std::move(name)) {}
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;
  virtual ~Form() = default;

  // Once, when every form has been made and the face can show boxes; in the order of the forms.
  virtual void FormCreate() {}

  const std::string Name;
  Property<std::string> Caption;
  Property<bool> Visible{false};
  Event OnShow;   // each time before the window appears
  Event OnClose;  // when a person or the program closes it
  Event OnHide;   // when it has disappeared

  // Shows the window (the Windows port does the rest); told handlers run first.
  void Open() {
    Raise(OnShow);
    Visible = true;
  }
  void Close() {
    if (!Visible) return;
    Raise(OnClose);
    Visible = false;
    Raise(OnHide);
  }
};

}  // namespace dbkeeper
