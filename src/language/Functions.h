// Every keyword function of expressions, in the order in which keywords are tried.
#pragma once

#include "operands/KeywordFunction.h"

namespace kalvex::language {

const operands::FunctionTable& Functions();

}  // namespace kalvex::language
