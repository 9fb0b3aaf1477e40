#include "catalog/ColumnList.h"

#include "catalog/ExtendedProperty.h"
#include "catalog/TableCatalog.h"

namespace dbkeeper {

namespace {

struct Heading {
  std::string_view caption;
  int width;
  Alignment align = Alignment::kLeft;
};

constexpr Heading kShared[] = {
    {"列名", 120}, {"Type", 100}, {"Size", 60, Alignment::kRight}, {"Null", 48}, {"Identify", 60}};
constexpr Heading kDesignerTail[] = {{"Default", 80}, {"Comment", 80}};
constexpr Heading kTestDataTail[] = {{"Default", 80}, {"Pattern", 140}, {"null%", 60},
                                     {"ParamA", 120}, {"ParamB", 120},  {"count", 0}};
constexpr int kNoteWidth = 100;

constexpr std::size_t kCommentCell = 5;
constexpr std::size_t kNoteCell = 6;

void AddHeading(ListView& list, const Heading& heading) {
  list.AddColumn(std::string(heading.caption), heading.width, heading.align);
}

ListItem RowOf(const TableColumn& column) {
  return {column.name,           column.type,
          column.SizeText(),     column.nullable ? "null" : "-",
          column.IdentityText(), column.default_text};
}

void ListDescriptions(const Workbench& workbench, ListView& list, const std::string& database,
                      const std::string& table) {
  Query& query = workbench.Session.ADOQuerySystem;
  query.UseDatabase(database);
  for (query.Open("select * from ::fn_listextendedproperty(default, 'user', 'dbo', 'table', '" +
                  table + "', 'column', default)");
       !query.Eof(); query.Next()) {
    const std::string property = query.FieldByName("name").AsString();
    const bool note = property == kNoteProperty && workbench.Switches.Advanced;
    if (property != kDescriptionProperty && !note) continue;
    const std::string column = query.FieldByName("objname").AsString();
    const std::string value = query.FieldByName("value").AsString();
    for (std::size_t row = 0; row < list.Items().size(); ++row) {
      if (list.Items()[row].Caption() != column) continue;
      list.SetSubItem(row, note ? kNoteCell : kCommentCell, value);
    }
  }
  query.Close();
  query.Clear();
}

}  // namespace

void ResetColumnList(ListView& list, ColumnListForm form, bool advanced) {
  list.ClearItems();
  list.ClearColumns();
  for (const Heading& heading : kShared) AddHeading(list, heading);
  if (form == ColumnListForm::kTestData) {
    for (const Heading& heading : kTestDataTail) AddHeading(list, heading);
    return;
  }
  AddHeading(list, kDesignerTail[0]);
  // Deliberately the last heading reads "Note" also where it stands above the comments.
  if (advanced) AddHeading(list, kDesignerTail[1]);
  AddHeading(list, {"Note", kNoteWidth});
}

void ListColumns(const Workbench& workbench, ListView& list, const std::string& database,
                 const std::string& table, ColumnListForm form) {
  const ListUpdate update(list);
  const bool advanced = workbench.Switches.Advanced;
  ResetColumnList(list, form, advanced);
  const auto definition = ReadTable(workbench.Session.ADOQuerySystem, database, table);
  if (!definition) return;
  for (const TableColumn& column : definition->columns) {
    ListItem row = RowOf(column);
    if (form == ColumnListForm::kDesigner) {
      row.AddCell("");
      if (advanced) row.AddCell("");
    }
    list.AddItem(std::move(row));
  }
  if (form == ColumnListForm::kDesigner) ListDescriptions(workbench, list, database, table);
}

}  // namespace dbkeeper
