// A formula, compiled: the postfix of FormulaParser with each of its tokens looked at once.
// Evaluating one gives what evaluating the postfix gives. Belongs to one script. Main thread.
#pragma once

#include <cstddef>
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
    // The value as a double, where that is no more than it takes: for a comparison, whose value is
    // an int, 0 or 1. False when it is not, with nothing changed.
    bool FindReal(ScriptContext& script, double& out) {
        if (m_failing != 0) return false;
        if (m_isPair) return ComputePair(script, out);
        return m_canBeReal && ComputeReals(script, out);
    }
    bool IsComparison() const { return m_compares; }
    void Fetch() const {
        __builtin_prefetch(m_cells.data());
        __builtin_prefetch(m_operands.data());
    }
    // It is one operand, the value of a local variable that is there.
    const value::CVal* Held(ScriptContext& script) {
        return m_shape == Shape::Operand ? m_operands.front().Held(script) : nullptr;
    }
    // A name in it is of no variable any more than the last time, which is the error that it
    // records; no other operand can have one.
    bool FailsByName(ScriptContext& script) {
        if (!m_failsByNames || m_failedIn != script.Variables().Generation()) return false;
        m_operands[m_failing - 1].RecordUndefined(script);
        return true;
    }
    std::string_view FailedName() const { return m_operands[m_failing - 1].BaseName(); }
    // The same as Evaluate: the value where it is kept, or in `scratch`; null when there is none.
    // Valid until a variable changes.
    const value::CVal* Look(ScriptContext& script, value::CVal& scratch) {
        if (const value::CVal* held = Held(script)) return held;
        if (m_shape == Shape::Operand) return LookForOperand(script, scratch);
        return Evaluate(script, scratch) ? &scratch : nullptr;
    }

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
        ValueOperation operation = ValueOperation::None;  // of the row
        const FormulaOperator* row;
        union {
            double number;
            std::uint32_t operand;
        };
    };

    enum class Shape : unsigned char {
        Any,
        Operand,  // and nothing else
        Row,      // one value, and operators that each take one more
    };

    static constexpr std::size_t kMostReals = 8;

    Shape FindShape() const;
    bool CanBeReal() const;
    Cell ReadToken(std::string_view token);
    void Append(Cell cell);
    const value::CVal* LookForOperand(ScriptContext& script, value::CVal& scratch);
    // False for what is no double, or carries a status or a time.
    bool ReadReal(ScriptContext& script, const Cell& cell, double& out) {
        if (cell.kind == CellKind::Number || cell.kind == CellKind::NumberOperator) {
            out = cell.number;
            return true;
        }
        const value::CVal* const held = m_operands[cell.operand].Held(script);
        if (held == nullptr || !held->IsBareReal()) return false;
        out = held->Real();
        return true;
    }
    bool ComputePair(ScriptContext& script, double& out) {
        double left = 0;
        double right = 0;
        const Cell* const cells = m_cells.data();
        if (!ReadReal(script, cells[0], left) || !ReadReal(script, cells[1], right)) return false;
        Combine(cells[1].operation, left, right);
        out = left;
        return true;
    }
    bool ComputeReals(ScriptContext& script, double& out);
    bool EvaluateRow(ScriptContext& script, value::CVal& out);
    static void Take(const Cell& cell, value::CVal& out, const value::CVal& value);
    bool TakeFurther(ScriptContext& script, const Cell& cell, value::CVal& out);
    bool RunCell(const Cell& cell, FormulaStack& stack);
    bool MissOperand(ScriptContext& script, const Cell& cell);
    bool FailsAgain(ScriptContext& script);
    void NoteMiss(ScriptContext& script, std::uint32_t operand);

    std::vector<Cell> m_cells;
    std::vector<Operand> m_operands;
    std::uint32_t m_failing = 0;   // so many operands were enough to fail the last time
    std::uint32_t m_failedIn = 0;  // the generation of the variables in which it failed
    Shape m_shape = Shape::Any;
    bool m_compiled;
    bool m_canBeReal = false;  // it computes a double from doubles, as far as its text tells
    bool m_isPair = false;     // and of two cells
    bool m_compares = false;   // last of all
    bool m_onlyOperandsFail = false;
    bool m_failsByNames = false;  // as long as the generation stands
    int m_error;                  // of the compilation
    std::string m_postfix;        // the operands are views into it
};

}  // namespace kalvex::operands
