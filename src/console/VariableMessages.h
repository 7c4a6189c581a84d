// The messages about the variables of a script: what they hold, and what a console writes to them.
// Main thread; engine texts.
#pragma once

#include <string>
#include <string_view>

#include "console/ConsoleMessages.h"
#include "operands/Variable.h"

namespace kalvex::console {

// The message with all that the variable holds: a field for each slot, empty where nothing can be
// read.
std::string VariableValuesText(operands::CVariable& variable);

// The orders of a console: to set a variable, which is empty where no message can carry the value,
// its text being empty or with a tab in it; and to tell one.
std::string SetVariableText(std::string_view name, const value::CVal& value);
std::string AskVariableText(std::string_view name);

// The value that a message brings: of type code 190 a text, of 171 a number or, where it does not
// read as one, the text, of any other none; with the status.
value::CVal ReadMessageValue(std::string_view text, int type, int status);

}  // namespace kalvex::console
