// The windows of every form of the program.
#pragma once

#include "app/main/Application.h"
#include "platform/qt/QtWindows.h"

namespace dbkeeper::qt {

// Tells `windows` how each form looks. The windows go when the face goes, so it must go before the
// program.
class QtFace {
 public:
  QtFace(Application& program, QtWindows& windows);
  QtFace(const QtFace&) = delete;
  QtFace& operator=(const QtFace&) = delete;
  ~QtFace();

 private:
  QtWindows& windows_;
};

}  // namespace dbkeeper::qt
