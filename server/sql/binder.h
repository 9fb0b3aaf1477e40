// Gives every name its column and every expression its type, and writes both as SQLite text.
// Behind translator.h; its methods stand in bind_*.cpp.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/sql/ast.h"
#include "server/sql/translator.h"
#include "server/types/sql_type.h"

namespace dbkeeper::server {

struct FunctionRow;

// A column that names can reach.
struct ScopeColumn {
  std::string name;
  std::string sql;
  SqlType type;
  bool identity = false;
  std::string base_table;  // of a column of one, for result sets that can be updated
};

// A table of a from clause.
struct ScopeTable {
  std::string name;  // its alias, or the table's own name
  ObjectName full_name;
  std::string sqlite_alias;
  std::vector<ScopeColumn> columns;
  std::optional<ObjectInfo> object;  // of a base table
};

// The tables of one select and what its grouping allows.
struct Scope {
  const Scope* outer = nullptr;
  std::deque<ScopeTable> tables;  // addresses stay while tables are added
  // Columns met outside of aggregates and grouped expressions; see Binder::Bind.
  mutable std::vector<std::string> loose_columns;
  std::vector<std::string> grouped;  // the SQLite texts of the grouped expressions
  bool aggregates_allowed = false;
  mutable bool has_aggregate = false;
};

// An expression as SQLite text with its type.
struct Bound {
  std::string sql;
  SqlType type;
  bool is_null = false;     // the literal NULL, which takes any type
  bool is_integer = false;  // an integer literal: as a decimal it has its own digits only
  const ScopeColumn* column = nullptr;
};

// One select, bound, before it is known which types its union wants.
struct BoundQuery {
  struct Item {
    std::string name;
    Bound value;
  };
  std::vector<Item> items;
  std::string tail;      // " FROM ... HAVING ..."
  std::string order_by;  // " ORDER BY ..." or empty
  std::string limit;     // " LIMIT n" or empty
  bool distinct = false;
  bool collated = false;    // a term of a union
  bool grouped = false;     // grouped or aggregated
  bool single_row = false;  // gives one row at most
  // Set when the query reads one base table row by row.
  std::optional<ScopeTable> single_table;
  // Of a union or a parenthesised query: the whole text, its columns named c1, c2 ...
  std::string text;
  // Keeps the columns that `items` point to.
  std::shared_ptr<const std::deque<ScopeTable>> tables;
};

enum class QueryPlace { kTop, kSubquery, kExists };

class Binder {
 public:
  Binder(NameResolver& resolver, const Parameters& parameters)
      : resolver_(resolver), parameters_(parameters) {}

  // ---- bind_expression.cpp
  Bound Bind(const Expression& expression, const Scope& scope);
  std::string BindCondition(const Expression& expression, const Scope& scope);

  // ---- bind_conversion.cpp
  // `value` as SQLite text in the storage form of `type`.
  std::string ConvertTo(const Bound& value, const SqlType& type) const;
  // The same for an assignment to a column, which refuses to cut texts short.
  std::string AssignTo(const Bound& value, const SqlType& type) const;

  // ---- bind_query.cpp
  BoundQuery BindQuery(const Query& query, const Scope* outer, QueryPlace place);
  // The text of a bound query. `convert_to` gives the types that its columns are brought to; named
  // columns are c1, c2 ...; `first_extra` is put before the items.
  enum class ColumnNames { kNone, kNumbered };
  std::string TextOf(const BoundQuery& query, ColumnNames names,
                     const std::vector<SqlType>* convert_to = nullptr) const;

  // ---- bind_table.cpp
  std::string BindFrom(const std::vector<TableSourcePtr>& from, Scope& scope);
  ScopeTable& AddTable(const ObjectInfo& object, const std::string& name,
                       const ObjectName& full_name, Scope& scope);
  ObjectInfo Resolve(const ObjectName& name, int line);

  static std::string Collated(const std::string& sql, TypeId type);

  // In which database names without one stand; empty: the current.
  std::string default_database;
  bool subqueries_allowed = true;

 private:
  // ---- bind_expression.cpp
  Bound BindNode(const Expression& expression, const Scope& scope);
  Bound BindLiteral(const Literal& literal, int line) const;
  Bound BindColumn(const ColumnReference& reference, int line, const Scope& scope);
  Bound BindVariable(const Variable& variable, int line);
  Bound BindUnary(const Unary& unary, int line, const Scope& scope);
  Bound BindCase(const Case& node, const Scope& scope);
  Bound BindScalarSubquery(const ScalarSubquery& node, const Scope& scope, int line);
  std::string BindBinaryCondition(const Binary& node, int line, const Scope& scope);
  std::string BindBetween(const Between& node, int line, const Scope& scope);
  std::string BindInList(const InList& node, const Scope& scope);
  std::string BindLike(const Like& like, const Scope& scope);
  std::string BindInQuery(const InQuery& in, int line, const Scope& scope);
  std::string BindQuantified(const Quantified& node, int line, const Scope& scope);
  BoundQuery BindSubqueryColumn(const Query& query, const Scope& scope, int line);

  // ---- bind_operator.cpp
  Bound BindBinary(const Binary& binary, int line, const Scope& scope);
  Bound Arithmetic(BinaryOperator op, const Bound& left, const Bound& right, int line) const;
  Bound IntegerArithmetic(BinaryOperator op, const Bound& left, const Bound& right) const;
  Bound DecimalArithmetic(BinaryOperator op, const Bound& left, const Bound& right) const;
  Bound Concatenate(const Bound& left, const Bound& right) const;
  std::string Compare(BinaryOperator op, const Bound& left, const Bound& right, int line) const;
  Bound Negate(const Bound& operand, int line) const;

  // ---- bind_function.cpp
  Bound BindCall(const FunctionCall& call, int line, const Scope& scope);
  Bound BindAggregate(const FunctionCall& call, int line, const Scope& scope);
  Bound BindListed(const FunctionRow& row, const FunctionCall& call, int line, const Scope& scope);
  Bound BindArgument(char kind, const FunctionRow& row, const Expression& argument, int line,
                     const Scope& scope);
  std::string FillCall(std::string_view form, const std::vector<std::string>& arguments);
  Bound BindChoice(std::string_view name, const FunctionCall& call, int line, const Scope& scope);
  Bound BindCast(const Cast& cast, int line, const Scope& scope);

  // ---- bind_query.cpp
  BoundQuery BindCore(const SelectCore& core, const std::vector<OrderItem>& order_by,
                      const Scope* outer, QueryPlace place);
  BoundQuery BindUnion(const Query& query, const Scope* outer, QueryPlace place);
  void BindItems(const SelectCore& core, const Scope& scope, QueryPlace place, BoundQuery& bound);
  void BindGroups(const SelectCore& core, Scope& scope, BoundQuery& bound);
  void ExpandStar(const Star& star, int line, const Scope& scope, BoundQuery& bound) const;
  std::string BindOrderBy(const std::vector<OrderItem>& order_by, const Scope* scope,
                          const BoundQuery& bound);
  std::string BindTop(const Expression& count);
  static void RequireGrouped(const Scope& scope, int number, int line);

  // ---- bind_table.cpp
  std::string BindSource(const TableSource& source, Scope& scope);
  std::string BindNamed(const NamedTable& table, const TableSource& source, Scope& scope);
  std::string BindView(const ObjectInfo& view, const std::string& name, const ObjectName& full_name,
                       Scope& scope);
  std::string BindFunction(const FunctionTable& function, const TableSource& source, Scope& scope);
  std::string BindDerived(const DerivedTable& derived, const TableSource& source, Scope& scope);
  std::string BindJoin(const JoinedTable& join, Scope& scope);
  ScopeTable& AddDerived(const BoundQuery& query, const std::vector<std::string>& names,
                         const std::string& alias, int line, Scope& scope);
  ScopeTable& NewTable(const std::string& name, const ObjectName& full_name, Scope& scope);

  NameResolver& resolver_;
  const Parameters& parameters_;
  int alias_count_ = 0;
  int view_depth_ = 0;
};

// Whether a call of that name is an aggregate.
bool IsAggregate(std::string_view lower_name);

}  // namespace dbkeeper::server
