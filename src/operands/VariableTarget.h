// What a name means for whoever only looks at a script. Main thread.
#pragma once

#include <string_view>

#include "operands/Variable.h"

namespace kalvex::operands {

// The variable of that name, its suffix left aside, or what a pointer of that name leads to; null
// where it leads nowhere. Unlike the operations of a pointer it leaves the error slot alone.
CVariable* FindTarget(const VariableTable& variables, std::string_view name);

}  // namespace kalvex::operands
