// What a person does in the main list itself: sorting, opening by double click, the capacity view,
// the switch for system tables, the check boxes for work on many rows, the export.

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "app/main/CsvExport.h"
#include "app/main/UnitMain.h"
#include "app/support/Files.h"
#include "app/support/TextHelpers.h"
#include "app/support/Utf8.h"
#include "catalog/ObjectLists.h"

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

void TFormMain::PopupMenu_Table_CapacityClick() {
  const TreeNode* const node = TreeView.Selected();
  if (node == nullptr || node->Parent() == nullptr) return;
  RunningStatus status(workbench_);
  ListCapacity(workbench_, node->Parent()->Text());
  status.Done("EXEC sp_spaceused Tablexxx");
}

void TFormMain::PM_DspSysTblClick() {
  options_.ShowSystemTables = !options_.ShowSystemTables;
  PopupMenu_Table->Find("PM_DspSysTbl")->Checked = options_.ShowSystemTables;
  settings_.Write("SYSTEM", "DspSysTbl", options_.ShowSystemTables ? "True" : "False");
}

// The two items that work on the checked rows appear with the boxes.
void TFormMain::PopupMenu_Table_Select_ChkBoxClick() {
  MenuItem& item = *PopupMenu_Table->Find("PopupMenu_Table_Select_ChkBox");
  const bool shown = !item.Checked();
  item.Checked = shown;
  ListViewMain.CheckBoxes = shown;
  for (const char* name : {"PopupMenu_Table_Select_Truncate", "PopupMenu_Table_Select_Drop"}) {
    PopupMenu_Table->Find(name)->Visible = shown;
  }
}

void TFormMain::PopupMenu_Minimum_CSV_OutClick() {
  const auto file = host_.dialogs.SaveFile(
      {"CSVﾌｧｲﾙ(*.csv)|*.csv|ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*", "", ""});
  if (!file) return;
  const BusyScope busy(host_.windows);
  // Whole before the file is touched: a text that cannot be written leaves it as it was.
  ReplaceFile(PathOf(*file), CsvBytes(ListViewMain, host_.code_page));
}

}  // namespace dbkeeper
