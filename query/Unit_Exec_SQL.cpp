// The query window: its creation, the choice of the database, running a text, the history.

#include "query/Unit_Exec_SQL.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "app/support/DateText.h"
#include "app/support/Messages.h"
#include "query/QueryMessages.h"
#include "query/ScriptFile.h"

namespace dbkeeper {

namespace {

// Widths of the strip with navigator and database.
constexpr int kStripReading = 294;
constexpr int kStripEditing = 446;

constexpr const char* kHistoryHint = "過去に実行したSQL文を読み出します";

struct HintRow {
  Button TFormExecSQL::*button;
  const char* hint;
};

constexpr HintRow kHints[] = {
    {&TFormExecSQL::SpeedButton3, "更新系SQL文を実行します"},
    {&TFormExecSQL::Sbtn_SQL_Log_Back, kHistoryHint},
    {&TFormExecSQL::Sbtn_SQL_Log_Forward, kHistoryHint},
    {&TFormExecSQL::Sbtn_Count,
     "Select件数を表示しますが、\r件数が多いと時間がかかる場合があります"},
    {&TFormExecSQL::SpeedButton7,
     "CSV形式で出力します。\r(Tableの全ﾚｺｰﾄﾞを出力するならBCPの方が高速です)"},
    {&TFormExecSQL::Sbtn_EasySQL,
     "SQL文の作成支援機能です。\r ①「レイアウト取得」を押す\r ②抽出/入力 などの動作を選びます\r "
     "③選択/更新などしたいフィールドを選択\r ④「項目」を押す\r ⑤抽出条件にしたいフィールドを選択\r "
     "⑥「条件」を押す\r ⑦必要な部分を修正"},
    {&TFormExecSQL::Sbtn_ServerMessage, "ServerMessage"},
    {&TFormExecSQL::SBtn_RE, "Edit/Ronly modeの切替機能"},
};

struct ClickRow {
  Button TFormExecSQL::*button;
  void (TFormExecSQL::*handler)();
};

constexpr ClickRow kClicks[] = {
    {&TFormExecSQL::Sbtn_Select, &TFormExecSQL::Sbtn_SelectClick},
    {&TFormExecSQL::SpeedButton3, &TFormExecSQL::SpeedButton3Click},
    {&TFormExecSQL::Sbtn_SQL_Log_Back, &TFormExecSQL::Sbtn_SQL_Log_BackClick},
    {&TFormExecSQL::Sbtn_SQL_Log_Forward, &TFormExecSQL::Sbtn_SQL_Log_ForwardClick},
    {&TFormExecSQL::Sbtn_Count, &TFormExecSQL::Sbtn_CountClick},
    {&TFormExecSQL::SpeedButton7, &TFormExecSQL::SpeedButton7Click},
    {&TFormExecSQL::Sbtn_EasySQL, &TFormExecSQL::Sbtn_EasySQLClick},
    {&TFormExecSQL::Sbtn_Template, &TFormExecSQL::Sbtn_TemplateClick},
    {&TFormExecSQL::Sbtn_ServerMessage, &TFormExecSQL::Sbtn_ServerMessageClick},
    {&TFormExecSQL::SBtn_RE, &TFormExecSQL::SBtn_REClick},
    {&TFormExecSQL::Sbtn_Template_Load, &TFormExecSQL::Sbtn_Template_LoadClick},
    {&TFormExecSQL::Sbtn_Template_Save, &TFormExecSQL::Sbtn_Template_SaveClick},
    {&TFormExecSQL::Sbtn_Template_Serch, &TFormExecSQL::Sbtn_Template_SerchClick},
    {&TFormExecSQL::Sbtn_TableClose, &TFormExecSQL::Sbtn_TableCloseClick},
    {&TFormExecSQL::SBtn_CmdSetSet, &TFormExecSQL::SBtn_CmdSetSetClick},
    {&TFormExecSQL::Sbtn_EasySQL_Get_Columns, &TFormExecSQL::Sbtn_EasySQL_Get_ColumnsClick},
    {&TFormExecSQL::Sbtn_EasySQL_Select, &TFormExecSQL::Sbtn_EasySQL_SelectClick},
    {&TFormExecSQL::Sbtn_EasySQL_Where, &TFormExecSQL::Sbtn_EasySQL_WhereClick},
    {&TFormExecSQL::Sbtn_EasySQL_OrderBy, &TFormExecSQL::Sbtn_EasySQL_OrderByClick},
    {&TFormExecSQL::Sbtn_EasySQL_Clear, &TFormExecSQL::Sbtn_EasySQL_ClearClick},
};

// So many that a box can show them; the message pane has them all.
std::vector<ServerMessage> Shortened(std::vector<ServerMessage> failures) {
  constexpr std::size_t kShown = 10;
  if (failures.size() <= kShown) return failures;
  const std::string rest = std::to_string(failures.size() - kShown);
  failures.resize(kShown);
  failures.push_back({.text = messages::Fill(messages::kMoreMessages, rest)});
  return failures;
}

}  // namespace

// The query knows nothing of the session's name for the current database: what the window records
// there is a claim about the connection that the texts run here deliberately leave alone.
TFormExecSQL::TFormExecSQL(const Workbench& workbench)
    : Form("FormExecSQL"),
      Fne_EasySQL_Top("Fne_EasySQL_Top", workbench.Host.locale.DecimalSeparator(), 0, "Top:"),
      workbench_(workbench),
      session_(workbench.Session),
      host_(workbench.Host),
      query_(workbench.Session.TheConnection(), workbench.Host.locale, nullptr),
      rows_(workbench.Host.locale),
      pane_({DBGrid1, DBNavigator1, SBtn_RE, Panel_ToolRight, kStripReading, kStripEditing}, rows_,
            workbench),
      templates_(workbench.ProgramFolder, workbench.Host) {
  Caption =
      "SQL発行:   ScriptﾌｧｲﾙのDrop可, 「/* COM01:xxxx */」, 「/* COM02:aaaa "
      "*/」形式の区切行がある場合, Step分けの投入可";
  for (const HintRow& row : kHints) (this->*row.button).Hint = std::string(row.hint);
  ComboBox_EasySQL_Mode.Items.Assign({"抽出", "入力", "削除", "更新"});
  ComboBox_EasySQL_Mode.SetItemIndex(0);
  Fne_EasySQL_Top.MaxLength = 9;
  Panel_Template.Visible = false;
  Panel_SQL_CmdSet.Visible = false;
  MemoServerMessage.ReadOnly = true;
  Sbtn_SQL_Log_Back.Enabled = false;
  Sbtn_SQL_Log_Forward.Enabled = false;
  Sbtn_Count.Enabled = false;
  rows_.Reopen = [this] { OpenResult(); };
  DBGrid1.Popup = &PopupMenu_Grid;
  BuildMenus();
  JoinEvents();
}

TFormExecSQL::~TFormExecSQL() { FormDestroy(); }

void TFormExecSQL::JoinEvents() {
  for (const ClickRow& row : kClicks) {
    (this->*row.button).OnClick = [this, handler = row.handler] { (this->*handler)(); };
  }
  ComboBox_DatabaseName.OnChange = [this] { ComboBox_DatabaseNameChange(); };
  OnShow = [this] { FormShow(); };
  OnClose = [this] { FormClose(); };
}

void TFormExecSQL::BuildMenus() {
  auto open = std::make_unique<MenuItem>("PopupMenu_Memo_Open", "Scriptﾌｧｲﾙを開く ...");
  open->OnClick = [this] { PopupMenu_Memo_OpenClick(); };
  PopupMenu_Memo.Add(std::move(open));

  MenuItem& blob = PopupMenu_Grid.Add(std::make_unique<MenuItem>("PopupMenu_Grid_Blob", "Blob"));
  auto load = std::make_unique<MenuItem>("PopupMenu_Grid_Blob_Load", "Load");
  load->OnClick = [this] { PopupMenu_Grid_Blob_LoadClick(); };
  blob.Add(std::move(load));
  auto save = std::make_unique<MenuItem>("PopupMenu_Grid_Blob_Save", "Save");
  save->OnClick = [this] { PopupMenu_Grid_Blob_SaveClick(); };
  blob.Add(std::move(save));
}

void TFormExecSQL::FormCreate() {
  AcceptsFiles = true;
  for (Control* hidden :
       {static_cast<Control*>(&MemoServerMessage), static_cast<Control*>(&Splitter_ServerMessage),
        static_cast<Control*>(&Panel_EasySQL), static_cast<Control*>(&Splitter_EasySQL)}) {
    hidden->Visible = false;
  }
  history_ = SqlHistory();
}

void TFormExecSQL::FormShow() { ReleaseOpen(); }
void TFormExecSQL::FormClose() { ReleaseOpen(); }
void TFormExecSQL::FormDestroy() { CloseResult(); }

void TFormExecSQL::CloseResult() {
  rows_.Close();
  query_.Close();
}

void TFormExecSQL::ReleaseOpen() {
  CloseResult();
  Sbtn_Select.Caption = "Open";
  Sbtn_Select.Down = false;
  Sbtn_Count.Enabled = false;
}

void TFormExecSQL::OpenForDatabase(const std::string& database) {
  std::vector<std::string> names;
  for (const auto& folder : workbench_.Tree.Roots().front()->Children()) {
    if (folder->Text() != "Database") continue;
    for (const auto& node : folder->Children()) names.push_back(node->Text());
  }
  ComboBox_DatabaseName.Items.Assign(std::move(names));
  ComboBox_DatabaseName.SetItemIndex(ComboBox_DatabaseName.Items.IndexOf(database));
  SettleBuilder();
  UseDatabase(database);
}

void TFormExecSQL::ShowServer(const std::string& server) {
  ReleaseOpen();
  ComboBox_DatabaseName.Items.Clear();
  ComboBox_DatabaseName.SetItemIndex(-1);
  Label_Server.Caption = server;
  SettleBuilder();
}

void TFormExecSQL::ComboBox_DatabaseNameChange() {
  SettleBuilder();
  UseDatabase(ComboBox_DatabaseName.Text);
}

void TFormExecSQL::UseDatabase(const std::string& database) {
  if (session_.CurrentDatabase() == database) return;
  ReleaseOpen();
  const BusyScope busy(host_.windows);
  query_.UseDatabase(database);
  session_.RecordCurrentDatabase(database);
}

void TFormExecSQL::ShowText(const std::string& text) {
  ReleaseOpen();
  MemoSQL.Text = text;
}

void TFormExecSQL::RunOpen() {
  if (Sbtn_Select.Down) Sbtn_Select.UserClick();
  Sbtn_Select.UserClick();
}

void TFormExecSQL::Sbtn_SelectClick() {
  Caption = "SQL発行";
  if (!Sbtn_Select.Down) {
    ReleaseOpen();
    return;
  }
  session_.RecordCurrentDatabase(ComboBox_DatabaseName.Text);
  // The last batch is the one that is opened, and opened again when its rows are read anew.
  std::vector<std::string> batches = Batches(MemoSQL.Text);
  opened_sql_ = std::move(batches.back());
  batches.pop_back();
  if (!OpenResult(batches)) return;
  RecordHistory();
  Sbtn_Select.Caption = "Close";
  Sbtn_Count.Enabled = true;
}

bool TFormExecSQL::OpenResult(std::span<const std::string> before) {
  try {
    const BusyScope busy(host_.windows);
    CloseResult();
    if (!before.empty()) RunBatches(before);
    if (auto store = ReadResult()) {
      const std::vector<Field> fields = store->Fields();
      rows_.Open(std::move(store));
      if (pane_.Editing()) {
        rows_.AllowEditing(
            std::make_unique<RowEditor>(session_.TheConnection(), opened_sql_, fields));
      } else {
        rows_.ForbidEditing(std::string(messages::kOpenedReadOnly));
      }
      return true;
    }
  } catch (...) {
    ReleaseOpen();
    throw;
  }
  ReleaseOpen();
  return false;
}

std::unique_ptr<RowStore> TFormExecSQL::ReadResult() {
  std::unique_ptr<RowStore> store;
  Logged(opened_sql_, [&] {
    query_.Open(opened_sql_);
    if (!query_.Active()) return;
    RowReader& reader = *query_.Reader();
    store = std::make_unique<RowStore>(reader.Fields());
    if (!query_.Eof()) {
      store->Append(reader);
      store->ReadAll(reader);
    }
    NoteMessages();
    messages_.AddLine(messages::Fill(messages::kRowsRead, std::to_string(store->KnownRows())));
    int further = 0;
    while (reader.NextResult()) ++further;
    NoteMessages();
    if (further > 0) {
      messages_.AddLine(messages::Fill(messages::kFurtherResults, std::to_string(further)));
    }
  });
  query_.Close();
  return store;
}

void TFormExecSQL::SpeedButton3Click() {
  session_.RecordCurrentDatabase(ComboBox_DatabaseName.Text);
  ReleaseOpen();
  const std::int64_t affected = RunBatches(Batches(MemoSQL.Text));
  RecordHistory();
  Caption = "RowsAffected : " + std::to_string(affected);
}

std::int64_t TFormExecSQL::RunBatches(std::span<const std::string> batches) {
  const BusyScope busy(host_.windows);
  std::int64_t affected = -1;
  std::vector<ServerMessage> failures;
  for (const std::string& sql : batches) {
    try {
      Logged(sql, [&] {
        query_.Clear();
        query_.Add(sql);
        const std::int64_t rows = query_.ExecSQL();
        NoteMessages();
        if (rows < 0) return;
        messages_.AddLine(messages::Fill(messages::kRowsAffected, std::to_string(rows)));
        affected = std::max<std::int64_t>(affected, 0) + rows;
      });
    } catch (const ServerError& error) {
      if (batches.size() == 1 || !session_.Connected()) throw;
      failures.insert(failures.end(), error.Messages().begin(), error.Messages().end());
    }
  }
  if (!failures.empty()) throw ServerError(Shortened(std::move(failures)));
  return affected;
}

void TFormExecSQL::Logged(const std::string& sql, const std::function<void()>& run) {
  session_.TheConnection().TakeMessages();  // those of earlier statements are nobody's here
  messages_.BeginRun(FormatDateTime(host_.clock.Now(), "hh:nn:ss"), sql);
  const auto finish = [&] {
    NoteMessages();
    messages_.EndRun();
    ShowMessages();
  };
  try {
    run();
  } catch (const ServerError& error) {
    messages_.Add(error.Messages());
    finish();
    throw;
  }
  finish();
}

void TFormExecSQL::NoteMessages() { messages_.Add(session_.TheConnection().TakeMessages()); }

void TFormExecSQL::ShowMessages() {
  if (!MemoServerMessage.Visible) return;
  MemoServerMessage.Text = messages_.Text();
  MemoServerMessage.CaretRequested.Emit(TextEnd::kEnd);
}

void TFormExecSQL::Sbtn_ServerMessageClick() {
  MemoServerMessage.Visible = Sbtn_ServerMessage.Down();
  Splitter_ServerMessage.Visible = Sbtn_ServerMessage.Down();
  ShowMessages();
}

void TFormExecSQL::RecordHistory() {
  if (!history_.Record(MemoSQL.Text)) return;
  Sbtn_SQL_Log_Back.Enabled = true;
  Sbtn_SQL_Log_Forward.Enabled = false;
}

void TFormExecSQL::Sbtn_SQL_Log_BackClick() {
  if (history_.Back()) MemoSQL.Text = history_.Current();
  Sbtn_SQL_Log_Back.Enabled = !history_.AtOldest();
  Sbtn_SQL_Log_Forward.Enabled = true;
}

void TFormExecSQL::Sbtn_SQL_Log_ForwardClick() {
  if (history_.Forward()) MemoSQL.Text = history_.Current();
  Sbtn_SQL_Log_Forward.Enabled = !history_.AtNewest();
  Sbtn_SQL_Log_Back.Enabled = true;
}

}  // namespace dbkeeper
