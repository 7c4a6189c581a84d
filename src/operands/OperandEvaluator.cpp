#include "operands/OperandEvaluator.h"

#include "operands/Expression.h"
#include "text/LineScanner.h"

namespace kalvex::operands {

bool EvaluateOperand(ScriptContext& script, std::string_view text, value::CVal& out, int wanted,
                     bool report) {
    return Operand(text).Evaluate(script, out, wanted, report);
}

bool EvaluateExpression(ScriptContext& script, std::string_view& text, value::CVal& out,
                        int wanted) {
    constexpr int kTokens = 4;
    Expression expression(text);
    for (int i = 0; i < kTokens; ++i) text::NextToken(text);
    return expression.Evaluate(script, out, wanted);
}

bool EvaluateRest(ScriptContext& script, std::string_view& text, value::CVal& out, int wanted) {
    Expression expression = Expression::OfRest(text);
    text = {};
    return expression.Evaluate(script, out, wanted);
}

}  // namespace kalvex::operands
