#include <QWidget>

#include "platform/qt/Keep.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"

namespace dbkeeper::qt {

void Binder::BindCommon(Control& control, QWidget& widget) const {
  widget.setObjectName(ToQt(control.Name));
  Keep(widget, control.Enabled.Observe([&widget](bool enabled) { widget.setEnabled(enabled); }));
  Keep(widget, control.Visible.Observe([&widget](bool visible) {
    // A widget that has not been shown yet is hidden, but would appear with its window.
    if (!visible || widget.isHidden()) widget.setVisible(visible);
  }));
  Keep(widget, control.Hint.Observe(
                   [&widget](const std::string& hint) { widget.setToolTip(ToQtLines(hint)); }));
  Keep(widget, control.FocusRequested.Connect([&widget] { widget.setFocus(); }));
}

}  // namespace dbkeeper::qt
