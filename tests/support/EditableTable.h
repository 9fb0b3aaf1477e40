// What a server answers to the editor of rows: the catalog's word on a table of database sales, and
// a change of one of its rows.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/FakeConnection.h"

namespace dbkeeper::testing {

// A row of `columns` is the object's type, then a column's name, type, whether it is computed, and
// its status bits; one of `keys` is an index's number and status, a column and whether it takes
// nulls.
inline void AnswerForTable(FakeConnection& connection, std::vector<FakeRow> columns,
                           std::vector<FakeRow> keys = {}) {
  connection.Answer(
      "dbkeeper_database",
      {.fields = TextFields({"dbkeeper_database"}),
       .rows = {{"sales"}},
       .then = {{TextFields({"dbkeeper_column", "name", "type", "c", "s"}), std::move(columns)},
                {TextFields({"dbkeeper_key", "status", "name", "isnullable"}), std::move(keys)}}});
}

struct ChangeAnswer {
  std::vector<Field> fields = {};    // of the table's rows
  std::vector<FakeRow> before = {};  // the rows that the change finds
  std::string touched = "1";         // how many rows it touches
  std::vector<FakeRow> after = {};   // the rows that are found behind it
  std::string depth = "0";           // of the transactions around it
};

inline void AnswerToChange(FakeConnection& connection, const ChangeAnswer& answer) {
  const auto marked = [&answer](const char* marker, std::vector<FakeRow> rows) {
    FakeResult result{.fields = answer.fields, .rows = std::move(rows)};
    result.fields.insert(result.fields.begin(),
                         {.name = marker, .kind = FieldKind::kInteger, .type_name = "int"});
    for (FakeRow& row : result.rows) row.insert(row.begin(), "1");
    return result;
  };
  connection.Answer(
      "dbkeeper_depth",
      {.fields = TextFields({"dbkeeper_depth"}),
       .rows = {{answer.depth}, {answer.depth}},
       .then = {marked("dbkeeper_before", answer.before),
                {TextFields({"dbkeeper_rows", "dbkeeper_identity"}), {{answer.touched, "9"}}},
                marked("dbkeeper_after", answer.after)}});
}

}  // namespace dbkeeper::testing
