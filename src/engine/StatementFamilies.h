// Handlers of the engine's statements by family; the keyword table of language/ names them.
#pragma once

#include "engine/Statement.h"

namespace kalvex::engine {

// Declarations and assignment
LineOutcome ExecuteLocal(StatementCall& call);
LineOutcome ExecuteRemote(StatementCall& call);
LineOutcome ExecutePointer(StatementCall& call);
LineOutcome ExecuteList(StatementCall& call);
LineOutcome ExecuteSet(StatementCall& call);
LineOutcome ExecuteCopy(StatementCall& call);
LineOutcome ExecuteSetPtr(StatementCall& call);
LineOutcome ExecuteCreateVarList(StatementCall& call);

// Branching
LineOutcome ExecuteIf(StatementCall& call);
LineOutcome ExecuteElse(StatementCall& call);
LineOutcome ExecuteEndif(StatementCall& call);
LineOutcome ExecuteGoto(StatementCall& call);

// Procedures
LineOutcome ExecuteProcedure(StatementCall& call);
LineOutcome ExecuteBegin(StatementCall& call);
LineOutcome ExecuteEnd(StatementCall& call);
LineOutcome ExecuteCall(StatementCall& call);

// Pacing and engine control
LineOutcome ExecuteLock(StatementCall& call);
LineOutcome ExecuteUnlock(StatementCall& call);
LineOutcome ExecuteIgnoreUnknownOn(StatementCall& call);
LineOutcome ExecuteIgnoreUnknownOff(StatementCall& call);
LineOutcome ExecutePriority(StatementCall& call);
LineOutcome ExecuteSleep(StatementCall& call);
LineOutcome ExecuteWaitFor(StatementCall& call);
LineOutcome ExecuteSetTime(StatementCall& call);
LineOutcome ExecuteSubscribe(StatementCall& call);

// Lists
LineOutcome ExecuteMoveFirst(StatementCall& call);
LineOutcome ExecuteMoveNext(StatementCall& call);
LineOutcome ExecuteMoveTo(StatementCall& call);
LineOutcome ExecuteAdd(StatementCall& call);
LineOutcome ExecuteInsert(StatementCall& call);
LineOutcome ExecuteRemove(StatementCall& call);
LineOutcome ExecuteRemoveAll(StatementCall& call);
LineOutcome ExecuteSplit(StatementCall& call);
LineOutcome ExecuteFillInList(StatementCall& call);
LineOutcome ExecuteCalcInList(StatementCall& call);

// Status words
LineOutcome ExecuteStatusChange(StatementCall& call);

}  // namespace kalvex::engine
