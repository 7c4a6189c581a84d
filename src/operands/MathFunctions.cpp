// The mathematical functions in their keyword form: one argument, the rest of the line dropped.
#include <cmath>

#include "operands/FormulaOperators.h"
#include "operands/FunctionFamilies.h"
#include "operands/OperandEvaluator.h"
#include "value/ValueText.h"

namespace kalvex {

namespace {

template <class Function>
FunctionResult OnDouble(FunctionCall& call, Function function) {
    CVal argument;
    if (!EvaluateOperand(call.script, call.arguments[0], argument, ValueType::Double, true)) {
        return FunctionResult::Failed;
    }
    call.out = CVal(function(ValueToDouble(argument)));
    return FunctionResult::Done;
}

// The integer that a double names, cut at the point.
int Truncate(const CVal& value) {
    return ValueToInt(CVal(ValueToDouble(value)));
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
    CVal argument;
    if (!EvaluateOperand(call.script, call.arguments[0], argument, ValueType::Int, true)) {
        return FunctionResult::Failed;
    }
    const int n = ValueToInt(argument);
    CVal product(1);
    for (int i = 2; i <= n && !std::isinf(ValueToDouble(product)); ++i) product *= CVal(i);
    call.out = product;
    return FunctionResult::Done;
}

FunctionResult IntegerPart(FunctionCall& call) {
    CVal argument;
    if (!EvaluateOperand(call.script, call.arguments[0], argument, ValueType::Int, true)) {
        return FunctionResult::Failed;
    }
    call.out = CVal(ValueToInt(argument));
    return FunctionResult::Done;
}

FunctionResult Round(FunctionCall& call) {
    CVal number;
    CVal digits;
    const bool numberRead =
        EvaluateOperand(call.script, call.arguments[0], number, ValueType::Double, true);
    const bool digitsRead =
        EvaluateOperand(call.script, call.arguments[1], digits, ValueType::Double, true);
    if (!numberRead || !digitsRead) return FunctionResult::Failed;
    call.out = CVal(RoundToDigits(ValueToDouble(number), Truncate(digits)));
    return FunctionResult::Done;
}

}  // namespace kalvex
