#include "platform/qt/QtFace.h"

#include <QWidget>
#include <memory>
#include <type_traits>

#include "platform/qt/forms/Windows.h"

namespace dbkeeper::qt {

QtFace::QtFace(Application& program, QtWindows& windows) : windows_(windows) {
  const ActionGuard& guard = program.Guard();
  const auto add = [&guard, &windows](auto& form) {
    windows.Register(form, [&form, &guard, &windows](QWidget* owner) -> std::unique_ptr<QWidget> {
      if constexpr (std::is_same_v<decltype(form), TFormMain&>) {
        return MakeMainWindow(form, guard, windows);
      } else {
        return MakeWindow(form, guard, owner);
      }
    });
  };
  program.ForEachForm(add);
  add(program.FormExecSQL.FormChooseTable);
}

QtFace::~QtFace() { windows_.Clear(); }

}  // namespace dbkeeper::qt
