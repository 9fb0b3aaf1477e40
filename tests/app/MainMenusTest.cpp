#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/support/AppFixture.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;

using Items = std::vector<std::unique_ptr<MenuItem>>;

// Captions in order: "~" before an invisible item, "*" before the default one, what a sub-menu
// holds in brackets behind its own.
std::string Dump(const Items& items) {
  std::string text;
  for (const auto& item : items) {
    if (!text.empty()) text += " / ";
    text += std::string(item->Visible ? "" : "~") + (item->Default ? "*" : "") + item->Caption();
    if (!item->Items().empty()) text += " {" + Dump(item->Items()) + "}";
  }
  return text;
}

void CollectEnabled(const Items& items, std::set<std::string>& captions) {
  for (const auto& item : items) {
    if (item->Enabled) captions.insert(item->Caption());
    CollectEnabled(item->Items(), captions);
  }
}

std::set<std::string> Enabled(PopupMenu& menu) {
  menu.UserPopup();
  std::set<std::string> captions;
  CollectEnabled(menu.Items(), captions);
  return captions;
}

class MainMenusTest : public AppFixture {
 protected:
  MainMenusTest() { app.Start(); }

  void SelectRow(const char* state) {
    ListView& list = main.ListViewMain;
    list.ClearItems();
    list.AddItem({"1", "name", state});
    list.Select({0});
  }

  TFormMain& main = app.FormMain;
};

struct MenuCase {
  const std::unique_ptr<PopupMenu> TFormMain::*menu;
  const char* items;
  std::set<std::string> for_a_selection;  // captions that are enabled only with one
};

TEST_F(MainMenusTest, HoldTheirItemsInOrderAndEnableThemByTheSelection) {
  const MenuCase cases[] = {
      {&TFormMain::PopupMenuServerCfg,
       "SQL 発行... / 表示内容のCSV出力... / SQL Serverﾈｯﾄﾜｰｸﾕｰﾃｨﾘﾃｨの起動 / "
       "ODBCﾃﾞｰﾀｿｰｽ ｱﾄﾞﾐﾆｽﾄﾚｰﾀの起動 / ｵﾝﾗｲﾝﾍﾙﾌﾟ表示 ... / Readme表示 ... / サポート HomePageへ "
       "...",
       {}},
      {&TFormMain::PopupMenu_Databases,
       "新規ﾃﾞｰﾀﾍﾞｰｽ ... / ~ﾌﾟﾛﾊﾟﾃｨ... / バックアップ {指定データベースの手動バックアップ ... / "
       "バックアップファイルを指定してのレストア ...} / DBの圧縮 / 最新の情報に更新 / SQL 発行... "
       "/ "
       "OnLine {通常 / ｼﾝｸﾞﾙ･ﾕｰｻﾞｰ / 管理者専用 / 読取専用} / OffLine / Detach Database / "
       "Attach Database ... / 削除",
       {"指定データベースの手動バックアップ ...", "OnLine", "OffLine", "Detach Database", "削除"}},
      {&TFormMain::PopupMenu_Table,
       "*開く / 新規ﾃｰﾌﾞﾙ... / ﾌﾟﾛﾊﾟﾃｨ / 権限の表示... / System Tableも表示 / 最新の情報に更新 / "
       "SQL 発行... / 表示内容のCSV出力... / 生成Script... / BCP {BCPによるｴｸｽﾎﾟｰﾄ ... / "
       "BCPによるｲﾝﾎﾟｰﾄ ... / 試験用Dumyデータの生成&& BCPによるｲﾝﾎﾟｰﾄ ...} / Table 管理 {容量調査 "
       "/ "
       "テーブル定義書の作成 (Excel形式)} / ~一括処理 {対象選択用のChkBox On/Off / "
       "~選択TableのTrncate(ﾚｺｰﾄﾞ全削除) / ~選択TableのDrop(削除)} / 削除",
       {"開く", "ﾌﾟﾛﾊﾟﾃｨ", "権限の表示...", "生成Script...", "削除", "BCP"}},
      {&TFormMain::PopupMenu_View,
       "開く... / 権限の表示... / SQL 発行... / 表示内容のCSV出力... / 生成Script... / 削除",
       {"開く...", "権限の表示...", "生成Script...", "削除"}},
      {&TFormMain::PopupMenu_Procedure,
       "権限の表示... / 最新の情報に更新 / SQL 発行... / 表示内容のCSV出力... / 生成Script... / "
       "削除",
       {"権限の表示...", "生成Script...", "削除"}},
      {&TFormMain::PopupMenu_Login,
       "新規ﾛｸﾞｲﾝ... / ﾊﾟｽﾜｰﾄﾞ変更 / 最新の情報に更新 / SQL 発行... / 表示内容のCSV出力... / 削除",
       {"ﾊﾟｽﾜｰﾄﾞ変更", "削除"}},
      {&TFormMain::PopupMenu_Users,
       "新規ﾕｰｻﾞｰ... / 最新の情報に更新 / SQL 発行... / 表示内容のCSV出力... / 削除",
       {"削除"}},
      {&TFormMain::PopupMenu_Roles,
       "新規ﾛｰﾙ... / ﾌﾟﾛﾊﾟﾃｨ / 最新の情報に更新 / SQL 発行... / 表示内容のCSV出力... / 削除",
       {"ﾌﾟﾛﾊﾟﾃｨ", "削除"}},
      {&TFormMain::PopupMenu_SvRole, "ﾌﾟﾛﾊﾟﾃｨ / SQL 発行... / 表示内容のCSV出力...", {"ﾌﾟﾛﾊﾟﾃｨ"}},
      {&TFormMain::PopupMenu_Job,
       "新規ｼﾞｮﾌﾞ... / ﾌﾟﾛﾊﾟﾃｨ / ｼﾞｮﾌﾞの投入 / ｼﾞｮﾌﾞの投入解除 / 最新の情報に更新 / SQL 発行... / "
       "表示内容のCSV出力... / 削除",
       {"ﾌﾟﾛﾊﾟﾃｨ", "ｼﾞｮﾌﾞの投入", "ｼﾞｮﾌﾞの投入解除", "削除"}},
      {&TFormMain::PopupMenu_BackUp,
       "新規ﾊﾞｯｸｱｯﾌﾟﾃﾞﾊﾞｲｽ... / SQL 発行... / 表示内容のCSV出力... / 削除",
       {"削除"}},
      {&TFormMain::PopupMenu_Process_Lock,
       "最新の情報に更新 / SQL 発行... / 表示内容のCSV出力... / Kill",
       {"Kill"}},
      {&TFormMain::PopupMenu_DB_BackUp,
       "レストア実行 ... / ~ファイルを直接指定してレストア実行 ... / ﾊﾞｯｸｱｯﾌﾟ履歴の削除 "
       "(Getdate-7) / "
       "SQL 発行... / 表示内容のCSV出力...",
       {"レストア実行 ..."}},
      {&TFormMain::PopupMenu_Management,
       "設定支援ウィザード実行 / SQL 発行... / 表示内容のCSV出力...",
       {"設定支援ウィザード実行"}},
      {&TFormMain::PopupMenu_Minimum, "SQL 発行... / 表示内容のCSV出力...", {}},
      {&TFormMain::PopupMenu1, "ｵﾝﾗｲﾝﾍﾙﾌﾟ表示 ... / Readme表示 ... / サポート HomePageへ ...", {}},
  };
  for (const MenuCase& c : cases) {
    PopupMenu& menu = *(main.*c.menu);
    SCOPED_TRACE(menu.Name);
    EXPECT_EQ(Dump(menu.Items()), c.items);
    main.ListViewMain.Select({});
    const std::set<std::string> without = Enabled(menu);
    SelectRow("");
    const std::set<std::string> with = Enabled(menu);
    EXPECT_TRUE(std::includes(with.begin(), with.end(), without.begin(), without.end()));
    for (const std::string& caption : with) {
      EXPECT_EQ(without.count(caption), 1 - c.for_a_selection.count(caption)) << caption;
    }
  }
}

TEST_F(MainMenusTest, AnOfflineDatabaseIsNotTakenOfflineAgain) {
  PopupMenu& menu = *main.PopupMenu_Databases;
  SelectRow("読取専用,offline,");
  EXPECT_EQ(Enabled(menu).count("OffLine"), 0U);
  EXPECT_EQ(Enabled(menu).count("OnLine"), 1U);
  SelectRow("読取専用,");
  EXPECT_EQ(Enabled(menu).count("OffLine"), 1U);
}

TEST_F(MainMenusTest, TheServersMenuHasItsHintsAndAnInvisibleItem) {
  PopupMenu& menu = *main.PopupMenu_SQLServer;
  EXPECT_EQ(Dump(menu.Items()),
            "接続 ... / 接続解除 / 停止 / 一時停止 / ~TEST / ｵﾝﾗｲﾝﾍﾙﾌﾟ表示 ... / Readme表示 ... / "
            "サポート HomePageへ ...");
  EXPECT_EQ(menu.Items()[2]->Hint, "shutdown を実行します。");
  EXPECT_EQ(menu.Items()[3]->Hint, "net pause mssqlserver を実行します。");
}

}  // namespace
}  // namespace dbkeeper
