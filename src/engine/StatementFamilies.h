// Handlers of the engine's statements by family; the keyword table of language/ names them.
#pragma once

#include "engine/Statement.h"

namespace kalvex {

// Declarations and assignment
bool ExecuteLocal(StatementCall& call);
bool ExecuteRemote(StatementCall& call);
bool ExecutePointer(StatementCall& call);
bool ExecuteList(StatementCall& call);
bool ExecuteSet(StatementCall& call);
bool ExecuteCopy(StatementCall& call);
bool ExecuteSetPtr(StatementCall& call);
bool ExecuteCreateVarList(StatementCall& call);

// Branching
bool ExecuteIf(StatementCall& call);
bool ExecuteElse(StatementCall& call);
bool ExecuteEndif(StatementCall& call);
bool ExecuteGoto(StatementCall& call);

// Procedures
bool ExecuteProcedure(StatementCall& call);
bool ExecuteBegin(StatementCall& call);
bool ExecuteEnd(StatementCall& call);
bool ExecuteCall(StatementCall& call);

// Pacing and engine control
bool ExecuteLock(StatementCall& call);
bool ExecuteUnlock(StatementCall& call);
bool ExecuteIgnoreUnknownOn(StatementCall& call);
bool ExecuteIgnoreUnknownOff(StatementCall& call);
bool ExecutePriority(StatementCall& call);
bool ExecuteSleep(StatementCall& call);
bool ExecuteWaitFor(StatementCall& call);
bool ExecuteSetTime(StatementCall& call);
bool ExecuteSubscribe(StatementCall& call);

// Lists
bool ExecuteMoveFirst(StatementCall& call);
bool ExecuteMoveNext(StatementCall& call);
bool ExecuteMoveTo(StatementCall& call);
bool ExecuteAdd(StatementCall& call);
bool ExecuteInsert(StatementCall& call);
bool ExecuteRemove(StatementCall& call);
bool ExecuteRemoveAll(StatementCall& call);
bool ExecuteSplit(StatementCall& call);
bool ExecuteFillInList(StatementCall& call);
bool ExecuteCalcInList(StatementCall& call);

// Status words
bool ExecuteStatusChange(StatementCall& call);

}  // namespace kalvex
