// Handlers of the statements and functions that address data servers; the tables of language/ name
// them.
#pragma once

#include "engine/Statement.h"
#include "operands/KeywordFunction.h"

namespace kalvex {

// Reports
LineOutcome ExecuteGet(StatementCall& call);
LineOutcome ExecutePut(StatementCall& call);
LineOutcome ExecuteInit(StatementCall& call);
LineOutcome ExecuteInitLoad(StatementCall& call);
LineOutcome ExecuteInitLoadRefresh(StatementCall& call);
LineOutcome ExecuteInitCalc(StatementCall& call);

// Value sets
LineOutcome ExecuteMGet(StatementCall& call);
LineOutcome ExecuteMPut(StatementCall& call);

// Report change notifications
LineOutcome ExecuteEnableNotify(StatementCall& call);
LineOutcome ExecuteDisableNotify(StatementCall& call);
FunctionResult Notify(FunctionCall& call);
FunctionResult NotifyQueueCount(FunctionCall& call);

}  // namespace kalvex
