// From the text of a batch to its tree.
#pragma once

#include <string_view>
#include <vector>

#include "server/sql/ast.h"
#include "server/sql/lexer.h"
#include "server/types/messages.h"
#include "server/types/parameter.h"

namespace dbkeeper::server {

// Parses a whole batch; a syntax error anywhere refuses the batch before anything of it runs, as
// the server does. `text` is UTF-8. Throws SqlError.
std::vector<Statement> ParseBatch(std::string_view text,
                                  QuotedIdentifiers quoted = QuotedIdentifiers::kOn);

// Parses one expression on its own: a default, a check. Throws SqlError.
ExpressionPtr ParseExpression(std::string_view text);

// Parses a name of one to four parts on its own: "db.owner.name", "[a b]". Throws SqlError.
ObjectName ParseObjectName(std::string_view text);

// Parses declarations of parameters: "@P1 int, @P2 nvarchar(20) output". Throws SqlError.
Parameters ParseParameterDeclarations(std::string_view text);

}  // namespace dbkeeper::server
