#include "catalog/ObjectLists.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "catalog/ListRoutine.h"

namespace dbkeeper {

namespace {

constexpr CatalogColumn kNumber = {"No.", 32, Alignment::kRight, RowNumber{}};
constexpr CatalogColumn kName = {"Name", 100, Alignment::kLeft, FieldText{"name"}};
constexpr CatalogColumn kType = {"xtype", 48, Alignment::kLeft, FieldText{"xtype"}};
constexpr CatalogColumn kCreated = {"作成日", 118, Alignment::kLeft, FieldText{"crdate"}};

constexpr std::array<CatalogColumn, 4> kObjectColumns = {{kNumber, kName, kType, kCreated}};
constexpr std::array<CatalogColumn, 6> kDescribedColumns = {{
    kNumber,
    kName,
    {"Description", 120, Alignment::kLeft, FilledLater{}},
    {"Note", 180, Alignment::kLeft, FilledLater{}},
    kType,
    kCreated,
}};

constexpr std::array<CatalogColumn, 9> kCapacityColumns = {{
    kNumber,
    {"Name", 128, Alignment::kLeft, FieldText{"name"}},
    kType,
    kCreated,
    {"rows", 64, Alignment::kRight, FilledLater{}},
    {"reserved", 82, Alignment::kRight, FilledLater{}, ColumnPicture::kBar},
    {"data", 82, Alignment::kRight, FilledLater{}, ColumnPicture::kBar},
    {"index_size", 82, Alignment::kRight, FilledLater{}},
    {"unused", 82, Alignment::kRight, FilledLater{}},
}};

// The conditions of an object list on the system's catalog.
constexpr std::string_view kViews = "xtype='V'";
constexpr std::string_view kProcedures = "(xtype='P')or       (xtype='X')";
constexpr std::string_view kAllTables = "(xtype='S')or       (xtype='U')";
constexpr std::string_view kUserTables = "(xtype='U')";

std::string_view TablesToShow(const Workbench& workbench) {
  return workbench.Switches.ShowSystemTables ? kAllTables : kUserTables;
}

// Which sub-item an extended property fills.
constexpr std::array<std::pair<std::string_view, std::size_t>, 2> kProperties = {{
    {"MS_Description", 1},
    {"Note", 2},
}};

// Rows by object name; equal names of different owners share the properties of that name.
using RowsByName = std::unordered_map<std::string, std::vector<std::size_t>>;

RowsByName IndexRows(const std::vector<ListItem>& items) {
  RowsByName rows;
  rows.reserve(items.size());
  for (std::size_t i = 0; i < items.size(); ++i)
    rows[std::string(items[i].SubItem(0))].push_back(i);
  return rows;
}

void FillDescriptions(const Workbench& workbench, const std::string& database) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  query.UseDatabase(database);
  query.Open(
      "select * from ::fn_listextendedproperty(default, 'user', 'dbo', 'table', "
      "default,default,default)");
  const RowsByName rows = IndexRows(list.Items());
  for (; !query.Eof(); query.Next()) {
    const std::string property = query.FieldByName("name").AsString();
    const auto* const target =
        std::find_if(kProperties.begin(), kProperties.end(),
                     [&property](const auto& entry) { return entry.first == property; });
    if (target == kProperties.end()) continue;
    const auto found = rows.find(query.FieldByName("objname").AsString());
    if (found == rows.end()) continue;
    const std::string value = query.FieldByName("value").AsString();
    for (const std::size_t row : found->second) list.SetSubItem(row, target->second, value);
  }
  query.Close();
}

void ListObjects(const Workbench& workbench, const std::string& database,
                 std::string_view condition, std::span<const CatalogColumn> columns) {
  RunListRoutine(workbench, columns,
                 "select * from [" + database + "].dbo.sysobjects where " + std::string(condition) +
                     " order by name");
}

}  // namespace

void ListTables(const Workbench& workbench, const std::string& database) {
  if (!workbench.Switches.Advanced) return ListTablesAlone(workbench, database);
  const ListUpdate update(workbench.List);
  ListObjects(workbench, database, TablesToShow(workbench), kDescribedColumns);
  FillDescriptions(workbench, database);
}

void ListTablesAlone(const Workbench& workbench, const std::string& database) {
  ListObjects(workbench, database, TablesToShow(workbench), kObjectColumns);
}

void ListViews(const Workbench& workbench, const std::string& database) {
  ListObjects(workbench, database, kViews, kObjectColumns);
}

void ListProcedures(const Workbench& workbench, const std::string& database) {
  ListObjects(workbench, database, kProcedures, kObjectColumns);
}

void ListCapacity(const Workbench& workbench, const std::string& database) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  const ListUpdate update(list);
  RunListRoutine(
      workbench, kCapacityColumns,
      "select * from [" + database + "].dbo.sysobjects where " + std::string(kAllTables));
  for (std::size_t row = 0; row < list.Items().size(); ++row) {
    std::string call = "EXEC [" + database + "].dbo.sp_spaceused  [";
    call += list.Items()[row].SubItem(0);
    query.Open(call += ']');
    if (!query.Eof()) {
      for (const char* field : {"rows", "reserved", "data", "index_size", "unused"}) {
        list.AddSubItem(row, query.FieldByName(field).AsString());
      }
      query.Next();  // to the end: a result left half read costs a second round trip
    }
    query.Close();
  }
}

}  // namespace dbkeeper
