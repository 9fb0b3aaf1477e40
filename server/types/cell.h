// A value as SQLite keeps it.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace dbkeeper::server {

struct Blob {
  std::string bytes;
  bool operator==(const Blob&) const = default;
};

// Null, integer, real, text, blob.
using Cell = std::variant<std::monostate, std::int64_t, double, std::string, Blob>;

inline bool IsNullCell(const Cell& cell) { return std::holds_alternative<std::monostate>(cell); }

}  // namespace dbkeeper::server
