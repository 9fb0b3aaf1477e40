// The record navigator's widget: a row of small buttons with signs.
#pragma once

#include <QToolButton>
#include <QWidget>
#include <vector>

#include "controls/ActionGuard.h"
#include "controls/Navigator.h"

namespace dbkeeper::qt {

class NavigatorWidget : public QWidget {
 public:
  // Both must outlive the widget.
  NavigatorWidget(Navigator& navigator, const ActionGuard& guard, QWidget* parent);

 private:
  struct Entry {
    NavigatorButton button;
    QToolButton* widget;
  };

  void Follow(GridSource* source);
  void ShowEnabled();

  Navigator& navigator_;
  const ActionGuard& guard_;
  std::vector<Entry> buttons_;
  Subscription source_changes_;
};

}  // namespace dbkeeper::qt
