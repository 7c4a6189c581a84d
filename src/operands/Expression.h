// What stands behind the sign of an assignment or between IF and THEN: a keyword function with its
// arguments, a single operand, or a formula. What its text alone tells is worked out at the first
// evaluation, and kept as long as the expression. Belongs to one script. Main thread.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "operands/Formula.h"
#include "operands/KeywordFunction.h"
#include "operands/Operand.h"

namespace kalvex::operands {

class Expression {
  public:
    explicit Expression(std::string_view text) : m_text(text) {}  // outlives the expression
    explicit Expression(std::string text)
        : m_owned(std::make_unique<const std::string>(std::move(text))), m_text(*m_owned) {}

    // The rest of a statement up to its end: THEN, GOTO (any case) or ";". Its tokens are parted by
    // one blank each, unless they stand in the text as they are.
    static Expression OfRest(std::string_view rest);

    std::string_view Text() const { return m_text; }
    bool Evaluate(ScriptContext& script, value::CVal& out, int wanted);
    // The same: the value where it is kept, or in `scratch`; null when there is none. Valid until a
    // variable changes.
    const value::CVal* Look(ScriptContext& script, value::CVal& scratch, int wanted) {
        if (m_operand != nullptr) {
            if (const value::CVal* value = m_operand->Look(script, scratch, wanted)) return value;
        }
        if (m_formula != nullptr) return m_formula->Look(script, scratch);
        if (m_operand != nullptr) return EvaluateFormula(script, scratch) ? &scratch : nullptr;
        return Evaluate(script, scratch, wanted) ? &scratch : nullptr;
    }

    // The value of a formula that takes no more than doubles to be computed; false, with nothing
    // changed, where another way is needed.
    bool FindReal(ScriptContext& script, double& out) {
        return m_formula != nullptr && m_operand == nullptr && m_formula->FindReal(script, out);
    }
    // Ahead of an evaluation: what it needs is fetched from memory meanwhile.
    void Fetch() const {
        __builtin_prefetch(m_operand.get());
        if (m_formula != nullptr) m_formula->Fetch();
    }
    // A formula that fails for a name, which is recorded, and would in each other way.
    bool FailsByName(ScriptContext& script) {
        return m_formula != nullptr && m_operand == nullptr && m_formula->FailsByName(script);
    }
    // That name.
    std::string_view FailedName() const { return m_formula->FailedName(); }
    // The value of a formula that is no more than the value of a local variable.
    const value::CVal* Held(ScriptContext& script) {
        return m_formula != nullptr && m_operand == nullptr ? m_formula->Held(script) : nullptr;
    }
    // The value of an operand that is known to be a string literal; null for anything else.
    const value::CVal* HeldText() const {
        return m_operand != nullptr ? m_operand->HeldText() : nullptr;
    }
    // The value that FindReal has found is the int of a comparison.
    bool IsComparison() const { return m_formula->IsComparison(); }

    // A formula that a function has led to.
    struct Continuation {
        std::string text;
        std::unique_ptr<Formula> formula;
    };

    // The call of a function, null for another expression. Its row is the one in the script's
    // table.
    struct Call {
        const FunctionRow* function;
        std::string_view keyword;
        std::array<Operand, 3> arguments;
        std::string_view rest;
        std::unique_ptr<FunctionForm> form = {};
        std::vector<Continuation> continuations = {};
    };
    Call* FindCall(ScriptContext& script);

  private:
    void Read(ScriptContext& script);
    bool EvaluateCall(ScriptContext& script, value::CVal& out, int wanted);
    bool EvaluateFormula(ScriptContext& script, value::CVal& out);
    Formula& FormulaOf(std::string text);

    std::unique_ptr<Formula> m_formula;
    std::unique_ptr<Operand> m_operand;
    std::unique_ptr<Call> m_call;
    bool m_read = false;
    std::unique_ptr<const std::string> m_owned;
    std::string_view m_text;
};

}  // namespace kalvex::operands
