#include "platform/qt/forms/PageStack.h"

#include <QGridLayout>

namespace dbkeeper::qt {

QWidget* MakePageStack(const Binder& binder, std::initializer_list<QWidget*> panels) {
  auto* const place = new QWidget(&binder.Window());
  auto* const layout = new QGridLayout(place);
  layout->setContentsMargins(0, 0, 0, 0);
  for (QWidget* panel : panels) {
    KeepPlace(*panel);
    layout->addWidget(panel, 0, 0);
  }
  return place;
}

void KeepPlace(QWidget& widget) {
  QSizePolicy policy = widget.sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  widget.setSizePolicy(policy);
}

}  // namespace dbkeeper::qt
