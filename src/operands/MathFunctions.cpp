// The mathematical functions in their keyword form: one argument, the rest of the line dropped.
#include <cmath>

#include "operands/FormulaOperators.h"
#include "operands/FunctionFamilies.h"
#include "operands/OperandEvaluator.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

template <class Function>
FunctionResult OnDouble(FunctionCall& call, Function function) {
    value::CVal argument;
    if (!EvaluateOperand(call.script, call.arguments[0], argument, value::ValueType::Double,
                         true)) {
        return FunctionResult::Failed;
    }
    call.out = value::CVal(function(value::ValueToDouble(argument)));
    return FunctionResult::Done;
}

// The integer that a double names, cut at the point.
int Truncate(const value::CVal& value) {
    return value::ValueToInt(value::CVal(value::ValueToDouble(value)));
}

}  // namespace

FunctionResult Sine(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::sin(x); });
}

FunctionResult Cosine(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::cos(x); });
}

FunctionResult Tangent(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::tan(x); });
}

FunctionResult Cotangent(FunctionCall& call) {
    return OnDouble(call, [](double x) { return Cotangent(x); });
}

FunctionResult ArcSine(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::asin(x); });
}

FunctionResult ArcCosine(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::acos(x); });
}

FunctionResult ArcTangent(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::atan(x); });
}

FunctionResult ArcCotangent(FunctionCall& call) {
    return OnDouble(call, [](double x) { return ArcCotangent(x); });
}

FunctionResult Square(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::pow(x, 2); });
}

FunctionResult SquareRoot(FunctionCall& call) {
    return OnDouble(call, [](double x) { return std::sqrt(x); });
}

FunctionResult Factorial(FunctionCall& call) {
    value::CVal argument;
    if (!EvaluateOperand(call.script, call.arguments[0], argument, value::ValueType::Int, true)) {
        return FunctionResult::Failed;
    }
    const int n = value::ValueToInt(argument);
    value::CVal product(1);
    for (int i = 2; i <= n && !std::isinf(value::ValueToDouble(product)); ++i)
        product *= value::CVal(i);
    call.out = product;
    return FunctionResult::Done;
}

FunctionResult IntegerPart(FunctionCall& call) {
    value::CVal argument;
    if (!EvaluateOperand(call.script, call.arguments[0], argument, value::ValueType::Int, true)) {
        return FunctionResult::Failed;
    }
    call.out = value::CVal(value::ValueToInt(argument));
    return FunctionResult::Done;
}

FunctionResult Round(FunctionCall& call) {
    value::CVal number;
    value::CVal digits;
    const bool numberRead =
        EvaluateOperand(call.script, call.arguments[0], number, value::ValueType::Double, true);
    const bool digitsRead =
        EvaluateOperand(call.script, call.arguments[1], digits, value::ValueType::Double, true);
    if (!numberRead || !digitsRead) return FunctionResult::Failed;
    call.out = value::CVal(RoundToDigits(value::ValueToDouble(number), Truncate(digits)));
    return FunctionResult::Done;
}

}  // namespace kalvex::operands
