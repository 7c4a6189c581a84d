#include "operands/FunctionArguments.h"

#include "value/ValueText.h"

namespace kalvex::operands {

TextArgument::TextArgument(ScriptContext& script, Operand& operand) {
    const value::CVal* const value = operand.Look(script, m_scratch, value::ValueType::Text);
    m_evaluates = value != nullptr;
    if (!m_evaluates) return;
    if (value->IsText()) {
        m_text = value->Text();
    } else {
        m_converted = value::ValueToText(*value);
        m_text = m_converted;
    }
}

std::optional<int> NumberArgument(const FunctionCall& call, std::size_t index) {
    value::CVal scratch;
    const value::CVal* const value =
        call.arguments[index].Look(call.script, scratch, value::ValueType::Int);
    if (value == nullptr) return std::nullopt;
    return value::ValueToInt(*value);
}

}  // namespace kalvex::operands
