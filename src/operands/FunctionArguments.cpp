#include "operands/FunctionArguments.h"

#include "operands/OperandEvaluator.h"
#include "value/ValueText.h"

namespace kalvex::operands {

std::optional<std::string> TextArgument(const FunctionCall& call, std::size_t index) {
    value::CVal value;
    if (!EvaluateOperand(call.script, call.arguments[index], value, value::ValueType::Text, true)) {
        return std::nullopt;
    }
    return value::ValueToText(value);
}

std::optional<int> NumberArgument(const FunctionCall& call, std::size_t index) {
    value::CVal value;
    if (!EvaluateOperand(call.script, call.arguments[index], value, value::ValueType::Int, true)) {
        return std::nullopt;
    }
    return value::ValueToInt(value);
}

}  // namespace kalvex::operands
