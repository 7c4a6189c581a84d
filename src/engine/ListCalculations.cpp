// FILL_IN_LIST and CALC_IN_LIST as statements.
#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/ListFunctions.h"

namespace kalvex::engine {

LineOutcome ExecuteFillInList(StatementCall& call) {
    return FinishedIf(operands::FillInList(call.document, call.rest));
}

// A reversed range and an empty result are no failure of the line.
LineOutcome ExecuteCalcInList(StatementCall& call) {
    return FinishedIf(operands::CalcInList(call.document, call.rest) !=
                      operands::CalcResult::Error);
}

}  // namespace kalvex::engine
