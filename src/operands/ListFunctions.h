// The two calculations on lists that are both statements and functions. They work on the text
// behind their keyword; their errors go to the script, forced.
#pragma once

#include <string_view>

#include "operands/ScriptContext.h"

namespace kalvex::operands {

enum class CalcResult : int {
    Done = 0,
    RangeReversed = -1,  // nothing is written
    NothingComputed = -2,
    Error = -100,
};

// <list.function> <result> [<mask> [FROM <time> TO <time>]]: the aggregate goes into the result, a
// value of type None where nothing was computed.
CalcResult CalcInList(ScriptContext& script, std::string_view text);

// <list> <value> <status> <start> <end> HREP|DREP|MREP: one element for each hour, day or month
// from start to end goes behind those that the list has.
bool FillInList(ScriptContext& script, std::string_view text);

}  // namespace kalvex::operands
