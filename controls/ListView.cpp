#include "controls/ListView.h"

#include <algorithm>
#include <utility>

namespace dbkeeper {

namespace {
const std::string kNoText;
}  // namespace

const std::string& ListItem::SubItem(std::size_t index) const {
  return index < SubItems.size() ? SubItems[index] : kNoText;
}

const std::string& ListItem::Cell(std::size_t column) const {
  return column == 0 ? Caption : SubItem(column - 1);
}

void ListView::BeginUpdate() { ++updating_; }

void ListView::EndUpdate() {
  if (--updating_ > 0) return;
  if (std::exchange(columns_changed_, false)) Changed.Emit(Change::kColumns, 0);
  if (std::exchange(rows_changed_, false)) Changed.Emit(Change::kRows, 0);
}

void ListView::Tell(Change change, std::size_t row) {
  if (updating_ == 0) {
    Changed.Emit(change, row);
  } else if (change == Change::kColumns) {
    columns_changed_ = true;
  } else {
    rows_changed_ = true;
  }
}

void ListView::ClearItems() {
  items_.clear();
  selection_.clear();
  Tell(Change::kRows);
}

void ListView::ClearColumns() {
  columns_.clear();
  Tell(Change::kColumns);
}

void ListView::AddColumn(std::string caption, int width, Alignment align) {
  columns_.push_back({std::move(caption), width, align});
  Tell(Change::kColumns);
}

ListItem& ListView::AddItem(std::string caption) {
  ListItem& item = items_.emplace_back();
  item.Caption = std::move(caption);
  Tell(Change::kRows);
  return item;
}

void ListView::DeleteItem(std::size_t row) {
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(row));
  std::erase(selection_, row);
  for (std::size_t& selected : selection_) {
    if (selected > row) --selected;
  }
  Tell(Change::kRows);
}

void ListView::AddSubItem(std::size_t row, std::string text) {
  items_.at(row).SubItems.push_back(std::move(text));
  Tell(Change::kRow, row);
}

void ListView::SetSubItem(std::size_t row, std::size_t index, std::string text) {
  auto& sub_items = items_.at(row).SubItems;
  if (sub_items.size() <= index) sub_items.resize(index + 1);
  sub_items[index] = std::move(text);
  Tell(Change::kRow, row);
}

void ListView::SetCaption(std::size_t row, std::string text) {
  items_.at(row).Caption = std::move(text);
  Tell(Change::kRow, row);
}

void ListView::SetChecked(std::size_t row, bool checked) {
  items_.at(row).Checked = checked;
  Tell(Change::kRow, row);
}

void ListView::Reorder(const std::vector<std::size_t>& order) {
  std::vector<ListItem> items;
  items.reserve(order.size());
  std::vector<std::size_t> place(order.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    items.push_back(std::move(items_.at(order[i])));
    place[order[i]] = i;
  }
  items_ = std::move(items);
  for (std::size_t& row : selection_) row = place[row];
  std::sort(selection_.begin(), selection_.end());
  Tell(Change::kRows);
}

const ListItem* ListView::Selected() const {
  return selection_.empty() ? nullptr : &items_[selection_.front()];
}

void ListView::Select(std::vector<std::size_t> rows) {
  std::erase_if(rows, [this](std::size_t row) { return row >= items_.size(); });
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  if (rows == selection_) return;
  selection_ = std::move(rows);
  Tell(Change::kSelection);
}

void ListView::UserSelect(std::vector<std::size_t> rows) {
  Select(std::move(rows));
  Raise(OnSelectItem);
}

void ListView::UserColumnClick(std::size_t column) {
  if (OnColumnClick) OnColumnClick(column);
}

}  // namespace dbkeeper
