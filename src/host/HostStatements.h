// Handlers of what a script does on its own machine; the tables of language/ name them.
#pragma once

#include "engine/Statement.h"
#include "operands/KeywordFunction.h"

namespace kalvex {

// External programs
bool ExecuteExec(StatementCall& call);
bool ExecuteTerminateExec(StatementCall& call);
bool ExecuteCloseExec(StatementCall& call);
FunctionResult ExecFunction(FunctionCall& call);
FunctionResult CheckExecActivity(FunctionCall& call);
FunctionResult GetExitCodeExec(FunctionCall& call);
FunctionResult TerminateExecFunction(FunctionCall& call);
FunctionResult CloseExecFunction(FunctionCall& call);

// Connectivity checks
bool ExecutePingInit(StatementCall& call);
bool ExecuteFtpInit(StatementCall& call);
bool ExecuteHttpInit(StatementCall& call);
FunctionResult PingResultFunction(FunctionCall& call);
FunctionResult FtpResultFunction(FunctionCall& call);
FunctionResult HttpResultFunction(FunctionCall& call);

// Data files
bool ExecuteReadFile(StatementCall& call);
bool ExecuteWriteFile(StatementCall& call);
bool ExecuteSetFile(StatementCall& call);
FunctionResult ReadFileFunction(FunctionCall& call);
FunctionResult WriteFileFunction(FunctionCall& call);
FunctionResult SetFileFunction(FunctionCall& call);

}  // namespace kalvex
