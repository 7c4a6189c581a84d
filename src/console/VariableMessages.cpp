#include "console/VariableMessages.h"

#include "value/ValueText.h"
#include "workbench/model/VariableSlots.h"

namespace kalvex::console {

namespace {

constexpr char kSlotEnd = ';';

}  // namespace

std::string VariableValuesText(operands::CVariable& variable) {
    std::string text(1, kSlotEnd);
    for (const std::string& slot : workbench::SlotTexts(variable)) {
        text += slot;
        text += kSlotEnd;
    }
    return NamesText(MessageCode::VariableValues, variable.GetName(), text);
}

std::string SetVariableText(std::string_view name, const value::CVal& value) {
    const std::string text = value::ValueToText(value);
    if (text.empty() || text.find('\t') != std::string::npos) return {};
    return JoinFields(MessageCode::SetVariable, {name, text, std::to_string(value.GetType()),
                                                 std::to_string(value.GetStatus())});
}

std::string AskVariableText(std::string_view name) {
    return JoinFields(MessageCode::AskVariable, {name});
}

value::CVal ReadMessageValue(std::string_view text, int type, int status) {
    value::CVal value;
    double number = 0;
    if (type == value::ValueType::Double && value::ConvertString2Double(text, &number)) {
        value = value::CVal(number);
    } else if (type == value::ValueType::Double || type == value::ValueType::Text) {
        value = value::CVal(text);
    }
    value.SetStatus(static_cast<std::uint16_t>(status));
    return value;
}

}  // namespace kalvex::console
