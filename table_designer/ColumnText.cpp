#include "table_designer/ColumnText.h"

#include <charconv>
#include <cmath>
#include <tuple>
#include <utility>

#include "app/support/NumberText.h"
#include "app/support/TextFilling.h"

namespace dbkeeper {

namespace {

constexpr std::size_t kNameWidth = 32;
constexpr std::size_t kTypeWidth = 16;

std::string Whole(double number) { return std::to_string(std::llround(number)); }

// The number that a text begins with; 0 where it begins with none.
double LeadingNumber(std::string_view text) {
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return number;
}

// The numbers before and behind the first `mark`.
std::pair<double, double> NumbersAround(std::string_view text, char mark) {
  const std::size_t at = text.find(mark);
  if (at == std::string_view::npos) return {LeadingNumber(text), 0};
  return {LeadingNumber(text.substr(0, at)), LeadingNumber(text.substr(at + 1))};
}

std::string_view NullClause(const ColumnFields& fields) {
  return fields.nullable ? " null" : " not null";
}

}  // namespace

std::vector<std::string> CellsOf(const ColumnFields& fields, bool with_note) {
  std::string size = DecimalText(fields.size);
  if (fields.scale > 0) size += "." + DecimalText(fields.scale);
  const std::string identity =
      fields.identity_step > 0 ? Whole(fields.identity_start) + "," + Whole(fields.identity_step)
                               : std::string();
  std::vector<std::string> cells = {
      fields.type,          size,          fields.nullable ? "null" : "-", identity,
      fields.default_value, fields.comment};
  if (with_note) cells.push_back(fields.note);
  return cells;
}

ColumnFields FieldsOf(const ListItem& row) {
  const auto cell = [&row](ColumnCell index) { return std::string(row.SubItem(index)); };
  ColumnFields fields;
  fields.name = row.Caption();
  fields.type = cell(kTypeCell);
  std::tie(fields.size, fields.scale) = NumbersAround(row.SubItem(kSizeCell), '.');
  fields.nullable = row.SubItem(kNullCell) == "null";
  std::tie(fields.identity_start, fields.identity_step) =
      NumbersAround(row.SubItem(kIdentityCell), ',');
  fields.default_value = cell(kDefaultCell);
  fields.comment = cell(kCommentCell);
  fields.note = cell(kNoteCell);
  return fields;
}

std::string SizeClause(const ColumnFields& fields) {
  if (fields.size <= 0) return {};
  return "(" + Whole(fields.size) + (fields.scale > 0 ? "," + Whole(fields.scale) : "") + ")";
}

std::vector<std::string> AddColumnLines(const std::string& table, const ColumnFields& fields) {
  std::vector<std::string> lines = {"alter table [" + table + "]  add " + fields.name + " " +
                                    fields.type};
  if (fields.size > 0) {
    lines.push_back("(" + Whole(fields.size));
    if (fields.scale > 0) lines.push_back("," + Whole(fields.scale));
    lines.emplace_back(")");
  }
  lines.push_back(std::string(NullClause(fields)) + " ");
  if (!fields.default_value.empty()) lines.push_back(" default " + fields.default_value + " ");
  if (fields.identity_step > 0) {
    lines.push_back(" identity(" + Whole(fields.identity_start) + "," +
                    Whole(fields.identity_step) + ")");
  }
  return lines;
}

std::string AlterColumnText(const std::string& table, const ColumnFields& fields) {
  return "alter table [" + table + "] alter column " + fields.name + " " + fields.type +
         SizeClause(fields) + std::string(NullClause(fields));
}

// The names stand in a column of their own, so that the text reads well where it is shown; a longer
// name pushes the rest to the right.
std::string CreateTableText(const std::string& table, const std::vector<ListItem>& rows) {
  std::string text = "create table [" + table + "](\r\n";
  bool first = true;
  for (const ListItem& row : rows) {
    if (!first) text += ",\r\n";
    first = false;
    const ColumnFields fields = FieldsOf(row);
    text += "    [" + PadRight(fields.name, kNameWidth) + "] " + PadRight(fields.type, kTypeWidth) +
            " " + SizeClause(fields);
    text += fields.nullable ? " null     " : " not null ";
    const std::string_view identity = row.SubItem(kIdentityCell);
    if (!identity.empty()) text += " identity(" + std::string(identity) + ")";
    if (!fields.default_value.empty()) text += " default " + fields.default_value;
  }
  return text + ")";
}

}  // namespace dbkeeper
