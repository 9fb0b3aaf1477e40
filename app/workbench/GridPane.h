// Rows in a grid with what works on them: the navigator, and the switch between reading and
// editing.
#pragma once

#include "app/session/BrowseQuery.h"
#include "app/session/RowView.h"
#include "app/workbench/Workbench.h"
#include "controls/DataGrid.h"
#include "controls/Inputs.h"
#include "controls/Navigator.h"

namespace dbkeeper {

struct GridPaneControls {
  DataGrid& grid;
  Navigator& navigator;
  Button& edit_switch;  // a toggle; its caption is the mode that a press switches to
  Panel& strip;         // holds the navigator
  int strip_reading;    // the strip's widths
  int strip_editing;
};

class GridPane {
 public:
  // Joins the controls to the rows, for reading. All must outlive this object.
  GridPane(GridPaneControls controls, RowView& rows, const Workbench& workbench);
  GridPane(const GridPane&) = delete;
  GridPane& operator=(const GridPane&) = delete;

  // How the rows are to be opened next.
  LockType Lock() const { return lock_; }
  bool Editing() const { return lock_ == LockType::kOptimistic; }
  // Takes the mode of the switch over, and shows it.
  void FollowSwitch();

 private:
  bool ConfirmDelete() const;

  const GridPaneControls controls_;
  RowView& rows_;
  const Workbench& workbench_;
  LockType lock_ = LockType::kReadOnly;
};

}  // namespace dbkeeper
