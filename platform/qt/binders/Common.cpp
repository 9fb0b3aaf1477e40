#include <QAbstractButton>
#include <QComboBox>
#include <QWidget>

#include "platform/qt/Keep.h"
#include "platform/qt/QtText.h"
#include "platform/qt/binders/Binder.h"

namespace dbkeeper::qt {

namespace {

// Whether a key that the focus brings along may change something by itself.
bool TakesKeys(const QWidget& widget) {
  return qobject_cast<const QComboBox*>(&widget) != nullptr ||
         qobject_cast<const QComboBox*>(widget.focusProxy()) != nullptr ||
         qobject_cast<const QAbstractButton*>(&widget) != nullptr;
}

// The toolkit would hand the focus of a widget that goes to the next one in the tab order, whatever
// that is. Here it goes to the next one that a stray key does not change, or to none.
void GiveFocusOn(QWidget& widget) {
  QWidget* const focused = widget.window()->focusWidget();
  if (focused == nullptr || (focused != &widget && !widget.isAncestorOf(focused))) return;
  for (QWidget* next = focused->nextInFocusChain(); next != focused;
       next = next->nextInFocusChain()) {
    if ((next->focusPolicy() & Qt::TabFocus) != 0 && next->isEnabled() && next->isVisible() &&
        !widget.isAncestorOf(next) && !TakesKeys(*next)) {
      return next->setFocus();
    }
  }
  focused->clearFocus();
}

}  // namespace

void Binder::BindCommon(Control& control, QWidget& widget) const {
  widget.setObjectName(ToQt(control.Name));
  Keep(widget, control.Enabled.Observe([&widget](bool enabled) {
    if (!enabled) GiveFocusOn(widget);
    widget.setEnabled(enabled);
  }));
  Keep(widget, control.Visible.Observe([&widget](bool visible) {
    if (!visible) GiveFocusOn(widget);
    // A widget that has not been shown yet is hidden, but would appear with its window.
    if (!visible || widget.isHidden()) widget.setVisible(visible);
  }));
  Keep(widget, control.Hint.Observe(
                   [&widget](const std::string& hint) { widget.setToolTip(ToQtLines(hint)); }));
  Keep(widget, control.FocusRequested.Connect([&widget] { widget.setFocus(); }));
}

}  // namespace dbkeeper::qt
