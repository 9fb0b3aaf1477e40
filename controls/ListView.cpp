#include "controls/ListView.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace dbkeeper {

ListItem::ListItem(std::initializer_list<std::string_view> cells) {
  for (const std::string_view cell : cells) AddCell(cell);
}

std::size_t ListItem::LengthAt(std::size_t place) const {
  std::uint32_t length = 0;
  std::memcpy(&length, texts_.data() + place, sizeof length);
  return length;
}

std::size_t ListItem::PlaceOf(std::size_t column) const {
  std::size_t place = 0;
  for (; column > 0; --column) place += sizeof(std::uint32_t) + LengthAt(place);
  return place;
}

std::string_view ListItem::Cell(std::size_t column) const {
  if (column >= cells_) return {};
  const std::size_t place = PlaceOf(column);
  return std::string_view(texts_).substr(place + sizeof(std::uint32_t), LengthAt(place));
}

void ListItem::AddCell(std::string_view text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  texts_.append(reinterpret_cast<const char*>(&length), sizeof length).append(text);
  ++cells_;
}

void ListItem::SetCell(std::size_t column, std::string_view text) {
  while (cells_ <= column) AddCell({});
  const std::size_t place = PlaceOf(column);
  const auto length = static_cast<std::uint32_t>(text.size());
  texts_.replace(place + sizeof length, LengthAt(place), text);
  std::memcpy(texts_.data() + place, &length, sizeof length);
}

void ListItem::Clear() {
  texts_.clear();
  cells_ = 0;
  Checked = false;
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

void ListView::AddColumn(std::string caption, int width, Alignment align, ColumnPicture picture) {
  columns_.push_back({std::move(caption), width, align, picture});
  Tell(Change::kColumns);
}

void ListView::AddItem(ListItem item) {
  items_.push_back(std::move(item));
  Tell(Change::kRows);
}

void ListView::DeleteItem(std::size_t row) {
  items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(row));
  std::erase(selection_, row);
  for (std::size_t& selected : selection_) {
    if (selected > row) --selected;
  }
  Tell(Change::kRows);
}

void ListView::AddSubItem(std::size_t row, std::string_view text) {
  items_.at(row).AddCell(text);
  Tell(Change::kRow, row);
}

void ListView::SetSubItem(std::size_t row, std::size_t index, std::string_view text) {
  items_.at(row).SetCell(index + 1, text);
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
