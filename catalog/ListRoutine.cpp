#include "catalog/ListRoutine.h"

#include <utility>
#include <vector>

namespace dbkeeper {

namespace {

// A column with its fields looked up once for the whole result.
struct BoundColumn {
  CellSource source;
  std::size_t field = 0;
  std::size_t second = 0;  // of a pair
};

BoundColumn Bind(const Query& query, const CellSource& source) {
  BoundColumn bound = {source};
  if (const auto* text = std::get_if<FieldText>(&source)) {
    bound.field = query.FieldIndex(text->name);
  } else if (const auto* decoded = std::get_if<DecodedField>(&source)) {
    bound.field = query.FieldIndex(decoded->name);
  } else if (const auto* pair = std::get_if<FieldPair>(&source)) {
    bound.field = query.FieldIndex(pair->first);
    bound.second = query.FieldIndex(pair->second);
  }
  return bound;
}

std::vector<BoundColumn> BindColumns(const Query& query, std::span<const CatalogColumn> columns) {
  std::size_t used = columns.size();
  while (used > 0 && std::holds_alternative<FilledLater>(columns[used - 1].source)) --used;
  std::vector<BoundColumn> bound;
  bound.reserve(used);
  for (const CatalogColumn& column : columns.first(used)) {
    bound.push_back(Bind(query, column.source));
  }
  return bound;
}

// The text stands in the present record or in `room`.
std::string_view CellText(const Query& query, const BoundColumn& column, std::size_t number,
                          std::string& room) {
  if (std::holds_alternative<FilledLater>(column.source)) return {};
  if (std::holds_alternative<RowNumber>(column.source)) return room = std::to_string(number);
  const FieldValue value = query.FieldAt(column.field);
  if (const auto* decoded = std::get_if<DecodedField>(&column.source)) {
    return room = decoded->decode(value);
  }
  if (std::holds_alternative<FieldPair>(column.source)) {
    return room = value.AsString() + " " + query.FieldAt(column.second).AsString();
  }
  return value.AsText(room);
}

}  // namespace

void ResetList(ListView& list, std::span<const CatalogColumn> columns) {
  list.ClearItems();
  list.ClearColumns();
  for (const CatalogColumn& column : columns) {
    list.AddColumn(std::string(column.caption), column.width, column.align, column.picture);
  }
}

void AppendRows(ListView& list, Query& query, std::span<const CatalogColumn> columns,
                const std::function<bool(const Query&)>& accept) {
  const std::vector<BoundColumn> bound = BindColumns(query, columns);
  std::size_t number = list.Items().size();
  ListItem row;
  std::string room;
  for (; !query.Eof(); query.Next()) {
    if (accept && !accept(query)) continue;
    ++number;
    row.Clear();
    for (const BoundColumn& column : bound) row.AddCell(CellText(query, column, number, room));
    list.AddItem(row);
  }
}

void RunListRoutine(const Workbench& workbench, std::span<const CatalogColumn> columns,
                    const std::string& sql) {
  ListView& list = workbench.List;
  Query& query = workbench.Session.ADOQuerySystem;
  const ListUpdate update(list);
  ResetList(list, columns);
  query.Open(sql);
  AppendRows(list, query, columns);
  query.Close();
}

}  // namespace dbkeeper
