#include "testdata/Unit_Table_TestData.h"

#include <cmath>

#include "app/support/AnsiTextFile.h"
#include "app/support/DateText.h"
#include "app/support/Errors.h"
#include "app/support/Files.h"
#include "app/support/Messages.h"
#include "app/support/NumberText.h"
#include "app/support/Progress.h"
#include "app/support/TextLines.h"
#include "catalog/BulkCopy.h"
#include "catalog/ColumnList.h"
#include "testdata/SettingsLines.h"

namespace dbkeeper {

namespace {

constexpr double kUsualRows = 1000;
constexpr std::int64_t kDisplays = 20;           // of the rows still to go, in a run
constexpr std::int64_t kRowsBetweenAsks = 1024;  // whether the operator wants to stop
constexpr std::string_view kDateForm = "yyyy/mm/dd";
constexpr std::string_view kValueFileFilter = "ﾃｷｽﾄﾌｧｲﾙ(*.txt)|*.txt|全てのﾌｧｲﾙ(*.*)|*.*";
constexpr std::string_view kPatternHelp =
    "※ パターン文字列\r"
    "　書式に従ったランダムな文字列を生成します\r"
    "　特殊文字: #数値, *英数字, ?英文字, @英大文字\r"
    "　　　例:\r"
    "　　　　ABC   =>  ABC \r"
    "　　　　RM*   =>  RMK, RMA\r"
    "　　　　A###  =>  A23, A612";

// Which editors a pattern shows.
struct ShownEditors {
  bool start = false;
  bool end = false;
  bool dates = false;
  bool text = false;
  bool file = false;
  bool help = false;
};

constexpr ShownEditors EditorsOf(ParameterEditors editors) {
  switch (editors) {
    case ParameterEditors::kStart:
      return {.start = true};
    case ParameterEditors::kStartAndEnd:
      return {.start = true, .end = true};
    case ParameterEditors::kDates:
      return {.dates = true};
    case ParameterEditors::kText:
      return {.text = true};
    case ParameterEditors::kFile:
      return {.text = true, .file = true};
    case ParameterEditors::kPatternString:
      return {.text = true, .help = true};
  }
  return {};
}

const PatternRow* RowOf(Pattern pattern) {
  for (const PatternRow& row : kPatterns) {
    if (row.pattern == pattern) return &row;
  }
  return nullptr;
}

}  // namespace

TForm_Table_TestData::TForm_Table_TestData(const Workbench& workbench)
    : Form("Form_Table_TestData"),
      Fne_Null("Fne_Null", workbench.Host.locale.DecimalSeparator(), 1, "null % : "),
      Fne_Start("Fne_Start", workbench.Host.locale.DecimalSeparator(), 0),
      Fne_End("Fne_End", workbench.Host.locale.DecimalSeparator(), 0),
      Fne_Max("Fne_Max", workbench.Host.locale.DecimalSeparator(), 0, "件数 : "),
      workbench_(workbench) {
  Caption = "試験用ダミーデータ作成";
  Edit_DataBase.Lock(true);
  Edit_TableName.Lock(true);
  Edit_FieldName.Lock(true);
  for (const PatternRow& row : kPatterns) CmbBox_Pattern.Items.Add(std::string(row.text));
  Lbl_PHelp.Caption = std::string(kPatternHelp);
  Fne_Max.SetValue(kUsualRows);
  ShowEditors(nullptr);
  Sbtn_Bulk_ins.Enabled = false;

  CmbBox_Pattern.OnChange = [this] { CmbBox_PatternSelect(); };
  ListView.OnSelectItem = [this] { ListViewSelectItem(); };
  Sbtn_ParamUp.OnClick = [this] { Sbtn_ParamUpClick(); };
  Sbtn_ParamDel.OnClick = [this] { Sbtn_ParamDelClick(); };
  Sbtn_FileName.OnClick = [this] { Sbtn_FileNameClick(); };
  SBtn_Create.OnClick = [this] { SBtn_CreateClick(); };
  Sbtn_Bulk_ins.OnClick = [this] { Sbtn_Bulk_insClick(); };
  Sbtn_SaveCfg.OnClick = [this] { Sbtn_SaveCfgClick(); };
  Sbtn_LoadCfg.OnClick = [this] { Sbtn_LoadCfgClick(); };
  Btn_Close.OnClick = [this] { Btn_CloseClick(); };
}

void TForm_Table_TestData::SetUp(const std::string& database, const std::string& table) {
  SBtn_Create.Enabled = true;
  Sbtn_Bulk_ins.Enabled = false;
  Edit_DataBase.Text = database;
  Edit_TableName.Text = table;
  ListColumns(workbench_, ListView, database, table, ColumnListForm::kTestData);
}

void TForm_Table_TestData::ShowEditors(const PatternRow* pattern) {
  const ShownEditors shown = pattern != nullptr ? EditorsOf(pattern->editors) : ShownEditors{};
  Lbl_Param1.Caption = std::string(pattern != nullptr ? pattern->caption : "");
  Lbl_Param1.Visible = pattern != nullptr;
  Fne_Start.Visible = shown.start;
  Fne_End.Visible = shown.end;
  DateTimePicker_Start.Visible = shown.dates;
  DateTimePicker_End.Visible = shown.dates;
  Lbl_Param2.Visible = shown.end || shown.dates;
  Edit_ParamStr.Visible = shown.text;
  Sbtn_FileName.Visible = shown.file;
  Lbl_PHelp.Visible = shown.help;
}

void TForm_Table_TestData::CmbBox_PatternSelect() {
  ShowEditors(RowOf(PatternOf(CmbBox_Pattern.Text())));
}

void TForm_Table_TestData::ListViewSelectItem() {
  const ListItem* const column = ListView.Selected();
  if (column == nullptr) return;
  Edit_FieldName.Text = std::string(column->Caption());
  Edit_ParamStr.Text = std::string();
  Fne_Null.SetValue(0);
  Fne_Start.SetValue(0);
  Fne_End.SetValue(0);
  CmbBox_Pattern.SetItemIndex(-1);
  ShowEditors(nullptr);
  const Pattern pattern = PatternOf(column->SubItem(kPatternCell));
  if (pattern == Pattern::kNone) return;

  CmbBox_Pattern.SetItemIndex(static_cast<int>(pattern) - 1);
  CmbBox_PatternSelect();
  const std::string_view null_rate = column->SubItem(kNullRateCell);
  if (!null_rate.empty()) Fne_Null.SetValue(ParseDecimal(null_rate));
  ShowParameters(pattern, *column);
}

void TForm_Table_TestData::ShowParameters(Pattern pattern, const ListItem& column) {
  const std::string_view a = column.SubItem(kParameterACell);
  const std::string_view b = column.SubItem(kParameterBCell);
  const auto date = [this](std::string_view text) {
    const auto value = ParseHostDate(text, workbench_.Host.locale.ShortDateFormat());
    if (!value) throw ConvertError(messages::Fill(messages::kNotADate, text));
    return *value;
  };
  switch (RowOf(pattern)->editors) {
    case ParameterEditors::kStartAndEnd:
      Fne_End.SetValue(ParseDecimal(b));
      [[fallthrough]];
    case ParameterEditors::kStart:
      Fne_Start.SetValue(ParseDecimal(a));
      return;
    case ParameterEditors::kDates:
      DateTimePicker_Start.Value = date(a);
      DateTimePicker_End.Value = date(b);
      return;
    case ParameterEditors::kText:
    case ParameterEditors::kFile:
    case ParameterEditors::kPatternString:
      Edit_ParamStr.Text = std::string(a);
  }
}

void TForm_Table_TestData::Sbtn_ParamUpClick() {
  const PatternRow* const pattern = RowOf(PatternOf(CmbBox_Pattern.Text()));
  if (ListView.SelCount() == 0 || pattern == nullptr) return;
  std::string a;
  std::string b;
  switch (pattern->editors) {
    case ParameterEditors::kStartAndEnd:
      b = DecimalText(Fne_End.Value());
      [[fallthrough]];
    case ParameterEditors::kStart:
      a = DecimalText(Fne_Start.Value());
      break;
    case ParameterEditors::kDates:
      a = FormatDateTime(DateTimePicker_Start.Value(), kDateForm);
      b = FormatDateTime(DateTimePicker_End.Value(), kDateForm);
      break;
    case ParameterEditors::kText:
    case ParameterEditors::kFile:
    case ParameterEditors::kPatternString:
      a = Edit_ParamStr.Text();
  }
  const std::size_t row = ListView.Selection().front();
  const ListUpdate update(ListView);
  ListView.SetSubItem(row, kPatternCell, pattern->text);
  ListView.SetSubItem(row, kNullRateCell, DecimalText(Fne_Null.Value()));
  ListView.SetSubItem(row, kParameterACell, a);
  ListView.SetSubItem(row, kParameterBCell, b);
}

void TForm_Table_TestData::Sbtn_ParamDelClick() {
  if (ListView.SelCount() == 0 || CmbBox_Pattern.ItemIndex() < 0) return;
  const std::size_t row = ListView.Selection().front();
  {
    const ListUpdate update(ListView);
    for (std::size_t cell = kPatternCell; cell <= kParameterBCell; ++cell) {
      ListView.SetSubItem(row, cell, "");
    }
  }
  CmbBox_Pattern.SetItemIndex(-1);
  ShowEditors(nullptr);
  Edit_ParamStr.Text = std::string();
  Fne_Start.SetValue(0);
  Fne_End.SetValue(0);
}

void TForm_Table_TestData::Sbtn_FileNameClick() {
  const auto file =
      workbench_.Host.dialogs.OpenFile({.filter = std::string(kValueFileFilter),
                                        .folder = PathText(workbench_.ProgramFolder / "pattern")});
  if (file) Edit_ParamStr.Text = *file;
}

void TForm_Table_TestData::SBtn_CreateClick() {
  ValueFiles files(workbench_.Host.code_page);
  CountValueFiles(files);
  workbench_.Host.random.Seed();
  SBtn_Create.Enabled = false;
  if (WriteRows(files) == Outcome::kDone) {
    Fne_Max.SetValue(0);
    Sbtn_Bulk_ins.Enabled = true;
  }
  SBtn_Create.Enabled = true;
}

void TForm_Table_TestData::CountValueFiles(ValueFiles& files) {
  for (std::size_t row = 0; row < ListView.Items().size(); ++row) {
    const ListItem& column = ListView.Items()[row];
    if (PatternOf(column.SubItem(kPatternCell)) != Pattern::kFromFile) continue;
    const std::string name(column.SubItem(kParameterACell));
    std::error_code none;
    if (!std::filesystem::exists(PathOf(name), none)) continue;
    ListView.SetSubItem(row, kCountCell, std::to_string(files.Of(name).Count()));
  }
}

TForm_Table_TestData::Outcome TForm_Table_TestData::WriteRows(ValueFiles& files) {
  const std::int64_t rows = std::llround(Fne_Max.Value());
  AnsiTextFile file(workbench_.Host, DataFile(), Writing::kAsItGoes);
  RowBuilder builder(Settings(), workbench_.Host, files);
  LongWork work(workbench_.Host.progress, SBtn_Create.Caption());
  std::string text;
  std::int64_t not_shown = 0;
  for (std::int64_t row = 1; row <= rows; ++row) {
    text.clear();
    builder.Append(row, text);
    file.AnsiLine(text);
    if (++not_shown > rows / kDisplays) {
      Fne_Max.SetValue(static_cast<double>(rows - row));
      not_shown = 0;
    }
    if (row % kRowsBetweenAsks == 0 && !work.GoOn(row, rows)) return Outcome::kStopped;
  }
  file.Finish();
  return Outcome::kDone;
}

std::vector<ColumnSettings> TForm_Table_TestData::Settings() const {
  std::vector<ColumnSettings> settings;
  settings.reserve(ListView.Items().size());
  for (const ListItem& column : ListView.Items()) {
    const auto cell = [&column](std::size_t index) { return std::string(column.SubItem(index)); };
    settings.push_back({cell(kPatternCell), cell(kNullRateCell), cell(kParameterACell),
                        cell(kParameterBCell), cell(kCountCell)});
  }
  return settings;
}

void TForm_Table_TestData::Sbtn_Bulk_insClick() {
  ImportByBcp(workbench_, workbench_.Session.ServerName, Edit_DataBase.Text(), PathText(DataFile()),
              Edit_TableName.Text());
}

void TForm_Table_TestData::Sbtn_SaveCfgClick() {
  AnsiTextFile file(workbench_.Host, SettingsFile(), Writing::kWhole);
  for (const ListItem& column : ListView.Items()) file.Line(SettingsLine(column));
  file.Finish();
}

void TForm_Table_TestData::Sbtn_LoadCfgClick() {
  const std::filesystem::path path = SettingsFile();
  std::error_code none;
  if (!std::filesystem::exists(path, none)) {
    workbench_.Host.dialogs.ShowMessage("ファイルが存在しません");
    return;
  }
  const std::vector<std::string> lines = ReadTextLines(path, workbench_.Host.code_page);
  const ListUpdate update(ListView);
  for (const std::string& line : lines) ApplySettingsLine(line, ListView);
}

std::filesystem::path TForm_Table_TestData::DataFile() const {
  return workbench_.ProgramFolder / "work" / "DBKEEPER.tmp";
}

std::filesystem::path TForm_Table_TestData::SettingsFile() const {
  return workbench_.ProgramFolder / "cfg" /
         PathOf(Edit_DataBase.Text() + "_" + Edit_TableName.Text() + ".cfg");
}

}  // namespace dbkeeper
