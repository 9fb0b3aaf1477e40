// From the text of a batch to its tree.
#pragma once

#include <string_view>
#include <vector>

#include "server/sql/ast.h"
#include "server/types/sql_error.h"

namespace dbkeeper::server {

// Whether "x" is a name (as drivers set it) or a string.
enum class QuotedIdentifiers { kOn, kOff };

// Parses a whole batch; a syntax error anywhere refuses the batch before anything of it runs, as
// the server does. `text` is UTF-8. Throws SqlError.
std::vector<Statement> ParseBatch(std::string_view text,
                                  QuotedIdentifiers quoted = QuotedIdentifiers::kOn);

// Parses one expression on its own: a default, a check. Throws SqlError.
ExpressionPtr ParseExpression(std::string_view text);

// Parses declarations of parameters: "@P1 int, @P2 nvarchar(20) output". Throws SqlError.
struct ParameterDeclaration {
  std::string name;
  SqlType type;
  bool output = false;
};
std::vector<ParameterDeclaration> ParseParameterDeclarations(std::string_view text);

}  // namespace dbkeeper::server
