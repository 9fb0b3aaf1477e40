// The one way by which what a person does enters the program: whatever a handler throws goes to the
// program-wide error handler.
#pragma once

#include <exception>
#include <functional>
#include <utility>

namespace dbkeeper {

class ActionGuard {
 public:
  using ErrorHandler = std::function<void(const std::exception&)>;

  explicit ActionGuard(ErrorHandler on_error) : on_error_(std::move(on_error)) {}

  template <class Action>
  void Run(Action&& action) const {
    try {
      std::forward<Action>(action)();
    } catch (const std::exception& error) {
      on_error_(error);
    }
  }

 private:
  ErrorHandler on_error_;
};

}  // namespace dbkeeper
