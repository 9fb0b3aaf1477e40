// "View": the views of a database.

#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ObjectLists.h"

namespace dbkeeper {

namespace {

// Deliberately without the database and the owner, as for procedures: the server refuses a database
// before the name of either.
constexpr RowCommand PopupMenu_View_DropClick = {
    .question = "View:%D.dbo.%N を削除してよろしいですか?",
    .use = "use [%D]",
    .statement = "drop View [%N]",
    .refresh = ListViews,
};

constexpr MenuRow kViewRows[] = {
    {0, "PopupMenu_View_Open", "開く...", &PopupMenu_Table_OpenClick, &RowSelected},
    {0, "PopupMenu_View_Privileges", "権限の表示...", &PopupMenu_Table_PrivilegesClick,
     &RowSelected},
    SqlRow("PopupMenu_View_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
    {0, "PopupMenu_View_Script", "生成Script...", &PopupMenu_Table_ScriptClick, &RowSelected},
    {0, "PopupMenu_View_Drop", "削除", &PopupMenu_View_DropClick, &RowSelected},
};
constexpr MenuTable kViewMenu = {"PopupMenu_View", kViewRows};

}  // namespace

constinit const NodeKind kViewNode = {
    3, Match::kText, "View", ListViews, &kViewMenu, "select * from sysobjects  where xtype='V'"};

}  // namespace dbkeeper
