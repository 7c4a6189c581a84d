// Arithmetic formulas: infix text to postfix text by shunting-yard, then postfix text to a value on
// a stack. Made for one evaluation. The errors 10, 12, 13, 14 and 15 go to the script, not
// forced.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "operands/ScriptContext.h"
#include "value/Value.h"

namespace kalvex::operands {

class FormulaParser {
  public:
    explicit FormulaParser(ScriptContext& script) : m_script(script) {}

    // `postfix` receives the tokens, each followed by one blank.
    bool CompileFormula(std::string_view text, std::string& postfix);
    // The value left on top of the stack, the integer 0 for an empty one.
    bool EvaluatePostfix(value::CVal& out, std::string_view postfix);

    static constexpr std::size_t kStackCells = 1024;

    // The value stack, for the operators.
    void Push(value::CVal value);
    value::CVal Pop();  // the integer 0 when nothing is left

  private:
    bool EvaluateToken(std::string_view token);

    ScriptContext& m_script;
    std::vector<value::CVal> m_stack;
};

}  // namespace kalvex::operands
