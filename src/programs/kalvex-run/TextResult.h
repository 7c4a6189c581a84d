// The result of a run for people: where each script stands and what its variables hold.
#pragma once

#include <string>

#include "programs/kalvex-run/Runner.h"

namespace kalvex::run {

// UTF-8; a heading and a table for each script.
std::string TextResult(const Runner& runner);

// One aligned line for each value of the variables, below a line of headings; empty without
// variables.
std::string VariableTable(const operands::VariableTable& variables);

}  // namespace kalvex::run
