// What every control shares. A control is a plain observable model: assigning a property tells
// whoever watches; the methods named User... are what a person does to it and are the only calls
// that raise its events.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "controls/Observable.h"

namespace dbkeeper {

enum class Color { kWindow, kButtonFace };

struct Control {
  // `name` is the name of the form's member that the control is.
  explicit Control(std::string name = "") : Name(std::move(name)) {}
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control() = default;

  const std::string Name;
  Property<bool> Enabled{true};
  Property<bool> Visible{true};
  Property<std::string> Hint;
  // The program gives this control the keyboard; a view moves its focus there.
  Signal<> FocusRequested;

  void SetFocus() { FocusRequested.Emit(); }
};

using Event = std::function<void()>;

// Runs an event's handler where there is one.
inline void Raise(const Event& event) {
  if (event) event();
}

// An observable list of texts.
class StringList {
 public:
  const std::vector<std::string>& All() const { return items_(); }
  std::size_t Count() const { return items_().size(); }
  const std::string& operator[](std::size_t index) const { return items_()[index]; }
  void Clear() { items_ = std::vector<std::string>(); }
  void Add(std::string text);
  void Assign(std::vector<std::string> texts) { items_ = std::move(texts); }
  // Index of the first text equal to `text`, or -1.
  int IndexOf(const std::string& text) const;
  [[nodiscard]] Subscription Observe(
      std::function<void(const std::vector<std::string>&)> observer) {
    return items_.Observe(std::move(observer));
  }

 private:
  Property<std::vector<std::string>> items_;
};

}  // namespace dbkeeper
