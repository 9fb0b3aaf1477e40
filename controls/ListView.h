// The report list: columns, rows of texts, a selection, and a bulk update that tells once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "controls/Control.h"
#include "controls/Menu.h"

namespace dbkeeper {

enum class Alignment { kLeft, kCenter, kRight };

// What stands behind the texts of a column.
enum class ColumnPicture {
  kNone,
  kBar,  // as long as the number that the text begins with, the column's largest being the longest
};

struct ListColumn {
  std::string Caption;
  int Width = 0;  // pixels at 96 dpi
  Alignment Align = Alignment::kLeft;
  ColumnPicture Picture = ColumnPicture::kNone;
  bool operator==(const ListColumn&) const = default;
};

// A row: a caption (first column) and the sub-items of the further columns, sub-item 0 being the
// second column. The texts stand one behind the other in one piece of memory, as a list may have
// many rows.
class ListItem {
 public:
  ListItem() = default;
  // The caption first, then the sub-items.
  ListItem(std::initializer_list<std::string_view> cells);
  bool operator==(const ListItem&) const = default;

  std::size_t CellCount() const { return cells_; }
  // The text shown in a column, empty where the row has fewer; column 0 is the caption. Alive until
  // a cell of this row is added or set.
  std::string_view Cell(std::size_t column) const;
  std::string_view Caption() const { return Cell(0); }
  std::string_view SubItem(std::size_t index) const { return Cell(index + 1); }

  void AddCell(std::string_view text);
  // Adds empty cells before it where the row is shorter.
  void SetCell(std::size_t column, std::string_view text);
  // Keeps the memory for the next row.
  void Clear();

  bool Checked = false;

 private:
  // Where a cell's length stands; its text follows.
  std::size_t PlaceOf(std::size_t column) const;
  std::size_t LengthAt(std::size_t place) const;

  std::string texts_;
  std::uint32_t cells_ = 0;
};

class ListView : public Control {
 public:
  using Control::Control;

  // What observers are told: the whole content, one row, or only the selection is another.
  enum class Change { kColumns, kRows, kRow, kSelection, kCheckBoxes };

  Signal<Change, std::size_t> Changed;  // the row's index with kRow, otherwise 0
  Event OnSelectItem;
  Event OnClick;  // wherever in the list, after the selection has followed
  Event OnDblClick;
  std::function<void(std::size_t column)> OnColumnClick;
  // Null: the list has no popup menu.
  Property<PopupMenu*> Popup{nullptr};
  Property<bool> CheckBoxes{false};
  // Whether a person may select several rows at once.
  Property<bool> MultiSelect{true};

  const std::vector<ListColumn>& Columns() const { return columns_; }
  const std::vector<ListItem>& Items() const { return items_; }

  // Between the two, changes are collected; the last EndUpdate tells them once. Calls nest.
  void BeginUpdate();
  void EndUpdate();

  void ClearItems();
  void ClearColumns();
  void AddColumn(std::string caption, int width, Alignment align = Alignment::kLeft,
                 ColumnPicture picture = ColumnPicture::kNone);
  void AddItem(ListItem item);
  void DeleteItem(std::size_t row);
  // Appends the next sub-item of a row.
  void AddSubItem(std::size_t row, std::string_view text);
  // Sets a sub-item, adding empty ones before it where the row is shorter.
  void SetSubItem(std::size_t row, std::size_t index, std::string_view text);
  void SetChecked(std::size_t row, bool checked);
  // Brings the rows into the order of a permutation of their indexes; the selection goes with them.
  void Reorder(const std::vector<std::size_t>& order);

  // Selected rows in rising order.
  const std::vector<std::size_t>& Selection() const { return selection_; }
  std::size_t SelCount() const { return selection_.size(); }
  // The first selected row, or null.
  const ListItem* Selected() const;
  void Select(std::vector<std::size_t> rows);

  void UserSelect(std::vector<std::size_t> rows);
  void UserClick() { Raise(OnClick); }
  void UserDblClick() { Raise(OnDblClick); }
  void UserColumnClick(std::size_t column);
  void UserCheck(std::size_t row, bool checked) { SetChecked(row, checked); }

 private:
  void Tell(Change change, std::size_t row = 0);

  std::vector<ListColumn> columns_;
  std::vector<ListItem> items_;
  std::vector<std::size_t> selection_;
  int updating_ = 0;
  bool columns_changed_ = false;
  bool rows_changed_ = false;
};

// Keeps a list in a bulk update for a scope, also when the scope is left by an exception.
class ListUpdate {
 public:
  explicit ListUpdate(ListView& list) : list_(list) { list_.BeginUpdate(); }
  ListUpdate(const ListUpdate&) = delete;
  ListUpdate& operator=(const ListUpdate&) = delete;
  ~ListUpdate() { list_.EndUpdate(); }

 private:
  ListView& list_;
};

}  // namespace dbkeeper
