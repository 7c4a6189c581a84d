// SET_STATUS, ADD_STATUS and REMOVE_STATUS as statements.
#include <string>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

LineOutcome ExecuteStatusChange(StatementCall& call) {
    const std::string line = std::string(call.keyword) + ' ' + std::string(call.rest);
    std::string_view text = line;
    value::CVal changed;
    if (operands::EvaluateRest(call.document, text, changed, value::ValueType::Int))
        return LineOutcome::Finished;
    return call.document.FailForced(operands::ErrorExpression, text::TrimBlanks(call.rest));
}

}  // namespace kalvex::engine
