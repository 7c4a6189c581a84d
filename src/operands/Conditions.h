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

struct HeldComparison {
    ValueOperation operation = ValueOperation::None;
    const value::CVal* left = nullptr;
    const value::CVal* right = nullptr;

    int Compare() const {
        if (operation == ValueOperation::Equal) return *left == *right;  // most often, in place
        return operands::Compare(operation, *left, *right);
    }
};

// A comparison of a condition, as its text tells it. Belongs to one script.
class OperandComparison {
  public:
    // For a test word on the left, `op` is its operand; its text outlives the comparison. A side
    // that is a string literal is that text; every other side is a formula in brackets.
    OperandComparison(const std::string& left, const std::string& right, std::string_view op);

    // 1 true, 0 false, -1 when it cannot be evaluated.
    int Evaluate(ScriptContext& script) {
        HeldComparison held;
        return FindHeld(script, held) ? held.Compare() : EvaluateSides(script);
    }
    // It compares values that are kept somewhere, and stay there as long as the variables stand.
    bool FindHeld(ScriptContext& script, HeldComparison& out) {
        if (m_comparison == ValueOperation::None) return false;
        out = {m_comparison, m_left.Held(script), m_right.Held(script)};
        return out.left != nullptr && out.right != nullptr;
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
    ValueOperation m_comparison;  // none where the operator is no comparison
    Side m_left;
    Side m_right;
};

// The same, once.
int CompareOperands(ScriptContext& script, std::string_view left, std::string_view right,
                    std::string_view op);

}  // namespace kalvex::operands
