// Handlers of the engine's statements by family; the keyword table of language/ names them.
#pragma once

#include "engine/Statement.h"

namespace kalvex::engine {

// Declarations and assignment
LineOutcome ExecuteLocal(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteRemote(StatementCall& call);
LineOutcome ExecutePointer(StatementCall& call);
LineOutcome ExecuteList(StatementCall& call);
LineOutcome ExecuteSet(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteCopy(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteSetPtr(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteCreateVarList(StatementCall& call);

// Branching
LineOutcome ExecuteIf(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteElse(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteEndif(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteGoto(CKalvexDoc& document, LineForm& line);

// Procedures
LineOutcome ExecuteProcedure(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteBegin(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteEnd(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteCall(CKalvexDoc& document, LineForm& line);

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
LineOutcome ExecuteMoveFirst(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteMoveNext(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteMoveTo(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteAdd(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteInsert(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteRemove(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteRemoveAll(CKalvexDoc& document, LineForm& line);
LineOutcome ExecuteSplit(StatementCall& call);
LineOutcome ExecuteFillInList(StatementCall& call);
LineOutcome ExecuteCalcInList(StatementCall& call);

// Status words
LineOutcome ExecuteStatusChange(CKalvexDoc& document, LineForm& line);

}  // namespace kalvex::engine
