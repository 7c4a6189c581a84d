// Arithmetic formulas: infix text to postfix text by shunting-yard, then postfix text to a value on
// a stack. What is said here is the meaning of a formula; Formula keeps what it finds.
#pragma once

#include <string>
#include <string_view>

#include "operands/FormulaOperators.h"
#include "operands/FormulaStack.h"
#include "operands/ScriptContext.h"
#include "value/Value.h"

namespace kalvex::operands {

// A formula's tokens, each followed by one blank.
struct Postfix {
    std::string text;
    int error = ErrorNone;  // the first that the compilation met, which may have gone on
    bool succeeded = false;
};
Postfix CompileToPostfix(std::string_view text);

// The tokens of a postfix one after the other, an empty one at the end.
class PostfixTokens {
  public:
    explicit PostfixTokens(std::string_view postfix) : m_rest(postfix) {}
    std::string_view Next();

  private:
    std::string_view m_rest;
};

enum class PostfixKind {
    Number,
    NotANumber,  // begins as a number does but holds a letter: the formula fails there
    Operator,
    Operand,
};

struct PostfixToken {
    PostfixKind kind;
    double number;
    const FormulaOperator* row;  // of an operator
};
PostfixToken ReadPostfixToken(std::string_view token);

// Computes on the top of the stack, or on the top and a value that need not be pushed first.
// False, with an error that is not forced, when the operands do not allow it.
bool ApplyOperator(const FormulaOperator& row, FormulaStack& stack);
inline bool ApplyOperator(const FormulaOperator& row, FormulaStack& stack,
                          const value::CVal& right) {
    if (!stack.IsFull()) {
        Combine(row.operation, stack.Top(), right);
        return true;
    }
    stack.Push(right);
    return ApplyOperator(row, stack);
}

// One evaluation of a text. The errors 10, 12, 13, 14 and 15 go to the script, not forced.
class FormulaParser {
  public:
    explicit FormulaParser(ScriptContext& script) : m_script(script) {}

    // `postfix` receives the tokens, each followed by one blank.
    bool CompileFormula(std::string_view text, std::string& postfix);
    // The value left on top of the stack, the integer 0 for an empty one.
    bool EvaluatePostfix(value::CVal& out, std::string_view postfix);

  private:
    bool EvaluateToken(FormulaStack& stack, std::string_view token);

    ScriptContext& m_script;
};

}  // namespace kalvex::operands
