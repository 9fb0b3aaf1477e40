#include "catalog/DatabaseProperties.h"

#include <array>
#include <string_view>
#include <utility>

#include "app/support/TextHelpers.h"
#include "catalog/ListRoutine.h"

namespace dbkeeper {

namespace {

constexpr std::array<CatalogColumn, 3> kColumns = {{
    {"No.", 32, Alignment::kLeft, FilledLater{}},
    {"項目", 192, Alignment::kLeft, FilledLater{}},
    {"内容", 240, Alignment::kLeft, FilledLater{}},
}};

// A row of the list that shows a field.
struct FieldRow {
  const char* number;
  const char* item;
  std::string_view field;
};

constexpr std::array<FieldRow, 2> kIdentity = {{
    {"1", "名前", "name"},
    {"2", "作成日", "crdate"},
}};

constexpr std::array<FieldRow, 2> kSpace = {{
    {"3", "使用サイズ", "database_size"},
    {"4", "未使用領域", "unallocated space"},
}};

// A row for a marker in the option list. A read-only database deliberately shows the item
// "READ_WRITE" with the value "READ_ONLY".
struct MarkerRow {
  std::string_view marker;
  const char* item;
  const char* value;  // null: the text between "Collation=" and the next ","
};

constexpr std::array<MarkerRow, 8> kMarkers = {{
    {"Collation", "照合順序名", nullptr},
    {"Status=ONLINE", "Status", "ONLINE"},
    {"Updateability=READ_WRITE", "READ_WRITE", "READ_WRITE"},
    {"Updateability=READ_ONLY", "READ_WRITE", "READ_ONLY"},
    {"IsTornPageDetectionEnabled", "不完全な I/O 操作を検出", "True"},
    {"IsAutoCreateStatistics", "データ変更時の統計自動更新", "True"},
    {"IsAutoUpdateStatistics", "統計の自動更新", "True"},
    {"IsAutoShrink", "定期的な自動圧縮", "True"},
}};

void AddRow(ListView& list, std::string_view number, std::string_view item,
            std::string_view value) {
  list.AddItem({number, item, value});
}

template <std::size_t N>
void AddFieldRows(ListView& list, Query& query, const std::string& sql,
                  const std::array<FieldRow, N>& rows) {
  query.Open(sql);
  if (!query.Eof()) {
    for (const FieldRow& row : rows) {
      AddRow(list, row.number, row.item, query.FieldByName(row.field).AsString());
    }
  }
  query.Close();
}

void AddOptionRows(ListView& list, const std::string& options) {
  int counter = 4;
  for (const MarkerRow& row : kMarkers) {
    if (options.find(row.marker) == std::string::npos) continue;
    ++counter;
    AddRow(list, std::to_string(counter), row.item,
           row.value != nullptr ? row.value : TextBetween(options, "Collation=", ","));
  }
}

}  // namespace

void ListDatabaseProperties(const Workbench& workbench, const std::string& database) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  const ListUpdate update(list);
  ResetList(list, kColumns);
  AddFieldRows(list, query, "select * from master.dbo.sysdatabases where name = '" + database + "'",
               kIdentity);
  query.UseDatabase(database);
  AddFieldRows(list, query, "EXEC sp_spaceused", kSpace);
  query.Open("sp_helpdb [" + database + "]");
  if (!query.Eof()) AddOptionRows(list, query.FieldByName("status").AsString());
  query.Close();
}

}  // namespace dbkeeper
