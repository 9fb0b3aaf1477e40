// Skeleton statements for one table, made of the columns that a person has ticked. Names go into
// them as they stand; lines end in CR LF.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace dbkeeper::easy_sql {

using Columns = std::vector<std::string>;

// In the order of the action list.
enum class Action { kSelect, kInsert, kDelete, kUpdate };

// The statement of an action; `top` of 0 or less limits nothing, and only a select takes it. Empty
// without columns and for a delete, which has none.
std::string Statement(Action action, const std::string& table, const Columns& columns,
                      std::int64_t top);

// The columns compared with a placeholder each, to be put behind a statement; empty without
// columns and for an insert.
std::string Condition(Action action, const Columns& columns);

// The columns to sort by; empty without columns and for what is no select.
std::string Order(Action action, const Columns& columns);

// `part` behind `text`, on a line of its own.
std::string Append(std::string text, const std::string& part);

}  // namespace dbkeeper::easy_sql
