// The designer's page of columns.

#include "app/workbench/StatementRun.h"
#include "catalog/ColumnList.h"
#include "catalog/ColumnTypes.h"
#include "catalog/ExtendedProperty.h"
#include "table_designer/ColumnText.h"
#include "table_designer/Unit_Table.h"

namespace dbkeeper {

namespace {

// Locked fields hold 0.
void Allow(TFnpNumericEdit& field, bool allowed) {
  if (!allowed) field.SetValue(0);
  field.Lock(!allowed);
}

}  // namespace

void TForm_Table::BindColumnPage() {
  for (const ColumnType& type : kColumnTypes) {
    ComboBox_Column_Type.Items.Add(std::string(type.name));
  }
  ComboBox_Column_Type.OnChange = [this] { ComboBox_Column_TypeChange(); };
  SBtn_Columns_New.OnClick = [this] { SBtn_Columns_NewClick(); };
  SBtn_Columns_Update.OnClick = [this] { SBtn_Columns_UpdateClick(); };
  SBtn_Columns_Drop.OnClick = [this] { SBtn_Columns_DropClick(); };
}

void TForm_Table::ShowColumns() {
  columns_shown_ = true;
  if (table_.Exists()) {
    ListTableColumns();
    return;
  }
  const ListUpdate update(ListView);
  ResetColumnList(ListView, ColumnListForm::kDesigner, workbench_.Switches.Advanced);
  for (const ListItem& row : designed_) ListView.AddItem(row);
}

void TForm_Table::ListTableColumns() {
  ListColumns(workbench_, ListView, Edit_DataBase.Text(), Edit_TableName.Text(),
              ColumnListForm::kDesigner);
}

void TForm_Table::ComboBox_Column_TypeChange() {
  const TypeRule rule = RuleOf(ComboBox_Column_Type.Text());
  const bool everything = rule == TypeRule::kEverything;
  const bool digits = rule == TypeRule::kSizeAndScale || everything;
  const bool identity = rule == TypeRule::kIdentity || everything;
  Allow(Fne_Column_Size, digits || rule == TypeRule::kSize);
  Allow(Fne_Column_MinSize, digits);
  Allow(Fne_Column_Ide_Start, identity);
  Allow(Fne_Column_Ide_Step, identity);
}

void TForm_Table::SBtn_Columns_NewClick() {
  Edit_Column_Comment.Text = std::string();
  Edit_Column_Note.Clear();
  Edit_Column_Default.Text = std::string();
  Edit_Column_Default.Lock(false);
  ComboBox_Column_Type.SetItemIndex(-1);
  ComboBox_Column_Type.Enabled = true;
  CheckBox_Column_nullable.Checked = true;
  Allow(Fne_Column_Size, true);
  Allow(Fne_Column_MinSize, true);
  Fne_Column_Size.SetValue(0);
  Fne_Column_MinSize.SetValue(0);
  Allow(Fne_Column_Ide_Start, false);
  Allow(Fne_Column_Ide_Step, false);
  column_.New();
}

void TForm_Table::SelectColumn() {
  const ColumnFields fields = FieldsOf(*ListView.Selected());
  Edit_Column_Name.Text = fields.name;
  ComboBox_Column_Type.SetItemIndex(ComboBox_Column_Type.Items.IndexOf(fields.type));
  ComboBox_Column_TypeChange();
  Fne_Column_Size.SetValue(fields.size);
  Fne_Column_MinSize.SetValue(fields.scale);
  CheckBox_Column_nullable.Checked = fields.nullable;
  Edit_Column_Default.Text = fields.default_value;
  Fne_Column_Ide_Start.SetValue(fields.identity_start);
  Fne_Column_Ide_Step.SetValue(fields.identity_step);
  Edit_Column_Comment.Text = fields.comment;
  Edit_Column_Note.Text = fields.note;
  column_.Show(Record::kExisting);
}

ColumnFields TForm_Table::Fields() const {
  return {.name = Edit_Column_Name.Text(),
          .type = ComboBox_Column_Type.Text(),
          .size = Fne_Column_Size.Value(),
          .scale = Fne_Column_MinSize.Value(),
          .nullable = CheckBox_Column_nullable.Checked(),
          .default_value = Edit_Column_Default.Text(),
          .identity_start = Fne_Column_Ide_Start.Value(),
          .identity_step = Fne_Column_Ide_Step.Value(),
          .comment = Edit_Column_Comment.Text(),
          .note = Edit_Column_Note.Text()};
}

void TForm_Table::SBtn_Columns_UpdateClick() {
  if (!table_.Exists()) {
    RegisterDesignedColumn();
    SBtn_Columns_NewClick();
    return;
  }
  const bool done = column_.Exists() ? AlterColumn() : AddColumn();
  if (!done) return;
  ListTableColumns();
  SBtn_Columns_NewClick();
}

// Of a row that stands already the type deliberately stays as it was: the cells behind it are
// written.
void TForm_Table::RegisterDesignedColumn() {
  const ColumnFields fields = Fields();
  const std::vector<std::string> cells = CellsOf(fields, workbench_.Switches.Advanced);
  const ListUpdate update(ListView);
  if (!column_.Exists()) {
    ListItem row;
    row.AddCell(fields.name);
    for (const std::string& cell : cells) row.AddCell(cell);
    ListView.AddItem(std::move(row));
    return;
  }
  for (std::size_t row = 0; row < ListView.Items().size(); ++row) {
    if (ListView.Items()[row].Caption() != fields.name) continue;
    for (std::size_t cell = kSizeCell; cell < cells.size(); ++cell) {
      ListView.SetSubItem(row, cell, cells[cell]);
    }
  }
}

bool TForm_Table::AddColumn() {
  const ColumnFields fields = Fields();
  const std::string& table = Edit_TableName.Text();
  const std::vector<std::string> lines = AddColumnLines(table, fields);
  std::string command;
  for (const std::string& line : lines) command += (command.empty() ? "" : "\r\n") + line;
  StatementRun run = {.question = "Field:" + fields.name + " を追加します。　宜しいですか？",
                      .use = UseText(),
                      .statements = {command},
                      .status = lines.front()};
  const PropertyOwner column = {table, fields.name};
  if (!fields.comment.empty()) {
    run.statements.push_back(AddPropertyStatement(kDescriptionProperty, column, fields.comment));
  }
  if (workbench_.Switches.Advanced && !fields.note.empty()) {
    // Deliberately the comment's text first, and then what the selected row's note asks for, which
    // the server refuses where there is none: two notes of one column.
    run.statements.push_back(AddPropertyStatement(kNoteProperty, column, fields.comment));
    run.statements.push_back(
        PropertyStatement(kNoteProperty, column, !SelectedCell(kNoteCell).empty(), fields.note));
  }
  return RunStatements(workbench_, run);
}

bool TForm_Table::AlterColumn() {
  const ColumnFields fields = Fields();
  const std::string& table = Edit_TableName.Text();
  const std::string command = AlterColumnText(table, fields);
  StatementRun run = {
      .question = "Field:" + fields.name +
                  " を変更してよろしいですか?\r ※ サイズを小さく変更した"
                  "場合などはデータの一部が失われることもありますが、宜しいですか？",
      .use = UseText(),
      .statements = {command},
      .status = command};
  const PropertyOwner column = {table, fields.name};
  const auto change = [&](std::string_view property, ColumnCell cell, const std::string& text) {
    std::string statement = PropertyStatement(property, column, !SelectedCell(cell).empty(), text);
    if (!statement.empty()) run.statements.push_back(std::move(statement));
  };
  change(kDescriptionProperty, kCommentCell, fields.comment);
  if (workbench_.Switches.Advanced) change(kNoteProperty, kNoteCell, fields.note);
  return RunStatements(workbench_, run);
}

std::string TForm_Table::SelectedCell(std::size_t cell) const {
  const ListItem* const row = ListView.Selected();
  return row != nullptr ? std::string(row->SubItem(cell)) : std::string();
}

void TForm_Table::SBtn_Columns_DropClick() {
  if (!column_.Exists()) return;
  const std::string name = Edit_Column_Name.Text();
  if (table_.Exists()) {
    const bool done = RunStatements(
        workbench_, {.question = "Field:" + name +
                                 " を削除してよろしいですか?\r ※ データも消えてしまいます。　"
                                 "宜しいですか？",
                     .use = UseText(),
                     .statements = {"alter table " + BracketedTable() + " drop column " + name}});
    if (!done) return;
    ListTableColumns();
  } else {
    const ListUpdate update(ListView);
    for (std::size_t row = ListView.Items().size(); row-- > 0;) {
      if (ListView.Items()[row].Caption() == name) ListView.DeleteItem(row);
    }
  }
  SBtn_Columns_NewClick();
}

}  // namespace dbkeeper
