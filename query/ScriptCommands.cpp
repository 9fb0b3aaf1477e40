// Texts from files: dropped scripts with their steps, and templates.

#include <algorithm>
#include <cstddef>

#include "app/support/Files.h"
#include "app/support/TextLines.h"
#include "app/support/Utf8.h"
#include "query/QueryMessages.h"
#include "query/ScriptFile.h"
#include "query/Unit_Exec_SQL.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kLongestDroppedPath = 255;  // characters

std::string FirstCharacters(const std::string& text, std::size_t count) {
  std::size_t end = 0;
  for (; count > 0 && end < text.size(); --count) end += Utf8Length(text, end);
  return text.substr(0, end);
}

}  // namespace

void TFormExecSQL::FilesDropped(const std::vector<std::string>& files) {
  if (files.empty()) return;
  dropped_file_ = FirstCharacters(files.front(), kLongestDroppedPath);
  MemoSQL.Clear();
  CmbBox_CmdSet.Items.Clear();
  CmbBox_CmdSet.SetItemIndex(-1);
  // What stands before the first separator counts as step 1.
  ScriptPart part = TakeSteps(ReadTextLines(PathOf(dropped_file_), host_.code_page), 1, 1);
  if (!part.labels.empty()) {
    Panel_SQL_CmdSet.Visible = true;
    CmbBox_CmdSet.Items.Assign(std::move(part.labels));
    CmbBox_CmdSet.SetItemIndex(0);
  }
  SetToEditor(part.lines);
}

void TFormExecSQL::SetToEditor(const std::vector<std::string>& lines) {
  MemoSQL.SetLines(lines);
  MemoSQL.CaretRequested.Emit(TextEnd::kStart);
  MemoSQL.SetFocus();
}

// Steps are deliberately taken by their place in the list, and not by their number.
void TFormExecSQL::SBtn_CmdSetSetClick() {
  const int chosen = CmbBox_CmdSet.ItemIndex();
  if (chosen < 0) return;
  MemoSQL.Clear();
  const ScriptPart part =
      TakeSteps(ReadTextLines(PathOf(dropped_file_), host_.code_page), 0, chosen + 1);
  if (!part.labels.empty()) Panel_SQL_CmdSet.Visible = true;
  SetToEditor(part.lines);
}

void TFormExecSQL::Sbtn_TableCloseClick() { Panel_SQL_CmdSet.Visible = false; }

void TFormExecSQL::PopupMenu_Memo_OpenClick() {
  const auto file = host_.dialogs.OpenFile(
      {"SQLﾌｧｲﾙ(*.sql)|*.sql|ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*", "", ""});
  if (file) FilesDropped({*file});
}

void TFormExecSQL::Sbtn_TemplateClick() { Panel_Template.Visible = Sbtn_Template.Down(); }

bool TFormExecSQL::TemplateNameUsable() {
  if (CmbBox_Template.Text().empty()) {
    host_.dialogs.ShowMessage("テンプレート名を入力してください。");
    return false;
  }
  if (!TemplateStore::CanName(ComboBox_DatabaseName.Text, CmbBox_Template.Text)) {
    host_.dialogs.ShowMessage(std::string(messages::kBadTemplateName));
    return false;
  }
  return true;
}

void TFormExecSQL::Sbtn_Template_SaveClick() {
  if (!TemplateNameUsable()) return;
  const std::string& database = ComboBox_DatabaseName.Text();
  const std::string name = CmbBox_Template.Text();
  if (templates_.Exists(database, name)) {
    const Answer answer =
        host_.dialogs.Ask({"既に同名のテンプレートが存在します。\r上書きしますか？", "確認",
                           Buttons::kYesNo, Icon::kStop, Answer::kNo});
    // Deliberately the wrong way round: operators are used to "Yes" keeping the old template.
    if (answer == Answer::kYes) return;
  } else {
    CmbBox_Template.Items.Add(name);
  }
  templates_.Save(database, name, MemoSQL.Text);
}

void TFormExecSQL::Sbtn_Template_LoadClick() {
  if (!TemplateNameUsable()) return;
  const std::string& database = ComboBox_DatabaseName.Text();
  if (!templates_.Exists(database, CmbBox_Template.Text)) {
    host_.dialogs.ShowMessage("テンプレート・ファイルが存在しません。");
    return;
  }
  MemoSQL.SetLines(templates_.Load(database, CmbBox_Template.Text));
}

void TFormExecSQL::Sbtn_Template_SerchClick() {
  CmbBox_Template.Text = std::string();
  CmbBox_Template.Items.Assign(templates_.Names(ComboBox_DatabaseName.Text));
}

}  // namespace dbkeeper
