// Arithmetic, joining of texts, comparison.
#include <algorithm>

#include "server/sql/binder.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

struct OperatorRow {
  BinaryOperator op;
  std::string_view symbol;  // of SQLite and of the server's functions
  std::string_view name;    // in messages
};
constexpr OperatorRow kOperators[] = {
    {BinaryOperator::kAdd, "+", "add"},
    {BinaryOperator::kSubtract, "-", "subtract"},
    {BinaryOperator::kMultiply, "*", "multiply"},
    {BinaryOperator::kDivide, "/", "divide"},
    {BinaryOperator::kModulo, "%", "modulo"},
    {BinaryOperator::kBitAnd, "&", "boolean AND"},
    {BinaryOperator::kBitOr, "|", "boolean OR"},
    {BinaryOperator::kBitXor, "^", "boolean XOR"},
    {BinaryOperator::kEqual, "=", "equal to"},
    {BinaryOperator::kNotEqual, "<>", "not equal to"},
    {BinaryOperator::kLess, "<", "less than"},
    {BinaryOperator::kLessOrEqual, "<=", "less than or equal to"},
    {BinaryOperator::kGreater, ">", "greater than"},
    {BinaryOperator::kGreaterOrEqual, ">=", "greater than or equal to"},
};

const OperatorRow& RowOf(BinaryOperator op) { return kOperators[static_cast<std::size_t>(op)]; }

bool IsBitOperator(BinaryOperator op) {
  return op == BinaryOperator::kBitAnd || op == BinaryOperator::kBitOr ||
         op == BinaryOperator::kBitXor;
}

// An operand as a decimal; an integer literal has only the digits that it was written with.
SqlType DecimalOf(const SqlType& type) {
  SqlType decimal = type;
  decimal.id = TypeId::kNumeric;
  return decimal;
}

SqlType Limited(int precision, int scale) {
  SqlType type{TypeId::kNumeric, 0, precision, scale, true};
  if (precision > 38) {
    // Digits before the point are kept as long as at least six decimals stay.
    type.scale = std::max(std::min(scale, 6), scale - (precision - 38));
    type.precision = 38;
  }
  return type;
}

SqlType ResultOf(BinaryOperator op, const SqlType& left, const SqlType& right) {
  const int left_whole = left.precision - left.scale;
  const int right_whole = right.precision - right.scale;
  switch (op) {
    case BinaryOperator::kMultiply:
      return Limited(left.precision + right.precision + 1, left.scale + right.scale);
    case BinaryOperator::kDivide: {
      const int scale = std::max(6, left.scale + right.precision + 1);
      return Limited(left_whole + right.scale + scale, scale);
    }
    case BinaryOperator::kModulo: {
      const int scale = std::max(left.scale, right.scale);
      return Limited(std::min(left_whole, right_whole) + scale, scale);
    }
    default: {
      const int scale = std::max(left.scale, right.scale);
      return Limited(std::max(left_whole, right_whole) + scale + 1, scale);
    }
  }
}

}  // namespace

Bound Binder::BindBinary(const Binary& binary, int line, const Scope& scope) {
  return Arithmetic(binary.op, Bind(*binary.left, scope), Bind(*binary.right, scope), line);
}

Bound Binder::Arithmetic(BinaryOperator op, const Bound& left, const Bound& right, int line) const {
  Bound typed_left = left;
  Bound typed_right = right;
  if (left.is_null) typed_left.type = right.is_null ? SqlType{} : right.type;
  if (right.is_null) typed_right.type = typed_left.type;
  const SqlType common = CommonType(typed_left.type, typed_right.type);
  const TypeFamily family = FamilyOf(common.id);
  const OperatorRow& row = RowOf(op);
  if (IsBitOperator(op)) {
    if (family != TypeFamily::kInteger) {
      throw MakeError(403, {row.name, NameOf(common.id)}, line);
    }
    return IntegerArithmetic(op, typed_left, typed_right);
  }
  Bound result;
  result.type = common;
  const std::string symbol = "'" + std::string(row.symbol) + "', ";
  switch (family) {
    case TypeFamily::kInteger:
      return IntegerArithmetic(op, typed_left, typed_right);
    case TypeFamily::kDecimal:
      return DecimalArithmetic(op, typed_left, typed_right);
    case TypeFamily::kReal:
      if (op == BinaryOperator::kModulo) break;
      result.sql = "ms_float(" + symbol + ConvertTo(typed_left, common) + ", " +
                   ConvertTo(typed_right, common) + ')';
      return result;
    case TypeFamily::kMoney:
      result.sql = "ms_decimal(" + symbol + ConvertTo(typed_left, common) + ", " +
                   ConvertTo(typed_right, common) + ", " + std::to_string(EncodeType(common)) + ')';
      return result;
    case TypeFamily::kDateTime:
      if (op != BinaryOperator::kAdd && op != BinaryOperator::kSubtract) break;
      result.sql = "ms_datetime(" + symbol + ConvertTo(typed_left, common) + ", " +
                   ConvertTo(typed_right, common) + ", " + std::to_string(EncodeType(common)) + ')';
      return result;
    case TypeFamily::kText:
    case TypeFamily::kBinary:
      if (op != BinaryOperator::kAdd || IsLargeObject(common.id)) break;
      return Concatenate(typed_left, typed_right);
    default:
      break;
  }
  throw MakeError(403, {row.name, NameOf(common.id)}, line);
}

Bound Binder::IntegerArithmetic(BinaryOperator op, const Bound& left_operand,
                                const Bound& right_operand) const {
  Bound result;
  result.type = CommonType(left_operand.type, right_operand.type);
  if (result.type.id == TypeId::kBit && !IsBitOperator(op)) {
    result.type = SqlType{TypeId::kInt, 4, 10, 0, result.type.nullable};
  }
  Bound left = left_operand;
  Bound right = right_operand;
  left.sql = ConvertTo(left, result.type);
  right.sql = ConvertTo(right, result.type);
  const std::string symbol(RowOf(op).symbol);
  const std::string plain = '(' + left.sql + ' ' + symbol + ' ' + right.sql + ')';
  const std::string code = std::to_string(EncodeType(result.type));
  if (op == BinaryOperator::kBitXor) {
    result.sql =
        "((" + left.sql + " | " + right.sql + ") - (" + left.sql + " & " + right.sql + "))";
  } else if (IsBitOperator(op)) {
    result.sql = plain;
  } else if (op == BinaryOperator::kDivide || op == BinaryOperator::kModulo ||
             result.type.id == TypeId::kBigInt) {
    result.sql = "ms_integer('" + symbol + "', " + left.sql + ", " + right.sql + ", " + code + ')';
  } else {
    // Two ints never leave the 64 bits of SQLite: the range is checked behind it.
    result.sql = "ms_range(" + plain + ", " + code + ')';
  }
  return result;
}

Bound Binder::DecimalArithmetic(BinaryOperator op, const Bound& left, const Bound& right) const {
  const auto as_decimal = [](const Bound& operand) {
    if (FamilyOf(operand.type.id) == TypeFamily::kText) {
      return SqlType{TypeId::kNumeric, 0, 18, 0, true};
    }
    return DecimalOf(operand.type);
  };
  // A text takes the type of the decimal beside it.
  SqlType left_type = as_decimal(left);
  SqlType right_type = as_decimal(right);
  const bool left_text = FamilyOf(left.type.id) == TypeFamily::kText;
  const bool right_text = FamilyOf(right.type.id) == TypeFamily::kText;
  if (left_text) left_type = right_type;
  if (right_text) right_type = left_type;
  Bound result;
  result.type = ResultOf(op, left_type, right_type);
  result.type.nullable = left.type.nullable || right.type.nullable;
  result.sql = "ms_decimal('" + std::string(RowOf(op).symbol) + "', " +
               (left_text ? ConvertTo(left, left_type) : left.sql) + ", " +
               (right_text ? ConvertTo(right, right_type) : right.sql) + ", " +
               std::to_string(EncodeType(result.type)) + ')';
  return result;
}

Bound Binder::Concatenate(const Bound& left, const Bound& right) const {
  const bool binary = FamilyOf(left.type.id) == TypeFamily::kBinary &&
                      FamilyOf(right.type.id) == TypeFamily::kBinary;
  Bound result;
  result.type = CommonType(left.type, right.type);
  if (binary) result.type.id = TypeId::kVarBinary;
  const int maximum = IsNationalText(result.type.id) ? 4000 : 8000;
  const int length = left.type.length + right.type.length;
  if (FamilyOf(result.type.id) == TypeFamily::kText && !binary) {
    SqlType piece = result.type;
    piece.id = IsNationalText(piece.id) ? TypeId::kNVarChar : TypeId::kVarChar;
    piece.length = maximum;
    result.sql = '(' + ConvertTo(left, piece) + " || " + ConvertTo(right, piece) + ')';
  } else {
    result.sql = "ms_join(" + left.sql + ", " + right.sql + ')';
  }
  result.type.length = std::max(1, std::min(maximum, length));
  if (length > maximum) {
    Bound whole = result;
    whole.type.length = length;
    result.sql = ConvertTo(whole, result.type);
  }
  return result;
}

std::string Binder::Compare(BinaryOperator op, const Bound& left, const Bound& right,
                            int line) const {
  const OperatorRow& row = RowOf(op);
  SqlType common = left.is_null ? right.type : left.type;
  if (!left.is_null && !right.is_null) common = CommonType(left.type, right.type);
  if (IsLargeObject(common.id)) throw MakeError(306, {}, line);
  // MSDECIMAL compares exact numbers of any scale, so a column stays bare and its index serves.
  const auto exact = [](const Bound& value) {
    const TypeFamily family = FamilyOf(value.type.id);
    return family == TypeFamily::kDecimal || family == TypeFamily::kMoney;
  };
  const bool both_exact = exact(left) && exact(right);
  std::string left_sql = both_exact ? left.sql : ConvertTo(left, common);
  std::string right_sql = both_exact ? right.sql : ConvertTo(right, common);
  if (FamilyOf(common.id) == TypeFamily::kBinary) {
    // Trailing zero bytes do not count.
    left_sql = "ms_binary(" + left_sql + ')';
    right_sql = "ms_binary(" + right_sql + ')';
  }
  return '(' + Collated(left_sql, common.id) + ' ' + std::string(row.symbol) + ' ' + right_sql +
         ')';
}

Bound Binder::Negate(const Bound& operand, int line) const {
  Bound result;
  result.type = operand.type;
  result.is_null = operand.is_null;
  result.is_integer = operand.is_integer;
  const std::string code = std::to_string(EncodeType(operand.type));
  if (operand.is_null) {
    result.sql = "NULL";
    return result;
  }
  switch (FamilyOf(operand.type.id)) {
    case TypeFamily::kInteger:
      result.sql = operand.is_integer ? "(-" + operand.sql + ')'
                                      : "ms_integer('-', 0, " + operand.sql + ", " + code + ')';
      return result;
    case TypeFamily::kReal:
      result.sql = "(-" + operand.sql + ')';
      return result;
    case TypeFamily::kDecimal:
    case TypeFamily::kMoney:
      // A literal is written with its sign; "'1.5'" becomes "'-1.5'".
      if (operand.sql.size() > 2 && operand.sql[0] == '\'' && operand.sql[1] != '-' &&
          operand.sql.find_first_not_of("'0.") != std::string::npos) {
        result.sql = "'-" + operand.sql.substr(1);
      } else {
        result.sql = "ms_decimal('-', 0, " + operand.sql + ", " + code + ')';
      }
      return result;
    default:
      throw MakeError(403, {"minus", NameOf(operand.type.id)}, line);
  }
}

}  // namespace dbkeeper::server
