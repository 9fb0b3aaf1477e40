// What a person does in the main list itself: sorting, and opening by double click.

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "app/main/UnitMain.h"
#include "app/support/TextHelpers.h"
#include "app/support/Utf8.h"

namespace dbkeeper {

namespace {

// Left-padded with zeros to ten characters, of which the last ten count: numbers of up to ten
// digits sort as numbers, everything longer, negative or with decimals as text. Blanks that fill a
// column of fixed length, such as the rows of a table, are no part of the number.
std::string PaddedKey(std::string_view text) {
  const std::string padded = "0000000000" + std::string(WithoutTrailingBlanks(text));
  return FoldCase(Utf8Right(padded, 10));
}

std::vector<std::string> SortKeys(const ListView& list, std::size_t column) {
  const bool numeric = column == 0 || list.Columns()[column].Align == Alignment::kRight;
  std::vector<std::string> keys;
  keys.reserve(list.Items().size());
  for (const ListItem& item : list.Items()) {
    const std::string_view text = item.Cell(column);
    keys.push_back(numeric ? PaddedKey(text) : FoldCase(text));
  }
  return keys;
}

}  // namespace

void TFormMain::ListViewMainColumnClick(std::size_t column) {
  if (column >= ListViewMain.Columns().size()) return;
  sort_direction_ = -sort_direction_;
  const std::vector<std::string> keys = SortKeys(ListViewMain, column);
  std::vector<std::size_t> order(keys.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (sort_direction_ > 0) {
    std::stable_sort(order.begin(), order.end(),
                     [&keys](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  } else {
    std::stable_sort(order.begin(), order.end(),
                     [&keys](std::size_t a, std::size_t b) { return keys[b] < keys[a]; });
  }
  ListViewMain.Reorder(order);
}

void TFormMain::ListViewMainDblClick() {
  if (ListViewMain.Selected() != nullptr && session_.ADOQuery_User.Active()) Browser.OpenSelected();
}

}  // namespace dbkeeper
