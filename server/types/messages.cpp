#include "server/types/messages.h"

#include <algorithm>
#include <iterator>

namespace dbkeeper::server {
namespace {

struct MessageRow {
  int number;
  int severity;
  int state;
  std::string_view text;
};

// In order of their numbers. Texts of other areas of the server may be added by their users.
constexpr MessageRow kMessages[] = {
    {102, 15, 1, "Incorrect syntax near '%1'."},
    {103, 15, 7, "The identifier that starts with '%1' is too long. Maximum length is 128."},
    {104, 15, 1,
     "ORDER BY items must appear in the select list if the statement contains a UNION operator."},
    {105, 15, 1, "Unclosed quotation mark before the character string '%1'."},
    {107, 16, 2,
     "The column prefix '%1' does not match with a table name or alias name used in the query."},
    {108, 16, 1,
     "The ORDER BY position number %1 is out of range of the number of items in the select list."},
    {109, 15, 1,
     "There are more columns in the INSERT statement than values specified in the VALUES clause. "
     "The number of values in the VALUES clause must match the number of columns specified in the "
     "INSERT statement."},
    {110, 15, 1,
     "There are fewer columns in the INSERT statement than values specified in the VALUES clause. "
     "The number of values in the VALUES clause must match the number of columns specified in the "
     "INSERT statement."},
    {111, 15, 1, "'%1' must be the first statement in a query batch."},
    {113, 15, 1, "Missing end comment mark '*/'."},
    {116, 15, 1,
     "Only one expression can be specified in the select list when the subquery is not introduced "
     "with EXISTS."},
    {117, 15, 1,
     "The %1 name '%2' contains more than the maximum number of prefixes. The maximum is 3."},
    {119, 15, 1,
     "Must pass parameter number %1 and subsequent parameters as '@name = value'. After the form "
     "'@name = value' has been used, all subsequent parameters must be passed in the form '@name "
     "= value'."},
    {120, 15, 1,
     "The select list for the INSERT statement contains fewer items than the insert list. The "
     "number of SELECT values must match the number of INSERT columns."},
    {121, 15, 1,
     "The select list for the INSERT statement contains more items than the insert list. The "
     "number of SELECT values must match the number of INSERT columns."},
    {128, 15, 1,
     "The name '%1' is not permitted in this context. Only constants, expressions, or variables "
     "allowed here. Column names are not permitted."},
    {131, 15, 3,
     "The size (%1) given to the type '%2' exceeds the maximum allowed for any data type (%3)."},
    {137, 15, 2, "Must declare the variable '%1'."},
    {145, 15, 1, "ORDER BY items must appear in the select list if SELECT DISTINCT is specified."},
    {147, 15, 1,
     "An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a "
     "HAVING clause or a select list, and the column being aggregated is an outer reference."},
    {155, 15, 1, "'%1' is not a recognized %2 option."},
    {156, 15, 1, "Incorrect syntax near the keyword '%1'."},
    {157, 15, 1, "An aggregate may not appear in the set list of an UPDATE statement."},
    {161, 15, 1, "Rule contains more than one variable."},
    {164, 15, 1, "GROUP BY expressions must refer to column names that appear in the select list."},
    {170, 15, 1, "Line %2: Incorrect syntax near '%1'."},
    {174, 15, 1, "The %1 function requires %2 arguments."},
    {189, 15, 1, "The %1 function requires %2 to %3 arguments."},
    {191, 15, 1,
     "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into "
     "smaller queries."},
    {192, 15, 1, "The scale must be less than or equal to the precision."},
    {195, 15, 10, "'%1' is not a recognized %2."},
    {205, 16, 1,
     "All queries in an SQL statement containing a UNION operator must have an equal number of "
     "expressions in their target lists."},
    {207, 16, 3, "Invalid column name '%1'."},
    {208, 16, 1, "Invalid object name '%1'."},
    {209, 16, 1, "Ambiguous column name '%1'."},
    {213, 16, 4,
     "Insert Error: Column name or number of supplied values does not match table definition."},
    {220, 16, 1, "Arithmetic overflow error for data type %1, value = %2."},
    {229, 14, 5, "%1 permission denied on object '%2', database '%3', owner '%4'."},
    {232, 16, 1, "Arithmetic overflow error for type %1, value = %2."},
    {234, 16, 2, "There is insufficient result space to convert a money value to %1."},
    {235, 16, 0, "Cannot convert a char value to money. The char value has incorrect syntax."},
    {241, 16, 1, "Syntax error converting datetime from character string."},
    {242, 16, 3,
     "The conversion of a char data type to a datetime data type resulted in an out-of-range "
     "datetime value."},
    {244, 16, 1,
     "The conversion of the %1 value '%2' overflowed an %3 column. Use a larger integer column."},
    {245, 16, 1, "Syntax error converting the %1 value '%2' to a column of data type %3."},
    {248, 16, 1,
     "The conversion of the %1 value '%2' overflowed an int column. Maximum integer value "
     "exceeded."},
    {256, 16, 1,
     "The data type %1 is invalid for the %2 function. Allowed types are: char/varchar, "
     "nchar/nvarchar, and binary/varbinary."},
    {257, 16, 3,
     "Implicit conversion from data type %1 to %2 is not allowed. Use the CONVERT function to run "
     "this query."},
    {259, 16, 2,
     "Ad hoc updates to system catalogs are not enabled. The system administrator must reconfigure "
     "SQL Server to allow this."},
    {260, 16, 1,
     "Disallowed implicit conversion from data type %1 to data type %2, table '%3', column '%4'. "
     "Use the CONVERT function to run this query."},
    {263, 16, 1, "Must specify table to select from."},
    {264, 16, 1,
     "Column name '%1' appears more than once in the result column list. A column cannot be "
     "assigned more than one value in the same clause. Modify the clause to make sure that a "
     "column is updated only once."},
    {266, 16, 2,
     "Transaction count after EXECUTE indicates that a COMMIT or ROLLBACK TRANSACTION statement "
     "is missing. Previous count = %1, current count = %2."},
    {271, 16, 1, "Column '%1' cannot be modified because it is a computed column."},
    {272, 16, 1, "Cannot update a timestamp column."},
    {273, 16, 1,
     "Cannot insert a non-null value into a timestamp column. Use INSERT with a column list or "
     "with a default of NULL for the timestamp column."},
    {279, 16, 3,
     "The text, ntext, and image data types are invalid in this subquery or aggregate "
     "expression."},
    {281, 16, 1, "%1 is not a valid style number when converting from %2 to a character string."},
    {295, 16, 3, "Syntax error converting character string to smalldatetime data type."},
    {296, 16, 3,
     "The conversion of char data type to smalldatetime data type resulted in an out-of-range "
     "smalldatetime value."},
    {298, 16, 1,
     "The conversion from datetime data type to smalldatetime data type resulted in a "
     "smalldatetime overflow error."},
    {306, 16, 1,
     "The text, ntext, and image data types cannot be compared or sorted, except when using IS "
     "NULL or LIKE operator."},
    {311, 16, 1,
     "Cannot use text, ntext, or image columns in the 'inserted' and 'deleted' tables."},
    {402, 16, 1, "The data types %1 and %2 are incompatible in the %3 operator."},
    {403, 16, 1, "Invalid operator for data type. Operator equals %1, type equals %2."},
    {409, 16, 2, "The %1 operation cannot take a %2 data type as an argument."},
    {421, 16, 1, "The %1 data type cannot be selected as DISTINCT because it is not comparable."},
    {505, 16, 1, "Current user account was invoked with SETUSER or SP_SETAPPROLE."},
    {512, 16, 1,
     "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, "
     "<, <= , >, >= or when the subquery is used as an expression."},
    {515, 16, 2,
     "Cannot insert the value NULL into column '%1', table '%2'; column does not allow nulls. %3 "
     "fails."},
    {517, 16, 1, "Adding a value to a '%1' column caused overflow."},
    {518, 16, 1, "Cannot convert data type %1 to %2."},
    {529, 16, 1, "Explicit conversion from data type %1 to %2 is not allowed."},
    {535, 16, 1, "Difference of two datetime columns caused overflow at runtime."},
    {536, 16, 3, "Invalid length parameter passed to the substring function."},
    {544, 16, 1,
     "Cannot insert explicit value for identity column in table '%1' when IDENTITY_INSERT is set "
     "to OFF."},
    {545, 16, 1,
     "Explicit value must be specified for identity column in table '%1' when IDENTITY_INSERT is "
     "set to ON."},
    {547, 16, 1,
     "%1 statement conflicted with %2 constraint '%3'. The conflict occurred in database '%4', "
     "table '%5'%6."},
    {1001, 15, 1, "Line %2: Length or precision specification %1 is invalid."},
    {1007, 15, 1,
     "The number '%1' is out of the range for numeric representation (maximum precision 38)."},
    {1011, 15, 1, "The correlation name '%1' is specified multiple times in a FROM clause."},
    {1013, 15, 1,
     "Tables or functions '%1' and '%1' have the same exposed names. Use correlation names to "
     "distinguish them."},
    {1015, 15, 1,
     "An aggregate cannot appear in an ON clause unless it is in a subquery contained in a HAVING "
     "clause or select list, and the column being aggregated is an outer reference."},
    {1033, 15, 1,
     "The ORDER BY clause is invalid in views, inline functions, derived tables, and subqueries, "
     "unless TOP is also specified."},
    {1038, 15, 3, "Cannot use empty object or column names. Use a single space if necessary."},
    {2601, 14, 3, "Cannot insert duplicate key row in object '%1' with unique index '%2'."},
    {2627, 14, 2, "Violation of %1 constraint '%2'. Cannot insert duplicate key in object '%3'."},
    {2705, 16, 3,
     "Column names in each table must be unique. Column name '%1' in table '%2' is specified more "
     "than once."},
    {2715, 16, 6, "Column or parameter #%1: Cannot find data type %2."},
    {2716, 16, 1, "Column or parameter #%1: Cannot specify a column width on data type %2."},
    {2750, 16, 1,
     "Column or parameter #%1: Specified column precision %2 is greater than the maximum "
     "precision of %3."},
    {4407, 16, 2, "View or function '%1' contains too deep a nesting of views."},
    {4506, 16, 1,
     "Column names in each view or function must be unique. Column name '%1' in view or function "
     "'%2' is specified more than once."},
    {4511, 16, 1,
     "Create View or Function failed because no column name was specified for column %1."},
    {4902, 16, 1, "Cannot alter table '%1' because this table does not exist in database '%2'."},
    {8102, 16, 1, "Cannot update identity column '%1'."},
    {8114, 16, 5, "Error converting data type %1 to %2."},
    {8115, 16, 2, "Arithmetic overflow error converting %1 to data type %2."},
    {8116, 16, 1, "Argument data type %1 is invalid for argument %2 of %3 function."},
    {8117, 16, 1, "Operand data type %1 is invalid for %2 operator."},
    {8118, 16, 1,
     "Column '%1' is invalid in the select list because it is not contained in an aggregate "
     "function and there is no GROUP BY clause."},
    {8120, 16, 1,
     "Column '%1' is invalid in the select list because it is not contained in either an "
     "aggregate function or the GROUP BY clause."},
    {8121, 16, 1,
     "Column '%1' is invalid in the HAVING clause because it is not contained in either an "
     "aggregate function or the GROUP BY clause."},
    {8127, 16, 1,
     "Column name '%1' is invalid in the ORDER BY clause because it is not contained in either an "
     "aggregate function or the GROUP BY clause."},
    {8134, 16, 1, "Divide by zero error encountered."},
    {8152, 16, 9, "String or binary data would be truncated."},
    {8155, 16, 2, "No column was specified for column %1 of '%2'."},
    {8156, 16, 1, "The column '%1' was specified multiple times for '%2'."},
    {8158, 16, 1, "'%1' has more columns than were specified in the column list."},
    {8159, 16, 1, "'%1' has fewer columns than were specified in the column list."},
    {8169, 16, 2, "Syntax error converting from a character string to uniqueidentifier."},
    {8170, 16, 2, "Insufficient result space to convert uniqueidentifier value to char."},
};

std::string Fill(std::string_view text, std::initializer_list<std::string_view> arguments) {
  std::string filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_place =
        text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9';
    if (!is_place) {
      filled += text[i];
      continue;
    }
    const auto index = static_cast<std::size_t>(text[++i] - '1');
    if (index < arguments.size()) filled += *(arguments.begin() + index);
  }
  return filled;
}

}  // namespace

ServerMessage MakeMessage(int number, std::initializer_list<std::string_view> arguments, int line) {
  ServerMessage message;
  message.number = number;
  message.line = line;
  const auto* const row = std::lower_bound(
      std::begin(kMessages), std::end(kMessages), number,
      [](const MessageRow& candidate, int wanted) { return candidate.number < wanted; });
  if (row != std::end(kMessages) && row->number == number) {
    message.severity = row->severity;
    message.state = row->state;
    message.text = Fill(row->text, arguments);
    return message;
  }
  for (const std::string_view argument : arguments) message.text += argument;
  return message;
}

SqlError MakeError(int number, std::initializer_list<std::string_view> arguments, int line) {
  return SqlError(MakeMessage(number, arguments, line));
}

SqlError Unsupported(std::string_view construct, int line) {
  ServerMessage message;
  message.number = 50001;
  message.line = line;
  message.text = "The local server does not support " + std::string(construct) + ".";
  return SqlError(std::move(message));
}

}  // namespace dbkeeper::server
