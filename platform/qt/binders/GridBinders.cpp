// The data grid and the record navigator.
#include <QLabel>
#include <QVBoxLayout>

#include "platform/qt/binders/Binder.h"
#include "platform/qt/binders/GridWidget.h"
#include "platform/qt/binders/NavigatorWidget.h"

namespace dbkeeper::qt {

QWidget* Binder::Make(DataGrid& grid) const {
  auto* area = new QWidget(&window_);
  auto* widget = new GridWidget(grid, guard_, area);
  BindCommon(grid, *widget);
  area->setObjectName(widget->objectName() + "_Area");
  auto* layout = new QVBoxLayout(area);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(widget);
  layout->addWidget(&widget->Note());
  return area;
}

QWidget* Binder::Make(Navigator& navigator) const {
  auto* widget = new NavigatorWidget(navigator, guard_, &window_);
  BindCommon(navigator, *widget);
  return widget;
}

}  // namespace dbkeeper::qt
