// Every keyword function of expressions, in the order in which keywords are tried.
#pragma once

#include "operands/KeywordFunction.h"

namespace kalvex {

const CFunctionTable& Functions();

}  // namespace kalvex
