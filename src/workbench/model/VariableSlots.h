// The texts by which a variable is shown, to the person at the window and to consoles. Main thread;
// engine texts.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "operands/Variable.h"
#include "value/Value.h"

namespace kalvex::workbench {

// Name, kind, and the values: current, of the hour, the day, the month, the span.
inline constexpr std::size_t kVariableColumns = 7;
using VariableCells = std::array<std::string, kVariableColumns>;

char KindLetter(operands::VariableKind kind);

// The time, the status and the text of a value.
std::string CellText(const value::CVal& value);

// A text for each slot that the variable has, from the current value on: a remote variable has all
// five, a local one and a list have one, a pointer has what it leads to. Empty where nothing can be
// read; values are read as they stand.
std::vector<std::string> SlotTexts(operands::CVariable& variable);

// The variable that a pointer leads to, any other variable itself; null for a pointer to nothing.
operands::CVariable* ShownVariable(operands::CVariable& variable);

}  // namespace kalvex::workbench
