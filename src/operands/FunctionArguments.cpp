#include "operands/FunctionArguments.h"

#include "operands/OperandEvaluator.h"
#include "value/ValueText.h"

namespace kalvex {

std::optional<std::string> TextArgument(const FunctionCall& call, std::size_t index) {
    CVal value;
    if (!EvaluateOperand(call.script, call.arguments[index], value, ValueType::Text, true)) {
        return std::nullopt;
    }
    return ValueToText(value);
}

std::optional<int> NumberArgument(const FunctionCall& call, std::size_t index) {
    CVal value;
    if (!EvaluateOperand(call.script, call.arguments[index], value, ValueType::Int, true)) {
        return std::nullopt;
    }
    return ValueToInt(value);
}

}  // namespace kalvex
