// TOKENIZE and JOIN: texts to pieces and lists to texts.
#include <utility>

#include "operands/FunctionArguments.h"
#include "operands/FunctionFamilies.h"
#include "operands/OperandEvaluator.h"
#include "value/Bounds.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

constexpr int kNoMorePieces = -1;

// The piece at the position, which moves behind the separator that ends it.
std::string_view NextPiece(std::string_view text, std::string_view separators, int& position) {
    const std::size_t first =
        text.find_first_not_of(separators, static_cast<std::size_t>(position));
    if (first == std::string_view::npos) {
        position = kNoMorePieces;
        return {};
    }
    const std::size_t end = std::min(text.find_first_of(separators, first), text.size());
    position = static_cast<int>(end) + 1;
    return text.substr(first, end - first);
}

}  // namespace

FunctionResult Tokenize(FunctionCall& call) {
    for (const std::string_view argument : call.arguments) {
        if (argument.empty()) return FunctionResult::Failed;
    }
    const TextArgument text(call, 0);
    if (!text) return FunctionResult::Failed;
    CVariable* variable = FindVariable(call.script, call.arguments[2]);
    value::CVal value;
    if (variable == nullptr || variable->GetValue(value, value::KindCurrent, 0) != ReadValue) {
        return FunctionResult::Failed;
    }
    std::int32_t position = 0;
    if (!value.GetValData(value::ValueType::Int, &position) || position < 0)
        return FunctionResult::Failed;
    call.out = value::CVal(NextPiece(*text, call.arguments[1], position));
    variable->SetValue(value::CVal(position), value::KindCurrent);
    return FunctionResult::Done;
}

FunctionResult Join(FunctionCall& call) {
    CVariable* variable = FindVariable(call.script, call.arguments[0]);
    if (variable == nullptr || variable->GetKind() != VariableList) return FunctionResult::Failed;
    std::string separator;
    if (!call.arguments[1].empty()) {
        separator = TextArgument(call, 1).ValueOr(call.arguments[1]);
    }
    auto& list = static_cast<CVariableList&>(*variable);
    std::string joined;
    bool first = true;
    for (const ElementSequence::Row* row : list.Elements().Rows()) {
        for (const value::CVal& element : *row) {
            if (!std::exchange(first, false)) joined += separator;
            if (element.IsText()) {
                joined += element.Text();
            } else {
                joined += value::ValueToText(element);
            }
            value::CheckTextSize(joined.size());
        }
    }
    list.MoveTo(static_cast<std::int32_t>(list.Elements().size()));
    call.out = value::CVal(std::move(joined));
    return FunctionResult::Done;
}

}  // namespace kalvex::operands
