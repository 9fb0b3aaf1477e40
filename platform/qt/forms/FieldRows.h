// Rows of a dialog: a label, its field, and what stands behind the field.
#pragma once

#include "platform/qt/binders/Binder.h"

class QGridLayout;
class QLayout;

namespace dbkeeper::qt {

// A control that brings a label: an edit, a box to choose from, a numeric edit.
template <class Candidate>
concept Labelled = requires(Candidate& control) {
  control.EditLabel;
};

// A grid of three columns. Controls are made in the order of the calls, which is the tab order.
class FieldRows {
 public:
  // The binder must outlive this object. `field_width` is the least width of the field's column, in
  // pixels at 96 dpi. Whoever calls gives the grid to a layout.
  FieldRows(const Binder& binder, int field_width);

  QGridLayout* Grid() const { return grid_; }

  // Label and field; the field takes the columns of field and button. Gives the field's widget.
  template <Labelled AControl>
  auto* Add(AControl& control) {
    AddLabel(control.EditLabel);
    auto* const field = binder_.Make(control);
    AddField(*field, nullptr);
    return field;
  }
  // With what stands behind the field, such as a unit or a button that fills it.
  template <Labelled AControl, class Behind>
  auto* Add(AControl& control, Behind& behind) {
    AddLabel(control.EditLabel);
    auto* const field = binder_.Make(control);
    AddField(*field, MakeBehind(behind));
    return field;
  }
  // Showing "*" for each character. While it is hidden it keeps its place, so that nothing jumps.
  QLineEdit* AddPassword(Edit& edit);
  // A control without a label, below the field above.
  template <class AControl>
  requires(!Labelled<AControl>) auto* Add(AControl& control) {
    auto* const widget = binder_.Make(control);
    AddWidget(*widget);
    return widget;
  }
  // The same for what the form's window has made itself.
  void AddWidget(QWidget& widget);
  // Several fields in one row.
  void AddLayout(QLayout& layout);
  // Some air before the next row.
  void AddGap();

 private:
  QLabel* AddLabel(Label& label);
  void AddField(QWidget& field, QWidget* behind);
  QWidget* MakeBehind(Label& unit) const;
  QWidget* MakeBehind(Button& chooser) const;

  const Binder& binder_;
  QGridLayout* grid_;
  int row_ = 0;
};

}  // namespace dbkeeper::qt
