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

bool IsStringLiteral(std::string_view side) {
    return side.size() > 2 && side.front() == '"' && side.find('"', 1) == side.size() - 1;
}

bool EvaluateSide(ScriptContext& script, std::string_view side, value::CVal& out) {
    if (IsStringLiteral(side)) {
        out = value::CVal(side.substr(1, side.size() - 2));
        return true;
    }
    const std::string bracketed = '(' + std::string(side) + ')';
    std::string_view text = bracketed;
    return EvaluateExpression(script, text, out, value::ValueType::Double);
}

}  // namespace

std::span<const ConditionWordRow> ConditionWords() {
    return kConditionWords;
}

const ConditionWordRow* FindConditionWord(std::string_view word) {
    const auto row = std::ranges::find(kConditionWords, word, &ConditionWordRow::word);
    return row == std::end(kConditionWords) ? nullptr : row;
}

int CompareOperands(ScriptContext& script, std::string_view left, std::string_view right,
                    std::string_view op) {
    if (const ConditionWordRow* row = FindConditionWord(left)) return row->test(script, op);
    value::CVal leftValue;
    value::CVal rightValue;
    const bool leftRead = EvaluateSide(script, left, leftValue);
    const bool rightRead = EvaluateSide(script, right, rightValue);
    const Comparison* comparison = FindComparison(op);
    if (!leftRead || !rightRead || comparison == nullptr) return -1;
    return (leftValue.*comparison->compare)(rightValue);
}

}  // namespace kalvex::operands
