#include "operands/Conditions.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "operands/Comparisons.h"
#include "operands/OperandEvaluator.h"

namespace kalvex::operands {

namespace {

bool IsSetByUser(ScriptContext& script, std::string_view operand) {
    std::uint16_t word = 0;
    return GetVariableStatus(script, operand, &word) && (word & value::Status::SetByUser) != 0;
}

// A test of the reading, not of the status.
bool IsUnknown(ScriptContext& script, std::string_view operand) {
    value::CVal value;
    return !EvaluateOperand(script, operand, value, value::ValueType::Double, true);
}

template <int (CVariable::*Test)(value::ValueKind kind)>
bool Holds(ScriptContext& script, std::string_view operand) {
    CVariable* variable = FindVariable(script, operand);
    return variable != nullptr && (variable->*Test)(value::GetValueKind(operand)) != 0;
}

constexpr ConditionWordRow kConditionWords[] = {
    {"SET_BY_USER", IsSetByUser, ""},
    {"UNKNOWN", IsUnknown, "Sprawdzenie, czy zmienna posiada niepoprawną wartość"},
    {"READY", Holds<&CVariable::IsReady>,
     "Sprawdzenie, czy dane są już pobrane lub wystąpił błąd pobrania"},
    {"REP_INITED", Holds<&CVariable::IsReportInited>,
     "Sprawdzenie, czy raport został zainicjowany"},
    {"REP_LOADED", Holds<&CVariable::IsReportLoaded>, "Sprawdzenie, czy raport został pobrany"},
};

ValueOperation OperationOf(std::string_view op) {
    const Comparison* const comparison = FindComparison(op);
    return comparison == nullptr ? ValueOperation::None : comparison->operation;
}

bool IsStringLiteral(std::string_view side) {
    return side.size() > 2 && side.front() == '"' && side.find('"', 1) == side.size() - 1;
}

}  // namespace

std::span<const ConditionWordRow> ConditionWords() {
    return kConditionWords;
}

const ConditionWordRow* FindConditionWord(std::string_view word) {
    const auto row = std::ranges::find(kConditionWords, word, &ConditionWordRow::word);
    return row == std::end(kConditionWords) ? nullptr : row;
}

OperandComparison::Side::Side(const std::string& side) {
    if (IsStringLiteral(side)) {
        m_literal = value::CVal(std::string_view(side).substr(1, side.size() - 2));
    } else {
        m_expression.emplace('(' + side + ')');
    }
}

const value::CVal* OperandComparison::Side::Evaluate(ScriptContext& script, value::CVal& scratch) {
    if (!m_expression) return &m_literal;
    return m_expression->Look(script, scratch, value::ValueType::Double);
}

OperandComparison::OperandComparison(const std::string& left, const std::string& right,
                                     std::string_view op)
    : m_word(FindConditionWord(left)),
      m_operator(op),
      m_comparison(OperationOf(op)),
      m_left(left),
      m_right(right) {}

int OperandComparison::EvaluateSides(ScriptContext& script) {
    if (m_word != nullptr) return m_word->test(script, m_operator);
    value::CVal leftScratch;
    value::CVal rightScratch;
    const value::CVal* const left = m_left.Evaluate(script, leftScratch);
    const value::CVal* const right = m_right.Evaluate(script, rightScratch);
    if (left == nullptr || right == nullptr || m_comparison == ValueOperation::None) return -1;
    return Compare(m_comparison, *left, *right);
}

int CompareOperands(ScriptContext& script, std::string_view left, std::string_view right,
                    std::string_view op) {
    return OperandComparison(std::string(left), std::string(right), op).Evaluate(script);
}

}  // namespace kalvex::operands
