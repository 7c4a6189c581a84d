// Handlers of what a script does on its own machine; the tables of language/ name them.
#pragma once

#include "engine/Statement.h"
#include "operands/KeywordFunction.h"

namespace kalvex {

// External programs
LineOutcome ExecuteExec(StatementCall& call);
LineOutcome ExecuteTerminateExec(StatementCall& call);
LineOutcome ExecuteCloseExec(StatementCall& call);
FunctionResult ExecFunction(FunctionCall& call);
FunctionResult CheckExecActivity(FunctionCall& call);
FunctionResult GetExitCodeExec(FunctionCall& call);
FunctionResult TerminateExecFunction(FunctionCall& call);
FunctionResult CloseExecFunction(FunctionCall& call);

// Connectivity checks
LineOutcome ExecutePingInit(StatementCall& call);
LineOutcome ExecuteFtpInit(StatementCall& call);
LineOutcome ExecuteHttpInit(StatementCall& call);
FunctionResult PingResultFunction(FunctionCall& call);
FunctionResult FtpResultFunction(FunctionCall& call);
FunctionResult HttpResultFunction(FunctionCall& call);

// Data files
LineOutcome ExecuteReadFile(StatementCall& call);
LineOutcome ExecuteWriteFile(StatementCall& call);
LineOutcome ExecuteSetFile(StatementCall& call);
FunctionResult ReadFileFunction(FunctionCall& call);
FunctionResult WriteFileFunction(FunctionCall& call);
FunctionResult SetFileFunction(FunctionCall& call);

}  // namespace kalvex
