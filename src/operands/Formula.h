// A formula, compiled: the postfix of FormulaParser with each of its tokens looked at once.
// Evaluating one gives what evaluating the postfix gives. Belongs to one script. Main thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "operands/FormulaOperators.h"
#include "operands/FormulaStack.h"
#include "operands/Operand.h"

namespace kalvex::operands {

class Formula {
  public:
    explicit Formula(std::string_view text);
    Formula(const Formula&) = delete;
    Formula& operator=(const Formula&) = delete;

    // Its errors go to the script, not forced.
    bool Evaluate(ScriptContext& script, value::CVal& out);
    // The same: the value where it is kept, or in `scratch`; null when there is none. Valid until a
    // variable changes.
    const value::CVal* Look(ScriptContext& script, value::CVal& scratch);

  private:
    enum class CellKind : unsigned char {
        Number,
        Operand,
        Operator,
        NumberOperator,   // a number and the operator behind it, which takes both sides as values
        OperandOperator,  // the same with an operand
        NotANumber,       // begins as a number does, and fails
    };
    struct Cell {
        CellKind kind;
        const FormulaOperator* row;
        union {
            double number;
            std::uint32_t operand;
        };
    };

    Cell ReadToken(std::string_view token);
    void Append(Cell cell);
    bool EvaluateRow(ScriptContext& script, value::CVal& out);
    bool RunCell(const Cell& cell, FormulaStack& stack);
    bool MissOperand(ScriptContext& script, const Cell& cell);
    bool FailsAgain(ScriptContext& script);

    std::string m_postfix;  // the operands are views into it
    std::vector<Cell> m_cells;
    std::vector<Operand> m_operands;
    std::uint32_t m_failing = 0;  // so many operands were enough to fail the last time
    int m_error;                  // of the compilation
    bool m_compiled;
    bool m_isOperand = false;  // and nothing else
    bool m_isRow = false;      // one value, and operators that each take one more
    bool m_onlyOperandsFail = false;
};

}  // namespace kalvex::operands
