#include "workbench/model/VariableSlots.h"

#include <algorithm>
#include <span>

#include "text/TextFormat.h"
#include "value/LocalTimeText.h"
#include "value/ValueText.h"

namespace kalvex::workbench {

namespace {

struct KindRow {
    operands::VariableKind kind;
    char letter;
};

constexpr KindRow kKinds[] = {
    {operands::VariableLocal, 'L'},
    {operands::VariablePointer, 'P'},
    {operands::VariableList, 'A'},
    {operands::VariableRemote, 'R'},
};

constexpr char kOtherKind = '?';

constexpr const char* kCell = "%s ( %d ) %s";

constexpr value::ValueKind kSlots[] = {value::KindCurrent, value::KindHour, value::KindDay,
                                       value::KindMonth, value::KindSpan};

}  // namespace

char KindLetter(operands::VariableKind kind) {
    const auto* row = std::ranges::find(kKinds, kind, &KindRow::kind);
    return row == std::end(kKinds) ? kOtherKind : row->letter;
}

std::string CellText(const value::CVal& value) {
    return text::FormatText(kCell, {value::FormatLocalTime(value.GetTime()),
                                    std::to_string(value.GetStatus()), value::ValueToText(value)});
}

std::vector<std::string> SlotTexts(operands::CVariable& variable) {
    operands::CVariable* const shown = ShownVariable(variable);
    if (shown == nullptr) return {{}};
    std::vector<std::string> texts;
    const bool hasReports = shown->GetKind() == operands::VariableRemote;
    for (const value::ValueKind kind :
         std::span(kSlots).first(hasReports ? std::size(kSlots) : 1)) {
        value::CVal value;
        std::string& text = texts.emplace_back();
        if (shown->GetValue(value, kind, operands::kAsStored) == operands::ReadValue) {
            text = CellText(value);
        }
    }
    return texts;
}

operands::CVariable* ShownVariable(operands::CVariable& variable) {
    if (variable.GetKind() != operands::VariablePointer) return &variable;
    return static_cast<operands::CVariablePointer&>(variable).LookUpTarget();
}

}  // namespace kalvex::workbench
