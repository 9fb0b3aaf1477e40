#include "catalog/DatabaseList.h"

#include <array>
#include <string_view>

#include "catalog/ListRoutine.h"

namespace dbkeeper {

namespace {

constexpr std::string_view kOffline = "offline,";

struct StatusBit {
  std::int32_t threshold;
  std::string_view word;
};

// Deliberately greedy: a bit between two thresholds passes the next test too, and its remainder
// decides the words after it. Operators know the words that their old servers show this way.
constexpr std::array<StatusBit, 10> kStatusBits = {{
    {0x40000000, ""},
    {0x400000, ""},
    {0x8000, "緊急ﾓｰﾄﾞ,"},
    {0x1000, "ｼﾝｸﾞﾙﾕｰｻﾞｰ,"},
    {0x800, "管理者専用,"},
    {0x400, "読取専用,"},
    {0x200, kOffline},
    {0x100, "障害,"},
    {0x80, "復旧中,"},
    {0x40, "復旧準備中,"},
}};

std::string StateText(const FieldValue& status) {
  return DecodeDatabaseStatus(static_cast<std::int32_t>(status.AsInteger()));
}

constexpr std::array<CatalogColumn, 7> kDatabaseColumns = {{
    {"dbid", 48, Alignment::kRight, FieldText{"dbid"}},
    {"Name", 96, Alignment::kLeft, FieldText{"name"}},
    {"状態", 118, Alignment::kLeft, DecodedField{"status", StateText}},
    {"status", 82, Alignment::kRight, FieldText{"status"}},
    {"status2", 82, Alignment::kRight, FieldText{"status2"}},
    {"作成日", 118, Alignment::kLeft, FieldText{"crdate"}},
    {"ファイル名", 340, Alignment::kLeft, FieldText{"filename"}},
}};

constexpr std::array<std::string_view, 6> kDatabaseChildren = {"Table", "View", "Procedure",
                                                               "User",  "Role", "Backup"};

class TreeUpdate {
 public:
  explicit TreeUpdate(TreeView& tree) : tree_(tree) { tree_.BeginUpdate(); }
  TreeUpdate(const TreeUpdate&) = delete;
  TreeUpdate& operator=(const TreeUpdate&) = delete;
  ~TreeUpdate() { tree_.EndUpdate(); }

 private:
  TreeView& tree_;
};

void GrowTree(TreeNode& parent, const FieldValue& name, const FieldValue& status) {
  if (StateText(status).find(kOffline) != std::string::npos) return;
  parent.AddChild(name.AsString()).PromiseChildren(kDatabaseChildren);
}

}  // namespace

std::string DecodeDatabaseStatus(std::int32_t status) {
  std::string words;
  for (const StatusBit& bit : kStatusBits) {
    if (status < bit.threshold) continue;
    status -= bit.threshold;
    words += bit.word;
  }
  return words;
}

void ListDatabases(const Workbench& workbench, const std::string& /*database*/) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  TreeNode* const parent = workbench.Tree.Selected();
  const bool grow = parent != nullptr && !parent->HasChildren();
  const TreeUpdate tree_update(workbench.Tree);
  const ListUpdate update(list);
  ResetList(list, kDatabaseColumns);
  query.Open("select * from master.dbo.sysdatabases");
  const std::size_t name = query.FieldIndex("name");
  const std::size_t status = query.FieldIndex("status");
  AppendRows(list, query, kDatabaseColumns, [&](const Query& record) {
    if (grow) GrowTree(*parent, record.FieldAt(name), record.FieldAt(status));
    return true;
  });
  query.Close();
}

void RefreshDatabases(const Workbench& workbench, const std::string& database) {
  if (TreeNode* const node = workbench.Tree.Selected()) node->DeleteChildren();
  ListDatabases(workbench, database);
}

}  // namespace dbkeeper
