// Handlers of the statements and functions that address data servers; the tables of language/ name
// them.
#pragma once

#include "engine/Statement.h"
#include "operands/KeywordFunction.h"

namespace kalvex::sources {

// Reports
engine::LineOutcome ExecuteGet(engine::StatementCall& call);
engine::LineOutcome ExecutePut(engine::StatementCall& call);
engine::LineOutcome ExecuteInit(engine::StatementCall& call);
engine::LineOutcome ExecuteInitLoad(engine::StatementCall& call);
engine::LineOutcome ExecuteInitLoadRefresh(engine::StatementCall& call);
engine::LineOutcome ExecuteInitCalc(engine::StatementCall& call);

// Value sets
engine::LineOutcome ExecuteMGet(engine::StatementCall& call);
engine::LineOutcome ExecuteMPut(engine::StatementCall& call);

// Report change notifications
engine::LineOutcome ExecuteEnableNotify(engine::StatementCall& call);
engine::LineOutcome ExecuteDisableNotify(engine::StatementCall& call);
operands::FunctionResult Notify(operands::FunctionCall& call);
operands::FunctionResult NotifyQueueCount(operands::FunctionCall& call);

}  // namespace kalvex::sources
