// Handlers of what a script does on its own machine; the tables of language/ name them.
#pragma once

#include "engine/Statement.h"
#include "operands/KeywordFunction.h"

namespace kalvex::host {

// External programs
engine::LineOutcome ExecuteExec(engine::StatementCall& call);
engine::LineOutcome ExecuteTerminateExec(engine::StatementCall& call);
engine::LineOutcome ExecuteCloseExec(engine::StatementCall& call);
operands::FunctionResult ExecFunction(operands::FunctionCall& call);
operands::FunctionResult CheckExecActivity(operands::FunctionCall& call);
operands::FunctionResult GetExitCodeExec(operands::FunctionCall& call);
operands::FunctionResult TerminateExecFunction(operands::FunctionCall& call);
operands::FunctionResult CloseExecFunction(operands::FunctionCall& call);

// Connectivity checks
engine::LineOutcome ExecutePingInit(engine::StatementCall& call);
engine::LineOutcome ExecuteFtpInit(engine::StatementCall& call);
engine::LineOutcome ExecuteHttpInit(engine::StatementCall& call);
operands::FunctionResult PingResultFunction(operands::FunctionCall& call);
operands::FunctionResult FtpResultFunction(operands::FunctionCall& call);
operands::FunctionResult HttpResultFunction(operands::FunctionCall& call);

// Data files
engine::LineOutcome ExecuteReadFile(engine::StatementCall& call);
engine::LineOutcome ExecuteWriteFile(engine::StatementCall& call);
engine::LineOutcome ExecuteSetFile(engine::StatementCall& call);
operands::FunctionResult ReadFileFunction(operands::FunctionCall& call);
operands::FunctionResult WriteFileFunction(operands::FunctionCall& call);
operands::FunctionResult SetFileFunction(operands::FunctionCall& call);

}  // namespace kalvex::host
