// Statements with what they give; the tests run them, the fuzz test begins from them.
#pragma once

#include <span>
#include <string_view>

namespace dbkeeper::server {

struct StatementCase {
  std::string_view batch;
  std::string_view rows;  // "a|b;c|d", or "error N"
};

// Made before every case: tables items, orders, kinds, and a view.
extern const std::string_view kSetup;

std::span<const StatementCase> QueryCases();
std::span<const StatementCase> ExpressionCases();
std::span<const StatementCase> FunctionCases();
std::span<const StatementCase> ChangeCases();
std::span<const StatementCase> ErrorCases();

}  // namespace dbkeeper::server
