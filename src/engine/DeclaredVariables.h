// What a script's text declares, for a console client: it lists the variables before they exist.
#pragma once

#include <string>
#include <vector>

#include "operands/Variable.h"

namespace kalvex::engine {

class ScriptText;

struct DeclaredVar {
    std::string strName;  // as the declaring line has it
    operands::VariableKind nKind = operands::VariableNone;
    // Columns of the variables window, filled from the module's messages.
    std::string strValue;
    std::string strStatus;
    std::string strTime;
    std::string strDetailA;
    std::string strDetailB;
};

// A record for each line that begins with LOCAL, POINTER, LIST or REMOTE, in order. Main thread.
std::vector<DeclaredVar> BuildDeclaredVars(const ScriptText& text);

}  // namespace kalvex::engine
