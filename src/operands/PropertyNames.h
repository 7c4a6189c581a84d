// The names of the properties that an operand may ask of a variable, a list or a pointer, for the
// documents. Operand.h has those of variables with their help, TimeProperties.h those of times.
#pragma once

#include <string_view>
#include <vector>

namespace kalvex::operands {

// Each with its dot, once.
std::vector<std::string_view> VariablePropertyNames();
std::vector<std::string_view> ListPropertyNames();  // of lists, and of pointers

}  // namespace kalvex::operands
