// "Config": helpers that set things up, and the switch of the advanced options.

#include <array>

#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ListRoutine.h"

namespace dbkeeper {

namespace {

struct WizardRow {
  const char* id;
  const char* group;
  const char* setting;
};

constexpr std::array<WizardRow, 4> kWizards = {{
    {"WIZ_BK01", "BackUp 設定のウィザード", "AM01:00～ 同一メディアの毎日書換え"},
    {"WIZ_BK02", "BackUp 設定のウィザード", "AM01:00～ 曜日毎のメディアを毎週書換え"},
    {"WIZ_BK30", "BackUp 設定のウィザード", "ユーザー・データベースの権限の移行スクリプト"},
    {"WIZ_BK99", "BackUp 設定のウィザード", "既存のバックアップメディアの全削除"},
}};

constexpr std::array<CatalogColumn, 3> kWizardColumns = {{
    {"ID", 64, Alignment::kLeft, FilledLater{}},
    {"グループ", 160, Alignment::kLeft, FilledLater{}},
    {"設定", 340, Alignment::kLeft, FilledLater{}},
}};

void ListWizards(const Workbench& workbench, const std::string& /*database*/) {
  ListView& list = workbench.List;
  const ListUpdate update(list);
  ResetList(list, kWizardColumns);
  for (const WizardRow& row : kWizards) list.AddItem({row.id, row.group, row.setting});
  list.AddItem({"ADVANCED", "拡張オプション", workbench.Switches.Advanced ? "On" : "Off"});
}

constexpr MenuRow kConfigRows[] = {
    {0, "PopupMenu_Management_Run", "設定支援ウィザード実行", kNoCommand, &RowSelected},
    SqlRow("PopupMenu_Management_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
};
constexpr MenuTable kConfigMenu = {"PopupMenu_Management", kConfigRows};

}  // namespace

constinit const NodeKind kConfigNode = {0, Match::kText, "Config", ListWizards, &kConfigMenu, ""};

}  // namespace dbkeeper
