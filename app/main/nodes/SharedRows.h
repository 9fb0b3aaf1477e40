// Menu rows and commands that several kinds of nodes share.
#pragma once

#include "app/main/MenuTable.h"
#include "app/main/UnitMain.h"

namespace dbkeeper {

// Rules: a row is selected; the session is connected or not.
bool RowSelected(const Workbench& workbench);
bool Connected(const Workbench& workbench);
bool Disconnected(const Workbench& workbench);

inline constexpr MenuRow kOnlineHelpRow = {0, "PM_OnlineHelp", "ｵﾝﾗｲﾝﾍﾙﾌﾟ表示 ...",
                                           &TFormMain::PM_OnlineHelpClick};
inline constexpr MenuRow kReadmeRow = {0, "PM_Readme", "Readme表示 ...",
                                       &TFormMain::PM_ReadmeClick};
inline constexpr MenuRow kHomePageRow = {0, "PM_GotoHomePage", "サポート HomePageへ ...",
                                         &TFormMain::PM_GotoHomePageClick};
inline constexpr MenuRow kRefreshRow = {0, "PM_Refresh", "最新の情報に更新",
                                        &TFormMain::TreeViewClick};

// The database of the selected node, which is its parent's text.
std::string NodeDatabase(const Workbench& workbench);

// Saves what the list shows.
void PopupMenu_Minimum_CSV_OutClick(const CommandContext& context);
inline constexpr MenuRow kCsvRow = {0, "PopupMenu_Minimum_CSV_Out", "表示内容のCSV出力...",
                                    &PopupMenu_Minimum_CSV_OutClick};

// The query window: on master with " *" before it, on master, and on the node's database.
void PopupMenu_Databases_SQLClick(const CommandContext& context);
void PopupMenu_Minimum_SQLClick(const CommandContext& context);
void PopupMenu_Table_SQLClick(const CommandContext& context);
constexpr MenuRow SqlRow(std::string_view name, MenuCommand command) {
  return {0, name, "SQL 発行...", command};
}

// Opens the rights on the selected row's object.
void PopupMenu_Table_PrivilegesClick(const CommandContext& context);

// Puts the script that creates the selected row's object into the query window.
void PopupMenu_Table_ScriptClick(const CommandContext& context);

// Opens the selected row's table or view in the table browser.
void PopupMenu_Table_OpenClick(const CommandContext& context);

}  // namespace dbkeeper
