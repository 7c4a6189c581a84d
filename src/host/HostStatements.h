// Handlers of what a script does on its own machine; the tables of language/ name them. A
// function's script is a document.
#pragma once

#include "engine/Statement.h"
#include "values/KeywordFunction.h"

namespace kalvex {

// Data files
bool ExecuteReadFile(StatementCall& call);
bool ExecuteWriteFile(StatementCall& call);
bool ExecuteSetFile(StatementCall& call);
FunctionResult ReadFileFunction(FunctionCall& call);
FunctionResult WriteFileFunction(FunctionCall& call);
FunctionResult SetFileFunction(FunctionCall& call);

}  // namespace kalvex
