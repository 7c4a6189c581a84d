// From script text to a value, once. Who evaluates the same text again keeps an Operand or an
// Expression. Main thread.
#pragma once

#include <string_view>

#include "operands/Operand.h"
#include "operands/ScriptContext.h"
#include "value/Value.h"

namespace kalvex::operands {

// One operand: a schedule word, a property, a time expression, a literal or a variable. `wanted` is
// a type code that numeric literals are converted to. False leaves `out` undefined; with `report`
// the errors of type and remote kinds are recorded too.
bool EvaluateOperand(ScriptContext& script, std::string_view text, value::CVal& out, int wanted,
                     bool report);
inline bool EvaluateOperand(ScriptContext& script, Operand& operand, value::CVal& out, int wanted,
                            bool report) {
    return operand.Evaluate(script, out, wanted, report);
}

// A keyword function with its arguments, a single operand, or a formula. Takes the keyword and
// three argument tokens off `text`.
bool EvaluateExpression(ScriptContext& script, std::string_view& text, value::CVal& out,
                        int wanted);

// The rest of a statement up to its end, THEN, GOTO (any case) or ";", evaluated as an expression.
// Consumes `text`.
bool EvaluateRest(ScriptContext& script, std::string_view& text, value::CVal& out, int wanted);

}  // namespace kalvex::operands
