#include "query/EasySql.h"

#include <cstddef>
#include <string_view>

#include "app/support/TextFilling.h"

namespace dbkeeper::easy_sql {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kNextItem = ",\r\n       ";

// A name with room for sixteen characters and one blank behind.
std::string Padded(const std::string& column) { return FillText("%-16N ", {{'N', column}}); }

template <class Item>
std::string Join(const Columns& columns, std::string_view separator, Item item) {
  std::string joined;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) joined += separator;
    joined += item(columns[i], std::to_string(i + 1));
  }
  return joined;
}

std::string Name(const std::string& column, const std::string&) { return column; }

std::string Select(const std::string& table, const Columns& columns, std::int64_t top) {
  std::string text = "select ";
  if (top > 0) text += "Top " + std::to_string(top) + "\r\n       ";
  text += Join(columns, kNextItem, Name);
  return text + "\r\n  from [" + table + "]";
}

std::string Insert(const std::string& table, const Columns& columns) {
  std::string text = "insert into " + table + "\r\n           (" + Join(columns, ",", Name) + ")";
  text += "\r\n     values(";
  text +=
      Join(columns, ",\r\n            ", [](const std::string& column, const std::string& number) {
        return "'入力値 " + number + "(" + column + ")'";
      });
  return text + ")";
}

std::string Update(const std::string& table, const Columns& columns) {
  return "update " + table + "\r\n   set " +
         Join(columns, kNextItem, [](const std::string& column, const std::string& number) {
           return Padded(column) + " = " + "'更新値 " + number + "'";
         });
}

}  // namespace

std::string Statement(Action action, const std::string& table, const Columns& columns,
                      std::int64_t top) {
  if (columns.empty()) return {};
  switch (action) {
    case Action::kSelect:
      return Select(table, columns, top);
    case Action::kInsert:
      return Insert(table, columns);
    case Action::kUpdate:
      return Update(table, columns);
    case Action::kDelete:
      break;
  }
  return {};
}

std::string Condition(Action action, const Columns& columns) {
  if (columns.empty() || action == Action::kInsert) return {};
  return " where " +
         Join(columns, "and \r\n       ", [](const std::string& column, const std::string&) {
           return "(" + Padded(column) + " = '1')";
         });
}

std::string Order(Action action, const Columns& columns) {
  if (columns.empty() || action != Action::kSelect) return {};
  return " order by " + Join(columns, ",", Name);
}

std::string Append(std::string text, const std::string& part) {
  if (part.empty()) return text;
  if (!text.empty() && !text.ends_with('\n')) text += kLineEnd;
  return text + part;
}

}  // namespace dbkeeper::easy_sql
