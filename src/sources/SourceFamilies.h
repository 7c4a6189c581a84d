// Handlers of the statements and functions that address data servers; the tables of language/ name
// them.
#pragma once

#include "engine/Statement.h"
#include "operands/KeywordFunction.h"

namespace kalvex {

// Reports
bool ExecuteGet(StatementCall& call);
bool ExecutePut(StatementCall& call);
bool ExecuteInit(StatementCall& call);
bool ExecuteInitLoad(StatementCall& call);
bool ExecuteInitLoadRefresh(StatementCall& call);
bool ExecuteInitCalc(StatementCall& call);

// Value sets
bool ExecuteMGet(StatementCall& call);
bool ExecuteMPut(StatementCall& call);

// Report change notifications
bool ExecuteEnableNotify(StatementCall& call);
bool ExecuteDisableNotify(StatementCall& call);
FunctionResult Notify(FunctionCall& call);
FunctionResult NotifyQueueCount(FunctionCall& call);

}  // namespace kalvex
