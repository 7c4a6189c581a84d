// From script text to a value. Nothing is compiled ahead; the fixed order of the tests defines the
// language. Main thread.
#pragma once

#include <string_view>

#include "operands/ScriptContext.h"
#include "value/Value.h"

namespace kalvex::operands {

// Behind the name of a variable: the time of its value, to be read and to be set.
inline constexpr std::string_view kTimestamp = ".TIMESTAMP";

// One operand: a schedule word, a property, a time expression, a literal or a variable. `wanted` is
// a type code that numeric literals are converted to. False leaves `out` undefined; with `report`
// the errors of type and remote kinds are recorded too.
bool EvaluateOperand(ScriptContext& script, std::string_view text, value::CVal& out, int wanted,
                     bool report);

// A keyword function with its arguments, a single operand, or a formula. Takes the keyword and
// three argument tokens off `text`.
bool EvaluateExpression(ScriptContext& script, std::string_view& text, value::CVal& out,
                        int wanted);

// The rest of a statement up to its end, THEN, GOTO (any case) or ";", evaluated as an expression.
// Consumes `text`.
bool EvaluateRest(ScriptContext& script, std::string_view& text, value::CVal& out, int wanted);

// Rows of the property table, for completion and the manual.
struct VariablePropertyRow {
    std::string_view name;  // with its dot
    std::string_view help;  // Polish, UTF-8; empty where there is none
};
std::span<const VariablePropertyRow> VariableProperties();

}  // namespace kalvex::operands
