#include "query/UnitChooseTable.h"

#include <utility>

namespace dbkeeper {

TFormChooseTable::TFormChooseTable() : Form("FormChooseTable") {
  SBtn_Ok.OnClick = [this] { SBtn_OkClick(); };
  Sbtn_Cancel.OnClick = [this] { Sbtn_CancelClick(); };
}

std::optional<std::string> TFormChooseTable::Choose(Windows& windows, const std::string& database,
                                                    std::vector<std::string> tables) {
  chosen_ = false;
  Caption = "テーブルの選択:   " + database;
  ComboBox_Table.Items.Assign(std::move(tables));
  ComboBox_Table.SetItemIndex(0);
  windows.ShowModal(*this);
  if (!chosen_ || ComboBox_Table.ItemIndex() < 0) return std::nullopt;
  return ComboBox_Table.Text();
}

void TFormChooseTable::SBtn_OkClick() {
  chosen_ = true;
  Close();
}

void TFormChooseTable::Sbtn_CancelClick() { Close(); }

}  // namespace dbkeeper
