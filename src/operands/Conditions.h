// Conditions of IF that a formula cannot express.
#pragma once

#include <span>
#include <string_view>

#include "operands/ScriptContext.h"

namespace kalvex::operands {

struct ConditionWordRow {
    std::string_view word;  // upper case
    bool (*test)(ScriptContext& script, std::string_view operand);
    std::string_view help;  // Polish, UTF-8; empty where there is none
};

// The one-operand test words: SET_BY_USER, UNKNOWN, READY, REP_INITED, REP_LOADED.
std::span<const ConditionWordRow> ConditionWords();
const ConditionWordRow* FindConditionWord(std::string_view word);

// 1 true, 0 false, -1 when it cannot be evaluated. For a test word on the left, `op` is its
// operand. A side that is a string literal is that text; every other side is a formula in brackets.
int CompareOperands(ScriptContext& script, std::string_view left, std::string_view right,
                    std::string_view op);

}  // namespace kalvex::operands
