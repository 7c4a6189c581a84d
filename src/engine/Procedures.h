// Procedure calls: argument lists and the rewriting of lines while a call is active.
#pragma once

#include <string>
#include <string_view>

#include "engine/CallStack.h"
#include "engine/Statement.h"

namespace kalvex::engine {

// What stands before the first "(" or blank; empty if neither occurs.
std::string_view ProcedureName(std::string_view text);

// The replacement of a token by the frame's arguments, a suffix from "." on kept; empty if none.
std::string LookupArgument(const CCallFrame& frame, std::string_view token);

// The line with each formal parameter replaced by the actual argument's text.
std::string RewriteLine(const CCallFrame& frame, std::string_view line);

}  // namespace kalvex::engine
