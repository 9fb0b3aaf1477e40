#include "controls/Navigator.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dbkeeper {

namespace {

bool IsOpen(const GridSource& source) { return source.State() != GridState::kClosed; }
bool IsChanging(const GridSource& source) {
  return source.State() == GridState::kEdit || source.State() == GridState::kInsert;
}
bool HasRow(const GridSource& source) { return source.CurrentRow() >= 0; }

bool HasRowBefore(const GridSource& source) { return source.CurrentRow() > 0; }
bool HasRowBehind(const GridSource& source) {
  const GridRowCount count = source.RowCount();
  return HasRow(source) && (!count.Exact || source.CurrentRow() + 1 < count.Rows);
}
bool CanInsert(const GridSource& source) { return IsOpen(source) && source.CanEdit(); }
bool CanDelete(const GridSource& source) { return source.CanEdit() && HasRow(source); }
bool CanBeginEdit(const GridSource& source) { return CanDelete(source) && !IsChanging(source); }

struct ButtonRow {
  NavigatorButton button;
  bool (*enabled)(const GridSource& source);
  void (GridSource::*press)();
};

constexpr std::array<ButtonRow, 10> kButtons = {{
    {NavigatorButton::kFirst, &HasRowBefore, &GridSource::First},
    {NavigatorButton::kPrior, &HasRowBefore, &GridSource::Prior},
    {NavigatorButton::kNext, &HasRowBehind, &GridSource::Next},
    {NavigatorButton::kLast, &HasRowBehind, &GridSource::Last},
    {NavigatorButton::kInsert, &CanInsert, &GridSource::Insert},
    {NavigatorButton::kDelete, &CanDelete, &GridSource::Delete},
    {NavigatorButton::kEdit, &CanBeginEdit, &GridSource::Edit},
    {NavigatorButton::kPost, &IsChanging, &GridSource::Post},
    {NavigatorButton::kCancel, &IsChanging, &GridSource::Cancel},
    {NavigatorButton::kRefresh, &IsOpen, &GridSource::Refresh},
}};

const ButtonRow& RowOf(NavigatorButton button) {
  return *std::find_if(kButtons.begin(), kButtons.end(),
                       [button](const ButtonRow& row) { return row.button == button; });
}

}  // namespace

const NavigatorButtons& MovingButtons() {
  static const NavigatorButtons kMoving = {NavigatorButton::kFirst, NavigatorButton::kPrior,
                                           NavigatorButton::kNext, NavigatorButton::kLast};
  return kMoving;
}

const NavigatorButtons& AllNavigatorButtons() {
  static const NavigatorButtons kAll = [] {
    NavigatorButtons all;
    for (const ButtonRow& row : kButtons) all.push_back(row.button);
    return all;
  }();
  return kAll;
}

Navigator::Navigator(std::string name) : Control(std::move(name)) {
  VisibleButtons = MovingButtons();
}

bool Navigator::ButtonEnabled(NavigatorButton button) const {
  return Enabled && Source() != nullptr && RowOf(button).enabled(*Source());
}

void Navigator::UserPress(NavigatorButton button) {
  const auto& visible = VisibleButtons();
  if (std::find(visible.begin(), visible.end(), button) == visible.end()) return;
  if (!ButtonEnabled(button)) return;
  if (button == NavigatorButton::kDelete && !(ConfirmDelete && ConfirmDelete())) return;
  (Source()->*RowOf(button).press)();
}

}  // namespace dbkeeper
