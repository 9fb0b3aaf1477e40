// The functions that translated statements call, as tables of one shape. Used by
// server_functions.cpp only.
#pragma once

#include <span>
#include <string_view>

#include "server/types/cell.h"

namespace dbkeeper::server {

using Cells = std::span<const Cell>;

enum class NullRule {
  kNullGivesNull,  // any null argument makes the result null
  kSeesNulls,
};

struct FunctionEntry {
  const char* name;
  int arguments;  // -1: any number
  Cell (*run)(Cells arguments);
  NullRule nulls = NullRule::kNullGivesNull;
  bool deterministic = true;
};

std::span<const FunctionEntry> ConversionFunctions();
std::span<const FunctionEntry> NumberFunctions();
std::span<const FunctionEntry> TextFunctions();
std::span<const FunctionEntry> DateFunctions();

// Arguments in the form that the translator brought them to.
std::int64_t IntegerAt(Cells arguments, std::size_t index);
double DoubleAt(Cells arguments, std::size_t index);
std::string_view TextAt(Cells arguments, std::size_t index);  // the bytes of a blob too

}  // namespace dbkeeper::server
