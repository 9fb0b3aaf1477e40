// Conversions, arithmetic, joining of texts, comparison.
#include <algorithm>

#include "server/sql/binder.h"
#include "server/types/messages.h"
#include "server/types/type_rules.h"

namespace dbkeeper::server {
namespace {

bool IsFixed(TypeId id) {
  return id == TypeId::kChar || id == TypeId::kNChar || id == TypeId::kBinary;
}

// Whether every value of `from` is stored as the same value of `to` is.
bool StoredAlike(const SqlType& from, const SqlType& to) {
  if (FamilyOf(from.id) != FamilyOf(to.id)) return false;
  const bool holds_length = IsFixed(to.id) ? from.id == to.id && from.length == to.length
                                           : IsLargeObject(to.id) || from.length <= to.length;
  switch (FamilyOf(to.id)) {
    case TypeFamily::kInteger:
    case TypeFamily::kReal:
      return from.id <= to.id;
    case TypeFamily::kDecimal:
      return from.scale == to.scale && from.precision <= to.precision;
    case TypeFamily::kMoney:
      return from.id == to.id || to.id == TypeId::kMoney;
    case TypeFamily::kDateTime:
      return from.id == to.id || to.id == TypeId::kDateTime;
    case TypeFamily::kText:
      // A national text may hold twice as many bytes in the other form.
      if (!IsFixed(to.id) && IsNationalText(from.id) && !IsNationalText(to.id)) {
        return to.id == TypeId::kText;
      }
      return holds_length;
    case TypeFamily::kBinary:
      if (to.id == TypeId::kTimestamp || from.id == TypeId::kTimestamp) return from.id == to.id;
      return holds_length;
    default:
      return true;
  }
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

// The decimal that an operator gives.
SqlType ResultOf(char op, const SqlType& left, const SqlType& right) {
  const int left_whole = left.precision - left.scale;
  const int right_whole = right.precision - right.scale;
  const int scale = std::max(left.scale, right.scale);
  switch (op) {
    case '*':
      return Limited(left.precision + right.precision + 1, left.scale + right.scale);
    case '/': {
      const int decimals = std::max(6, left.scale + right.precision + 1);
      return Limited(left_whole + right.scale + decimals, decimals);
    }
    case '%':
      return Limited(std::min(left_whole, right_whole) + scale, scale);
    default:
      return Limited(std::max(left_whole, right_whole) + scale + 1, scale);
  }
}

// ms_decimal('+', left, right, type) and the like.
std::string OperatorCall(std::string_view function, const Operator& op, const std::string& left,
                         const std::string& right, const SqlType& type) {
  return std::string(function) + "('" + std::string(op.sqlite) + "', " + left + ", " + right +
         ", " + Code(type) + ')';
}

std::string Converted(const char* function, const Bound& value, const SqlType& type) {
  if (value.is_null || StoredAlike(value.type, type)) return value.sql;
  return std::string(function) + '(' + value.sql + ", " + Code(value.type) + ", " + Code(type) +
         ')';
}

bool IsOfBits(const Operator& op) { return op.name.starts_with("boolean"); }

Bound IntegerArithmetic(const Operator& op, const Bound& left_operand, const Bound& right_operand) {
  Bound result;
  result.type = CommonType(left_operand.type, right_operand.type);
  if (result.type.id == TypeId::kBit && !IsOfBits(op)) {
    result.type = SqlType{TypeId::kInt, 4, 10, 0, result.type.nullable};
  }
  const std::string left = ConvertTo(left_operand, result.type);
  const std::string right = ConvertTo(right_operand, result.type);
  const std::string plain = '(' + left + ' ' + std::string(op.sqlite) + ' ' + right + ')';
  const char symbol = op.sqlite[0];
  if (symbol == '^') {
    result.sql = "((" + left + " | " + right + ") - (" + left + " & " + right + "))";
  } else if (IsOfBits(op)) {
    result.sql = plain;
  } else if (symbol == '/' || symbol == '%' || result.type.id == TypeId::kBigInt) {
    result.sql = OperatorCall("ms_integer", op, left, right, result.type);
  } else {
    // Two ints never leave the 64 bits of SQLite: the range is checked behind it.
    result.sql = "ms_range(" + plain + ", " + Code(result.type) + ')';
  }
  return result;
}

Bound DecimalArithmetic(const Operator& op, const Bound& left, const Bound& right) {
  // A text takes the type of the decimal beside it.
  const bool left_text = FamilyOf(left.type.id) == TypeFamily::kText;
  const bool right_text = FamilyOf(right.type.id) == TypeFamily::kText;
  SqlType left_type = left_text ? right.type : left.type;
  SqlType right_type = right_text ? left.type : right.type;
  left_type.id = right_type.id = TypeId::kNumeric;
  Bound result;
  result.type = ResultOf(op.sqlite[0], left_type, right_type);
  result.type.nullable = left.type.nullable || right.type.nullable;
  result.sql = OperatorCall("ms_decimal", op, left_text ? ConvertTo(left, left_type) : left.sql,
                            right_text ? ConvertTo(right, right_type) : right.sql, result.type);
  return result;
}

Bound Concatenate(const Bound& left, const Bound& right) {
  const bool binary = FamilyOf(left.type.id) == TypeFamily::kBinary &&
                      FamilyOf(right.type.id) == TypeFamily::kBinary;
  Bound result;
  result.type = CommonType(left.type, right.type);
  if (binary) result.type.id = TypeId::kVarBinary;
  const int maximum = LongestOf(result.type.id);
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

}  // namespace

std::string Collated(const std::string& sql, TypeId type) {
  const std::string_view collation = CollationOf(type);
  return collation.empty() ? sql : sql + " COLLATE " + std::string(collation);
}

std::string ConvertTo(const Bound& value, const SqlType& type) {
  return Converted("ms_convert", value, type);
}

std::string AssignTo(const Bound& value, const SqlType& type) {
  return Converted("ms_assign", value, type);
}

void Widen(Bound& common, const Bound& other) {
  if (other.is_null) {
    common.type.nullable = true;
    return;
  }
  common.type = common.is_null ? other.type : CommonType(common.type, other.type);
  common.is_null = false;
}

Bound Arithmetic(const Operator& op, Bound left, Bound right, int line) {
  if (left.is_null) left.type = right.is_null ? SqlType{} : right.type;
  if (right.is_null) right.type = left.type;
  const SqlType common = CommonType(left.type, right.type);
  const char symbol = op.sqlite[0];
  const bool sums = symbol == '+' || symbol == '-';
  const auto call = [&](std::string_view function) {
    return Bound{
        OperatorCall(function, op, ConvertTo(left, common), ConvertTo(right, common), common),
        common};
  };
  switch (FamilyOf(common.id)) {
    case TypeFamily::kInteger:
      return IntegerArithmetic(op, left, right);
    case TypeFamily::kDecimal:
      if (IsOfBits(op)) break;
      return DecimalArithmetic(op, left, right);
    case TypeFamily::kReal:
      if (IsOfBits(op) || symbol == '%') break;
      return Bound{"ms_float('" + std::string(op.sqlite) + "', " + ConvertTo(left, common) + ", " +
                       ConvertTo(right, common) + ')',
                   common};
    case TypeFamily::kMoney:
      if (IsOfBits(op)) break;
      return call("ms_decimal");
    case TypeFamily::kDateTime:
      if (!sums) break;
      return call("ms_datetime");
    case TypeFamily::kText:
    case TypeFamily::kBinary:
      if (symbol != '+' || IsLargeObject(common.id)) break;
      return Concatenate(left, right);
    default:
      break;
  }
  throw MakeError(403, {op.name, NameOf(common.id)}, line);
}

std::string Compare(const Operator& op, const Bound& left, const Bound& right, int line) {
  SqlType common = left.is_null ? right.type : left.type;
  if (!left.is_null && !right.is_null) common = CommonType(left.type, right.type);
  if (IsLargeObject(common.id)) throw MakeError(306, {}, line);
  // MSDECIMAL compares exact numbers of any scale, so a column stays bare and its index serves.
  const bool both_exact = IsExact(left.type.id) && IsExact(right.type.id);
  std::string left_sql = both_exact ? left.sql : ConvertTo(left, common);
  std::string right_sql = both_exact ? right.sql : ConvertTo(right, common);
  if (FamilyOf(common.id) == TypeFamily::kBinary) {
    // Trailing zero bytes do not count.
    left_sql = "ms_binary(" + left_sql + ')';
    right_sql = "ms_binary(" + right_sql + ')';
  }
  return '(' + Collated(left_sql, common.id) + ' ' + std::string(op.sqlite) + ' ' + right_sql + ')';
}

Bound Negate(const Bound& operand, int line) {
  Bound result{"NULL", operand.type, operand.is_null, operand.is_integer};
  if (operand.is_null) return result;
  const auto subtracted = [&](std::string_view function) {
    return OperatorCall(function, OperatorOf("-"), "0", operand.sql, operand.type);
  };
  switch (FamilyOf(operand.type.id)) {
    case TypeFamily::kInteger:
      result.sql = operand.is_integer ? "(-" + operand.sql + ')' : subtracted("ms_integer");
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
        result.sql = subtracted("ms_decimal");
      }
      return result;
    default:
      throw MakeError(403, {"minus", NameOf(operand.type.id)}, line);
  }
}

}  // namespace dbkeeper::server
