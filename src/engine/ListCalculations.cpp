// FILL_IN_LIST and CALC_IN_LIST as statements.
#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/ListFunctions.h"

namespace kalvex {

LineOutcome ExecuteFillInList(StatementCall& call) {
    return FinishedIf(FillInList(call.document, call.rest));
}

// A reversed range and an empty result are no failure of the line.
LineOutcome ExecuteCalcInList(StatementCall& call) {
    return FinishedIf(CalcInList(call.document, call.rest) != CalcResult::Error);
}

}  // namespace kalvex
