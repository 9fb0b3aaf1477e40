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
#include "server/types/type_rules.h"

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
  mutable bool read = false;         // an expression names one of the columns
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
  mutable bool in_aggregate = false;  // while the argument of one is bound
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
  bool single_row = false;  // gives one row at most
  // Set when the query reads one base table row by row.
  std::optional<ScopeTable> single_table;
  // Of a union or a parenthesised query: the whole text, its columns named c1, c2 ...
  std::string text;
  // Keeps the columns that `items` point to.
  std::shared_ptr<const std::deque<ScopeTable>> tables;
};

// The literal NULL.
inline const Bound kNull{"NULL", SqlType{}, true};

// A type as an argument of the server's functions.
inline std::string Code(const SqlType& type) { return std::to_string(EncodeType(type)); }

// What the columns of a query's text are called, from c1 on.
inline std::string NumberedColumn(std::size_t number) { return "c" + std::to_string(number); }

// The length of the longest text or binary that is no large object.
inline int LongestOf(TypeId id) { return IsNationalText(id) ? 4000 : 8000; }

// ---- bind_operator.cpp

// `value` as SQLite text in the storage form of `type`; the second for an assignment to a column,
// which refuses to cut texts short.
std::string ConvertTo(const Bound& value, const SqlType& type);
std::string AssignTo(const Bound& value, const SqlType& type);
// With the collation that values of the type are compared by.
std::string Collated(const std::string& sql, TypeId type);
// Brings `common` to a type that holds the other value too; nulls take any type.
void Widen(Bound& common, const Bound& other);
Bound Arithmetic(const Operator& op, Bound left, Bound right, int line);
std::string Compare(const Operator& op, const Bound& left, const Bound& right, int line);
Bound Negate(const Bound& operand, int line);

enum class QueryPlace { kTop, kSubquery, kExists };

class Binder {
 public:
  Binder(NameResolver& resolver, const Parameters& parameters)
      : resolver_(resolver), parameters_(parameters) {}

  // ---- bind_expression.cpp
  Bound Bind(const Expression& expression, const Scope& scope);
  std::string BindCondition(const Expression& expression, const Scope& scope);

  // ---- bind_query.cpp
  BoundQuery BindQuery(const Query& query, const Scope* outer, QueryPlace place);
  // The text of a bound query. `convert_to` gives the types that its columns are brought to; named
  // columns are c1, c2 ...
  enum class ColumnNames { kNone, kNumbered };
  std::string TextOf(const BoundQuery& query, ColumnNames names,
                     const std::vector<SqlType>* convert_to = nullptr) const;

  // ---- bind_table.cpp
  std::string BindFrom(const std::vector<TableSourcePtr>& from, Scope& scope);
  ScopeTable& AddTable(const ObjectInfo& object, const std::string& name,
                       const ObjectName& full_name, Scope& scope);
  ObjectInfo Resolve(const ObjectName& name, int line);

  // In which database names without one stand; empty: the current.
  std::string default_database;
  // A check is kept: nothing of this moment may stand in it, and no subquery.
  bool in_check = false;

 private:
  // ---- bind_expression.cpp
  Bound BindNode(const Expression& node, const Scope& scope);
  std::pair<Bound, Bound> BindBoth(const Expression& node, const Scope& scope);
  Bound BindColumn(const Expression& reference, const Scope& scope);
  Bound BindVariable(const Expression& variable);
  Bound BindUnary(const Expression& unary, const Scope& scope);
  Bound BindCase(const Expression& node, const Scope& scope);
  Bound BindScalarSubquery(const Expression& node, const Scope& scope);
  std::string BindBetween(const Expression& node, const Scope& scope);
  std::string BindInList(const Expression& node, const Scope& scope);
  std::string BindInQuery(const Expression& node, const Scope& scope);
  std::string BindLike(const Expression& like, const Scope& scope);
  std::string BindQuantified(const Expression& node, const Scope& scope);
  BoundQuery BindSubqueryColumn(const Expression& node, const Scope& scope);

  // ---- bind_function.cpp
  Bound BindCall(const Expression& call, const Scope& scope);
  Bound BindAggregate(const std::string& name, const Expression& call, const Scope& scope);
  Bound BindListed(const FunctionRow& row, const Expression& call, const Scope& scope);
  Bound BindArgument(const FunctionRow& row, std::size_t number, const Expression& call,
                     const Scope& scope);
  std::string FillCall(std::string_view form, const std::vector<std::string>& arguments);
  Bound BindChoice(std::string_view name, const Expression& call, const Scope& scope);
  Bound BindCast(const Expression& cast, const Scope& scope);

  // ---- bind_query.cpp
  BoundQuery BindCore(const SelectCore& core, const std::vector<OrderItem>& order_by,
                      const Scope* outer, QueryPlace place);
  BoundQuery BindUnion(const Query& query, const Scope* outer, QueryPlace place);
  void BindItems(const SelectCore& core, const Scope& scope, QueryPlace place, BoundQuery& bound);
  void BindGroups(const SelectCore& core, Scope& scope, BoundQuery& bound);
  void ExpandStar(const Expression& star, const Scope& scope, BoundQuery& bound) const;
  std::string BindOrderBy(const std::vector<OrderItem>& order_by, const Scope* scope,
                          const BoundQuery& bound);
  std::string BindTop(const Expression& count);

  // ---- bind_table.cpp
  std::string BindSource(const TableSource& source, Scope& scope);
  std::string BindNamed(const TableSource& source, Scope& scope);
  std::string BindView(const ObjectInfo& view, const std::string& name, Scope& scope);
  std::string BindFunction(const TableSource& source, Scope& scope);
  std::string BindJoin(const TableSource& join, Scope& scope);
  std::string AddDerived(const BoundQuery& query, const std::vector<std::string>& names,
                         const ObjectName& full_name, const std::string& alias, int line,
                         Scope& scope);
  ScopeTable& NewTable(const std::string& name, const ObjectName& full_name, Scope& scope);

  NameResolver& resolver_;
  const Parameters& parameters_;
  int alias_count_ = 0;
  int view_depth_ = 0;
};

}  // namespace dbkeeper::server
