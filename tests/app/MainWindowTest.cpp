// The tables of the main window as one text: menus, and what each node of the tree shows.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "app/main/nodes/NodeKinds.h"
#include "tests/support/AppFixture.h"
#include "tests/support/Golden.h"

namespace dbkeeper {
namespace {

using testing::AppFixture;
using testing::TextFields;

using Texts = std::vector<std::string>;

// The fields of what the lists ask for.
const std::vector<std::pair<const char*, Texts>> kAnswers = {
    {"sp_spaceused", {"database_size", "unallocated space"}},
    {"sp_helpdb", {"status"}},
    {"sysusers", {"uid", "name", "createdate", "updatedate", "hasdbaccess"}},
    {"sp_helprole", {"RoleId", "RoleName"}},
    {"sp_helpsrvrole", {"ServerRole", "Description"}},
    {"sp_help_job",
     {"job_id", "name", "enabled", "current_execution_status", "last_run_outcome", "description",
      "next_run_date", "next_run_time", "last_run_date", "last_run_time", "date_created",
      "date_modified"}},
    {"sysdevices", {"name", "phyname"}},
    {"sp_who", {"spid", "ecid", "status", "loginame", "hostname", "blk", "dbname", "cmd"}},
    {"sp_lock", {"spid", "dbid", "ObjId", "IndId", "Type", "Resource", "Mode", "Status"}},
    {"sysobjects", {"name", "xtype", "crdate"}},
    {"backupset",
     {"backup_set_id", "media_set_id", "name", "description", "backup_start_date", "backup_size"}},
    {"syslogins",
     {"name", "createdate", "updatedate", "language", "dbname", "hasaccess", "isntname", "sysadmin",
      "serveradmin"}},
};

class MainWindowTest : public AppFixture {
 protected:
  MainWindowTest() {
    app.Start();
    for (const auto& [part, fields] : kAnswers) connection.Answer(part, {TextFields(fields), {}});
  }

  // Adds "+" or "-" to the signs of each item of each menu, in the order of the dump.
  void NoteEnabled() {
    for (const MenuTable* table : MainMenus()) {
      PopupMenu& menu = main.Menu(table->name);
      app.Guard().Run([&menu] { menu.UserPopup(); });
      NoteEnabled(menu.Items());
    }
  }
  void NoteEnabled(const std::vector<std::unique_ptr<MenuItem>>& items) {
    for (const auto& item : items) {
      enabled[item.get()] += item->Enabled ? '+' : '-';
      NoteEnabled(item->Items());
    }
  }

  std::string DumpItems(const std::vector<std::unique_ptr<MenuItem>>& items,
                        const std::string& indent) {
    std::string text;
    for (const auto& item : items) {
      text += indent + enabled[item.get()] + " " + item->Name + " \"" + item->Caption() + "\"" +
              (item->Visible ? "" : " invisible") + (item->Default ? " default" : "") +
              (item->OnClick || !item->Items().empty() ? "" : " without command") +
              (item->Hint.empty() ? "" : " hint \"" + item->Hint + "\"") + "\n";
      text += DumpItems(item->Items(), indent + "  ");
    }
    return text;
  }

  std::string DumpNode(TreeNode& node, const std::string& path) {
    connection.statements.clear();
    Click(node);
    std::string columns;
    for (const ListColumn& column : main.ListViewMain.Columns()) {
      columns += (columns.empty() ? "" : ", ") + column.Caption + " " +
                 std::to_string(column.Width) + (column.Align == Alignment::kRight ? "R" : "");
    }
    const PopupMenu* const menu = main.ListViewMain.Popup();
    std::string text = "\n" + path + "\n";
    text += "  menu      " + (menu == nullptr ? "none" : menu->Name) + "\n";
    text += "  columns   " + (columns.empty() ? "none" : columns) + "\n";
    text += "  status    \"" + Status() + "\"\n";
    for (const std::string& statement : connection.statements) {
      text += "  statement " + statement + "\n";
    }
    if (node.Text() == "master") return text;  // its nodes are those of the other database
    for (const auto& child : node.Children()) {
      text += DumpNode(*child, path + " > " + child->Text());
    }
    return text;
  }

  TFormMain& main = app.FormMain;
  std::map<const MenuItem*, std::string> enabled;
};

TEST_F(MainWindowTest, MenusAndListsAreThoseOfTheirTables) {
  NoteEnabled();
  Connect();
  NoteEnabled();
  main.ListViewMain.AddItem({"1", "name", ""});
  main.ListViewMain.Select({0});
  NoteEnabled();
  std::string text =
      "Menus. The signs say whether an item is enabled: before a connection, while connected, and\n"
      "with a selected row.\n";
  for (const MenuTable* table : MainMenus()) {
    text += "\n" + std::string(table->name) + "\n";
    text += DumpItems(main.Menu(table->name).Items(), "  ");
  }
  text += "\nNodes. \"R\" stands behind the width of a column on the right.\n";
  for (const auto& root : main.TreeView.Roots()) text += DumpNode(*root, root->Text());
  testing::ExpectGolden("main_window.txt", text);
  EXPECT_EQ(fake.dialogs.errors, Texts{});
}

TEST_F(MainWindowTest, AnOfflineDatabaseIsNotTakenOfflineAgain) {
  PopupMenu& menu = main.Menu("PopupMenu_Databases");
  const auto enabled_with = [&](const char* state, const char* item) {
    main.ListViewMain.ClearItems();
    main.ListViewMain.AddItem({"1", "name", state});
    main.ListViewMain.Select({0});
    menu.UserPopup();
    return menu.Find(item)->Enabled();
  };
  EXPECT_FALSE(enabled_with("読取専用,offline,", "PopupMenu_Databases_OffLine"));
  EXPECT_TRUE(enabled_with("読取専用,offline,", "PopupMenu_Databases_OnLine"));
  EXPECT_TRUE(enabled_with("読取専用,", "PopupMenu_Databases_OffLine"));
}

// Nothing finds a menu or an item whose name stands twice.
TEST_F(MainWindowTest, NamesOfMenusAndOfItemsInAMenuAreUnique) {
  Texts menus;
  for (const MenuTable* table : MainMenus()) {
    menus.emplace_back(table->name);
    Texts items;
    for (const MenuRow& row : table->rows) items.emplace_back(row.name);
    std::sort(items.begin(), items.end());
    EXPECT_EQ(std::adjacent_find(items.begin(), items.end()), items.end()) << table->name;
  }
  std::sort(menus.begin(), menus.end());
  EXPECT_EQ(std::adjacent_find(menus.begin(), menus.end()), menus.end());
}

}  // namespace
}  // namespace dbkeeper
