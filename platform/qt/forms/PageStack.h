// The place that the panels of several tabs share.
#pragma once

#include <initializer_list>

#include "platform/qt/binders/Binder.h"

namespace dbkeeper::qt {

// The widgets of panels one above the other, as large as the largest of them, whichever is shown.
// The caller gives the result to a layout.
QWidget* MakePageStack(const Binder& binder, std::initializer_list<QWidget*> panels);

// A hidden widget keeps its place, so that nothing jumps.
void KeepPlace(QWidget& widget);

}  // namespace dbkeeper::qt
