// A status written as a number, as one of the status words, or as a variable that holds either.
#pragma once

#include <cstdint>
#include <string_view>

#include "operands/ScriptContext.h"

namespace kalvex::operands {

enum class StatusAction { Set, Add, Remove };

// Changes `word` by the argument; false for an unknown word, which leaves it as it was. Records no
// error of its own.
bool ParseStatusArgument(ScriptContext& script, std::string_view text, std::uint16_t* word,
                         StatusAction action);

}  // namespace kalvex::operands
