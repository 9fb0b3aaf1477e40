// Calls: aggregates, choices between values, conversions, and the functions of the table.
#include <algorithm>
#include <iterator>
#include <utility>

#include "server/sql/binder.h"
#include "server/sql/function_table.h"
#include "server/sql/lexer.h"
#include "server/types/datetime.h"
#include "server/types/messages.h"
#include "server/types/text.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

constexpr std::string_view kAggregates = " COUNT COUNT_BIG SUM AVG MIN MAX ";
// What takes texts and images of any length.
constexpr std::string_view kTakesLarge = "SUBSTRING PATINDEX CHARINDEX";
constexpr std::string_view kRefused = " STDEV STDEVP VAR VARP CHECKSUM_AGG GROUPING ";

SqlType NumberType(const SqlType& first) {
  if (FamilyOf(first.id) == TypeFamily::kInteger) {
    return first.id == TypeId::kBigInt ? first : kIntType;
  }
  return IsExact(first.id) ? first : kFloatType;
}

// The type that sum and avg of `type` have.
SqlType SumType(const SqlType& type) {
  if (!IsExact(type.id)) return NumberType(type);
  if (FamilyOf(type.id) == TypeFamily::kMoney) return kMoneyType;
  return SqlType{TypeId::kDecimal, 0, 38, type.scale, true};
}

SqlType TextType(const SqlType& first, bool widest) {
  SqlType type = first;
  if (FamilyOf(type.id) == TypeFamily::kBinary) {
    type.id = TypeId::kVarBinary;
    type.length = std::min(type.length, 8000);
    return type;
  }
  type.id = IsNationalText(type.id) ? TypeId::kNVarChar : TypeId::kVarChar;
  const int most = LongestOf(type.id);
  type.length = widest ? most : std::min(type.length, most);
  return type;
}

SqlType ResultType(const FunctionResult& result, const SqlType& first) {
  if (result.rule == ResultRule::kFixed) return result.type;
  if (result.rule >= ResultRule::kText) {
    return TextType(first, result.rule == ResultRule::kWideText);
  }
  SqlType type = NumberType(first);
  if (FamilyOf(type.id) != TypeFamily::kDecimal) return type;
  if (result.rule == ResultRule::kPower) type.precision = 38;
  if (result.rule == ResultRule::kWhole) type.scale = 0;
  return type;
}

void CheckCount(std::string_view name, std::size_t count, int least, int most, int line) {
  const auto given = static_cast<int>(count);
  if (given >= least && given <= most) return;
  if (least == most) throw MakeError(174, {name, std::to_string(least)}, line);
  throw MakeError(189, {name, std::to_string(least), std::to_string(most)}, line);
}

}  // namespace

Bound Binder::BindCall(const Expression& call, const Scope& scope) {
  const std::string name = ToLowerAscii(call.text);
  if (HasWord(kAggregates, name)) return BindAggregate(name, call, scope);
  if (HasWord(kRefused, name)) throw Unsupported("the function " + name + "()", call.line);
  if (name == "coalesce" || name == "isnull" || name == "nullif" || name == "datalength") {
    return BindChoice(name, call, scope);
  }
  const FunctionRow* row = FindFunction(name);
  if (row == nullptr) throw MakeError(195, {call.text, "function name"}, call.line);
  return BindListed(*row, call, scope);
}

// ---- aggregates --------------------------------------------------------------------------------

Bound Binder::BindAggregate(const std::string& name, const Expression& call, const Scope& scope) {
  const int line = call.line;
  if (!scope.aggregates_allowed) throw MakeError(147, {}, line);
  if (scope.in_aggregate) throw MakeError(130, {}, line);
  CheckCount(name, call.operands.size(), 1, 1, line);
  const Expression& operand = *call.operands[0];
  scope.has_aggregate = true;
  const bool count = name == "count" || name == "count_big";
  Bound result;
  result.type = name == "count_big" ? kBigIntType : kIntType;
  if (operand.kind == ExpressionKind::kStar) {
    if (!count) throw MakeError(170, {"*", std::to_string(line)}, line);
    result.sql = "count(*)";
    return result;
  }
  const std::size_t loose = scope.loose_columns.size();
  scope.in_aggregate = true;
  const Bound value = Bind(operand, scope);
  scope.in_aggregate = false;
  scope.loose_columns.resize(loose);
  const TypeId id = value.type.id;
  const TypeFamily family = FamilyOf(id);
  const bool exact = IsExact(id);
  const bool number = exact || family == TypeFamily::kInteger || family == TypeFamily::kReal;
  const bool extreme = name == "min" || name == "max";
  const bool sorted = id != TypeId::kBit && family != TypeFamily::kGuid;
  if (IsLargeObject(id) || (!count && !sorted) || (!count && !extreme && !number)) {
    throw MakeError(409, {name + " aggregate", NameOf(id)}, line);
  }
  const std::string argument = (call.distinct ? "(DISTINCT " : "(") + Collated(value.sql, id) + ')';
  if (count || extreme) {
    result.sql = (count ? "count" : name) + argument;
    if (extreme) result.type = value.type;
    result.type.nullable = true;
    return result;
  }
  result.type = SumType(value.type);
  const std::string sum = (exact ? "ms_sum" : "sum") + argument;
  const std::string counted = "count" + argument;
  if (name == "sum") {
    result.sql =
        family == TypeFamily::kReal ? sum : "ms_range(" + sum + ", " + Code(result.type) + ')';
  } else if (exact) {
    if (family == TypeFamily::kDecimal) result.type.scale = std::max(6, result.type.scale);
    result.sql =
        "ms_decimal('/', " + sum + ", nullif(" + counted + ", 0), " + Code(result.type) + ')';
  } else {
    // Integers lose their remainder; a sum of nothing is null.
    result.sql = '(' + sum + " / " + counted + ')';
  }
  return result;
}

// ---- choices and conversions -------------------------------------------------------------------

Bound Binder::BindChoice(std::string_view name, const Expression& call, const Scope& scope) {
  const bool single = name == "datalength";
  const int most = single ? 1 : name == "coalesce" ? 1000 : 2;
  CheckCount(name, call.operands.size(), single ? 1 : 2, most, call.line);
  std::vector<Bound> values;
  for (const ExpressionPtr& argument : call.operands) values.push_back(Bind(*argument, scope));
  Bound result = values[0];
  result.column = nullptr;
  result.is_integer = false;
  if (single) {
    return {"ms_datalength(" + values[0].sql + ", " + Code(values[0].type) + ')', kIntType};
  }
  if (name == "nullif") {
    result.sql = "CASE WHEN " + Compare(OperatorOf("="), values[0], values[1], call.line) +
                 " THEN NULL ELSE " + values[0].sql + " END";
    result.type.nullable = true;
    return result;
  }
  const bool first_decides = name == "isnull" && !values[0].is_null;
  for (std::size_t i = 1; i < values.size() && !first_decides; ++i) Widen(result, values[i]);
  std::string arguments;
  bool nullable = true;
  for (const Bound& value : values) {
    AppendItem(arguments, ConvertTo(value, result.type));
    nullable = nullable && (value.is_null || value.type.nullable);
  }
  result.sql = "coalesce(" + arguments + ')';
  result.type.nullable = nullable;
  return result;
}

Bound Binder::BindCast(const Expression& cast, const Scope& scope) {
  const Bound value = Bind(*cast.operands[0], scope);
  Bound result;
  result.type = cast.type;
  result.type.nullable = value.is_null || value.type.nullable;
  result.sql = value.is_null ? "NULL" : ConvertTo(value, result.type);
  if (cast.operands.size() == 1) return result;
  const Bound style = Bind(*cast.operands[1], scope);
  if (style.is_null) throw MakeError(8116, {"NULL", "3", "convert"}, cast.line);
  if (value.is_null) return result;
  result.sql = "ms_convert(" + value.sql + ", " + Code(value.type) + ", " + Code(result.type) +
               ", " + ConvertTo(style, kIntType) + ')';
  return result;
}

// ---- the table ---------------------------------------------------------------------------------

Bound Binder::BindArgument(const FunctionRow& row, std::size_t number, const Expression& call,
                           const Scope& scope) {
  const int line = call.line;
  const Expression& argument = *call.operands[number - 1];
  const char kind = row.kind(number);
  if (kind == 'p') {
    const std::vector<std::string>& word = argument.name;
    const std::string_view part = word.size() == 1 ? DatePartName(word[0]) : "";
    if (part.empty()) throw MakeError(155, {word.empty() ? "" : word[0], row.name}, line);
    return {QuoteText(part), SqlType{TypeId::kVarChar, 20, 0, 0, false}};
  }
  Bound value = Bind(argument, scope);
  const TypeFamily family = FamilyOf(value.type.id);
  if (IsLargeObject(value.type.id) && !HasWord(kTakesLarge, row.name)) {
    throw MakeError(8116, {NameOf(value.type.id), std::to_string(number), row.name}, line);
  }
  SqlType wanted = value.type;
  const bool text = family == TypeFamily::kText;
  if (kind == 'i') wanted = kIntType;
  if (kind == 'f') wanted = kFloatType;
  if (kind == 'd') wanted = kDateTimeType;
  if (kind == 'n') wanted = NumberType(value.type);
  if ((kind == 't' || kind == 'b') && !text && !(kind == 'b' && family == TypeFamily::kBinary)) {
    wanted = SqlType{TypeId::kVarChar, std::max(1, DisplayLength(value.type)), 0, 0, true};
  }
  wanted.nullable = value.is_null || value.type.nullable;
  return {ConvertTo(value, wanted), wanted};
}

// The SQLite text of a row with its places filled.
std::string Binder::FillCall(std::string_view form, const std::vector<std::string>& arguments) {
  std::string sql;
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (form[i] != '$') {
      sql += form[i];
      continue;
    }
    const char place = form[++i];
    const auto index = static_cast<std::size_t>(place - '1');
    if (place == '*') {
      sql += Joined(arguments, ", ");
    } else if (place == 'd') {
      sql += resolver_.CurrentSchema();
    } else if (place == 't') {
      sql += in_check ? "ms_state('statement_time')" : std::to_string(resolver_.StatementTime());
    } else {
      sql += index < arguments.size() ? arguments[index] : "NULL";
    }
  }
  return sql;
}

Bound Binder::BindListed(const FunctionRow& row, const Expression& call, const Scope& scope) {
  const int line = call.line;
  CheckCount(row.name, call.operands.size(), row.least(), row.most(), line);
  const bool state = row.sql == "state";
  const bool asks = row.sql.find("(select") != std::string_view::npos;
  if (asks && in_check) throw MakeError(1046, {}, line);
  std::vector<std::string> arguments;
  if (state) arguments.push_back(QuoteText(row.name));
  SqlType first;
  bool nullable = row.least() == 0 || state || asks;
  for (std::size_t i = 0; i < call.operands.size(); ++i) {
    const Bound value = BindArgument(row, i + 1, call, scope);
    nullable = nullable || value.type.nullable;
    if (i == 0) first = value.type;
    arguments.push_back(value.sql);
  }
  const std::string own = state ? "ms_state($*)" : "ms_" + std::string(row.name) + "($*)";
  Bound result;
  result.type = ResultType(row.result, first);
  result.type.nullable = nullable;
  result.sql = FillCall(state || row.sql.empty() ? own : row.sql, arguments);
  if (row.result.type.id == TypeId::kNumeric) result.sql = "CAST(" + result.sql + " AS TEXT)";
  // What the function computed as a number is brought to the type that was promised.
  if (row.result.rule >= ResultRule::kNumber && row.result.rule <= ResultRule::kPower) {
    result.sql = "ms_number(" + result.sql + ", " + Code(result.type) + ')';
  }
  return result;
}

}  // namespace dbkeeper::server
