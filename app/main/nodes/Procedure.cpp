// "Procedure": the procedures of a database.

#include "app/main/nodes/NodeKinds.h"
#include "app/main/nodes/SharedRows.h"
#include "catalog/ObjectLists.h"

namespace dbkeeper {

namespace {

constexpr RowCommand PopupMenu_Procedure_DropClick = {
    .question = "Procedure:%D.dbo.%N を削除してよろしいですか?",
    .use = "use [%D]",
    .statement = "drop Procedure [%N]",
    .refresh = ListProcedures,
};

constexpr MenuRow kProcedureRows[] = {
    {0, "PopupMenu_Procedure_Privileges", "権限の表示...", &PopupMenu_Table_PrivilegesClick,
     &RowSelected},
    kRefreshRow,
    SqlRow("PopupMenu_Procedure_SQL", &PopupMenu_Table_SQLClick),
    kCsvRow,
    {0, "PopupMenu_Procedure_Script", "生成Script...", &PopupMenu_Table_ScriptClick, &RowSelected},
    {0, "PopupMenu_Procedure_Drop", "削除", &PopupMenu_Procedure_DropClick, &RowSelected},
};
constexpr MenuTable kProcedureMenu = {"PopupMenu_Procedure", kProcedureRows};

}  // namespace

constinit const NodeKind kProcedureNode = {
    3,
    Match::kText,
    "Procedure",
    ListProcedures,
    &kProcedureMenu,
    "select * from sysobjects  where(xtype='X')or(xtype='P')"};

}  // namespace dbkeeper
