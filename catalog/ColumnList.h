// The list of a table's columns, as the table designer and the test data show it.
#pragma once

#include <string>

#include "app/workbench/Workbench.h"
#include "controls/ListView.h"

namespace dbkeeper {

enum class ColumnListForm { kDesigner, kTestData };

// Removes rows and columns and adds the columns of the form. The designer's last one is called
// "Note" whatever it holds.
void ResetColumnList(ListView& list, ColumnListForm form, bool advanced);

// Refills the list with the columns of the table, which dbo owns. The designer's form reads the
// descriptions too, and leaves the current database at that one. Throws ServerError.
void ListColumns(const Workbench& workbench, ListView& list, const std::string& database,
                 const std::string& table, ColumnListForm form);

}  // namespace dbkeeper
