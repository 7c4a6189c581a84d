// SET_STATUS, ADD_STATUS and REMOVE_STATUS as statements.
#include <string>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/Expression.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

// The statements are the functions of their names.
struct StatusForm final : StatementForm {
    StatusForm(std::string_view keyword, std::string_view rest)
        : line(std::string(keyword) + ' ' + std::string(rest)),
          expression(operands::Expression::OfRest(line)) {}

    std::string line;
    operands::Expression expression;
};

}  // namespace

LineOutcome ExecuteStatusChange(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<StatusForm>(line.row->keyword, line.Rest());
    value::CVal changed;
    if (form.expression.Evaluate(document, changed, value::ValueType::Int))
        return LineOutcome::Finished;
    return document.FailForced(operands::ErrorExpression, text::TrimBlanks(line.Rest()));
}

}  // namespace kalvex::engine
