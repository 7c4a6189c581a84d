// Conditions of IF that a formula cannot express.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "operands/Comparisons.h"
#include "operands/Expression.h"
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

// A comparison of a condition, as its text tells it. Belongs to one script.
class OperandComparison {
  public:
    // For a test word on the left, `op` is its operand; its text outlives the comparison. A side
    // that is a string literal is that text; every other side is a formula in brackets.
    OperandComparison(const std::string& left, const std::string& right, std::string_view op);

    // 1 true, 0 false, -1 when it cannot be evaluated.
    int Evaluate(ScriptContext& script) {
        const value::CVal* const left = m_left.Held(script);
        const value::CVal* const right = m_right.Held(script);
        const bool ready = m_comparison != nullptr && left != nullptr && right != nullptr;
        return ready ? Compare(m_comparison->operation, *left, *right) : EvaluateSides(script);
    }

  private:
    class Side {
      public:
        explicit Side(const std::string& side);
        // Null when it cannot be evaluated.
        const value::CVal* Evaluate(ScriptContext& script, value::CVal& scratch);
        // The value where it is kept; null when it takes more.
        const value::CVal* Held(ScriptContext& script) {
            return m_expression ? m_expression->Held(script) : &m_literal;
        }

      private:
        value::CVal m_literal;
        std::optional<Expression> m_expression;
    };

    int EvaluateSides(ScriptContext& script);

    const ConditionWordRow* m_word;
    std::string_view m_operator;
    const Comparison* m_comparison;
    Side m_left;
    Side m_right;
};

// The same, once.
int CompareOperands(ScriptContext& script, std::string_view left, std::string_view right,
                    std::string_view op);

}  // namespace kalvex::operands
