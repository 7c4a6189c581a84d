// SET_STATUS, ADD_STATUS and REMOVE_STATUS as statements.
#include <string>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"

namespace kalvex {

LineOutcome ExecuteStatusChange(StatementCall& call) {
    const std::string line = std::string(call.keyword) + ' ' + std::string(call.rest);
    std::string_view text = line;
    CVal changed;
    if (EvaluateRest(call.document, text, changed, ValueType::Int)) return LineOutcome::Finished;
    return call.document.FailForced(ErrorExpression, TrimBlanks(call.rest));
}

}  // namespace kalvex
