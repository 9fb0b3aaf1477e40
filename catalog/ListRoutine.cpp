#include "catalog/ListRoutine.h"

#include <utility>
#include <vector>

namespace dbkeeper {

namespace {

// A column with its field looked up once for the whole result.
struct BoundColumn {
  CellSource source;
  std::size_t field = 0;
};

std::vector<BoundColumn> BindColumns(const Query& query, std::span<const CatalogColumn> columns) {
  std::size_t used = columns.size();
  while (used > 0 && std::holds_alternative<FilledLater>(columns[used - 1].source)) --used;
  std::vector<BoundColumn> bound;
  bound.reserve(used);
  for (const CatalogColumn& column : columns.first(used)) {
    const auto* field = std::get_if<FieldText>(&column.source);
    bound.push_back({column.source, field != nullptr ? query.FieldIndex(field->name) : 0});
  }
  return bound;
}

std::string CellText(const Query& query, const BoundColumn& column, std::size_t number) {
  if (std::holds_alternative<FieldText>(column.source)) {
    return query.FieldAt(column.field).AsString();
  }
  if (const auto* decode = std::get_if<Decoding>(&column.source)) return (*decode)(query);
  if (std::holds_alternative<RowNumber>(column.source)) return std::to_string(number);
  return {};
}

}  // namespace

void ResetList(ListView& list, std::span<const CatalogColumn> columns) {
  list.ClearItems();
  list.ClearColumns();
  for (const CatalogColumn& column : columns) {
    list.AddColumn(std::string(column.caption), column.width, column.align);
  }
}

void AppendRows(ListView& list, Query& query, std::span<const CatalogColumn> columns,
                const std::function<bool(const Query&)>& accept) {
  const std::vector<BoundColumn> bound = BindColumns(query, columns);
  std::size_t number = list.Items().size();
  for (; !query.Eof(); query.Next()) {
    if (accept && !accept(query)) continue;
    ++number;
    ListItem& item = list.AddItem(CellText(query, bound.front(), number));
    item.SubItems.reserve(columns.size() - 1);
    for (std::size_t i = 1; i < bound.size(); ++i) {
      item.SubItems.push_back(CellText(query, bound[i], number));
    }
  }
}

void RunListRoutine(ListView& list, Query& query, std::span<const CatalogColumn> columns,
                    const std::string& sql) {
  const ListUpdate update(list);
  ResetList(list, columns);
  query.Open(sql);
  AppendRows(list, query, columns);
  query.Close();
}

}  // namespace dbkeeper
