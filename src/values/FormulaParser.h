// Arithmetic formulas: infix text to postfix text by shunting-yard, then postfix text to a value on a
// stack. Made for one evaluation. The errors 10, 12, 13, 14 and 15 go to the document, not forced.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "values/ScriptContext.h"
#include "values/Value.h"

namespace kalvex {

class FormulaParser {
  public:
    explicit FormulaParser(CScriptContext& document) : m_document(document) {}

    // `postfix` receives the tokens, each followed by one blank.
    bool CompileFormula(std::string_view text, std::string& postfix);
    bool EvaluatePostfix(CVal& out, std::string_view postfix);

    static constexpr std::size_t kStackCells = 1024;

  private:
    struct Compiler;

    bool Fail(ScriptError code);
    void Push(CVal value);
    CVal Pop();
    bool ApplyOperator(std::string_view token);

    CScriptContext& m_document;
    std::vector<CVal> m_stack;
};

// x with n digits behind the point; halves go up, also for negative numbers.
double RoundToDigits(double x, int digits);

}  // namespace kalvex
