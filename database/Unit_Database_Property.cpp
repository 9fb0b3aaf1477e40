#include "database/Unit_Database_Property.h"

#include <cmath>
#include <cstdio>
#include <optional>

#include "app/workbench/StatementRun.h"
#include "catalog/DatabaseList.h"

namespace dbkeeper {

namespace {

constexpr const char* kCreateCaption = "OK";
constexpr const char* kAttachCaption = "アタッチ";

constexpr const char* kDataFilter = "ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ(*.mdf)|*.mdf|全てのﾌｧｲﾙ(*.*)|*.*";
constexpr const char* kLogFilter = "ﾃﾞｰﾀﾍﾞｰｽ･ﾛｸﾞﾌｧｲﾙ(*.ldf)|*.ldf|全てのﾌｧｲﾙ(*.*)|*.*";

constexpr int kPercent = 0;
constexpr int kMegabytes = 1;

// The nearest whole number, ties to even; never a negative zero.
double Whole(const TFnpNumericEdit& edit) { return std::nearbyint(edit.Value()) + 0.0; }

std::string Decimal(double whole) {
  // Long enough for every double.
  char digits[320];
  std::snprintf(digits, sizeof digits, "%.0f", whole);
  return digits;
}

// The sizing controls of one file.
struct FileSizing {
  const TFnpNumericEdit& init_size;
  const CheckBox& auto_growth;
  const RadioGroup& growth_type;
  const TFnpNumericEdit& file_growth;
  const TFnpNumericEdit& max_size;
};

// The lines of one file below its name, up to its size.
std::string FileText(const std::string& file, const FileSizing& sizing) {
  return "       filename   = '" + file + "',\r\n" +  //
         "       size       = " + Decimal(Whole(sizing.init_size));
}

// What follows the size, with the closing parenthesis. Deliberately no growth clause where the box
// is not checked, which leaves the server's default growth in force, and no parenthesis where no
// growth type is chosen.
std::string GrowthText(const FileSizing& sizing, const char* after_megabytes) {
  if (!sizing.auto_growth.Checked) return ")\r\n";
  std::string text = ",\r\n";
  const double maximum = Whole(sizing.max_size);
  if (maximum > 0) text += "       maxsize    = " + Decimal(maximum) + ",\r\n";
  const std::string growth = "       filegrowth = " + Decimal(Whole(sizing.file_growth));
  if (sizing.growth_type.ItemIndex == kPercent) text += growth + "%)\r\n";
  if (sizing.growth_type.ItemIndex == kMegabytes) text += growth + ")" + after_megabytes;
  return text;
}

void PrepareGrowthType(RadioGroup& group) {
  group.Caption = " 拡張方式 ";
  group.Items.Assign({"%", "MB"});
  group.ItemIndex = kPercent;
}

}  // namespace

TForm_Database_Property::TForm_Database_Property(const Workbench& workbench)
    : Form("Form_Database_Property"),
      Fne_Mdf_Init_Size("Fne_Mdf_Init_Size", workbench.Host.locale.DecimalSeparator(), 0,
                        "初期サイズ :"),
      Fne_Mdf_FileGrowth("Fne_Mdf_FileGrowth", workbench.Host.locale.DecimalSeparator(), 0,
                         "サイズ拡張 :"),
      Fne_Mdf_Max_Size("Fne_Mdf_Max_Size", workbench.Host.locale.DecimalSeparator(), 0,
                       "最大サイズ :"),
      Fne_Ldf_Init_Size("Fne_Ldf_Init_Size", workbench.Host.locale.DecimalSeparator(), 0,
                        "初期サイズ :"),
      Fne_Ldf_FileGrowth("Fne_Ldf_FileGrowth", workbench.Host.locale.DecimalSeparator(), 0,
                         "サイズ拡張 :"),
      Fne_Ldf_Max_Size("Fne_Ldf_Max_Size", workbench.Host.locale.DecimalSeparator(), 0,
                       "最大サイズ :"),
      workbench_(workbench) {
  Caption = "Database設定";
  for (TFnpNumericEdit* edit : {&Fne_Mdf_Init_Size, &Fne_Ldf_Init_Size}) edit->SetValue(10);
  for (TFnpNumericEdit* edit : {&Fne_Mdf_FileGrowth, &Fne_Ldf_FileGrowth}) edit->SetValue(10);
  for (RadioGroup* group : {&RadioGroup_Mdf_GrowthType, &RadioGroup_Ldf_GrowthType}) {
    PrepareGrowthType(*group);
  }
  Button3.OnClick = [this] { Button3Click(); };
  Button4.OnClick = [this] { Button4Click(); };
  SBtn_Update.OnClick = [this] { SBtn_UpdateClick(); };
  SBtn_Cancel.OnClick = [this] { SBtn_CancelClick(); };
}

void TForm_Database_Property::SetUp(DatabaseFiles files) {
  for (Edit* edit : {&Edit_DatabaseName, &Edit_DataFileName, &Edit_LogFileName}) edit->Text = "";
  files_ = files;
  const bool create = files == DatabaseFiles::kCreate;
  Pnl_MDF.Visible = create;
  Pnl_LDF.Visible = create;
  SBtn_Update.Caption = create ? kCreateCaption : kAttachCaption;
}

// A file to attach is chosen, one to create is named after the database in a chosen folder; what
// the operator cancels leaves the present text.
std::string TForm_Database_Property::ChooseFile(const std::string& present,
                                                const std::string& filter,
                                                std::string_view suffix) const {
  Dialogs& dialogs = workbench_.Host.dialogs;
  if (files_ != DatabaseFiles::kCreate) return dialogs.OpenFile({filter, "", ""}).value_or(present);
  std::optional<std::string> folder = dialogs.ChooseFolder();
  if (!folder) return present;
  if (!folder->ends_with('\\')) *folder += '\\';
  return *folder + Edit_DatabaseName.Text() + std::string(suffix);
}

void TForm_Database_Property::Button3Click() {
  Edit_DataFileName.Text = ChooseFile(Edit_DataFileName.Text, kDataFilter, "_dat.mdf");
}

void TForm_Database_Property::Button4Click() {
  Edit_LogFileName.Text = ChooseFile(Edit_LogFileName.Text, kLogFilter, "_log.ldf");
}

void TForm_Database_Property::SBtn_UpdateClick() {
  if (files_ == DatabaseFiles::kCreate) {
    Create();
  } else {
    Attach();
  }
  Close();
}

void TForm_Database_Property::Attach() {
  RunStatements(workbench_,
                {.use = "use master",
                 .statements = {"exec sp_attach_db @dbname    = [" + Edit_DatabaseName.Text() +
                                "], @filename1 = N'" + Edit_DataFileName.Text() +
                                "', @filename2 = N'" + Edit_LogFileName.Text() + "'"},
                 .rule = StatusRule::kNone,
                 .refresh = RefreshDatabases});
}

void TForm_Database_Property::Create() {
  const FileSizing data = {Fne_Mdf_Init_Size, CheckBox_Mdf_AutoGrowth, RadioGroup_Mdf_GrowthType,
                           Fne_Mdf_FileGrowth, Fne_Mdf_Max_Size};
  const FileSizing log = {Fne_Ldf_Init_Size, CheckBox_Ldf_AutoGrowth, RadioGroup_Ldf_GrowthType,
                          Fne_Ldf_FileGrowth, Fne_Ldf_Max_Size};
  const std::string& name = Edit_DatabaseName.Text;
  const std::string statement = "create database [" + name + "]\r\n" +           //
                                "    on(name       = [" + name + "_dat],\r\n" +  //
                                FileText(Edit_DataFileName.Text, data) +
                                GrowthText(data, "\r\n") +                       //
                                "log on(name       = [" + name + "_log],\r\n" +  //
                                FileText(Edit_LogFileName.Text, log) + GrowthText(log, "");
  RunStatements(workbench_, {.statements = {statement}, .rule = StatusRule::kNone});
  // The list keeps showing the state before; the next click on the node lists anew.
  if (TreeNode* const node = workbench_.Tree.Selected()) node->DeleteChildren();
}

void TForm_Database_Property::SBtn_CancelClick() { Close(); }

}  // namespace dbkeeper
