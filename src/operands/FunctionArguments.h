// The argument tokens of a keyword function read as operands. Nothing comes back when one does not
// evaluate; the operand's error is then in the error slot and the function fails with it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "operands/KeywordFunction.h"

namespace kalvex::operands {

std::optional<std::string> TextArgument(const FunctionCall& call, std::size_t index);
std::optional<int> NumberArgument(const FunctionCall& call, std::size_t index);

}  // namespace kalvex::operands
